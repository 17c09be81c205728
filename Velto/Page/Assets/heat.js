// The map of signals: a row a pad or group, colour for the strongest signal of each column of pixels, and below it a
// line where it is on.

const heatLines = 7; // of a row: five of colour, the line, and room

class HeatRow {
  constructor(pixels, top) {
    this.pixels = pixels; // [{name, region, value: Pyramid, on: Pyramid, bit}]
    this.top = top;
    this.canvas = document.createElement("canvas");
  }

  draw(g, box, columns, colours) {
    const {width, first, last} = columns, height = this.pixels.length * heatLines;
    if (this.canvas.width !== width || this.canvas.height !== height) {
      this.canvas.width = width;
      this.canvas.height = height;
      this.image = this.canvas.getContext("2d").createImageData(width, height);
      this.words = new Uint32Array(this.image.data.buffer);
    }
    const {words} = this, heat = colours.heat.words;
    const on = wordOf(colours.on), none = 0;
    const colour = new Uint32Array(width), line = new Uint32Array(width);
    this.pixels.forEach((pixel, row) => {
      for (let x = 0; x < width; ++x) {
        const isShown = last[x] >= first[x];
        colour[x] = isShown ? heat[heatOf(pixel.value.over(first[x], last[x]), this.top)] : none;
        line[x] = isShown && (pixel.on.over(first[x], last[x]) >> pixel.bit) & 1 ? on : colour[x];
      }
      const at = row * heatLines * width;
      for (let k = 0; k < heatLines - 1; ++k) words.set(k < heatLines - 2 ? colour : line, at + k * width);
      words.fill(none, at + (heatLines - 1) * width, at + heatLines * width);
    });
    this.canvas.getContext("2d").putImageData(this.image, 0, 0);
    g.imageSmoothingEnabled = false;
    g.drawImage(this.canvas, box.x, box.y, box.width, box.height);
  }
}

// "#rrggbb" as a word of a canvas.
function wordOf(text) {
  const rgb = parseInt(text.slice(1), 16);
  return ((255 << 24) | ((rgb & 255) << 16) | (rgb & 0xff00) | (rgb >> 16)) >>> 0;
}
