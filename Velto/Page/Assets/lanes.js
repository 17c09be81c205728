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

const order = {tap: 0, hold: 1, unfinished: 2, cancel: 3}; // what did not work is never hidden

function drawTouches(g, box, {range, colours, texts, selected}, touches) {
  const shown = [];
  for (const touch of touches) {
    const extent = extentOf(touch, box, range);
    if (extent) shown.push([touch, extent]);
  }
  shown.sort(([a], [b]) => order[a.outcome] - order[b.outcome]);
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

// What the host saw: a hold is a bar of the regions that it went through, a tap a disc, a cancel a cross.
function drawGestures(g, box, {range, colours, texts}, gestures) {
  const middle = box.y + box.height / 2;
  let free = box.x; // for the next text
  for (const gesture of gestures) {
    const extent = extentOf(gesture, box, range);
    if (!extent) continue;
    const {x, width} = extent;
    const name = gesture.region ?? "None";
    g.fillStyle = g.strokeStyle = colours[name];
    if (gesture.kind === "hold") {
      g.fillRect(x, middle - 5, width, 10);
      if (width > 70) texts.put(name, x + 4, box.y + 3, "tag region", width - 8);
    } else if (gesture.kind === "tap" && box.width / range.span < 8) {
      g.fillRect(x, middle - 5, leastWidth, 10);
    } else if (gesture.kind === "tap") {
      g.beginPath();
      g.arc(x, middle, 5, 0, 7);
      g.fill();
      if (box.width / range.span > 60 && x > free) texts.put(name, x + 8, box.y + 3, "plain");
      free = Math.max(free, x + 76);
    } else if (gesture.kind === "cancel") {
      g.strokeStyle = colours.cancel;
      g.lineWidth = 2;
      g.beginPath();
      for (const side of [-4, 4]) {
        g.moveTo(x - 4, middle - side);
        g.lineTo(x + 4, middle + side);
      }
      g.stroke();
      g.lineWidth = 1;
    } else {
      g.fillStyle = colours.soft;
      g.fillRect(x, box.y + 4, 1, box.height - 8);
    }
  }
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

function drawBars(g, box, {range, colours, texts}, items) {
  for (const item of items) {
    const extent = extentOf(item, box, range);
    if (!extent) continue;
    g.strokeStyle = g.fillStyle = colours.soft;
    g.globalAlpha = 0.18;
    g.fillRect(extent.x, box.y + 3, extent.width, box.height - 6);
    g.globalAlpha = 1;
    g.strokeRect(extent.x + 0.5, box.y + 3.5, Math.max(extent.width - 1, 1), box.height - 7);
    if (extent.width > 40) texts.put(item.text, extent.x + 4, box.y + 3, "plain", extent.width - 8);
  }
}

// Points in time, a shape a kind: {kind, start, end, text}.
function drawMarks(g, box, {range, colours}, items) {
  for (const item of items) {
    const extent = extentOf(item, box, range);
    if (!extent) continue;
    const {x} = extent, middle = box.y + box.height / 2;
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
  for (const item of items) {
    const extent = extentOf(item, box, range);
    if (!extent || item.kind === "invalid") continue;
    if (item.kind === "gap") hatch(g, extent.x, box.y, extent.width, box.height, colours.soft, 1);
    g.fillStyle = colours.cancel;
    g.fillRect(extent.x + (item.kind === "gap" ? extent.width - 1 : 0), box.y, 1, box.height);
  }
  g.globalAlpha = 1;
}
