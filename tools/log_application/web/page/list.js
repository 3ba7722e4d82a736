// The list of messages. Only the rows that can be seen are in the document.

const limit = 100000; // messages kept
const spare = 8; // rows above and below what is seen

// An entry is { n: number, who: process, line: object or null, note: text or null }.
export class LogList {
  constructor(viewport, rows, options) {
    this.viewport = viewport;
    this.rows = rows;
    this.options = options; // { changed(), highlight() }
    this.entries = [];
    this.dropped = 0;
    this.unfolded = []; // { n, extra }: the further height of an unfolded row; by n
    this.shown = new Map(); // n: element
    this.current = null; // n of the row that the keyboard is at
    this.atNewest = true;
    this.scheduled = false;
    viewport.addEventListener("scroll", () => this.scrolled());
    viewport.addEventListener("keydown", (event) => this.key(event));
    rows.addEventListener("click", (event) => this.click(event));
    new ResizeObserver(() => this.resized()).observe(viewport);
    this.resized();
  }

  clear() {
    this.entries = [];
    this.dropped = 0;
    this.unfolded = [];
    this.current = null;
    this.atNewest = true;
    this.removeRows();
    this.schedule();
  }

  append(entries) {
    for (const entry of entries) {
      this.entries.push(entry);
    }
    const excess = this.entries.length - limit;
    if (excess > 0) {
      const height = this.top(excess);
      this.entries.splice(0, excess);
      this.dropped += excess;
      const first = this.entries[0].n;
      this.unfolded = this.unfolded.filter((fold) => fold.n >= first);
      if (!this.atNewest) {
        this.viewport.scrollTop = Math.max(0, this.viewport.scrollTop - height);
      }
    }
    this.schedule();
  }

  toNewest() {
    this.atNewest = true;
    // At once: the event of an earlier scrolling may be due, and must find the list at its end.
    this.draw();
  }

  refresh() {
    this.removeRows();
    this.schedule();
  }

  // ---- places

