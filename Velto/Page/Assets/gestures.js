// Zoom and pan of a chart with drag, pinch and wheel; a press without a drag is a click.

// `timeAt(event)` is the time below a pointer. Calls `hover(event)` and `click(event)`.
function followPointers(chart, range, timeAt, hover, click) {
  const pointers = new Map();
  let dragged = false;
  const held = () => [...pointers.values()];

  chart.addEventListener("pointerdown", (event) => {
    if (event.button !== 0) return;
    pointers.set(event.pointerId, {event, time: timeAt(event)});
    chart.setPointerCapture(event.pointerId);
    dragged = pointers.size > 1;
  });
  chart.addEventListener("pointermove", (event) => {
    const pointer = pointers.get(event.pointerId);
    if (!pointer) return hover(event);
    if (!dragged && Math.abs(event.clientX - pointer.event.clientX) < 4) return;
    dragged = true;
    pointer.event = event;
    const [one, other] = held();
    if (!other) {
      const shift = one.time - timeAt(event);
      range.show(range.from + shift, range.to + shift);
      return;
    }
    // Both times stay below their fingers.
    const distance = timeAt(other.event) - timeAt(one.event);
    if (Math.abs(distance) < 1e-9 || (other.time - one.time) / distance <= 0) return;
    const scale = (other.time - one.time) / distance;
    const from = one.time - (timeAt(one.event) - range.from) * scale;
    range.show(from, from + range.span * scale);
  });
  const lift = (event) => {
    if (!pointers.delete(event.pointerId)) return;
    for (const pointer of held()) pointer.time = timeAt(pointer.event);
    if (!dragged && event.type === "pointerup") {
      hover(event);
      click(event);
    }
  };
  chart.addEventListener("pointerup", lift);
  chart.addEventListener("pointercancel", lift);

  // Without Ctrl the page scrolls.
  chart.addEventListener("wheel", (event) => {
    if (!event.ctrlKey) return;
    event.preventDefault();
    range.zoom(Math.exp(event.deltaY * (event.deltaMode ? 0.06 : 0.002)), timeAt(event));
  }, {passive: false});
}

// Keys of the whole page: a list of [keys, what they do, action].
function followKeys(keys) {
  const actions = new Map(keys.flatMap(([names, , action]) => names.map((name) => [name, action])));
  document.addEventListener("keydown", (event) => {
    if (event.ctrlKey || event.metaKey || event.altKey || document.querySelector("dialog[open]")) return;
    const action = actions.get((event.shiftKey && event.key.startsWith("Arrow") ? "Shift+" : "") + event.key);
    if (!action) return;
    event.preventDefault();
    action();
  });
}

function helpDialog(keys) {
  const rows = keys.map(([names, what]) =>
    element("tr", {}, element("td", {}, ...names.flatMap((name) => [element("kbd", {text: keyText(name)}), " "])),
      element("td", {text: what})));
  const dialog = element("dialog", {"aria-label": "Keys"}, element("h2", {text: "Keys"}),
    element("table", {}, element("tbody", {}, ...rows)),
    element("p", {text: "Drag or pinch the chart, or turn the wheel with Ctrl held. A click on a touch explains it."}),
    element("form", {method: "dialog"}, element("button", {text: "Close"})));
  document.body.append(dialog);
  return dialog;
}

const keyText = (name) =>
  name.replace("ArrowLeft", "←").replace("ArrowRight", "→").replace("Shift+", "Shift ");
