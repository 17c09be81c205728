// The page of a recording: the chart, the surface at the cursor, touches and why.

const isTouch = (item) => Boolean(item.outcome);
const isCancelled = (item) => item.outcome === "cancel";
const isMissed = (item) => item.isRight === false;
const isChanged = (item) => Boolean(item.change);

class RecordingPage {
  constructor(data, plays) {
    Object.assign(this, {surface: data.surface, plays, changes: joinTouches(plays, data.pairs)});
    const isOneFile = plays.length > 1 && plays[0].file === plays[1].file;
    for (const play of plays) play.name = isOneFile ? play.settings || "as recorded" : play.file;
    document.title = plays.map((play) => play.file).join(", ") + " – velto";
    this.pixelKind = "pads";
    this.maps = {};
    this.chart = new Chart(plays, {tabindex: "0", role: "application", "aria-describedby": "summary",
      "aria-label": "Chart of the recording over time. Arrow keys move it, plus and minus zoom, c goes to the next touch " +
        "that became no gesture, a question mark lists all keys."}, () => this.list.showSoon(this.chart.selected));
    this.range = this.chart.range;
    this.cursor = new Cursor(this.chart, this.surface);
    this.explanation = new Explanation();
    this.list = new TouchList(plays.length > 1, () => this.touchesInView(), (touch) => this.select(touch));
    this.traces = [signalRow(plays, this.surface), scoreRow(plays, this.surface)];
    this.lanes = laneRows(plays, this.changes);
    const keys = this.keys();
    this.toolbar = this.toolbarOf(keys);
    this.help = helpDialog(keys);
    document.getElementById("page").replaceChildren(this.header(data.shown), this.toolbar,
      element("div", {class: "columns"}, element("div", {class: "chart-box"}, this.chart.node, this.legend()),
        this.explanation.node, this.cursor.view.node), this.list.node);
    followKeys(keys);
    followPointers(this.chart.node, this.range, (event) => this.chart.timeAt(event), (event) => this.cursor.follow(event),
      (event) => this.click(event));
    darkTheme.addEventListener("change", () => this.themed());
    this.themed();
    this.showRows();
    this.range.readAddress();
  }

  header(shown) {
    const isPair = this.plays.length > 1;
    const names = this.plays.map((play, i) => element("h1", {}, ...(isPair ? [playBadge(i)] : []),
      element("span", {text: play.file}), element("small", {text: play.settings})));
    const sentences = this.plays.map((play, i) => (isPair ? `${i + 1}: ` : "") + summaryOf(play, shown));
    if (isPair) sentences.push(`${plural(this.changes.length, "touch is", "touches are")} decided otherwise.`);
    return element("header", {}, ...names, element("div", {id: "summary"}, ...sentences.map((text) => element("p", {text}))));
  }

  toolbarOf(keys) {
    const buttons = keys.filter(([, , , text]) => text).map(([names, what, click, text]) =>
      element("button", {text, "data-key": names[0], "aria-label": what, title: what, click}));
    return element("div", {class: "toolbar", role: "toolbar", "aria-label": "View"}, ...buttons);
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

  // [keys, what they do, action, text of a button that does it too].
  keys() {
    const {range} = this, isPair = this.plays.length > 1, hasLabels = this.plays.some(({labels}) => labels.length);
    const to = (direction, isWanted) => () => this.go(direction, isWanted);
    return [
      [["ArrowLeft"], "move back", () => range.move(-0.1)],
      [["ArrowRight"], "move on", () => range.move(0.1)],
      [["Shift+ArrowLeft"], "a view back", () => range.move(-0.9)],
      [["Shift+ArrowRight"], "a view on", () => range.move(0.9)],
      [["-"], "zoom out", () => range.zoom(2), "−"],
      [["+", "="], "zoom in", () => range.zoom(0.5), "+"],
      [["0"], "show all", () => range.show(range.limits.from, range.limits.to), "All"],
      [["C"], "touch before that became no gesture", to(-1, isCancelled), "‹ no gesture"],
      [["c"], "next touch that became no gesture", to(1, isCancelled), "no gesture ›"],
      [["M"], "label before that was missed or went wrong", to(-1, isMissed), hasLabels && "‹ miss"],
      [["m"], "next label that was missed or went wrong", to(1, isMissed), hasLabels && "miss ›"],
      [["N", "p"], "touch before", to(-1, isTouch)],
      [["n"], "next touch", to(1, isTouch)],
      [["D"], "touch before that is decided otherwise", to(-1, isChanged)],
      [["d"], "next touch that is decided otherwise", to(1, isChanged), isPair && "otherwise ›"],
      [[","], "cursor one image back", () => this.cursor.step(-1)],
      [["."], "cursor one image on", () => this.cursor.step(1)],
      [["g"], "pads or groups of pads", () => this.switchPixels(), "pads / groups"],
      [["s"], "pads of the first or the second", () => this.switchPlay(), isPair && "second"],
      [["Escape"], "select nothing", () => this.select(null)],
      [["?"], "this list of keys", () => this.help.showModal(), "? keys"],
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
    const other = this.toolbar.querySelector("[data-key=s]");
    if (other) other.textContent = `Show pads of ${2 - this.chart.shownPlay}`;
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
    this.cursor.show();
  }
  themed() {
    const {colours} = this.chart, g = this.scale.getContext("2d");
    for (let x = 0; x < 160; ++x) {
      g.fillStyle = colours.heat.texts[heatOf(x, 159)];
      g.fillRect(x, 0, 1, 10);
    }
  }
  touchesInView() {
    const {from, to} = this.range;
    return this.plays.flatMap(({touches}) => touches.filter(({start, end}) => end >= from && start <= to)).sort(byTime);
  }

  // Touches and labels.

  click(event) {
    const {chart} = this, {items} = chart.rowAtHeight(event) ?? {};
    const hasOwn = items && [this.changes, ...this.plays.flatMap(({touches, labels}) => [touches, labels])].includes(items);
    const nearest = (list) => chart.near(list, 4).sort((a, b) =>
      (order[b.outcome] ?? 0) - (order[a.outcome] ?? 0) || a.end - a.start - (b.end - b.start))[0];
    const own = hasOwn ? nearest(items) : null;
    this.select(own?.touch ?? own ?? nearest(this.plays[chart.shownPlay].touches) ?? null);
  }
  select(item) {
    this.chart.selected = item;
    if (item) {
      this.range.reveal(item.start, item.end);
      this.explanation.show(item, this.plays);
      this.explanation.node.scrollIntoView({block: "nearest"});
      this.cursor.set(item.start);
    } else {
      this.explanation.clear();
    }
    this.chart.changed();
  }
  // To the next or previous item that is wanted; of a pair to that of the first play, unless only the second's is.
  go(direction, isWanted) {
    const items = this.plays.flatMap((play) => [...play.touches, ...play.labels].filter((item) =>
      isWanted(item) && !(item.play && item.other && isWanted(item.other)))).sort(byTime);
    const {selected} = this.chart, at = items.indexOf(selected);
    const from = selected ? selected.start : direction > 0 ? this.range.from : this.range.to;
    const next = at >= 0 ? items[at + direction] : direction > 0
      ? items.find((item) => item.start >= from) : items.findLast((item) => item.start <= from);
    if (next) this.select(next);
  }
}

const byTime = (a, b) => a.start - b.start || a.play - b.play;
const playBadge = (number) => element("b", {class: `number n${number + 1}`, text: `${number + 1}`});
