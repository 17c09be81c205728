// What many recordings gave: counts, and lists of touches. A picture is drawn when its entry is opened.

// `rows` are texts or cells; the first is the heading.
function countTable([head, ...rows], label = "Counts", kind = "") {
  const cell = (tag, item, i) =>
    item instanceof Node ? item : element(i ? tag : "th", {text: item, ...(i ? {} : {scope: "row"})});
  const line = (tag, row) => element("tr", {}, ...row.map((item, i) => cell(tag, item, i)));
  return element("div", {class: `wide ${kind}`, tabindex: "0", role: "region", "aria-label": label},
    element("table", {}, element("thead", {}, line("th", head)), element("tbody", {}, ...rows.map((row) => line("td", row)))));
}

async function casePicture({picture, texts}, surface) {
  const plays = await Promise.all(picture.plays.map(readPlay)), changes = joinTouches(plays, picture.pairs);
  const chart = new Chart(plays, {role: "img", "aria-label": `The pads over time: ${texts.join(", ")}`});
  const cursor = new Cursor(chart, surface), lanes = laneRows(plays, changes);
  chart.show([heatRows(plays, surface, "pads")[0], signalRow(plays, surface), scoreRow(plays, surface), ...lanes]);
  chart.node.addEventListener("pointermove", (event) => cursor.follow(event));
  return element("div", {class: "picture"}, chart.node, cursor.view.node);
}

async function caseDetails(item, surface) {
  const texts = [...item.explanations, item.command].filter(Boolean);
  return [...(item.picture ? [await casePicture(item, surface)] : []),
    ...texts.map((text) => element("pre", {tabindex: "0", text}))];
}

function caseItem(item, surface) {
  const part = (name, text) => element("span", {class: name, text});
  const parts = [part("kind " + item.kind.split(" ")[0], item.kind),
    ...(item.startNs === null ? [] : [part("when", secondsText(item.startNs / 1e9, 2))]),
    ...item.texts.map((text) => part("text", text)), part("file", item.file)];
  if (!item.command) return element("li", {}, element("div", {class: "case"}, ...parts));
  const details = element("details", {}, element("summary", {class: "case"}, ...parts));
  details.addEventListener("toggle", async () => details.append(...await caseDetails(item, surface)), {once: true});
  return element("li", {}, details);
}

function groupSection({title, total, cases}, surface) {
  const pictures = cases.filter(({picture}) => picture).length;
  const notes = [`${total}`, cases.length < total && `the worst ${cases.length} are listed`,
    pictures > 0 && `${pictures < total ? pictures : "all"} with a picture`].filter(Boolean);
  return element("section", {class: "group"}, element("header", {}, element("h2", {text: title}),
    element("span", {class: "count", text: total ? notes.join(", ") : "none"})),
    element("ol", {class: "cases"}, ...cases.map((item) => caseItem(item, surface))));
}

function showReport({title, text, table, groups, surface}) {
  document.title = `${title} – velto`;
  const sentences = text.trim().split("\n").map((line) => element("p", {text: line.trim()}));
  document.getElementById("page").replaceChildren(element("header", {}, element("h1", {text: title}),
    element("div", {id: "summary"}, ...sentences)), ...(table.length ? [countTable(table)] : []),
    element("div", {class: groups.length > 2 ? "groups" : ""}, ...groups.map((group) => groupSection(group, surface))));
  document.querySelector("details")?.setAttribute("open", "");
}
