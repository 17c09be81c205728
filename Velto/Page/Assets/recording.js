// The page of a recording: rows that share a time axis, the surface at the cursor, touches and why.

const rowHeights = {heat: 14, signal: 110, score: 76, lane: 24, accel: 64};

// A play as the page needs it: columns read, times in seconds.
async function readPlay(data, number) {
  const inSeconds = (item) => ({...item, start: (item.startNs ?? item.ns) / 1e9, end: (item.endNs ?? item.ns) / 1e9});
  const images = await readImages(data.images);
  const touches = data.touches.map((touch) => ({...inSeconds(touch), play: number}));
  const end = data.durationNs / 1e9;
  const accel = {rows: data.accel.rows, time: await readTimes(data.accel.ns, data.accel.rows),
                 axes: await readAll(data.accel.axes, readFloats, data.accel.rows)};
  const labels = data.labels.map((label) => ({...inSeconds(label), text: labelText(label)}));
  const writes = data.writes.map((write) => ({...inSeconds(write), kind: "setting", isFaint: write.isLeftOut,
    text: `${write.key} = ${write.value}${write.isLeftOut ? " (left out)" : ""}`}));
  const disturbances = data.disturbances.map((one) => {
    const item = inSeconds(one);
    const before = one.kind === "gap" ? rowAt(images.time, item.start - 1e-9) : -1;
    return before < 0 ? item : {...item, start: images.time[before]};
  });
  const settings = data.settings.map(([key, value]) => `${key}=${value}`).join("  ");
  return {...data, number, images, end, touches, accel, labels, writes, disturbances, settings,
          gestures: gesturesOf(data.gestures)};
}

function labelText({gesture, region, endRegion}) {
  return [gesture, region === "None" ? "" : region, endRegion ? `to ${endRegion}` : ""].filter(Boolean).join(" ");
}

// Touches that belong together know each other; what is decided otherwise is known of both.
function joinTouches(plays, pairs) {
  if (plays.length < 2) return [];
  const [ofA, ofB] = plays.map((play) => new Map(play.touches.map((touch) => [touch.number, touch])));
  const changes = [];
  for (const [a, b, change] of pairs) {
    const touches = [ofA.get(a), ofB.get(b)].filter(Boolean);
    if (touches.length === 0) continue;
    if (touches.length === 2) [touches[0].other, touches[1].other] = [touches[1], touches[0]];
    if (change === "same") continue;
    for (const touch of touches) touch.change = change;
    changes.push({kind: "change", start: touches[0].start, end: touches[0].start, text: `decided otherwise: ${change}`,
                  touch: touches[0]});
  }
  return changes;
}

class RecordingPage {
  constructor(data, plays) {
    Object.assign(this, {surface: data.surface, plays, changes: joinTouches(plays, data.pairs)});
    const isOneFile = plays.length > 1 && plays[0].file === plays[1].file;
    for (const play of plays) play.name = isOneFile ? play.settings || "as recorded" : play.file;
    this.shownPlay = 0;
    this.pixelKind = "pads";
    this.cursor = null;
    this.selected = null;
    this.texts = new Texts();
    this.picture = new Picture();
    this.heats = {};
    const times = plays.flatMap(({images, end}) => (images.count ? [images.time[0], images.time[images.count - 1]] : [0, end]));
    this.range = new TimeRange(Math.min(...times), Math.max(...times), () => this.changed());
    this.build();
    this.themed();
    darkTheme.addEventListener("change", () => this.themed());
    new ResizeObserver(() => this.layOut()).observe(this.chart);
  }

