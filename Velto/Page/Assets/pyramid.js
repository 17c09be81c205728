// The highest value of any stretch of a column in a few steps: each level holds that of four neighbours of the level
// below. Nothing is sampled, so that no short touch is lost at any zoom. What is no number counts as nothing.

class Pyramid {
  constructor(column) {
    this.levels = [column];
    for (let below = column; below.length > 16; below = this.levels[this.levels.length - 1]) {
      const level = new column.constructor(Math.ceil(below.length / 4));
      for (let k = 0; k < level.length; ++k) {
        let value = -Infinity;
        for (let i = 4 * k, end = Math.min(i + 4, below.length); i < end; ++i) if (below[i] > value) value = below[i];
        level[k] = value;
      }
      this.levels.push(level);
    }
  }

  // Of the rows from `first` to `last`, both included.
  over(first, last) {
    let value = -Infinity;
    for (let depth = 0; ; ++depth) {
      const level = this.levels[depth];
      if (last - first < 8 || depth + 1 === this.levels.length) {
        for (let i = first; i <= last; ++i) if (level[i] > value) value = level[i];
        return value;
      }
      for (; first & 3; ++first) if (level[first] > value) value = level[first];
      for (; (last & 3) !== 3; --last) if (level[last] > value) value = level[last];
      first >>= 2;
      last >>= 2;
    }
  }

  get highest() {
    return this.over(0, this.levels[0].length - 1);
  }
}

// The place of the last row at or before a time; -1 before the first.
function rowAt(times, time) {
  let low = 0, high = times.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (times[middle] <= time) low = middle + 1;
    else high = middle;
  }
  return low - 1;
}

// The rows that each of `width` columns of pixels shows, first and last, since a row lasts until the next; none (last <
// first) before the first row and behind `end`.
function rowsByColumn(times, from, to, width, end) {
  const first = new Int32Array(width), last = new Int32Array(width);
  for (let x = 0, row = rowAt(times, from); x < width; ++x) {
    const isBehind = from + ((to - from) * x) / width > end;
    first[x] = Math.max(row, 0);
    row = rowAt(times, from + ((to - from) * (x + 1)) / width);
    last[x] = isBehind ? -1 : row;
  }
  return {first, last, width};
}
