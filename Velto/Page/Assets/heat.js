// The map of signals: a row a pad or group, colour for the strongest signal of each column of pixels, and below it a
// line where it is on.

class HeatRow {
  // `pixels`: [{name, region, value: Pyramid, on: Pyramid of 0 and 1}].
  constructor(pixels, top, play, step) {
    Object.assign(this, {pixels, top, play, height: pixels.length * step});
  }

  paint(picture, box, {columns, colours}) {
    const {first, last, width} = columns[this.play];
    const heat = colours.heat.words, on = colours.words.on;
    const colour = new Uint32Array(width), line = new Uint32Array(width);
    const step = box.height / this.pixels.length, thickness = Math.max(2, Math.round(step / 6));
    this.pixels.forEach((pixel, row) => {
      for (let x = 0; x < width; ++x) {
        const isShown = last[x] >= first[x];
        colour[x] = isShown ? heat[heatOf(pixel.value.over(first[x], last[x]), this.top)] : 0;
        line[x] = isShown && pixel.on.over(first[x], last[x]) > 0 ? on : colour[x];
      }
      const y = Math.round(box.y + row * step), end = Math.round(box.y + (row + 1) * step) - 1;
      for (let k = y; k < end; ++k) picture.words.set(k < end - thickness ? colour : line, k * width);
    });
  }
}

// The pixels of maps and traces, of the device's size: quicker than shapes, and as exact as a screen can be.
class Picture {
  resize(width, height) {
    this.image = new ImageData(width, height);
    this.words = new Uint32Array(this.image.data.buffer);
    this.width = width;
  }
  column(x, from, to, word) {
    for (let at = from * this.width + x, end = to * this.width; at < end; at += this.width) this.words[at] = word;
  }
}