  // The maps of all plays, made when they are first wanted; one scale for both.
  heatRows(kind) {
    return (this.heats[kind] ??= this.makeHeatRows(kind));
  }
  makeHeatRows(kind) {
    const {padRegions, groups} = this.surface;
    const isPads = kind === "pads";
    const names = isPads ? padRegions.map((_, pad) => padLetter(pad)) : groups;
    const regions = isPads ? padRegions : groups.map(() => "None");
    const sequence = ["PlayPause", "VolumeUp", "VolumeDown", "None"].flatMap((region) =>
      regions.flatMap((own, i) => (own === region ? [i] : [])));
    const bitsOf = (bits, i) => Uint8Array.from(bits, (word) => (word >> i) & 1);
    const rows = this.plays.map(({images}) => sequence.map((i) => ({name: names[i], region: regions[i],
      value: new Pyramid(images[kind][i]), on: new Pyramid(bitsOf(images[kind + "On"], i))})));
    const top = Math.max(1, ...rows.flat().map((pixel) => pixel.value.highest));
    return rows.map((pixels) => new HeatRow(pixels, top));
  }

  build() {
    const page = document.getElementById("page");
    document.title = this.plays.map((play) => play.file).join(", ") + " – velto";
    this.canvas = element("canvas", {"aria-hidden": "true"});
    this.line = element("div", {class: "cursor", hidden: ""});
    this.titles = element("div", {class: "titles", "aria-hidden": "true"});
    this.chart = element("div", {class: "chart", tabindex: "0", role: "application", "aria-describedby": "summary",
      "aria-label": "Chart of the recording over time. Arrow keys move it, plus and minus zoom, c goes to the next touch " +
        "that became no gesture, a question mark lists all keys."}, this.canvas, this.titles, this.texts.layer, this.line);
    this.view = new SurfacePicture(this.surface, this.heatRows("pads")[0].top);
    this.explanation = new Explanation();
    this.list = new TouchList(this.plays.length > 1, (touch) => this.select(touch));
    const keys = this.keys();
    this.help = helpDialog(keys);
    page.replaceChildren(this.header(), this.toolbar(),
      element("div", {class: "columns"}, element("div", {class: "chart-box"}, this.chart, this.scaleLegend()),
        this.view.node), this.explanation.node, this.list.node);
    followKeys(keys);
    followPointers(this.chart, this.range, (event) => this.timeAt(event), (event) => this.hover(event),
      (event) => this.click(event));
  }

  header() {
    const names = this.plays.map((play, i) =>
      element("h1", {}, ...(this.plays.length > 1 ? [element("b", {class: `number n${i + 1}`, text: `${i + 1}`})] : []),
        element("span", {text: play.file}), element("small", {text: play.settings})));
    const sentences = this.summary().map((text) => element("p", {text}));
    return element("header", {class: "head"}, ...names, element("div", {id: "summary"}, ...sentences));
  }
  summary() {
    const sentences = this.plays.map((play, i) => {
      const count = (outcome) => play.touches.filter((touch) => touch.outcome === outcome).length;
      const many = (kind) => play.disturbances.filter((one) => one.kind === kind).length;
      return (this.plays.length > 1 ? `${i + 1}: ` : "") +
        `${secondsText(play.end, 2)}, ${plural(play.images.count, "image")}. ` +
        `${plural(play.touches.length, "touch", "touches")}: ${plural(count("tap"), "tap")}, ` +
        `${plural(count("hold"), "hold")}, ${count("cancel")} that became no gesture` +
        (count("unfinished") ? `, ${count("unfinished")} unfinished` : "") + ". " +
        ["gap", "reset"].map((kind) => plural(many(kind), kind)).join(", ") +
        `, ${plural(many("invalid"), "invalid report")}.`;
    });
    if (this.plays.length > 1)
      sentences.push(`${plural(this.changes.length, "touch is", "touches are")} decided otherwise.`);
    return sentences;
  }

  toolbar() {
    const button = (text, label, click) => element("button", {text, "aria-label": label, title: label, click});
    const bar = element("div", {class: "toolbar", role: "toolbar", "aria-label": "View"},
      button("−", "Zoom out", () => this.range.zoom(2)), button("+", "Zoom in", () => this.range.zoom(0.5)),
      button("All", "Show the whole recording", () => this.range.showAll()),
      button("‹ no gesture", "Previous touch that became no gesture", () => this.go(-1, isCancelled)),
      button("no gesture ›", "Next touch that became no gesture", () => this.go(1, isCancelled)));
    this.kindButton = button("", "Pads or groups of pads", () => this.switchPixels());
    bar.append(this.kindButton);
    if (this.plays.length > 1) {
      bar.append(button("otherwise ›", "Next touch that is decided otherwise", () => this.go(1, isChanged)));
      bar.append((this.playButton = button("", "Whose pads are shown", () => this.switchPlay())));
    }
    bar.append(button("? keys", "Keys", () => this.help.showModal()));
    return bar;
  }
  nameButtons() {
    this.kindButton.textContent = this.pixelKind === "pads" ? "Show 23 groups" : "Show 15 pads";
    if (this.playButton) this.playButton.textContent = `Show pads of ${2 - this.shownPlay}`;
  }

