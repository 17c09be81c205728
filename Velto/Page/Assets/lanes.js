// Lanes: what happened when. Items have a start and an end in seconds.

const leastWidth = 3; // so that the shortest touch is seen in the longest recording

// Left edge and width of an item; nothing if it is not in view.
function extentOf(item, box, range) {
  const scale = box.width / range.span;
  const x = box.x + (item.start - range.from) * scale;
  const width = Math.max((item.end - item.start) * scale, leastWidth);
  if (x > box.x + box.width || x + width < box.x) return null;
  const left = Math.max(x, box.x - 2);
  return {x: left, width: Math.min(x + width, box.x + box.width + 2) - left};
}

// Those in view, each with its extent.
const inView = (items, box, range) =>
  items.map((item) => [item, extentOf(item, box, range)]).filter(([, extent]) => extent);

const order = {tap: 0, hold: 1, unfinished: 2, cancel: 3}; // what did not work is never hidden

function drawTouches(g, box, {range, colours, texts, selected}, touches) {
  const shown = inView(touches, box, range).sort(([a], [b]) => order[a.outcome] - order[b.outcome]);
  for (const [touch, {x, width}] of shown) {
    const y = box.y + 2, height = box.height - 4;
    g.fillStyle = colours[touch.outcome];
    g.fillRect(x, y, width > leastWidth ? width - 1 : width, height);
    if (touch.outcome === "cancel" || touch.outcome === "unfinished")
      hatch(g, x, y, width, height, colours.panel, touch.outcome === "cancel" ? 1 : -1);
    if (touch.outcome === "hold") {
      g.fillStyle = colours.panel;
      g.fillRect(x + 1, y + height - 4, Math.max(width - 2, 0), 1.5);
    }
    if (touch === selected) {
      g.strokeStyle = colours.select;
      g.lineWidth = 2;
      g.strokeRect(x - 1, y - 1, width + 2, height + 2);
      g.lineWidth = 1;
    }
    if (width > 46) texts.put(`${touch.number} ${touch.outcome}`, x + 4, y + 1, "tag " + touch.outcome, width - 8);
  }
}

function hatch(g, x, y, width, height, colour, slope) {
  if (width < 5) return;
  g.save();
  g.beginPath();
  g.rect(x, y, width, height);
  g.clip();
  g.strokeStyle = colour;
  g.globalAlpha = 0.55;
  g.lineWidth = 1.5;
  g.beginPath();
  for (let at = x - height - ((x * slope) % 6); at < x + width + height; at += 6) {
    g.moveTo(at, slope > 0 ? y + height : y);
    g.lineTo(at + height, slope > 0 ? y : y + height);
  }
  g.stroke();
  g.restore();
}

// What the host saw: a hold is a bar of the regions that it went through, a tap a disc, a cancel a cross. A name stands
// where there is room until the next one.
function drawGestures(g, box, {range, colours, texts}, gestures) {
  const middle = box.y + box.height / 2, scale = box.width / range.span;
  const shown = inView(gestures, box, range);
  shown.forEach(([gesture, {x, width}], i) => {
    const name = gesture.region ?? "None", room = (shown[i + 1]?.[1].x ?? box.x + box.width) - x;
    g.fillStyle = g.strokeStyle = colours[name];
    if (gesture.kind === "hold") {
      g.fillRect(x, middle - 5, width, 10);
      if (Math.min(width, room) > 70) texts.put(name, x + 4, box.y + 3, "tag region", Math.min(width, room) - 8);
    } else if (gesture.kind === "tap" && scale < 8) {
      g.fillRect(x, middle - 5, leastWidth, 10);
    } else if (gesture.kind === "tap") {
      g.beginPath();
      g.arc(x, middle, 5, 0, 7);
      g.fill();
      if (room > 84) texts.put(name, x + 8, box.y + 3, "plain");
    } else if (gesture.kind === "cancel") {
      g.fillStyle = colours.cancel;
      g.font = "bold 18px sans-serif";
      g.fillText("×", x - 5, middle + 6);
    } else {
      g.fillStyle = colours.soft;
      g.fillRect(x, box.y + 4, 1, box.height - 8);
    }
  });
}

// Events of the host become bars: a hold lasts from its start over each change of region to its end.
function gesturesOf(events) {
  const gestures = [];
  let hold = null;
  for (const {ns, kind, region} of events) {
    const at = ns / 1e9;
    if (hold && kind.startsWith("hold")) hold.end = at;
    if (kind === "holdStart" || kind === "holdChange") gestures.push((hold = {kind: "hold", region, start: at, end: at}));
    else if (kind === "holdEnd") hold = null;
    else gestures.push({kind, region, start: at, end: at});
  }
  return gestures;
}

// What was meant; what went wrong stands out, and is never hidden.
function drawLabels(g, box, {range, colours, texts}, labels) {
  const y = box.y + 3, height = box.height - 6;
  for (const [label, {x, width}] of inView(labels, box, range).sort(([a], [b]) => b.isRight - a.isRight)) {
    g.strokeStyle = g.fillStyle = label.isRight ? colours.soft : colours.cancel;
    g.globalAlpha = label.isRight ? 0.18 : 0.4;
    g.fillRect(x, y, width, height);
    g.globalAlpha = 1;
    if (!label.isRight) hatch(g, x, y, width, height, colours.cancel, 1);
    g.strokeRect(x + 0.5, y + 0.5, Math.max(width - 1, 1), height - 1);
    if (width > 60) texts.put(label.text, x + 4, y, label.isRight ? "plain" : "tag", width - 8);
  }
}

// Points in time, a shape a kind: {kind, start, end, text}.
function drawMarks(g, box, {range, colours}, items) {
  const middle = box.y + box.height / 2;
  for (const [item, {x}] of inView(items, box, range)) {
    const shape = {reset: [[0, -7], [6, 5], [-6, 5]], invalid: [[0, 6], [6, -5], [-6, -5]],
                   gap: [[-5, -5], [5, -5], [5, 5], [-5, 5]]}[item.kind] ?? [[0, -6], [5, 0], [0, 6], [-5, 0]];
    g.fillStyle = item.kind === "setting" || item.kind === "change" ? colours.ink : colours.cancel;
    if (item.isFaint) g.fillStyle = colours.soft;
    g.beginPath();
    for (const [dx, dy] of shape) g.lineTo(x + dx, middle + dy);
    g.fill();
  }
}

// Across map and traces: where images are missing, and resets.
function drawInterruptions(g, box, {range, colours}, items) {
  g.globalAlpha = 0.6;
  for (const [{kind}, {x, width}] of inView(items, box, range)) {
    if (kind === "invalid") continue;
    if (kind === "gap") hatch(g, x, box.y, width, box.height, colours.soft, 1);
    g.fillStyle = colours.cancel;
    g.fillRect(x + (kind === "gap" ? width - 1 : 0), box.y, 1, box.height);
  }
  g.globalAlpha = 1;
}