  indexOf(n) {
    let low = 0;
    let high = this.entries.length;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (this.entries[middle].n < n) {
        low = middle + 1;
      } else {
        high = middle;
      }
    }
    return low;
  }

  top(index) {
    let top = index * this.rowHeight;
    const n = index < this.entries.length ? this.entries[index].n : Infinity;
    for (const fold of this.unfolded) {
      if (fold.n >= n) {
        break;
      }
      top += fold.extra;
    }
    return top;
  }

  indexAt(y) {
    let above = 0;
    for (const fold of this.unfolded) {
      const bottom = (this.indexOf(fold.n) + 1) * this.rowHeight + above + fold.extra;
      if (bottom > y) {
        const own = bottom - this.rowHeight - fold.extra;
        return y < own ? Math.floor((y - above) / this.rowHeight) : this.indexOf(fold.n);
      }
      above += fold.extra;
    }
    return Math.floor((y - above) / this.rowHeight);
  }

  // ---- drawing

  schedule() {
    if (!this.scheduled) {
      this.scheduled = true;
      requestAnimationFrame(() => {
        this.scheduled = false;
        this.draw();
      });
    }
  }

  // Returns the height of all rows.
  setHeight() {
    const height = this.top(this.entries.length);
    this.rows.style.height = `${height}px`;
    return height;
  }

  draw() {
    const height = this.setHeight();
    this.viewport.setAttribute("aria-rowcount", String(this.entries.length));
    if (this.atNewest) {
      this.viewport.scrollTop = height;
    }
    const from = Math.max(0, this.indexAt(this.viewport.scrollTop) - spare);
    const until = Math.min(
      this.entries.length,
      this.indexAt(this.viewport.scrollTop + this.viewport.clientHeight) + 1 + spare,
    );
    const wanted = new Set();
    for (let i = from; i < until; i++) {
      const entry = this.entries[i];
      wanted.add(entry.n);
      let row = this.shown.get(entry.n);
      if (!row) {
        row = this.makeRow(entry);
        this.shown.set(entry.n, row);
        this.rows.append(row);
      }
      row.style.transform = `translateY(${this.top(i)}px)`;
      row.setAttribute("aria-rowindex", String(i + 1));
    }
    for (const [n, row] of this.shown) {
      if (!wanted.has(n)) {
        row.remove();
        this.shown.delete(n);
      }
    }
    this.measure();
    this.options.changed();
  }

  // Unfolded rows take the height of what is in them.
  measure() {
    let differs = false;
    for (const fold of this.unfolded) {
      const details = this.shown.get(fold.n)?.querySelector(".details");
      if (details) {
        const extra = this.shown.get(fold.n).offsetHeight - this.rowHeight;
        differs ||= Math.abs(extra - fold.extra) > 0.5;
        fold.extra = extra;
      }
    }
    if (differs) {
      this.schedule();
    }
  }

  removeRows() {
    for (const row of this.shown.values()) {
      row.remove();
    }
    this.shown.clear();
  }

  makeRow(entry) {
    const row = element("div", "row");
    row.id = `row-${entry.n}`;
    row.dataset.n = String(entry.n);
    row.setAttribute("role", "row");
    row.classList.toggle("current", entry.n === this.current);
    const who = cell("who", entry.who.name);
    const chip = element("i");
    chip.style.background = entry.who.color;
    who.prepend(chip);
    who.title = entry.who.title;
    if (entry.line) {
      const line = entry.line;
      row.classList.add((line.level ?? "").toLowerCase() || "none");
      row.append(cell("time", clockTime(line.time)), who, cell("level", line.level ?? "?"), cell("logger", line.logger ?? ""));
      const text = cell("text", "");
      this.highlightInto(text, oneLine(line.message ?? ""));
      const names = Object.keys(line.attributes);
      if (names.length > 0) {
        const more = element("span", "more");
        more.textContent = "  " + names.map((name) => `${visible(name)}=${oneLine(line.attributes[name])}`).join(" ");
        text.append(more);
      }
      row.append(text);
      const isUnfolded = this.unfolded.some((fold) => fold.n === entry.n);
      row.setAttribute("aria-expanded", String(isUnfolded));
      if (isUnfolded) {
        row.append(this.makeDetails(entry));
      }
    } else {
      row.classList.add("note");
      row.append(cell("time", ""), who, cell("text", entry.note));
    }
    return row;
  }

  makeDetails(entry) {
    const line = entry.line;
    const details = element("div", "details");
    details.setAttribute("role", "gridcell");
    const text = element("pre");
    this.highlightInto(text, visible((line.message ?? "").replace(/\r\n/g, "\n")));
    const facts = element("dl");
    const add = (name, value) => {
      const term = element("dt");
      term.textContent = visible(name);
      const description = element("dd");
      description.textContent = visible(value);
      facts.append(term, description);
    };
    for (const [name, value] of Object.entries(line.attributes)) {
      add(name, value);
    }
    add("time", line.time ?? "?");
    add("logger", line.logger ?? "?");
    add("process", `${entry.who.name}, pid ${line.pid ?? "?"}, thread ${line.tid ?? "?"}`);
    details.append(text, facts);
    return details;
  }

  // Texts are only ever set as texts: what a process logs is never markup.
  highlightInto(target, text) {
    const pattern = this.options.highlight();
    let end = 0;
    if (pattern) {
      for (const match of text.matchAll(pattern)) {
        if (match[0] === "") {
          continue;
        }
        const mark = element("mark");
        mark.textContent = match[0];
        target.append(text.slice(end, match.index), mark);
        end = match.index + match[0].length;
      }
    }
    target.append(text.slice(end));
  }

  // ---- moving

  resized() {
    const height = parseFloat(getComputedStyle(document.documentElement).getPropertyValue("--row")) || 22;
    if (height !== this.rowHeight) {
      this.rowHeight = height;
      this.removeRows();
    }
    this.schedule();
  }

  scrolled() {
    const end = this.viewport.scrollHeight - this.viewport.clientHeight;
    this.atNewest = this.viewport.scrollTop >= end - 4;
    this.schedule();
  }

  click(event) {
    const row = event.target.closest(".row");
    if (!row || event.target.closest(".details") || !getSelection().isCollapsed) {
      return;
    }
    this.moveTo(this.indexOf(Number(row.dataset.n)));
    this.toggle(Number(row.dataset.n));
  }

  toggle(n) {
    const index = this.indexOf(n);
    if (!this.entries[index]?.line) {
      return;
    }
    const fold = this.unfolded.findIndex((one) => one.n === n);
    if (fold >= 0) {
      this.unfolded.splice(fold, 1);
    } else {
      this.atNewest = false;
      this.unfolded.push({ n, extra: 0 });
      this.unfolded.sort((one, other) => one.n - other.n);
    }
    this.shown.get(n)?.remove();
    this.shown.delete(n);
    this.schedule();
  }

  moveTo(index) {
    if (this.entries.length === 0) {
      return;
    }
    index = Math.min(Math.max(index, 0), this.entries.length - 1);
    this.shown.get(this.current)?.classList.remove("current");
    this.current = this.entries[index].n;
    this.atNewest = false;
    this.setHeight();
    const top = this.top(index);
    const bottom = this.top(index + 1);
    if (top < this.viewport.scrollTop) {
      this.viewport.scrollTop = top;
    } else if (bottom > this.viewport.scrollTop + this.viewport.clientHeight) {
      this.viewport.scrollTop = bottom - this.viewport.clientHeight;
    }
    this.draw();
    this.shown.get(this.current)?.classList.add("current");
    this.viewport.setAttribute("aria-activedescendant", `row-${this.current}`);
  }

  key(event) {
    if (event.ctrlKey || event.altKey || event.metaKey) {
      return;
    }
    const page = Math.max(1, Math.floor(this.viewport.clientHeight / this.rowHeight) - 1);
    const last = this.entries.length - 1;
    const at = this.current === null ? null : this.indexOf(this.current);
    const moves = {
      ArrowUp: () => this.moveTo((at ?? last + 1) - 1),
      ArrowDown: () => this.moveTo((at ?? last) + 1),
      PageUp: () => this.moveTo((at ?? last) - page),
      PageDown: () => this.moveTo((at ?? last) + page),
      Home: () => this.moveTo(0),
      End: () => {
        this.moveTo(last);
        this.toNewest();
      },
      Enter: () => this.current !== null && this.toggle(this.current),
      " ": () => this.current !== null && this.toggle(this.current),
    };
    if (moves[event.key]) {
      event.preventDefault();
      moves[event.key]();
    }
  }
}