  scaleLegend() {
    this.scale = element("canvas", {width: "160", height: "10", "aria-hidden": "true"});
    this.scaleTop = element("span");
    const chip = (name) => element("span", {class: `key ${name}`, text: name === "cancel" ? "no gesture" : name});
    const line = (colour, text) => element("span", {class: `key line ${colour}`, text});
    return element("p", {class: "legend"}, element("span", {text: "0"}), this.scale, this.scaleTop,
      line("on", "turns on above"), line("off", "stays on above"),
      ...(this.plays.length > 1 ? [line("second", "second")] : []),
      ...(this.plays.some((play) => play.accel.rows) ? [line("PlayPause", "x"), line("VolumeUp", "y"), line("VolumeDown", "z")] : []), ...["tap", "hold", "cancel", "unfinished"].map(chip));
  }

  keys() {
    const {range} = this;
    return [
      [["ArrowLeft", "ArrowRight"], "move by a tenth of the view", null],
      [["ArrowLeft"], "move back", () => range.move(-0.1)],
      [["ArrowRight"], "move on", () => range.move(0.1)],
      [["Shift+ArrowLeft"], "a view back", () => range.move(-0.9)],
      [["Shift+ArrowRight"], "a view on", () => range.move(0.9)],
      [["+", "="], "zoom in", () => range.zoom(0.5, this.cursor ?? undefined)],
      [["-"], "zoom out", () => range.zoom(2, this.cursor ?? undefined)],
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
      [["Escape"], "select nothing", () => this.unselect()],
      [["?"], "this list", () => this.help.showModal()],
    ].filter(([, , action]) => action);
  }

  // Rows, from top to bottom.

