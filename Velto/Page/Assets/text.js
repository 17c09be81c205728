// Elements and texts. All that comes from a recording goes through textContent.

function element(tag, attributes = {}, ...children) {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) {
    if (name === "text") made.textContent = value;
    else if (typeof value === "function") made.addEventListener(name, value);
    else made.setAttribute(name, value);
  }
  made.append(...children);
  return made;
}

const secondsText = (seconds, digits = 3) => `${seconds.toFixed(digits)} s`;
const numberText = (value, digits) => (Math.abs(value) < 1e7 ? value.toFixed(digits) :
  Number.isFinite(value) ? value.toExponential(2) : String(value).replace("Infinity", "∞"));
const plural = (count, one, many = one + "s") => `${count} ${count === 1 ? one : many}`;

// Texts upon a canvas, taken from a pool: they are real, and cost nothing while they stay the same.
class Texts {
  constructor() {
    this.layer = element("div", {class: "texts", "aria-hidden": "true"});
    this.spans = [];
    this.used = 0;
  }
  begin() {
    this.used = 0;
  }
  put(text, x, y, kind, width = 0) {
    let span = this.spans[this.used++];
    if (!span) {
      span = element("span");
      this.spans.push(span);
      this.layer.append(span);
    }
    if (span.textContent !== text) span.textContent = text;
    if (span.className !== kind) span.className = kind;
    span.style.transform = `translate(${Math.round(x)}px,${Math.round(y)}px)`;
    span.style.maxWidth = width ? `${Math.floor(width)}px` : "";
    span.hidden = false;
  }
  end() {
    for (let i = this.used; i < this.spans.length; ++i) this.spans[i].hidden = true;
  }
}
