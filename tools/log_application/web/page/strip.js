// The strip of messages a second, by level, over the last ten minutes.

const seconds = 600;
// From the bottom of a bar to its top; the number is the place in the counts.
const layers = [
  [1, "--bar-err"],
  [2, "--bar-warn"],
  [3, "--bar-info"],
  [4, "--bar-debug"],
  [5, "--bar-trace"],
  [0, "--bar-trace"],
];

export class Strip {
  constructor(canvas, caption) {
    this.canvas = canvas;
    this.caption = caption;
    this.counts = [];
    new ResizeObserver(() => this.draw()).observe(canvas);
    matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => this.draw());
    canvas.addEventListener("pointermove", (event) => this.describe(event.offsetX));
    canvas.addEventListener("pointerleave", () => this.describe(null));
  }

  // `rows`: for each new second the counts by level.
  add(rows) {
    this.counts.push(...rows);
    this.counts.splice(0, this.counts.length - seconds);
    this.draw();
    this.describe(null);
  }

  draw() {
    const ratio = devicePixelRatio || 1;
    const width = Math.round(this.canvas.clientWidth * ratio);
    const height = Math.round(this.canvas.clientHeight * ratio);
    if (width === 0 || height === 0) {
      return;
    }
    this.canvas.width = width;
    this.canvas.height = height;
    const context = this.canvas.getContext("2d");
    const style = getComputedStyle(this.canvas);
    // The root of a count, so that a few errors can be seen beside thousands of debug lines.
    const peak = Math.max(1, ...this.counts.map(sum));
    const scale = height / Math.sqrt(peak);
    const bar = width / seconds;
    this.counts.forEach((counts, i) => {
      const total = sum(counts);
      if (total === 0) {
        return;
      }
      const x = width - (this.counts.length - i) * bar;
      const full = Math.max(Math.sqrt(total) * scale, 2 * ratio);
      let bottom = height;
      for (const [level, color] of layers) {
        if (counts[level] > 0) {
          const part = Math.max((full * counts[level]) / total, ratio);
          context.fillStyle = style.getPropertyValue(color);
          context.fillRect(x, bottom - part, Math.max(bar, 1), part);
          bottom -= part;
        }
      }
    });
  }

  describe(x) {
    const numbers = new Intl.NumberFormat();
    if (x === null) {
      const total = this.counts.reduce((all, counts) => all + sum(counts), 0);
      const errors = this.counts.reduce((all, counts) => all + counts[1], 0);
      const peak = Math.max(0, ...this.counts.map(sum));
      const text = `last 10 minutes: ${counted(total, "message")}, ${counted(errors, "error")}, at most ${numbers.format(peak)} a second`;
      this.caption.textContent = text;
      this.canvas.setAttribute("aria-label", `Messages a second, ${text}`);
      return;
    }
    const ago = Math.floor(((this.canvas.clientWidth - x) * seconds) / this.canvas.clientWidth);
    const counts = this.counts[this.counts.length - 1 - ago];
    const names = ["without level", "ERR", "WARN", "INFO", "DEBUG", "TRACE"];
    const parts = (counts ?? []).map((count, i) => (count ? `${numbers.format(count)} ${names[i]}` : "")).filter(Boolean);
    this.caption.textContent = `${ago} s ago: ${parts.join(", ") || "nothing"}`;
  }
}

function counted(number, name) {
  return `${new Intl.NumberFormat().format(number)} ${name}${number === 1 ? "" : "s"}`;
}

function sum(counts) {
  return counts.reduce((all, count) => all + count, 0);
}