  rows() {
    const {plays, surface} = this, lanes = [];
    const lane = (title, items, draw) => lanes.push({title, items, draw, height: rowHeights.lane});
    const number = (play) => (plays.length > 1 ? ` ${play.number + 1}` : "");
    const both = (draw) => plays.forEach(draw);
    both((play) => lane("touches" + number(play), play.touches, (g, box) =>
      drawTouches(g, box, this.range, play.touches, this.colours, this.texts, this.selected)));
    if (plays.length > 1)
      lane("otherwise", this.changes, (g, box) => drawMarks(g, box, this.range, this.changes, this.colours));
    both((play) => lane("gestures" + number(play), play.gestures, (g, box) =>
      drawGestures(g, box, this.range, play.gestures, this.colours, this.texts)));
    const own = plays.length > 1 && plays[0].file === plays[1].file ? plays.slice(0, 1) : plays;
    for (const play of own) {
      const mark = own.length > 1 ? number(play) : "";
      if (play.labels.length) lane("labels" + mark, play.labels, (g, box) =>
        drawBars(g, box, this.range, play.labels, this.colours.soft, this.texts));
      if (play.writes.length) lane("settings" + mark, play.writes, (g, box) =>
        drawMarks(g, box, this.range, play.writes, this.colours));
      if (play.disturbances.length) lane("trouble" + mark, play.disturbances, (g, box) =>
        drawMarks(g, box, this.range, play.disturbances, this.colours));
      if (play.accel.rows) lanes.push(this.accelRow(play, mark));
    }
    const heat = this.heatRows(this.pixelKind)[this.shownPlay];
    this.signal ??= this.signalRow();
    this.score ??= this.scoreRow();
    return [
      {pixels: heat.pixels, height: heat.pixels.length * (this.pixelKind === "pads" ? rowHeights.heat : 11),
       paint: (box) => heat.paint(this.picture, box, this.columns[this.shownPlay], this.colours)},
      {title: "strongest", marks: this.signal, height: rowHeights.signal,
       paint: (box) => this.signal.paint(this.picture, box, this.columns, this.colours)},
      {title: "touch score", marks: this.score, height: rowHeights.score,
       paint: (box) => this.score.paint(this.picture, box, this.columns, this.colours)},
      ...lanes,
    ];
  }
  signalRow() {
    const top = Math.max(...this.plays.map(({images}) => new Pyramid(images.signal).highest), 1);
    const row = new TraceRow(0, top * 1.08, [{value: this.surface.noise, text: `noise ${this.surface.noise}`, colour: "noise"}]);
    for (const {images, number} of [...this.plays].reverse()) {
      row.add(new Trace(images.signal, number ? "second" : "signal", number ? "line" : "area"), number);
      if (number) continue;
      row.add(new Trace(images.onLevel, "on", "bound")).add(new Trace(images.offLevel, "off", "bound"));
    }
    return row;
  }
  scoreRow() {
    const {scoreLimit, holdScore} = this.surface;
    const row = new TraceRow(-scoreLimit * 1.15, scoreLimit * 1.15, [
      {value: scoreLimit, text: `limit ${scoreLimit}`, colour: "soft"},
      {value: holdScore, text: `hold ≥ ${holdScore}`, colour: "on"},
      {value: -scoreLimit, text: `limit ${-scoreLimit}`, colour: "soft"}]);
    for (const {images, number} of [...this.plays].reverse())
      row.add(new Trace(images.touchScore, number ? "second" : "score"), number);
    return row;
  }
  accelRow(play, mark) {
    const {axes, time} = play.accel;
    const most = Math.max(1e-3, ...axes.map((axis) => new Pyramid(axis.map(Math.abs)).highest));
    const row = new TraceRow(-most * 1.1, most * 1.1, [{value: 0, text: "0", colour: "soft"}]);
    ["PlayPause", "VolumeUp", "VolumeDown"].forEach((colour, i) => row.add(new Trace(axes[i], colour)));
    return {title: "accel x y z" + mark, marks: row, height: rowHeights.accel, paint: (box) => {
      const columns = rowsByColumn(time, this.range.from, this.range.to, this.width, time[time.length - 1]);
      row.paint(this.picture, box, [columns], this.colours);
    }};
  }

  // Sizes; called when the chart's width, or what it shows, changes.
  layOut() {
    const width = this.chart.clientWidth;
    if (!width) return;
    this.gutter = width < 600 ? 58 : 84;
    let y = 22; // the axis
    this.boxes = this.rows().map((row) => {
      y += row.marks ? 16 : 0; // its title stands above
      const box = {x: this.gutter, y, width: width - this.gutter, height: row.height};
      y += row.height + 8;
      return {row, box};
    });
    this.height = y;
    this.ratio = devicePixelRatio || 1;
    this.width = Math.max(1, Math.round((width - this.gutter) * this.ratio)); // of the plot, in the device's pixels
    this.canvas.width = Math.round(width * this.ratio);
    this.canvas.height = Math.round(y * this.ratio);
    this.picture.resize(this.width, this.canvas.height);
    this.chart.style.height = `${y}px`;
    this.titles.replaceChildren(...this.boxes.flatMap(({row, box}) => this.titlesOf(row, box)));
    this.nameButtons();
    this.scaleTop.textContent = `${this.heatRows(this.pixelKind)[0].top} counts`;
    this.changed();
  }
  titlesOf(row, box) {
    const title = (text, y, kind) => {
      const made = element("span", {class: kind, text});
      made.style.transform = `translateY(${Math.round(y)}px)`;
      return made;
    };
    if (row.pixels) {
      const step = row.height / row.pixels.length;
      return row.pixels.map((pixel, i) => title(pixel.name, box.y + i * step, `pixel ${pixel.region}` + (step < 12 ? " low" : "")));
    }
    if (!row.marks) return [title(row.title, box.y + 4, "title")];
    const scale = row.marks.scaleIn(box);
    return [title(row.title, box.y - 17, "title over"),
      ...row.marks.marks.map((mark) => title(mark.text, scale(mark.value) - 7, "mark"))];
  }