export function element(name, className = "") {
  const made = document.createElement(name);
  if (className) {
    made.className = className;
  }
  return made;
}

function cell(className, text) {
  const made = element("span", className);
  made.setAttribute("role", "gridcell");
  made.textContent = visible(text);
  return made;
}

// Line ends as a visible sign: a row has one line.
function oneLine(text) {
  return text.length > 2000 ? oneLine(text.slice(0, 2000)) + " …" : visible(text.replace(/\r?\n|\r/g, " ⏎ "));
}

// Control characters, and those that turn the direction of writing, as escapes; line ends and tabs stay.
export function visible(text) {
  return text.replace(/[\u0000-\u0008\u000b-\u001f\u007f-\u009f\u061c\u200e\u200f\u2028\u2029\u202a-\u202e\u2066-\u2069]/g, (character) => {
    const code = character.charCodeAt(0);
    const digits = code.toString(16).toUpperCase();
    return code < 0x80 ? `\\x${digits.padStart(2, "0")}` : `\\u${digits.padStart(4, "0")}`;
  });
}

// The local time of day, with milliseconds.
export function clockTime(iso) {
  const time = new Date(iso ?? NaN);
  if (Number.isNaN(time.getTime())) {
    return "?";
  }
  const two = (number) => String(number).padStart(2, "0");
  return `${two(time.getHours())}:${two(time.getMinutes())}:${two(time.getSeconds())}.${String(time.getMilliseconds()).padStart(3, "0")}`;
}
