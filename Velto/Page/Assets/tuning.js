// A grid of settings: its costs as a map over two sweeps, and the front.

const shortName = (key) => key.slice(key.lastIndexOf(".") + 1);

function showTuning({sweeps, points, front, best, present, text}) {
  document.title = "Tuning – velto";
  const onFront = new Set(front), costs = points.map((point) => point[4]), map = element("div");
  const lowest = costs.reduce((a, b) => Math.min(a, b)), highest = costs.reduce((a, b) => Math.max(a, b));
  // The last sweep's value changes first.
  const valuesAt = (point) => sweeps.reduceRight(([rest, texts], {values}) =>
    [Math.floor(rest / values.length), [values[rest % values.length], ...texts]], [point, []])[1];
  const pointAt = (places) => places.reduce((point, place, i) => point * sweeps[i].values.length + place, 0);
  const [rows, columns] = sweeps.length > 1 ? sweeps : [{key: "", values: [""]}, sweeps[0]];
  const selects = sweeps.slice(2).map(({key, values}, i) => element("select", {id: `sweep${i}`, change: () => draw()},
    ...values.map((value, place) => element("option", {value: place, text: value}))));
  const cell = (point) => {
    const marks = [[point === best, "best"], [onFront.has(point), "front"], [point === present.point, "present"]]
      .filter(([is]) => is).map(([, mark]) => mark).join(" ");
    const place = Math.round(((costs[point] - lowest) / Math.max(1, highest - lowest)) * 255), colours = heatColours();
    const made = element("td", {class: marks, text: costs[point]}, element("small", {text: marks}));
    Object.assign(made.style, {background: colours.texts[place], color: colours.inks[place]});
    return made;
  };
  const draw = () => {
    const others = selects.map((select) => Number(select.value));
    const line = (name, y) => [name, ...columns.values.map((_, x) =>
      cell(pointAt([...(sweeps.length > 1 ? [y] : []), x, ...others])))];
    map.replaceChildren(countTable([["", ...columns.values], ...rows.values.map(line)], "Costs", "map"));
  };
  if (best !== null)
    valuesAt(best).slice(2).forEach((value, i) => (selects[i].value = sweeps[i + 2].values.indexOf(value)));
  draw();
  darkTheme.addEventListener("change", draw);
  const table = [["missed", "wrong", "false", "stray", "cost", ...sweeps.map(({key}) => shortName(key)), ""],
    ...front.map((point) => [...points[point], ...valuesAt(point), point === best ? "best" : ""]),
    [...present.faults, ...present.values, "present"]];
  document.getElementById("page").replaceChildren(element("h1", {text: "Tuning"}),
    element("div", {id: "summary"}, ...text.trim().split("\n").map((line) => element("p", {text: line}))),
    element("h2", {text: "Cost: missed, wrong, false and stray"}),
    element("p", {class: "count", text: `${rows.key && `${shortName(rows.key)} ↓  `}${shortName(columns.key)} →`}),
    ...selects.map((select, i) => element("label", {for: select.id, text: shortName(sweeps[i + 2].key) + " "}, select)), map,
    element("h2", {text: "Points that no other beats"}), countTable(table));
}