  themed() {
    this.colours = themeColours();
    const g = this.scale.getContext("2d");
    for (let x = 0; x < 160; ++x) {
      g.fillStyle = this.colours.heat.texts[heatOf(x, 159)];
      g.fillRect(x, 0, 1, 10);
    }
    this.changed();
    this.showCursor();
  }

  changed() {
    if (this.drawing) return;
    this.drawing = requestAnimationFrame(() => {
      this.drawing = 0;
      if (this.boxes) this.draw();
    });
  }

  draw() {
    const {range, colours} = this, g = this.canvas.getContext("2d");
    this.columns = this.plays.map(({images, end}) => rowsByColumn(images.time, range.from, range.to, this.width, end));
    const whole = {x: this.gutter, y: 20, width: this.chart.clientWidth - this.gutter, height: this.height - 20};
    this.picture.clear();
    for (const {row, box} of this.boxes)
      row.paint?.({y: Math.round(box.y * this.ratio), height: Math.round(box.height * this.ratio)});
    g.setTransform(this.ratio, 0, 0, this.ratio, 0, 0);
    g.putImageData(this.picture.image, this.canvas.width - this.width, 0);
    this.texts.begin();
    this.drawAxis(g, whole);
    g.save();
    g.beginPath();
    g.rect(whole.x, 0, whole.width, this.height);
    g.clip();
    g.globalCompositeOperation = "destination-over"; // the map keeps its colours
    this.drawSelected(g, whole);
    g.globalCompositeOperation = "source-over";
    for (const {row, box} of this.boxes) row.draw?.(g, box);
    const traces = {...whole, height: this.boxes.findLast(({row}) => row.marks === this.score).box.y + rowHeights.score - 20};
    drawInterruptions(g, traces, range, this.plays[this.shownPlay].disturbances, colours);
    g.restore();
    this.texts.end();
    this.placeCursor();
    this.list.show(this.plays.flatMap(({touches}) =>
      touches.filter((touch) => touch.end >= range.from && touch.start <= range.to))
      .sort((a, b) => a.start - b.start), this.selected);
  }
  drawAxis(g, box) {
    const {range} = this, least = (range.span * 90) / box.width;
    const power = 10 ** Math.floor(Math.log10(least));
    const step = [1, 2, 5, 10].find((factor) => factor * power >= least) * power;
    const digits = Math.max(0, Math.ceil(-Math.log10(step) - 1e-9));
    g.fillStyle = this.colours.faint;
    for (let k = Math.ceil(range.from / step); k * step <= range.to; ++k) {
      const x = box.x + ((k * step - range.from) / range.span) * box.width;
      g.fillRect(Math.round(x), 14, 1, 6);
      if (x < box.x + box.width - 40) this.texts.put(secondsText(k * step, digits), x + 3, 2, "tick");
    }
  }
  drawSelected(g, box) {
    if (!this.selected) return;
    const extent = extentOf(this.selected, box, this.range);
    if (!extent) return;
    g.fillStyle = this.colours.select;
    g.globalAlpha = 0.2;
    g.fillRect(extent.x, box.y, extent.width, box.height);
    g.globalAlpha = 1;
  }

  // The cursor.

