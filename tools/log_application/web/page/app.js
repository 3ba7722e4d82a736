// The page: reads the events, and joins its parts.

import { clockTime, LogList, visible } from "./list.js";
import { Processes } from "./levels.js";
import { Strip } from "./strip.js";

const byId = (id) => document.getElementById(id);
const numbers = new Intl.NumberFormat();
const mostPending = 100000; // messages kept while paused

const state = {
  source: null,
  last: null, // number of the last line that came
  paused: false,
  pending: [],
  droppedPending: 0,
  missed: 0,
  undecided: false,
  pattern: null,
};

const strip = new Strip(byId("strip"), byId("strip-text"));
const list = new LogList(byId("log"), byId("rows"), { changed: showCounts, highlight: () => state.pattern });
const processes = new Processes(byId("processes"), {
  lasting: () => document.querySelector('input[name="lasting"]:checked').value,
  hiddenChanged: restart,
  say,
  fail,
});

// ---- what the page says

function say(text) {
  byId("status").textContent = text;
}

let alertTimer = 0;
function fail(text) {
  byId("alert").textContent = text;
  byId("alert").hidden = false;
  clearTimeout(alertTimer);
  alertTimer = setTimeout(() => (byId("alert").hidden = true), 8000);
}

function setConnection(name, text) {
  const shown = byId("connection");
  if (shown.textContent !== text) {
    shown.dataset.state = name;
    shown.textContent = text;
    say(text);
  }
}

function showCounts() {
  const lost = [];
  if (list.dropped + state.droppedPending > 0) {
    lost.push(`${numbers.format(list.dropped + state.droppedPending)} older ones dropped from this page`);
  }
  if (state.missed > 0) {
    lost.push(`${numbers.format(state.missed)} missed, as they came too fast`);
  }
  if (state.undecided) {
    lost.push("some are too long for the regular expression and are shown");
  }
  const count = list.entries.length;
  byId("count").textContent = [`${numbers.format(count)} message${count === 1 ? "" : "s"}`, ...lost].join(" · ");
  byId("no-lines").hidden = count > 0;
  byId("newest").hidden = list.atNewest || count === 0;
  byId("pause").textContent = state.paused && state.pending.length > 0 ? `Paused, ${numbers.format(state.pending.length)} new` : state.paused ? "Paused" : "Pause";
}

// ---- events

function filterQuery() {
  const query = new URLSearchParams();
  const escape = (text) => (byId("regex").checked ? text : text.replace(/[\\^$.*+?()[\]{}|]/g, "\\$&"));
  query.set("level", byId("level").value);
  for (const name of ["include", "exclude"]) {
    if (byId(name).value !== "") {
      query.append(name, escape(byId(name).value));
    }
  }
  for (const name of processes.hidden) {
    query.append("hide", name);
  }
  state.pattern = null;
  try {
    state.pattern = byId("include").value === "" ? null : new RegExp(escape(byId("include").value), "g");
  } catch {
    // The program says what is wrong with it.
  }
  return query;
}

// Begins anew with the present filter; the program has the lines of before.
function restart() {
  list.clear();
  state.pending = [];
  state.droppedPending = 0;
  state.missed = 0;
  state.undecided = false;
  state.last = null;
  byId("filter-problem").hidden = true;
  connect();
}

let retryTimer = 0;
function connect() {
  clearTimeout(retryTimer);
  state.source?.close();
  const query = filterQuery();
  if (state.last !== null) {
    query.set("after", state.last);
  }
  const source = new EventSource(`events?${query}`);
  state.source = source;
  const on = (name, action) =>
    source.addEventListener(name, (event) => {
      if (state.source === source) {
        action(JSON.parse(event.data), event);
      }
    });
  source.addEventListener("open", () => state.source === source && setConnection("live", "live"));
  source.addEventListener("error", () => {
    if (state.source !== source) {
      return;
    }
    setConnection("lost", "no connection: does log_application still run?");
    if (source.readyState === EventSource.CLOSED) {
      retryTimer = setTimeout(connect, 2000);
    }
  });
  let ratesCame = false;
  on("rates", (rows) => {
    if (!ratesCame) {
      strip.counts = [];
      ratesCame = true;
    }
    strip.add(rows);
  });
  on("processes", showProcesses);
  on("missed", (count) => {
    state.missed += count;
  });
  on("undecided", () => {
    state.undecided = true;
  });
  on("refused", (reason) => {
    source.close();
    byId("filter-problem").textContent = reason;
    byId("filter-problem").hidden = false;
  });
  on("lines", (rows, event) => {
    state.last = event.lastEventId;
    const entries = rows.map(([n, id, content]) =>
      typeof content === "string"
        ? { n, who: processes.who(id), line: null, note: content }
        : { n, who: processes.who(id), line: content, note: null },
    );
    if (!state.paused) {
      list.append(entries);
      return;
    }
    for (const entry of entries) {
      state.pending.push(entry);
    }
    const excess = state.pending.length - mostPending;
    if (excess > 0) {
      state.pending.splice(0, excess);
      state.droppedPending += excess;
    }
    showCounts();
  });
}

