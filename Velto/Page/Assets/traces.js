// Lines over time. A column of pixels shows all from the lowest to the highest of its rows, and what leads there from
// the column before: a step stays a step at every zoom. Where many rows share a column, their highest and lowest stand
// out, and what lies between is shaded.

const manyRows = 12;

class Trace {
  // `kind`: a line, a bound (nothing is shaded, and only that of the play that is shown), or an area (all below is).
  constructor(column, colour, kind = "line") {
    this.column = column;
    this.colour = colour;
    this.kind = kind;
    this.high = new Pyramid(column);
    this.low = new Pyramid(column.map((value) => -value));
  }

  paint(picture, {first, last, width}, scale, bottom, thickness, colours) {
    const word = colours.words[this.colour], shade = ((word & 0xffffff) | 0x48000000) >>> 0;
    let before = NaN;
    for (let x = 0; x < width; ++x) {
      if (last[x] < first[x]) continue;
      let low = -this.low.over(first[x], last[x]), high = this.high.over(first[x], last[x]);
      if (low > high) {
        before = NaN; // nothing but what is no number
        continue;
      }
      if (before < low) low = before;
      if (before > high) high = before;
      before = this.column[last[x]];
      const y = scale(high), end = scale(low) + thickness;
      const isDense = last[x] - first[x] >= manyRows;
      if (this.kind === "area") picture.column(x, y, bottom, shade);
      else if (isDense && this.kind === "line") picture.column(x, y, end, shade);
      picture.column(x, y, isDense ? y + thickness : end, word);
      if (isDense && this.kind !== "area") picture.column(x, end - thickness, end, word);
    }
  }
}

// A row of traces with marks at values that mean something: [{value, text, colour}]. `times`, if they are set, are the
// traces' own; else those of their plays' images.
class TraceRow {
  constructor(title, height, low, high, marks) {
    Object.assign(this, {title, height, low, high, marks, traces: []});
  }
  add(trace, play = 0) {
    this.traces.push({trace, play});
    return this;
  }
  scaleIn(box) {
    const {low, high} = this;
    return (value) => {
      const share = (Math.min(Math.max(value, low), high) - low) / (high - low);
      return Math.round(box.y + (1 - share) * (box.height - 3));
    };
  }
  paint(picture, box, {columns, colours, range, width, shownPlay}) {
    const {times} = this;
    const columnsOf = times ? [rowsByColumn(times, range.from, range.to, width, times[times.length - 1])] : columns;
    const scale = this.scaleIn(box), bottom = Math.round(box.y + box.height);
    const thickness = Math.max(1, Math.round(1.4 * (devicePixelRatio || 1)));
    for (const {trace, play} of this.traces)
      if (trace.kind !== "bound" || play === shownPlay)
        trace.paint(picture, columnsOf[play], scale, bottom, thickness, colours);
    for (const {value, colour} of this.marks) {
      const at = scale(value) * picture.width;
      for (let x = 0; x < picture.width; ++x) // below the lines
        if ((x & 7) < 4 && picture.words[at + x] >>> 24 < 255) picture.words[at + x] = colours.words[colour];
    }
  }
}
