// What the data says of a play, as the page needs it.

// Columns are read, times in seconds.
async function readPlay(data, number) {
  const inSeconds = (item) => ({...item, start: (item.startNs ?? item.ns) / 1e9, end: (item.endNs ?? item.ns) / 1e9});
  const images = await readImages(data.images);
  const touches = data.touches.map((touch) => ({...inSeconds(touch), play: number}));
  const end = data.durationNs / 1e9;
  const accel = {rows: data.accel.rows, time: await readTimes(data.accel.ns, data.accel.rows),
                 axes: await readAll(data.accel.axes, readFloats, data.accel.rows)};
  const labels = data.labels.map((label) => ({...inSeconds(label), play: number, text: labelText(label),
    ofTouch: touches.find((touch) => touch.number === label.ofTouch)}));
  const writes = data.writes.map((write) => ({...inSeconds(write), kind: "setting", isFaint: write.isLeftOut,
    text: `${write.key} = ${write.value}${write.isLeftOut ? " (left out)" : ""}`}));
  const disturbances = data.disturbances.map((one) => {
    const item = inSeconds(one);
    const before = one.kind === "gap" ? rowAt(images.time, item.start - 1e-9) : -1;
    return before < 0 ? item : {...item, start: images.time[before]};
  });
  const settings = data.settings.map(([key, value]) => `${key}=${value}`).join("  ");
  return {...data, number, images, end, touches, accel, labels, writes, disturbances, settings,
          gestures: gesturesOf(data.gestures)};
}

function labelText({gesture, region, endRegion, result, isRight}) {
  const wrong = result.replace(/[A-Z]/, (letter) => " " + letter.toLowerCase());
  return [isRight ? "" : wrong + ":", gesture, region === "None" ? "" : region, endRegion ? `to ${endRegion}` : ""]
    .filter(Boolean).join(" ");
}

// Touches that belong together know each other, as labels do; what is decided otherwise is known of both.
function joinTouches(plays, pairs) {
  if (plays.length < 2) return [];
  if (plays[0].file === plays[1].file)
    plays[0].labels.forEach((label, i) => ([label.other, plays[1].labels[i].other] = [plays[1].labels[i], label]));
  const [ofA, ofB] = plays.map((play) => new Map(play.touches.map((touch) => [touch.number, touch])));
  const changes = [];
  for (const [a, b, change] of pairs) {
    const touches = [ofA.get(a), ofB.get(b)].filter(Boolean);
    if (touches.length === 0) continue;
    if (touches.length === 2) [touches[0].other, touches[1].other] = [touches[1], touches[0]];
    if (change === "same") continue;
    for (const touch of touches) touch.change = change;
    changes.push({kind: "change", start: touches[0].start, end: touches[0].start, text: `decided otherwise: ${change}`,
                  touch: touches[0]});
  }
  return changes;
}

// `shown` is the part that is shown, in nanoseconds; null if that is all.
function summaryOf({touches, disturbances, images, end}, shown) {
  const touch = (outcome) => touches.filter((one) => one.outcome === outcome).length;
  const many = (kind) => disturbances.filter((one) => one.kind === kind).length;
  const unfinished = touch("unfinished");
  const part = shown ? `${secondsText(shown[0] / 1e9, 2)} to ${secondsText(Math.min(shown[1] / 1e9, end), 2)} of ` : "";
  return `${part}${secondsText(end, 2)}, ${plural(images.count - images.resets.length, "image")}. ` +
    `${plural(touches.length, "touch", "touches")}: ` +
    `${plural(touch("tap"), "tap")}, ${plural(touch("hold"), "hold")}, ${touch("cancel")} that became no gesture` +
    (unfinished ? `, ${unfinished} unfinished` : "") +
    `. ${plural(many("gap"), "gap")}, ${plural(many("reset"), "reset")}, ${plural(many("invalid"), "invalid report")}.`;
}
