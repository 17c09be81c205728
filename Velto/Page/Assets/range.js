// The time that is shown, in seconds, as it stands in the address: #t=6.2,7.4.

class TimeRange {
  constructor(first, last, changed) {
    this.limits = {from: first, to: Math.max(last, first + 0.01)};
    this.changed = changed;
    this.from = this.limits.from;
    this.to = this.limits.to;
    addEventListener("hashchange", () => this.readAddress());
  }

  get span() {
    return this.to - this.from;
  }

  // Keeps the span if it can, and stays within the recording.
  show(from, to) {
    const whole = this.limits.to - this.limits.from;
    const span = Math.min(Math.max(to - from, Math.min(0.02, whole)), whole);
    const middle = (from + to) / 2;
    this.from = Math.min(Math.max(middle - span / 2, this.limits.from), this.limits.to - span);
    this.to = this.from + span;
    this.changed();
    clearTimeout(this.writing);
    this.writing = setTimeout(() => this.writeAddress(), 250);
  }
  move(share) {
    this.show(this.from + share * this.span, this.to + share * this.span);
  }
  // Around a time that stays where it is.
  zoom(factor, time = (this.from + this.to) / 2) {
    const span = Math.min(this.span * factor, this.limits.to - this.limits.from);
    const from = time - ((time - this.from) / this.span) * span;
    this.show(from, from + span);
  }
  // Brings a stretch into view, with room around it.
  reveal(from, to) {
    const length = Math.max(to - from, 0.05);
    if (from >= this.from && to <= this.to && this.span < 40 * length) return;
    const span = this.span < 40 * length && this.span > 1.2 * length ? this.span : 8 * length;
    this.show((from + to - span) / 2, (from + to + span) / 2);
  }

  readAddress() {
    const found = /^#t=([\d.]+),([\d.]+)$/.exec(location.hash);
    if (found && Number(found[1]) < Number(found[2])) this.show(Number(found[1]), Number(found[2]));
  }
  writeAddress() {
    const digits = Math.max(1, Math.ceil(-Math.log10(this.span)) + 3);
    const isAll = this.from === this.limits.from && this.to === this.limits.to;
    history.replaceState(null, "", isAll ? "#" : `#t=${this.from.toFixed(digits)},${this.to.toFixed(digits)}`);
  }
}
