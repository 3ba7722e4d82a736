// The processes with their levels.

import { element, visible } from "./list.js";

const levels = ["OFF", "ERR", "WARN", "INFO", "DEBUG", "TRACE"];
const colors = ["#4e79a7", "#e08a3c", "#59a14f", "#b07aa1", "#3aa6a0", "#c9594f", "#a58a2a", "#8c6d5a"];

export class Processes {
  constructor(list, options) {
    this.list = list;
    this.options = options; // { lasting(): seconds or "", hiddenChanged(), say(text), fail(text) }
    this.known = new Map(); // id: process
    this.hidden = new Set(); // names
    this.open = new Set(); // names whose loggers are shown
    this.ends = new Map(); // "id logger": when the level is put back, on the page's clock
    this.first = true;
    setInterval(() => this.tick(), 500);
  }

  // What a line's row shows of its process.
  who(id) {
    const process = this.known.get(id);
    const name = process?.name ?? `#${id}`;
    return { name, title: process ? titleOf(process) : name, color: colorOf(name) };
  }

  update(processes) {
    const present = new Set();
    for (const process of processes) {
      present.add(process.id);
      const before = this.known.get(process.id);
      if (!this.first && before?.state !== process.state) {
        this.options.say(`${titleOf(process)} ${process.state === "live" ? "is followed" : process.state === "ended" ? "has ended" : "doesn't answer"}`);
      }
      this.known.set(process.id, process);
      this.noteEnds(process);
    }
    this.first = false;
    const focused = document.activeElement?.dataset?.key;
    const cards = processes
      .slice()
      .sort((one, other) => one.name.localeCompare(other.name) || one.pid - other.pid)
      .map((process) => this.card(process));
    this.list.replaceChildren(...cards);
    if (focused) {
      this.list.querySelector(`[data-key="${CSS.escape(focused)}"]`)?.focus();
    }
    this.tick();
  }

  noteEnds(process) {
    const prefix = `${process.id} `;
    for (const key of [...this.ends.keys()]) {
      if (key.startsWith(prefix)) {
        this.ends.delete(key);
      }
    }
    for (const [logger, left] of process.timed) {
      this.ends.set(keyOf(process, logger), performance.now() + left);
    }
  }

  // ---- a card

  card(process) {
    const card = element("li", `process ${process.state}`);
    card.dataset.name = process.name;
    const title = element("div", "title");
    const label = element("label");
    const box = element("input");
    box.type = "checkbox";
    box.checked = !this.hidden.has(process.name);
    box.dataset.key = `show ${process.name}`;
    box.title = "Show its messages";
    box.addEventListener("change", () => {
      box.checked ? this.hidden.delete(process.name) : this.hidden.add(process.name);
      this.options.hiddenChanged();
    });
    const chip = element("i", "chip");
    chip.style.background = colorOf(process.name);
    label.append(box, chip, text("span", "name", process.name));
    title.append(label, text("span", "pid", pidOf(process)));
    title.lastChild.title = process.address ?? "";
    card.append(title);
    if (process.state === "live") {
      card.append(this.levelButtons(process), ...this.timer(process, null));
      if (process.loggers.length > 0) {
        card.append(this.loggerList(process));
      }
    } else {
      card.append(text("p", "reason", process.reason ?? "Has ended. It is followed again when it returns."));
    }
    return card;
  }

  levelButtons(process) {
    const group = element("div", "levels");
    group.setAttribute("role", "group");
    group.setAttribute("aria-label", `Default level of ${titleOf(process)}`);
    for (const level of levels) {
      const button = text("button", "", level);
      button.type = "button";
      button.dataset.key = `${process.id} ${level}`;
      const isOn = process.default === level;
      button.setAttribute("aria-pressed", String(isOn));
      // One stop for the tabulator; the arrows move within.
      button.tabIndex = isOn || (!levels.includes(process.default) && level === "OFF") ? 0 : -1;
      button.addEventListener("click", () => this.set(process, null, level));
      group.append(button);
    }
    group.addEventListener("keydown", (event) => {
      const step = { ArrowLeft: -1, ArrowRight: 1 }[event.key];
      if (step) {
        const buttons = [...group.children];
        const next = buttons[buttons.indexOf(event.target) + step];
        next?.focus();
        event.preventDefault();
      }
    });
    return group;
  }

