// Columns of numbers, as Velto/Page/Column.h writes them.

async function inflated(base64) {
  const text = atob(base64);
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < text.length; ++i) bytes[i] = text.charCodeAt(i);
  const stream = new Blob([bytes]).stream().pipeThrough(new DecompressionStream("deflate"));
  return new Uint8Array(await new Response(stream).arrayBuffer());
}

// The numbers' words: a byte of each place after the other.
function wordsIn(bytes, count) {
  const words = new Uint32Array(count);
  for (let place = 0; place < 4; ++place) {
    const plane = bytes.subarray(place * count, (place + 1) * count);
    for (let i = 0; i < count; ++i) words[i] |= plane[i] << (8 * place);
  }
  return words;
}

function unzigzag(words) {
  const values = new Int32Array(words.buffer);
  for (let i = 0; i < words.length; ++i) values[i] = (words[i] >>> 1) ^ -(words[i] & 1);
  return values;
}

const readBytes = inflated;

async function readFloats(column, count) {
  return new Float32Array(wordsIn(await inflated(column), count).buffer);
}

async function readIntegers(column, count) {
  return unzigzag(wordsIn(await inflated(column), count));
}

async function readCounters(column, count) {
  const differences = unzigzag(wordsIn(await inflated(column), count));
  const values = new Uint32Array(count);
  for (let i = 0, sum = 0; i < count; ++i) values[i] = sum = (sum + differences[i]) >>> 0;
  return values;
}

// In seconds; a time is exact in nanoseconds before it is divided, up to 104 days.
async function readTimes(column, count) {
  const bytes = await inflated(column);
  const low = wordsIn(bytes, count);
  const high = wordsIn(bytes.subarray(4 * count), count);
  const seconds = new Float64Array(count);
  for (let i = 0, sum = 0; i < count; ++i) {
    sum += low[i] + high[i] * 2 ** 32;
    seconds[i] = sum / 1e9;
  }
  return seconds;
}

const readAll = (columns, read, count) => Promise.all(columns.map((column) => read(column, count)));
const readAllIntegers = (columns, count) => readAll(columns, readIntegers, count);

// The columns of a play's images, and how each is read.
const imageColumns = [
  ["ns", readTimes], ["frame", readCounters], ["timeMs", readCounters], ["pads", readAllIntegers], ["groups", readAllIntegers],
  ["padsOn", readIntegers], ["groupsOn", readIntegers], ["strongest", readBytes], ["signal", readIntegers],
  ["onLevel", readFloats], ["offLevel", readFloats], ["touchScore", readFloats], ["region", readBytes],
];

async function readImages({rows, resets, ...texts}) {
  const columns = await Promise.all(imageColumns.map(async ([name, read]) => [name, await read(texts[name], rows)]));
  const {ns, ...others} = Object.fromEntries(columns);
  return {count: rows, resets, time: ns, ...others};
}
