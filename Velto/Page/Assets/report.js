// What many recordings gave: counts, and lists of touches. A picture is drawn when its entry is opened.

function countTable([head, ...rows]) {
  const cells = (tag, row) => element("tr", {}, ...row.map((text, i) => element(i ? tag : "th", i ? {text} : {scope: "row", text})));
  return element("div", {class: "wide", tabindex: "0", role: "region", "aria-label": "Counts"},
    element("table", {}, element("thead", {}, cells("th", head)), element("tbody", {}, ...rows.map((row) => cells("td", row)))));
}

async function casePicture({picture, explanations, texts}, surface) {
  const plays = await Promise.all(picture.plays.map(readPlay)), changes = joinTouches(plays, picture.pairs);
  const chart = new Chart(plays, () => {});
  chart.show([heatRows(plays, surface, "pads")[0], signalRow(plays, surface), scoreRow(plays, surface), ...laneRows(plays, changes)]);
  for (const name of ["tabindex", "aria-describedby"]) chart.node.removeAttribute(name);
  chart.node.setAttribute("role", "img");
  chart.node.setAttribute("aria-label", `The pads over time: ${texts.join(", ")}`);
  darkTheme.addEventListener("change", () => {
    chart.colours = themeColours();
    chart.changed();
  });
  return [chart.node, ...explanations.map((text) => element("pre", {tabindex: "0", text}))];
}

function caseItem(item, surface) {
  const part = (name, text) => element("span", {class: name, text});
  const parts = [part("kind " + item.kind.split(" ")[0], item.kind), part("when", secondsText(item.startNs / 1e9, 2)),
    ...item.texts.map((text) => part("text", text)), part("file", item.file)];
  if (!item.picture) return element("li", {}, element("div", {class: "case"}, ...parts));
  const details = element("details", {}, element("summary", {class: "case"}, ...parts));
  details.addEventListener("toggle", async () => details.append(...await casePicture(item, surface)), {once: true});
  return element("li", {}, details);
}

function groupSection({title, cases}, surface) {
  const pictures = cases.filter(({picture}) => picture).length;
  const note = pictures === 0 ? "without pictures" : pictures < cases.length ? `the first ${pictures} have a picture` :
    "each opens to its picture";
  return element("section", {class: "group"}, element("header", {}, element("h2", {text: title}),
    element("span", {class: "count", text: cases.length ? `${cases.length}, ${note}` : "none"})),
    element("ol", {class: "cases"}, ...cases.map((item) => caseItem(item, surface))));
}

function showReport({title, text, table, groups, surface}) {
  document.title = `${title} – velto`;
  const sentences = text.trim().split("\n").map((line) => element("p", {text: line.trim()}));
  document.getElementById("page").replaceChildren(element("header", {}, element("h1", {text: title}),
    element("div", {id: "summary"}, ...sentences)), ...(table.length ? [countTable(table)] : []),
    element("div", {class: "groups"}, ...groups.map((group) => groupSection(group, surface))));
  document.querySelector("details")?.setAttribute("open", "");
}
