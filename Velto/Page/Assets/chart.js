// Rows above each other that share a time axis, drawn upon one canvas. Rows are given the chart itself: its range,
// colours, texts, the selected touch, and the rows of images that each column of pixels shows, by play.

class Chart {
  // `attributes` are its element's; `drawn` is called after each drawing.
  constructor(plays, attributes, drawn = () => {}) {
    Object.assign(this, {plays, drawn, shownPlay: 0, cursor: null, selected: null, rows: []});
    this.texts = new Texts();
    this.picture = new Picture();
    const times = plays.flatMap(({images, end}) => (images.count ? [images.time[0], images.time[images.count - 1]] : [0, end]));
    this.range = new TimeRange(Math.min(...times), Math.max(...times), () => this.changed());
    this.canvas = element("canvas", {"aria-hidden": "true"});
    this.line = element("div", {class: "cursor", hidden: ""});
    this.titles = element("div", {class: "titles", "aria-hidden": "true"});
    this.node = element("div", {class: "chart", ...attributes}, this.canvas, this.titles, this.texts.layer, this.line);
    this.themed();
    darkTheme.addEventListener("change", () => this.themed());
    new ResizeObserver(() => this.layOut()).observe(this.node);
  }

  show(rows) {
    this.rows = rows;
    this.layOut();
  }
  themed() {
    this.colours = themeColours();
    this.changed();
  }

  layOut() {
    const width = this.node.clientWidth;
    if (!width) return;
    this.gutter = width < 600 ? 68 : 84;
    this.node.classList.toggle("narrow", width < 600);
    let y = 22; // the axis
    this.boxes = this.rows.map((row) => {
      y += row.marks ? 22 : 0; // its title stands above
      const box = {x: this.gutter, y, width: width - this.gutter, height: row.height};
      y += row.height + 8;
      return box;
    });
    this.ratio = devicePixelRatio || 1;
    this.canvas.width = Math.round(width * this.ratio);
    this.canvas.height = Math.round(y * this.ratio);
    this.width = Math.max(1, Math.round((width - this.gutter) * this.ratio)); // of the plot, in the device's pixels
    this.picture.resize(this.width, this.canvas.height);
    this.node.style.height = `${y}px`;
    this.titles.replaceChildren(...this.rows.flatMap((row, i) => this.titlesOf(row, this.boxes[i])));
    this.plot = {x: this.gutter, y: 20, width: width - this.gutter, height: y - 20};
    this.draw(); // at once: a new size has cleared the canvas
  }
  titlesOf(row, box) {
    const title = (text, y, kind) => {
      const made = element("span", {class: kind, text});
      made.style.transform = `translateY(${Math.round(y)}px)`;
      return made;
    };
    if (row.pixels) {
      const step = row.height / row.pixels.length;
      return row.pixels.map(({name, region}, i) => title(name, box.y + i * step, `pixel ${region}` + (step < 12 ? " low" : "")));
    }
    if (!row.marks) return [title(row.title, box.y + 4, "title")];
    const scale = row.scaleIn(box);
    return [title(row.title, box.y - 23, "title over"),
      ...row.marks.map((mark) => title(mark.text, scale(mark.value) - 7, "mark"))];
  }

  changed() {
    this.drawing ||= requestAnimationFrame(() => this.draw());
  }

  draw() {
    cancelAnimationFrame(this.drawing);
    this.drawing = 0;
    if (!this.boxes) return;
    const {range, picture, plot} = this, g = this.canvas.getContext("2d");
    this.columns = this.plays.map(({images, end}) => rowsByColumn(images.time, range.from, range.to, this.width, end));
    picture.words.fill(0);
    this.rows.forEach((row, i) => row.paint?.(picture, {y: Math.round(this.boxes[i].y * this.ratio),
      height: Math.round(this.boxes[i].height * this.ratio)}, this));
    g.setTransform(1, 0, 0, 1, 0, 0);
    g.clearRect(0, 0, this.canvas.width, this.canvas.height);
    g.putImageData(picture.image, this.canvas.width - this.width, 0);
    g.setTransform(this.ratio, 0, 0, this.ratio, 0, 0);
    this.texts.begin();
    this.drawAxis(g, plot);
    g.save();
    g.beginPath();
    g.rect(plot.x, 0, plot.width, plot.y + plot.height);
    g.clip();
    g.globalCompositeOperation = "destination-over"; // the map keeps its colours
    this.drawSelected(g, plot);
    g.globalCompositeOperation = "source-over";
    this.rows.forEach((row, i) => row.draw?.(g, this.boxes[i], this, row.items));
    const lanes = this.rows.findIndex((row) => row.items);
    drawInterruptions(g, {...plot, height: this.boxes[lanes].y - 8 - plot.y}, this, this.plays[this.shownPlay].disturbances);
    g.restore();
    this.texts.end();
    this.placeCursor();
    this.drawn();
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
    const extent = this.selected && extentOf(this.selected, box, this.range);
    if (!extent) return;
    g.fillStyle = this.colours.select;
    g.globalAlpha = 0.2;
    g.fillRect(extent.x, box.y, extent.width, box.height);
    g.globalAlpha = 1;
  }

  // The cursor, and what is near it: within some pixels.

  timeAt(event) {
    const left = this.node.getBoundingClientRect().left + this.gutter;
    return this.range.from + ((event.clientX - left) / this.plot.width) * this.range.span;
  }
  rowAtHeight(event) {
    const y = event.clientY - this.node.getBoundingClientRect().top;
    return this.rows.find((_, i) => y >= this.boxes[i].y - 4 && y < this.boxes[i].y + this.boxes[i].height + 4);
  }
  placeCursor() {
    const share = this.cursor === null ? -1 : (this.cursor - this.range.from) / this.range.span;
    this.line.hidden = share < 0 || share > 1;
    this.line.style.transform = `translateX(${this.gutter + share * this.plot.width}px)`;
  }
  near(items, pixels) {
    if (this.cursor === null) return [];
    const within = (this.range.span / this.plot.width) * pixels;
    return items.filter(({start, end}) => start - within <= this.cursor && end + within >= this.cursor);
  }
}
