// Touches as a list, and the explanation of one.

const mostListed = 200;

class TouchList {
  // `touches()` are those that are listed.
  constructor(areTwo, touches, select) {
    this.areTwo = areTwo;
    this.touches = touches;
    this.select = select;
    this.only = element("input", {type: "checkbox", id: "only", change: () => this.update()});
    this.count = element("span", {class: "count"});
    this.list = element("ol", {class: "touches"});
    this.node = element("section", {"aria-label": "Touches in view"},
      element("header", {}, element("h2", {text: "Touches in view"}), this.count,
        element("label", {for: "only"}, this.only, " only what became no gesture")), this.list);
  }

  // Later, when the chart rests.
  showSoon(selected) {
    this.selected = selected;
    clearTimeout(this.waiting);
    this.waiting = setTimeout(() => this.update(), 150);
  }

  update() {
    const wanted = this.touches().filter((touch) => !this.only.checked || touch.outcome === "cancel");
    const more = wanted.length - mostListed;
    this.count.textContent = plural(wanted.length, "touch", "touches") + (more > 0 ? `, the first ${mostListed}` : "");
    this.list.replaceChildren(...wanted.slice(0, mostListed).map((touch) => {
      const button = element("button", {class: touch.outcome, click: () => this.select(touch)},
        element("i", {class: "chip"}), element("span", {text: (this.areTwo ? `${touch.play + 1}  ` : "") + headingOf(touch)}));
      if (touch === this.selected) button.setAttribute("aria-current", "true");
      return element("li", {}, button);
    }));
  }
}

const headingOf = (touch) => touch.heading.trimEnd() + (touch.change ? `    decided otherwise: ${touch.change}` : "");

class Explanation {
  constructor() {
    this.node = element("section", {class: "explanation", "aria-live": "polite", "aria-label": "Explanation"});
    this.clear();
  }
  clear() {
    this.node.replaceChildren(element("h2", {text: "Why"}),
      element("p", {text: "Click a touch, or press c for the next one that became no gesture."}));
  }
  // Explains a touch, or a label by its touch.
  show(item, plays) {
    const touch = isTouch(item) ? item : item.ofTouch;
    const parts = [element("h2", {text: isTouch(item) ? `Why touch ${item.number} became ${wordOfOutcome[item.outcome]}` :
      `Label ${item.index}, ${item.text}`})];
    for (const one of [touch, touch?.other].filter(Boolean).sort((a, b) => a.play - b.play)) {
      if (plays.length > 1)
        parts.push(element("h3", {}, playBadge(one.play), plays[one.play].name));
      parts.push(element("pre", {tabindex: "0", text: one.heading + one.details}));
    }
    const say = (text) => parts.push(element("p", {text}));
    if (!touch) say("No touch belongs to it. See the strongest signal, and the level that it had to exceed.");
    else if (plays.length > 1 && !touch.other) say(`There is no such touch in ${touch.play === 0 ? "the second" : "the first"}.`);
    this.node.replaceChildren(...parts);
  }
}

const wordOfOutcome = {tap: "a tap", hold: "a hold", cancel: "no gesture", unfinished: "nothing yet"};
