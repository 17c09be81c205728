// The highest, the lowest or all bits of any stretch of a column in a few steps: each level holds the result of four
// neighbours of the level below. Nothing is sampled, so that no short touch is lost at any zoom.

const highest = {none: -Infinity, of: (a, b) => (a >= b ? a : b >= a ? b : a !== a ? b : a)};
const lowest = {none: Infinity, of: (a, b) => (a <= b ? a : b <= a ? b : a !== a ? b : a)};
const anyBit = {none: 0, of: (a, b) => a | b};

class Pyramid {
  // What is no number counts as nothing.
  constructor(column, kind) {
    this.kind = kind;
    this.levels = [column];
    for (let below = column; below.length > 16; below = this.levels[this.levels.length - 1]) {
      const level = new column.constructor(Math.ceil(below.length / 4));
      for (let i = 0, k = 0; k < level.length; ++k, i += 4) {
        let value = below[i];
        const end = Math.min(i + 4, below.length);
        for (let j = i + 1; j < end; ++j) value = kind.of(value, below[j]);
        level[k] = value;
      }
      this.levels.push(level);
    }
  }

  // Of the rows from `first` to `last`, both included.
  over(first, last) {
    const {none, of} = this.kind;
    let value = none;
    for (let depth = 0; ; ++depth) {
      const level = this.levels[depth];
      if (last - first < 8 || depth + 1 === this.levels.length) {
        for (let i = first; i <= last; ++i) value = of(value, level[i]);
        return value;
      }
      while (first & 3) value = of(value, level[first++]);
      while ((last & 3) !== 3) value = of(value, level[last--]);
      first >>= 2;
      last >>= 2;
    }
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
