// The page of a recording: the chart, the surface at the cursor, touches and why.

const isCancelled = (touch) => touch.outcome === "cancel";
const isChanged = (touch) => Boolean(touch.change);

class RecordingPage {
  constructor(data, plays) {
    Object.assign(this, {surface: data.surface, plays, changes: joinTouches(plays, data.pairs)});
    const isOneFile = plays.length > 1 && plays[0].file === plays[1].file;
    for (const play of plays) play.name = isOneFile ? play.settings || "as recorded" : play.file;
    document.title = plays.map((play) => play.file).join(", ") + " – velto";
    this.pixelKind = "pads";
    this.maps = {};
    this.chart = new Chart(plays, () => this.list.showSoon(this.chart.selected));
    this.range = this.chart.range;
    this.view = new SurfacePicture(this.surface, this.map("pads").top);
    this.explanation = new Explanation();
    this.list = new TouchList(plays.length > 1, () => this.touchesInView(), (touch) => this.select(touch));
    this.traces = [signalRow(plays, this.surface), scoreRow(plays, this.surface)];
    this.lanes = laneRows(plays, this.changes);
    const keys = this.keys();
    this.help = helpDialog(keys);
    document.getElementById("page").replaceChildren(this.header(), this.toolbar(),
      element("div", {class: "columns"}, element("div", {class: "chart-box"}, this.chart.node, this.legend()), this.view.node),
      this.explanation.node, this.list.node);
    followKeys(keys);
    followPointers(this.chart.node, this.range, (event) => this.chart.timeAt(event), (event) => this.hover(event),
      (event) => this.click(event));
    darkTheme.addEventListener("change", () => this.themed());
    this.themed();
    this.showRows();
  }

  header() {
    const isPair = this.plays.length > 1;
    const names = this.plays.map((play, i) => element("h1", {}, ...(isPair ? [playBadge(i)] : []),
      element("span", {text: play.file}), element("small", {text: play.settings})));
    const sentences = this.plays.map((play, i) => (isPair ? `${i + 1}: ` : "") + summaryOf(play));
    if (isPair) sentences.push(`${plural(this.changes.length, "touch is", "touches are")} decided otherwise.`);
    return element("header", {}, ...names, element("div", {id: "summary"}, ...sentences.map((text) => element("p", {text}))));
  }

  toolbar() {
    const button = (text, label, click) => element("button", {text, "aria-label": label, title: label, click});
    const isPair = this.plays.length > 1;
    this.kindButton = button("", "Pads or groups of pads", () => this.switchPixels());
    this.playButton = button("", "Whose pads are shown", () => this.switchPlay());
    return element("div", {class: "toolbar", role: "toolbar", "aria-label": "View"},
      button("−", "Zoom out", () => this.range.zoom(2)), button("+", "Zoom in", () => this.range.zoom(0.5)),
      button("All", "Show the whole recording", () => this.range.showAll()),
      button("‹ no gesture", "Previous touch that became no gesture", () => this.go(-1, isCancelled)),
      button("no gesture ›", "Next touch that became no gesture", () => this.go(1, isCancelled)), this.kindButton,
      ...(isPair ? [button("otherwise ›", "Next touch that is decided otherwise", () => this.go(1, isChanged)), this.playButton] : []),
      button("? keys", "Keys", () => this.help.showModal()));
  }

  legend() {
    this.scale = element("canvas", {width: "160", height: "10", "aria-hidden": "true"});
    this.scaleTop = element("span");
    const key = (text, kind = text) => element("span", {class: `key ${kind}`, text});
    const hasAccel = this.plays.some((play) => play.accel.rows);
    return element("p", {class: "legend"}, element("span", {text: "0"}), this.scale, this.scaleTop,
      key("turns on above", "line on"), key("stays on above", "line off"),
      ...(this.plays.length > 1 ? [key("second", "line second")] : []),
      ...(hasAccel ? ["x", "y", "z"].map((axis, i) => key(axis, "line " + regionSequence[i])) : []),
      key("tap"), key("hold"), key("no gesture", "cancel"), key("unfinished"));
  }

  keys() {
    const {range, chart} = this;
    return [
      [["ArrowLeft"], "move back", () => range.move(-0.1)],
      [["ArrowRight"], "move on", () => range.move(0.1)],
      [["Shift+ArrowLeft"], "a view back", () => range.move(-0.9)],
      [["Shift+ArrowRight"], "a view on", () => range.move(0.9)],
      [["+", "="], "zoom in", () => range.zoom(0.5)],
      [["-"], "zoom out", () => range.zoom(2)],
      [["0"], "show all", () => range.showAll()],
      [["c"], "next touch that became no gesture", () => this.go(1, isCancelled)],
      [["C"], "the one before", () => this.go(-1, isCancelled)],
      [["n"], "next touch", () => this.go(1, () => true)],
      [["N", "p"], "touch before", () => this.go(-1, () => true)],
      [["d"], "next touch that is decided otherwise", () => this.go(1, isChanged)],
      [["D"], "the one before", () => this.go(-1, isChanged)],
      [[","], "cursor one image back", () => this.step(-1)],
      [["."], "cursor one image on", () => this.step(1)],
      [["g"], "pads or groups of pads", () => this.switchPixels()],
      [["s"], "pads of the first or the second", () => this.switchPlay()],
      [["Escape"], "select nothing", () => this.select(null)],
      [["?"], "this list", () => this.help.showModal()],
    ];
  }