  loggerList(process) {
    const details = element("details");
    details.open = this.open.has(process.name);
    const own = process.loggers.filter(([, level]) => level !== "default").length;
    const summary = text("summary", "", `${process.loggers.length} logger${process.loggers.length === 1 ? "" : "s"}${own > 0 ? `, ${own} with a level of ${own === 1 ? "its" : "their"} own` : ""}`);
    summary.dataset.key = `loggers ${process.name}`;
    details.append(summary);
    const list = element("ul", "loggers");
    const fill = () => {
      list.replaceChildren(...(details.open ? process.loggers.map(([name, level]) => this.loggerRow(process, name, level)) : []));
      this.tick();
    };
    details.addEventListener("toggle", () => {
      details.open ? this.open.add(process.name) : this.open.delete(process.name);
      if (details.open === (list.childElementCount === 0)) {
        fill();
      }
    });
    details.append(list);
    if (details.open) {
      fill();
    }
    return details;
  }

  loggerRow(process, name, level) {
    const row = element("li");
    const label = text("span", "logger", name);
    label.title = name;
    const select = element("select", level === "default" ? "" : "own");
    select.setAttribute("aria-label", `Level of the logger ${name} of ${titleOf(process)}`);
    select.dataset.key = `${process.id} level of ${name}`;
    const add = (value, shown) => {
      const option = text("option", "", shown);
      option.value = value;
      option.selected = value === level || (value === "DEFAULT" && level === "default");
      select.append(option);
    };
    add("DEFAULT", `default (${process.default})`);
    levels.forEach((one) => add(one, one));
    select.addEventListener("change", () => this.set(process, name, select.value));
    row.append(label, select, ...this.timer(process, name));
    return row;
  }

  timer(process, logger) {
    if (!this.ends.has(keyOf(process, logger))) {
      return [];
    }
    const row = element("div", "timed");
    const left = text("span", "left", "");
    left.dataset.end = keyOf(process, logger);
    const back = text("button", "", "Put back now");
    back.type = "button";
    back.dataset.key = `${process.id} back ${logger ?? ""}`;
    back.setAttribute("aria-label", `Put the earlier ${logger === null ? "default level" : `level of ${logger}`} of ${titleOf(process)} back now`);
    back.addEventListener("click", () => this.send("back", process, logger, {}, "the earlier level is back"));
    row.append(left, back);
    return [row];
  }

  tick() {
    for (const left of this.list.querySelectorAll(".left")) {
      const end = this.ends.get(left.dataset.end);
      const rest = Math.max(0, Math.ceil(((end ?? 0) - performance.now()) / 1000));
      left.textContent = `earlier level back in ${Math.floor(rest / 60)}:${String(rest % 60).padStart(2, "0")}`;
    }
  }

  // ---- changes

  set(process, logger, level) {
    const seconds = this.options.lasting();
    const lasting = seconds === "" ? "for good" : `for ${seconds / 60} minutes`;
    this.send("level", process, logger, seconds === "" ? { level } : { level, seconds }, `${level} ${lasting}`);
  }

  async send(path, process, logger, parameters, done) {
    const form = new URLSearchParams({ process: process.id, ...parameters });
    if (logger !== null) {
      form.set("logger", logger);
    }
    try {
      const response = await fetch(path, { method: "POST", body: form });
      if (!response.ok) {
        throw new Error(await response.text());
      }
      this.options.say(`${titleOf(process)}${logger === null ? "" : `, ${logger}`}: ${done}`);
    } catch (error) {
      this.options.fail(`The level of ${titleOf(process)} wasn't changed. ${error.message}`);
      this.update([...this.shownProcesses()]);
    }
  }

  shownProcesses() {
    const names = new Set([...this.list.children].map((card) => card.dataset.name));
    return [...this.known.values()].filter((process) => names.has(process.name));
  }
}

function keyOf(process, logger) {
  return logger === null ? `${process.id} ` : `${process.id} ${logger}`;
}

function titleOf(process) {
  return process.pid ? `${process.name} (${process.pid})` : process.name;
}

function pidOf(process) {
  const state = { live: "", silent: "no answer", ended: "ended" }[process.state];
  return [process.pid ? `pid ${process.pid}` : "", state].filter(Boolean).join(", ");
}

function colorOf(name) {
  let hash = 0;
  for (const character of name) {
    hash = (hash * 31 + character.codePointAt(0)) >>> 0;
  }
  return colors[hash % colors.length];
}

function text(name, className, content) {
  const made = element(name, className);
  made.textContent = visible(content);
  return made;
}
