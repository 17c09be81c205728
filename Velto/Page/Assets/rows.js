// The rows of a chart of recordings: {title, height, and what draws it}. Maps and traces paint the pixels of a picture,
// lanes draw shapes; `pixels` and `marks` have titles of their own.

const regionSequence = ["PlayPause", "VolumeUp", "VolumeDown", "None"];

// The maps of all plays, of "pads" or "groups"; one scale for all.
function heatRows(plays, surface, kind) {
  const isPads = kind === "pads";
  const names = isPads ? surface.padRegions.map((_, pad) => padLetter(pad)) : surface.groups;
  const regions = isPads ? surface.padRegions : names.map(() => "None");
  const sequence = regionSequence.flatMap((region) => regions.flatMap((own, i) => (own === region ? [i] : [])));
  const bitOf = (words, i) => Uint8Array.from(words, (word) => (word >> i) & 1);
  const pixels = plays.map(({images}) => sequence.map((i) => ({name: names[i], region: regions[i],
    value: new Pyramid(images[kind][i]), on: new Pyramid(bitOf(images[kind + "On"], i))})));
  const top = Math.max(surface.noise, ...pixels.flat().map((pixel) => pixel.value.highest));
  return pixels.map((own, play) => new HeatRow(own, top, play, isPads ? 14 : 11));
}

// The first play lies on top, the second shows where it differs.
function signalRow(plays, surface) {
  const highest = (column) => Math.max(3 * surface.noise, ...plays.map(({images}) => new Pyramid(images[column]).highest));
  const top = highest("signal"); // a level that is not reached is seen too, but for one that is far above
  const row = new TraceRow("strongest", 110, 0, Math.max(top, Math.min(highest("onLevel"), 2 * top)) * 1.08,
    [{value: surface.noise, text: `noise ${surface.noise}`, colour: "noise"}, {value: top, text: `${top}`, colour: "faint"}]);
  for (const {images, number} of [...plays].reverse())
    row.add(new Trace(images.signal, number ? "second" : "signal", number ? "line" : "area"), number);
  for (const {images, number} of plays)
    row.add(new Trace(images.onLevel, "on", "bound"), number).add(new Trace(images.offLevel, "off", "bound"), number);
  return row;
}

function scoreRow(plays, {scoreLimit, holdScore}) {
  const row = new TraceRow("touch score", 76, -scoreLimit * 1.15, scoreLimit * 1.15, [
    {value: scoreLimit, text: `limit ${scoreLimit}`, colour: "soft"},
    {value: holdScore, text: `hold ≥ ${holdScore}`, colour: "on"},
    {value: -scoreLimit, text: `limit ${-scoreLimit}`, colour: "soft"}]);
  for (const {images, number} of [...plays].reverse())
    row.add(new Trace(images.touchScore, number ? "second" : "score"), number);
  return row;
}

function accelRow({accel: {axes, time}}, title) {
  const finite = (value) => (Number.isFinite(value) ? Math.abs(value) : 0);
  const most = Math.max(1e-3, ...axes.map((axis) => new Pyramid(axis.map(finite)).highest));
  const row = new TraceRow(title, 64, -most * 1.1, most * 1.1, [{value: 0, text: "0", colour: "soft"},
    {value: most, text: most.toFixed(2), colour: "faint"}, {value: -most, text: (-most).toFixed(2), colour: "faint"}]);
  axes.forEach((axis, i) => row.add(new Trace(axis, regionSequence[i])));
  row.times = time;
  return row;
}

// Touches, gestures and labels of each play below each other; what belongs to a recording once.
function laneRows(plays, changes) {
  const rows = [], recordings = plays.filter(({file}, i) => i === 0 || file !== plays[0].file);
  const lane = (title, items, draw) => rows.push({title, items, draw, height: 24});
  const named = (title, {number}, all) => (all.length > 1 ? `${title} ${number + 1}` : title);
  for (const play of plays) lane(named("touches", play, plays), play.touches, drawTouches);
  if (plays.length > 1) lane("otherwise", changes, drawMarks);
  for (const play of plays) lane(named("gestures", play, plays), play.gestures, drawGestures);
  for (const play of plays) if (play.labels.length) lane(named("labels", play, plays), play.labels, drawLabels);
  for (const play of recordings) {
    const title = (text) => named(text, play, recordings);
    if (play.writes.length) lane(title("settings"), play.writes, drawMarks);
    if (play.disturbances.length) lane(title("trouble"), play.disturbances, drawMarks);
    if (play.accel.rows) rows.push(accelRow(play, title("accel x y z")));
  }
  return rows;
}
