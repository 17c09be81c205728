// The cursor of a chart, and the surface at its time.

class Cursor {
  constructor(chart, surface) {
    const top = Math.max(surface.noise, ...chart.plays.flatMap(({images}) => images.pads.map((pad) => new Pyramid(pad).highest)));
    Object.assign(this, {chart, surface, view: new SurfacePicture(surface, top)});
    darkTheme.addEventListener("change", () => this.show());
    this.show();
  }

  follow(event) {
    const {range} = this.chart;
    this.set(Math.min(Math.max(this.chart.timeAt(event), range.from), range.to));
  }
  step(count) {
    const {range, plays, shownPlay, cursor} = this.chart, {time} = plays[shownPlay].images;
    if (!time.length) return;
    const row = Math.min(Math.max(rowAt(time, cursor ?? range.from) + count, 0), time.length - 1);
    if (time[row] < range.from || time[row] > range.to) range.show(time[row] - range.span / 2, time[row] + range.span / 2);
    this.set(time[row]);
  }
  set(time) {
    this.chart.cursor = time;
    this.chart.placeCursor();
    this.showing ||= requestAnimationFrame(() => this.show());
  }
  show() {
    this.showing = 0;
    const {chart, view} = this, {cursor, plays} = chart, play = plays[chart.shownPlay];
    const row = cursor === null ? -1 : rowAt(play.images.time, cursor);
    view.show(play.images, row, chart.colours);
    const here = chart.near(plays.flatMap((one) => [...one.disturbances, ...one.writes, ...one.labels]), 5);
    const touches = chart.near(plays.flatMap((one) => one.touches), 0);
    view.say([
      ["time", cursor === null ? "point at the chart" : secondsText(cursor)],
      ...factsOf(this.surface, play, row),
      ["touch", touches.map((touch) => `${touch.number} ${touch.outcome}`).join(", ") || "none"],
      ["here", [...new Set(here.map((item) => item.text))].slice(0, 4).join("; ") || "–"],
    ]);
  }
}