function showProcesses(data) {
  processes.update(data.processes);
  const live = data.processes.filter((process) => process.state === "live").length;
  byId("no-processes").hidden = data.processes.length > 0;
  byId("no-processes").textContent = data.searched
    ? "No process answers. One that is started later is found by itself."
    : "Looking for processes…";
  byId("problem").hidden = data.problem === null;
  byId("problem").textContent = data.problem ?? "";
  byId("show-processes").textContent = `Processes (${live})`;
}

// ---- the controls

function setPaused(paused) {
  state.paused = paused;
  byId("pause").setAttribute("aria-pressed", String(paused));
  if (!paused) {
    list.append(state.pending);
    state.pending = [];
  }
  say(paused ? "Paused" : "Going on");
  showCounts();
}

let filterTimer = 0;
function filterSoon() {
  clearTimeout(filterTimer);
  filterTimer = setTimeout(restart, 250);
}

function save(name, type, render) {
  const lines = list.entries.filter((entry) => entry.line).map((entry) => render(entry) + "\n");
  const link = document.createElement("a");
  link.href = URL.createObjectURL(new Blob(lines, { type }));
  link.download = name;
  link.click();
  setTimeout(() => URL.revokeObjectURL(link.href), 10000);
  say(`${numbers.format(lines.length)} messages saved`);
}

// The layout of `log_application tail`, with control characters escaped as there.
function textOf({ line }) {
  const attributes = Object.entries(line.attributes).map(([name, value]) => `${name} = ${value}`);
  const date = line.time ? `${new Date(line.time).toLocaleDateString("sv")} ${clockTime(line.time)}` : "?";
  const shown = `${date} ${line.pid ?? 0} [${line.level ?? "INVALID"}] ${line.logger ?? ""}${attributes.length > 0 ? ` (${attributes.join(", ")})` : ""}: ${line.message ?? ""}`;
  return visible(shown.replace(/[\n\r\t]/g, (character) => ({ "\n": "\\n", "\r": "\\r", "\t": "\\t" })[character]));
}

byId("filters").addEventListener("submit", (event) => {
  event.preventDefault();
  restart();
});
byId("include").addEventListener("input", filterSoon);
byId("exclude").addEventListener("input", filterSoon);
byId("level").addEventListener("change", restart);
byId("regex").addEventListener("change", restart);
byId("pause").addEventListener("click", () => setPaused(!state.paused));
byId("newest").addEventListener("click", () => list.toNewest());
byId("save-text").addEventListener("click", () => save("log.txt", "text/plain", textOf));
byId("save-json").addEventListener("click", () => save("log.jsonl", "application/jsonl", ({ line }) => JSON.stringify(line)));
byId("show-processes").addEventListener("click", () => {
  const open = byId("processes-panel").classList.toggle("open");
  byId("show-processes").setAttribute("aria-expanded", String(open));
});
document.addEventListener("keydown", (event) => {
  const typing = event.target.closest("input, select, textarea") !== null;
  if (event.ctrlKey || event.altKey || event.metaKey) {
    return;
  }
  if (event.key === "Escape" && typing) {
    byId("log").focus();
  } else if (event.key === "/" && !typing) {
    event.preventDefault();
    byId("include").focus();
  } else if (event.key.toLowerCase() === "p" && !typing) {
    setPaused(!state.paused);
  } else if (event.key === "End" && event.target === document.body) {
    list.toNewest();
  }
});

restart();
