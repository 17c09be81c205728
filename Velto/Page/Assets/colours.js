// Colours of the theme in force. The scale of signals is one hue whose lightness changes evenly; those of outcomes and
// regions stay apart for colour-blind people, and a pattern or a word stands beside each.

const heatStops = {
  light: [[247, 249, 251], [205, 221, 236], [146, 184, 218], [84, 138, 190], [37, 90, 150], [12, 44, 92], [4, 18, 44]],
  dark: [[20, 25, 33], [26, 48, 76], [34, 79, 122], [54, 117, 166], [104, 160, 200], [170, 204, 226], [244, 250, 255]],
};
const darkTheme = matchMedia("(prefers-color-scheme: dark)");

// Colours for 0 to 255, as words of a canvas and as texts, and what is read upon each.
function heatColours() {
  const stops = heatStops[darkTheme.matches ? "dark" : "light"];
  const words = new Uint32Array(256), texts = [], inks = [];
  for (let i = 0; i < 256; ++i) {
    const at = (i / 255) * (stops.length - 1), k = Math.min(Math.floor(at), stops.length - 2);
    const [r, g, b] = stops[k].map((c, j) => Math.round(c + (stops[k + 1][j] - c) * (at - k)));
    words[i] = ((255 << 24) | (b << 16) | (g << 8) | r) >>> 0;
    texts.push(`rgb(${r},${g},${b})`);
    inks.push((darkTheme.matches ? i < 170 : i > 110) ? "#fff" : "#000");
  }
  return {words, texts, inks};
}

const themeNames = ["ink", "soft", "faint", "panel", "tap", "hold", "cancel", "unfinished", "second", "signal", "noise",
  "on", "off", "score", "select", "None", "PlayPause", "VolumeUp", "VolumeDown"];

function themeColours() {
  const style = getComputedStyle(document.documentElement);
  const colours = Object.fromEntries(themeNames.map((name) => [name, style.getPropertyValue("--" + name).trim()]));
  const words = Object.fromEntries(themeNames.map((name) => [name, wordOf(colours[name])]));
  return {...colours, words, heat: heatColours()};
}

// "#rrggbb" as a word of a canvas.
function wordOf(text) {
  const rgb = parseInt(text.slice(1), 16);
  return ((255 << 24) | ((rgb & 255) << 16) | (rgb & 0xff00) | (rgb >> 16)) >>> 0;
}

// A place in the scale of signals, 0 to 255: weak contacts are seen beside strong ones.
const heatOf = (value, top) => (value > 0 ? heatPlaces[Math.min(255, Math.round((value / top) * 255))] : 0);
const heatPlaces = Uint8Array.from({length: 256}, (_, i) => Math.round((i / 255) ** 0.7 * 255));
