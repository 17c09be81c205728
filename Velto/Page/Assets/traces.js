// Lines over time. A column of pixels shows all from the lowest to the highest of its rows, and what leads there from
// the column before: a step stays a step at every zoom.

class Trace {
  constructor(column, colour, kind = "line") {
    this.column = column;
    this.colour = colour;
    this.kind = kind; // "line", "area"
    this.low = new Pyramid(column, lowest);
    this.high = new Pyramid(column, highest);
  }

  draw(g, box, columns, scale, colours) {
    const {first, last, width} = columns, step = box.width / width, bottom = scale(0);
    const thickness = this.kind === "area" ? 1 : 1.5;
    const line = new Path2D(), area = new Path2D();
    let before = NaN;
    for (let x = 0; x < width; ++x) {
      if (last[x] < first[x]) continue;
      let low = this.low.over(first[x], last[x]), high = this.high.over(first[x], last[x]);
      const {column} = this;
      if (low > high) {
        before = NaN; // nothing but what is no number
        continue;
      }
      if (before < low) low = before;
      if (before > high) high = before;
      before = column[last[x]];
      const y = scale(high), left = box.x + x * step;
      line.rect(left, y - thickness / 2, step, scale(low) - y + thickness);
      if (this.kind === "area") area.rect(left, y, step, bottom - y);
    }
    g.fillStyle = colours[this.colour];
    if (this.kind === "area") {
      g.globalAlpha = 0.25;
      g.fill(area);
      g.globalAlpha = 1;
    }
    g.fill(line);
  }
}

// A row of traces with marks at values that mean something: [{value, text, colour}].
class TraceRow {
  constructor(low, high, marks) {
    this.low = low;
    this.high = high;
    this.marks = marks;
    this.traces = [];
  }
  add(trace, play = 0) {
    this.traces.push({trace, play});
    return this;
  }
  scaleIn(box) {
    const {low, high} = this;
    return (value) => {
      const share = (Math.min(Math.max(value, low), high) - low) / (high - low);
      return box.y + box.height - 1 - share * (box.height - 2);
    };
  }
  draw(g, box, columnsOf, colours) {
    const scale = this.scaleIn(box);
    for (const {value, colour} of this.marks) {
      g.strokeStyle = colours[colour];
      g.setLineDash([4, 4]);
      g.beginPath();
      g.moveTo(box.x, scale(value));
      g.lineTo(box.x + box.width, scale(value));
      g.stroke();
    }
    g.setLineDash([]);
    for (const {trace, play} of this.traces) trace.draw(g, box, columnsOf[play], scale, colours);
  }
}