  // What is shown.

  // The map of the play that is shown; all are made when they are first wanted.
  map(kind) {
    this.maps[kind] ??= heatRows(this.plays, this.surface, kind);
    return this.maps[kind][this.chart.shownPlay];
  }
  showRows() {
    const map = this.map(this.pixelKind);
    this.kindButton.textContent = this.pixelKind === "pads" ? "Show 23 groups" : "Show 15 pads";
    this.playButton.textContent = `Show pads of ${2 - this.chart.shownPlay}`;
    this.scaleTop.textContent = `${map.top} counts`;
    this.chart.show([map, ...this.traces, ...this.lanes]);
  }
  switchPixels() {
    this.pixelKind = this.pixelKind === "pads" ? "groups" : "pads";
    this.showRows();
  }
  switchPlay() {
    if (this.plays.length < 2) return;
    this.chart.shownPlay = 1 - this.chart.shownPlay;
    this.showRows();
    this.showCursor();
  }
  themed() {
    const colours = (this.chart.colours = themeColours()), g = this.scale.getContext("2d");
    for (let x = 0; x < 160; ++x) {
      g.fillStyle = colours.heat.texts[heatOf(x, 159)];
      g.fillRect(x, 0, 1, 10);
    }
    this.chart.changed();
    this.showCursor();
  }
  touchesInView() {
    const {from, to} = this.range;
    return this.plays.flatMap(({touches}) => touches.filter(({start, end}) => end >= from && start <= to)).sort(byTime);
  }

  // The cursor.

  hover(event) {
    this.setCursor(Math.min(Math.max(this.chart.timeAt(event), this.range.from), this.range.to));
  }
  step(count) {
    const {time} = this.plays[this.chart.shownPlay].images, {range} = this;
    if (!time.length) return;
    const row = Math.min(Math.max(rowAt(time, this.chart.cursor ?? range.from) + count, 0), time.length - 1);
    if (time[row] < range.from || time[row] > range.to) range.show(time[row] - range.span / 2, time[row] + range.span / 2);
    this.setCursor(time[row]);
  }
  setCursor(time) {
    this.chart.cursor = time;
    this.chart.placeCursor();
    this.hovering ||= requestAnimationFrame(() => {
      this.hovering = 0;
      this.showCursor();
    });
  }
  showCursor() {
    const {chart, plays} = this, {cursor} = chart, play = plays[chart.shownPlay];
    const row = cursor === null ? -1 : rowAt(play.images.time, cursor);
    this.view.show(play.images, row, chart.colours);
    const here = chart.near(plays.flatMap((one) => [...one.disturbances, ...one.writes, ...one.labels]), 5);
    const touches = chart.near(plays.flatMap((one) => one.touches), 0);
    this.view.say([
      ["time", cursor === null ? "point at the chart" : secondsText(cursor)],
      ...factsOf(this.surface, play, row),
      ["touch", touches.map((touch) => `${touch.number} ${touch.outcome}`).join(", ") || "none"],
      ["here", [...new Set(here.map((item) => item.text))].slice(0, 4).join("; ") || "–"],
    ]);
  }

  // Touches.

  click(event) {
    const {chart} = this, {items} = chart.rowAtHeight(event) ?? {};
    const nearest = (list) => chart.near(list, 4).sort((a, b) =>
      (order[b.outcome] ?? 0) - (order[a.outcome] ?? 0) || a.end - a.start - (b.end - b.start))[0];
    const own = items && (items === this.changes || this.plays.some(({touches}) => touches === items)) ? nearest(items) : null;
    this.select(own?.touch ?? own ?? nearest(this.plays[chart.shownPlay].touches) ?? null);
  }
  select(touch) {
    this.chart.selected = touch;
    if (touch) {
      this.range.reveal(touch.start, touch.end);
      this.explanation.show(touch, this.plays);
      this.setCursor(touch.start);
    } else {
      this.explanation.clear();
    }
    this.chart.changed();
  }
  // To the next or previous touch that is wanted; of a pair to that of the first play, unless only the second's is.
  go(direction, isWanted) {
    const touches = this.plays.flatMap((play) => play.touches.filter((touch) =>
      isWanted(touch) && !(touch.play && touch.other && isWanted(touch.other)))).sort(byTime);
    const {selected} = this.chart, at = touches.indexOf(selected);
    const from = selected ? selected.start : direction > 0 ? this.range.from : this.range.to;
    const next = at >= 0 ? touches[at + direction] : direction > 0
      ? touches.find((touch) => touch.start >= from) : touches.findLast((touch) => touch.start <= from);
    if (next) this.select(next);
  }
}

const byTime = (a, b) => a.start - b.start || a.play - b.play;
const playBadge = (number) => element("b", {class: `number n${number + 1}`, text: `${number + 1}`});