  timeAt(event) {
    const left = this.chart.getBoundingClientRect().left + this.gutter;
    return this.range.from + ((event.clientX - left) / (this.chart.clientWidth - this.gutter)) * this.range.span;
  }
  hover(event) {
    this.cursor = Math.min(Math.max(this.timeAt(event), this.range.from), this.range.to);
    this.placeCursor();
    if (this.hovering) return;
    this.hovering = requestAnimationFrame(() => {
      this.hovering = 0;
      this.showCursor();
    });
  }
  step(count) {
    const {time} = this.plays[this.shownPlay].images;
    if (!time.length) return;
    const row = Math.min(Math.max(rowAt(time, this.cursor ?? this.range.from) + count, 0), time.length - 1);
    this.cursor = time[row];
    if (this.cursor < this.range.from || this.cursor > this.range.to)
      this.range.show(this.cursor - this.range.span / 2, this.cursor + this.range.span / 2);
    this.placeCursor();
    this.showCursor();
  }
  placeCursor() {
    const share = this.cursor === null ? -1 : (this.cursor - this.range.from) / this.range.span;
    this.line.hidden = share < 0 || share > 1;
    this.line.style.transform = `translateX(${this.gutter + share * (this.chart.clientWidth - this.gutter)}px)`;
  }
  showCursor() {
    const play = this.plays[this.shownPlay];
    const row = this.cursor === null ? -1 : rowAt(play.images.time, this.cursor);
    this.view.show(play.images, row, this.colours);
    const near = (this.range.span / Math.max(this.width ?? 1, 1)) * 5 * (this.ratio ?? 1);
    const here = this.cursor === null ? [] : this.plays.flatMap((one) =>
      [...one.disturbances, ...one.writes, ...one.labels].filter((item) =>
        item.start - near <= this.cursor && item.end + near >= this.cursor).map((item) => item.text));
    const touches = this.cursor === null ? [] : this.plays.flatMap((one) =>
      one.touches.filter((touch) => touch.start <= this.cursor && touch.end >= this.cursor));
    this.view.say([
      ["time", this.cursor === null ? "point at the chart" : secondsText(this.cursor)],
      ...factsOf(this.surface, play, row),
      ["touch", touches.map((touch) => `${touch.number} ${touch.outcome}`).join(", ") || "none"],
      ["here", [...new Set(here)].slice(0, 4).join("; ") || "–"],
    ]);
  }

  // Touches.

  click(event) {
    const y = event.clientY - this.chart.getBoundingClientRect().top;
    const lane = this.boxes.find(({box}) => y >= box.y - 4 && y < box.y + box.height + 4)?.row;
    const near = (this.range.span / this.width) * 4 * this.ratio;
    const nearest = (items) => items.filter((item) => item.start - near <= this.cursor && item.end + near >= this.cursor)
      .sort((a, b) => (order[b.outcome] ?? 0) - (order[a.outcome] ?? 0) || (a.end - a.start) - (b.end - b.start))[0];
    const own = lane?.items?.[0]?.heading || lane?.title === "otherwise" ? nearest(lane.items) : undefined;
    const touch = own?.touch ?? own ?? nearest(this.plays[this.shownPlay].touches);
    if (touch) this.select(touch);
    else this.unselect();
  }
  select(touch) {
    this.selected = touch;
    this.range.reveal(touch.start, touch.end);
    this.explanation.show(touch, this.plays);
    this.cursor = touch.start;
    this.showCursor();
    this.changed();
  }
  unselect() {
    this.selected = null;
    this.explanation.clear();
    this.changed();
  }
  // To the next or previous touch of the first play (of both, where it may be in the second alone) that is wanted.
  go(direction, isWanted) {
    const touches = this.plays.flatMap((play) => play.touches.filter((touch) =>
      (play.number === 0 || !touch.other || isWanted === isCancelled) && isWanted(touch)))
      .sort((a, b) => a.start - b.start || a.play - b.play);
    const at = touches.indexOf(this.selected);
    const from = this.selected ? this.selected.start : direction > 0 ? this.range.from : this.range.to;
    const next = at >= 0 ? touches[at + direction] : direction > 0
      ? touches.find((touch) => touch.start >= from) : touches.findLast((touch) => touch.start <= from);
    if (next) this.select(next);
  }

  switchPixels() {
    this.pixelKind = this.pixelKind === "pads" ? "groups" : "pads";
    this.layOut();
  }
  switchPlay() {
    if (this.plays.length < 2) return;
    this.shownPlay = 1 - this.shownPlay;
    this.layOut();
    this.showCursor();
  }
}

const isCancelled = (touch) => touch.outcome === "cancel";
const isChanged = (touch) => Boolean(touch.change);
