// The surface seen from above, with every pad's value where the pad lies, and what else is known of one image.

function svgElement(tag, attributes) {
  const made = document.createElementNS("http://www.w3.org/2000/svg", tag);
  for (const [name, value] of Object.entries(attributes)) made.setAttribute(name, value);
  return made;
}

class SurfacePicture {
  constructor(surface, top) {
    this.surface = surface;
    this.top = top;
    this.picture = svgElement("svg", {viewBox: "-18.6 -18 37.2 36", role: "img", "aria-label": "The surface"});
    this.picture.append(svgElement("circle", {class: "rim", cx: 0, cy: 0, r: 17.6}));
    this.plates = surface.plates.map(([pad, x, y]) => {
      const region = surface.padRegions[pad];
      const disc = svgElement("circle", {class: `plate ${region}`, cx: x, cy: -y, r: 1.9});
      const letter = svgElement("text", {class: "letter", x, y: -y - 0.35});
      const value = svgElement("text", {class: "value", x, y: -y + 1.1});
      letter.textContent = padLetter(pad);
      this.picture.append(disc, letter, value);
      return {pad, disc, letter, value};
    });
    this.facts = element("dl", {class: "facts"});
    this.node = element("section", {class: "surface", "aria-label": "Surface at the cursor"}, this.picture, this.legend(),
      this.facts);
  }

  legend() {
    const item = (name) => element("span", {class: `key ${name}`, text: name});
    return element("p", {class: "legend"}, ...["PlayPause", "VolumeUp", "VolumeDown"].map(item),
      element("span", {class: "key on", text: "on"}));
  }

  // A reset is no image.
  show(images, at, colours) {
    const row = images.resets.includes(at) ? -1 : at;
    for (const {pad, disc, letter, value} of this.plates) {
      const isOn = row >= 0 && (images.padsOn[row] >> pad) & 1;
      const heat = row < 0 ? 0 : heatOf(images.pads[pad][row], this.top);
      disc.style.fill = colours.heat.texts[heat];
      disc.classList.toggle("is-on", Boolean(isOn));
      for (const text of [letter, value]) text.style.fill = colours.heat.inks[heat];
      value.textContent = row < 0 ? "" : images.pads[pad][row];
      value.style.fontSize = `${Math.min(1.5, 4.2 / value.textContent.length)}px`; // within the plate
    }
  }

  say(facts) {
    this.facts.replaceChildren(...facts.flatMap(([term, text]) => [element("dt", {text: term}), element("dd", {text})]));
  }
}

const padLetter = (pad) => String.fromCharCode(65 + pad);

// The names of what is on: pads by letter, groups by name.
function namesOn(surface, images, row) {
  const pads = surface.padRegions.map((_, pad) => padLetter(pad)).filter((_, i) => (images.padsOn[row] >> i) & 1);
  const groups = surface.groups.filter((_, i) => (images.groupsOn[row] >> i) & 1);
  return [pads.join(" "), groups.join(" ")].filter(Boolean).join(", ") || "nothing";
}

function factsOf(surface, {images}, row) {
  const terms = ["image", "device time", "strongest", "turns on above", "stays on above", "on", "touch score", "region"];
  if (images.resets.includes(row)) return terms.map((term, i) => [term, i ? "–" : "none: firmware reset"]);
  if (row < 0) return terms.map((term) => [term, "–"]);
  const pixel = images.strongest[row], pads = surface.padRegions.length;
  const counts = (level) => (Number.isNaN(level) ? "–" : `${numberText(level, 1)} counts`);
  const texts = [
    images.frame[row], `${images.timeMs[row]} ms`,
    `${images.signal[row]} counts on ${pixel < pads ? padLetter(pixel) : surface.groups[pixel - pads]}`,
    counts(images.onLevel[row]), counts(images.offLevel[row]), namesOn(surface, images, row),
    numberText(images.touchScore[row], 2), surface.regions[images.region[row]],
  ];
  return terms.map((term, i) => [term, String(texts[i])]);
}
