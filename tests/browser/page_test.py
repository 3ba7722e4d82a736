#!/usr/bin/env python3
"""tests/browser/page_test.py [--many]

Drives the page of `log_application web` in a real browser, against real processes under Wine. To be run by
`scripts/wine --host`, so that the browser is in the network of these processes; scripts/checks/browser does that. A
screenshot of each scene goes to build/screenshots. Ends with 1 at the first scene that isn't as it should be. With
--many only the scene of 100000 messages is run, which prints how fast they were.
"""

import json
import os
import re
import subprocess
import sys
import time

TOP = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
BIN = f"{TOP}/build/win32/bin"
WORK = f"{TOP}/build/browser"
SHOTS = f"{TOP}/build/screenshots"

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
sys.dont_write_bytecode = True
from browser import Browser, BrowserError  # noqa: E402

ROWS = "[...document.querySelectorAll('.row:not(.note)')]"
TEXTS = f"{ROWS}.map((row) => row.querySelector('.text').textContent)"


def windows_path(path):
    return "Z:" + path.replace("/", "\\")


class Program:
    """A Windows program in Wine. Its output goes to a file."""

    started = []

    def __init__(self, name, arguments, environment=None):
        Program.started.append(self)
        self.output_path = f"{WORK}/{name}.{len(Program.started)}.out"
        self.output = open(self.output_path, "wb")
        self.process = subprocess.Popen(
            [f"{TOP}/scripts/wine", f"{BIN}/{name}.exe", *arguments], stdin=subprocess.DEVNULL, stdout=self.output,
            stderr=self.output, env={**os.environ, **(environment or {})})

    def text(self):
        with open(self.output_path, encoding="utf-8", errors="replace") as file:
            return file.read()

    def end(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait(20)
        self.output.close()


def service(name, *mode, level="INFO", options=()):
    config = f"{WORK}/service.{len(Program.started)}.conf"
    with open(config, "w", encoding="ascii") as file:
        file.write(f'defaults : {{ discovery_addr = "0.0.0.0"; default_level = "{level}"; }};\nprocesses : {{}};\n')
    return Program("log_service_program", [*mode, "--", "--logcfg", windows_path(config), *options],
                   {"LOG_SERVICE_NAME": name})


class Page:
    """log_application web, and the browser at its address."""

    def __init__(self, browser, *arguments):
        self.browser = browser
        self.program = Program("log_application", ["web", *arguments])
        end = time.monotonic() + 30
        while True:
            found = re.search(r"http://127\.0\.0\.1:\d+/[0-9a-f]{32}/", self.program.text())
            if found:
                break
            if time.monotonic() > end or self.program.process.poll() is not None:
                raise BrowserError("the program has printed no address: " + self.program.text())
            time.sleep(0.05)
        self.address = found.group()
        browser.look(1280, 800)
        browser.go(self.address)


def card(name):
    return f"[...document.querySelectorAll('.process')].find((one) => one.dataset.name === {json.dumps(name)})"


def is_live(name):
    return f"{card(name)}?.classList.contains('live')"


def level_of(name):
    return f"{card(name)}?.querySelector('.levels [aria-pressed=true]')?.textContent"


def count(browser):
    return int(re.sub(r"\D", "", browser.run("document.getElementById('count').textContent.split(' ')[0]")))


def expect(condition, what):
    if not condition:
        raise BrowserError(what)


# ---- scenes ------------------------------------------------------------------------------------------------------------


def scene_found(browser):
    """Two processes are found by themselves, and their messages come."""
    services = [service("orders", "work"), service("gateway", "work", level="DEBUG")]
    page = Page(browser)
    for name in ("orders", "gateway"):
        browser.wait_for(f"the process {name}", is_live(name))
    browser.wait_for("messages of both", f"new Set({ROWS}.map((row) => row.querySelector('.who').textContent)).size === 2")
    browser.wait_for("an error", "document.querySelector('.row.err')", 40)
    browser.wait_for("them in the strip", "/last 10 minutes: [1-9]/.test(document.getElementById('strip-text').textContent)")
    time.sleep(2)
    for scheme in ("light", "dark"):
        browser.look(1280, 800, scheme)
        time.sleep(0.6)
        browser.screenshot(f"{SHOTS}/found-{scheme}.png")
    expect(browser.run("document.querySelectorAll('.row').length") < 120, "more rows in the document than can be seen")
    browser.look(390, 780)
    time.sleep(0.5)
    browser.screenshot(f"{SHOTS}/phone.png")
    expect(browser.run("document.documentElement.scrollWidth <= 390"), "the page is wider than a phone")
    browser.click("#show-processes")
    time.sleep(0.3)
    browser.screenshot(f"{SHOTS}/phone-processes.png")
    browser.click("#show-processes")
    browser.look(1280, 800)
    return page, services


def scene_filter(browser):
    """A text, a regular expression, a level, and a process choose what is seen."""
    browser.key("/")
    browser.type("order saved")
    browser.wait_for("only messages with the text",
                     f"{TEXTS}.length > 3 && {TEXTS}.every((text) => text.includes('order saved'))")
    expect(browser.run("document.querySelectorAll('mark').length") > 3, "what is found isn't marked")
    browser.screenshot(f"{SHOTS}/filter.png")
    browser.run("document.getElementById('include').select()")
    browser.type("order.saved")
    browser.wait_for("no message: a point is a point", "!document.getElementById('no-lines').hidden")
    time.sleep(1)
    expect(not browser.run("document.getElementById('no-lines').hidden"), "a text is taken for a regular expression")
    browser.run("document.getElementById('include').select()")
    browser.type("o")
    browser.run("document.getElementById('exclude').focus()")
    browser.type("job")
    browser.wait_for("only messages without the text", f"{TEXTS}.length > 3 && {TEXTS}.every((text) => text.includes('o') && !text.includes('job'))")
    browser.run("document.getElementById('exclude').select()")
    browser.type("none has this")
    browser.run("document.getElementById('include').focus()")
    browser.run("document.getElementById('include').select()")
    browser.type("^(slow|peer")
    browser.click("#regex")
    browser.wait_for("what is wrong with the expression", "!document.getElementById('filter-problem').hidden")
    expect("is no regular expression" in browser.run("document.getElementById('filter-problem').textContent"), "the reason")
    browser.screenshot(f"{SHOTS}/filter-refused.png")
    browser.run("document.getElementById('include').select()")
    browser.type("^(slow|peer)")
    browser.wait_for("messages of the expression",
                     f"{TEXTS}.length > 0 && {TEXTS}.every((text) => /^(slow|peer)/.test(text))")
    clear_filter(browser)
    choose_level(browser, "WARN")
    browser.wait_for("warnings and errors alone", f"{ROWS}.length > 0 && {ROWS}.every((row) => /^(WARN|ERR)$/.test(row.querySelector('.level').textContent))")
    clear_filter(browser)
    browser.run(f"{card('gateway')}.querySelector('input').click()")
    browser.wait_for("one process alone", f"{ROWS}.length > 3 && {ROWS}.every((row) => row.querySelector('.who').textContent === 'orders')")
    browser.run(f"{card('gateway')}.querySelector('input').click()")
    browser.wait_for("both again", f"new Set({ROWS}.map((row) => row.querySelector('.who').textContent)).size === 2")


def choose_level(browser, level):
    browser.run(f"(() => {{ const s = document.getElementById('level'); s.value = '{level}'; s.dispatchEvent(new Event('change')); }})()")


def clear_filter(browser):
    browser.run("""(() => {
      for (const id of ['include', 'exclude']) { document.getElementById(id).value = ''; }
      document.getElementById('regex').checked = false;
      document.getElementById('level').value = 'TRACE';
      document.getElementById('level').dispatchEvent(new Event('change'));
    })()""")
    browser.wait_for("messages without a filter", f"{ROWS}.length > 10")


def scene_level(browser):
    """A click raises a level, its debug lines come, and it falls back after its time."""
    seen = f"{ROWS}.some((row) => row.querySelector('.who').textContent === 'orders' && row.querySelector('.level').textContent === 'DEBUG')"
    expect(not browser.run(seen), "a debug line before the level was raised")
    debug = f"[...{card('orders')}.querySelectorAll('.levels button')].find((one) => one.textContent === 'DEBUG').click()"
    browser.run(debug)
    browser.wait_for("ten minutes left", f"/back in (10:00|9:5)/.test({card('orders')}.querySelector('.left')?.textContent)")
    browser.wait_for("a debug line", seen)
    browser.run("document.activeElement.blur()")
    for scheme in ("dark", "light"):
        browser.look(1280, 800, scheme)
        time.sleep(0.6)
        browser.screenshot(f"{SHOTS}/level-{scheme}.png")
    browser.run(f"{card('orders')}.querySelector('.timed button').click()")
    browser.wait_for("the level of before at once", f"{level_of('orders')} === 'INFO'")
    browser.wait_for("no debug lines any more", f"!{seen}")
    # Seconds in place of minutes.
    browser.run("document.querySelector('input[name=lasting][value=\"600\"]').value = '10'")
    browser.run(debug)
    browser.wait_for("the level DEBUG", f"{level_of('orders')} === 'DEBUG'")
    browser.wait_for("the time left", f"/back in 0:(10|0\\d)/.test({card('orders')}.querySelector('.left')?.textContent)")
    browser.wait_for("less of it", f"/back in 0:0[0-7]/.test({card('orders')}.querySelector('.left')?.textContent)")
    browser.wait_for("a debug line", seen)
    browser.screenshot(f"{SHOTS}/level-raised.png")
    browser.wait_for("the level of before", f"{level_of('orders')} === 'INFO' && {card('orders')}.querySelector('.left') === null")
    # For good, and of one logger.
    browser.run("document.querySelector('input[name=lasting][value=\"\"]').click()")
    browser.run(f"{card('orders')}.querySelector('summary').click()")
    browser.wait_for("the loggers", f"{card('orders')}.querySelectorAll('.loggers li').length === 3")
    browser.run(f"""(() => {{ const s = {card('orders')}.querySelector('[aria-label^="Level of the logger net"]');
      s.value = 'TRACE'; s.dispatchEvent(new Event('change')); }})()""")
    browser.wait_for("the logger's own level", f"{card('orders')}.querySelector('.loggers select.own')?.value === 'TRACE'")
    expect(browser.run(f"{card('orders')}.querySelector('.left') === null"), "a level for good has no time")


def scene_keyboard(browser):
    """Everything works from the keyboard; attributes unfold."""
    browser.run("document.getElementById('log').focus()")
    for _ in range(40):
        browser.key("ArrowUp")
        if browser.run("document.querySelector('.row.current .more') !== null"):
            break
    browser.key("Enter")
    browser.wait_for("an unfolded message", "document.querySelector('.details dt')")
    expect(browser.run("document.querySelector('.row.current').getAttribute('aria-expanded') === 'true'"), "the row says so")
    expect(browser.run("document.querySelector('.details dt').textContent") in ("ms", "order", "peer"), "the attributes come first")
    expect(browser.run("document.getElementById('log').getAttribute('aria-activedescendant') === document.querySelector('.row.current').id"),
           "the current row is named")
    browser.screenshot(f"{SHOTS}/unfolded.png")
    top = browser.run("document.querySelector('.row.current').getBoundingClientRect().top")
    time.sleep(1.5)
    expect(abs(browser.run("document.querySelector('.row.current').getBoundingClientRect().top") - top) < 1.5,
           "what is read moves while messages come")
    expect(not browser.run("document.getElementById('newest').hidden"), "no way to the newest")
    browser.key("Enter")
    browser.wait_for("it folded", "document.querySelector('.details') === null")
    browser.click("#newest")
    browser.wait_for("the newest", "document.getElementById('newest').hidden")
    browser.key("p")
    browser.wait_for("the pause", "document.getElementById('pause').getAttribute('aria-pressed') === 'true'")
    before = count(browser)
    browser.wait_for("new ones counted", "/new/.test(document.getElementById('pause').textContent)")
    expect(count(browser) == before, "messages come in the pause")
    pending, after = browser.run("""(() => {
      const number = (id) => parseInt(document.getElementById(id).textContent.replace(/\\D/g, ''));
      const pending = number('pause');
      document.getElementById('pause').click();
      return [pending, number('count')];
    })()""")
    expect(after == before + pending, f"{before} messages and {pending} of the pause are {after}")
    browser.wait_for("the end of the pause", f"parseInt(document.getElementById('count').textContent.replace(/\\D/g, '')) > {after}")


def save(browser, button, name):
    """The lines of what a click saves."""
    path = f"{browser.downloads}/{name}"
    if os.path.exists(path):
        os.remove(path)
    browser.click(button)
    end = time.monotonic() + 20
    while not os.path.exists(path) and time.monotonic() < end:
        time.sleep(0.1)
        browser.run("1")
    with open(path, encoding="utf-8", newline="") as file:
        lines = file.read().split("\n")
    expect(lines.pop() == "", "the last line has no end")
    for line in lines if name == "log.txt" else []:
        expect(re.match(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3} \d+ \[(ERR|WARN|INFO|DEBUG|TRACE)\] \S+", line), f"the layout of text: {line}")
        expect(not re.search("[\x00-\x1f\x7f-\x9f\u202e]", line), f"a control character in the text: {line}")
    return lines


def scene_saved(browser):
    """What is seen is saved as text and as JSON lines."""
    browser.key("p")
    time.sleep(0.5)
    wanted = count(browser)
    for button, name in (("#save-json", "log.jsonl"), ("#save-text", "log.txt")):
        lines = save(browser, button, name)
        if name == "log.jsonl":
            objects = [json.loads(line) for line in lines]
            expect(list(objects[0]) == ["time", "level", "logger", "pid", "tid", "message", "attributes"], "the members of JSON")
        expect(wanted - 10 <= len(lines) <= wanted, f"{len(lines)} lines of {wanted} are in {name}")
    browser.key("p")


def scene_hostile(browser):
    """Markup in texts, names and attributes is shown as text."""
    bad = service("<u>bad</u>", "hostile")
    browser.wait_for("the hostile process", is_live("<u>bad</u>"))
    browser.wait_for("its messages", f"{TEXTS}.some((text) => text.startsWith('<script>'))")
    time.sleep(1)
    expect(browser.run("document.title") == "Live log", "a script of a message ran")
    expect(browser.run("document.querySelectorAll('main script, main img, main svg, aside u, main b').length") == 0, "markup of a message")
    browser.run("[...document.querySelectorAll('.row.err')].findLast((row) => row.textContent.includes('<script>')).click()")
    browser.wait_for("its attributes", "[...document.querySelectorAll('.details dt')].some((one) => one.textContent === '<i>key</i>')")
    expect(browser.run("[...document.querySelectorAll('.details pre')].every((one) => one.textContent.includes('\\\\u202E'))"),
           "a character that turns the direction of writing isn't escaped")
    browser.screenshot(f"{SHOTS}/hostile.png")
    saved = save(browser, "#save-text", "log.txt")
    expect(any("<script>" in line for line in saved), "the messages in the saved text")
    # A logger with a name outside ASCII has its level set like any other.
    own = f"{card('<u>bad</u>')}.querySelector('[aria-label^=\"Level of the logger größe 日本 of\"]')"
    expect(browser.run(f"!{TEXTS}.includes('a name outside ASCII')"), "a message below the level")
    browser.run(f"{card('<u>bad</u>')}.querySelector('details summary').click()")
    browser.wait_for("the logger", own)
    browser.run(f"""(() => {{ const s = {own}; s.value = 'DEBUG'; s.dispatchEvent(new Event('change', {{ bubbles: true }})); }})()""")
    browser.click("#newest")
    browser.wait_for("its message", f"{TEXTS}.includes('a name outside ASCII')")
    bad.end()
    browser.click("#newest")


def scene_reload(browser):
    """After a reload the messages of before are there, each once."""
    before = count(browser)
    browser.go("about:blank")
    browser.call("Page.navigateToHistoryEntry", entryId=browser.call("Page.getNavigationHistory")["entries"][-2]["id"])
    browser.wait_for("the messages of before", f"parseInt(document.getElementById('count')?.textContent.replace(/\\D/g, '') ?? '0') >= {before}")
    browser.run("document.getElementById('log').focus()")
    browser.key("Home")
    time.sleep(0.3)
    numbers = browser.run("[...document.querySelectorAll('.row')].map((row) => Number(row.dataset.n)).sort((a, b) => a - b)")
    expect(len(numbers) == len(set(numbers)) and numbers[0] == 0, f"rows {numbers[:5]}")
    browser.key("End")


def scene_told(browser):
    """The page says what it doesn't show."""
    browser.run("source_.dispatchEvent(new MessageEvent('missed', { data: '1234' }))")
    browser.run("source_.dispatchEvent(new MessageEvent('missed', { data: '1' }))")
    browser.wait_for("what came too fast", "/ · 1,235 missed, as they came too fast/.test(document.getElementById('count').textContent)")
    browser.run("source_.dispatchEvent(new MessageEvent('undecided', { data: 'null' }))")
    browser.wait_for("what the filter gave up", "/too long for the regular expression/.test(document.getElementById('count').textContent)")


def scene_return(browser, services):
    """A process ends and returns."""
    # Only the rows in sight are in the document: with few others a note stays there.
    choose_level(browser, "ERR")
    services[0].end()
    browser.wait_for("the end", f"{card('orders')}?.classList.contains('ended')")
    browser.screenshot(f"{SHOTS}/ended.png")
    services[0] = service("orders", "work")
    browser.wait_for("the return", is_live("orders"))
    browser.wait_for("what the page says", "[...document.querySelectorAll('.row.note')].some((note) => /following orders/.test(note.textContent))")


def scene_lost(browser, page):
    """The page says that the program has ended."""
    page.program.end()
    browser.wait_for("the loss", "document.getElementById('connection').dataset.state === 'lost'")
    browser.screenshot(f"{SHOTS}/lost.png")
    browser.run(f"{card('gateway')}.querySelector('.levels button').click()")
    browser.wait_for("that the level wasn't changed", "/gateway.* wasn't changed/.test(document.getElementById('alert').textContent) && !document.getElementById('alert').hidden")
    browser.problems.clear()  # the browser reports refused connections


def scene_many(browser):
    """100000 messages, none lost, and the page stays smooth."""
    wanted = 100000
    page = Page(browser, "--name", "burst")
    browser.run("""(() => { window.frames_ = { last: performance.now(), longest: 0 };
      const frame = (now) => { frames_.longest = Math.max(frames_.longest, now - frames_.last); frames_.last = now; requestAnimationFrame(frame); };
      requestAnimationFrame(frame); })()""")
    burst = service("burst", "burst", str(wanted), options=["--wait-log-application"])
    browser.wait_for("the first messages", f"{ROWS}.length > 0", 40)
    start = time.monotonic()
    browser.wait_for("all messages", f"parseInt(document.getElementById('count').textContent.split(' m')[0].replace(/\\D/g, '')) >= {wanted}", 150)
    took = time.monotonic() - start
    text = browser.run("document.getElementById('count').textContent")
    expect("missed" not in text and "were dropped" not in text, text)
    browser.wait_for("the last message", f"{TEXTS}.includes('message {wanted - 1}')")
    longest = browser.run("frames_.longest")
    rows = browser.run("document.querySelectorAll('.row').length")
    print(f"   {wanted} messages in {took:.1f} s, {wanted / took:.0f} a second; longest frame {longest:.0f} ms; {rows} rows in the document")
    expect(rows < 120, "more rows in the document than can be seen")
    scroll = browser.run("""(async () => { const log = document.getElementById('log'); let longest = 0; let last = performance.now();
      for (let i = 0; i < 60; i++) { log.scrollTop = (log.scrollHeight * ((i * 37) % 60)) / 60;
        await new Promise((done) => requestAnimationFrame(done)); const now = performance.now(); longest = Math.max(longest, now - last); last = now; }
      return longest; })()""")
    print(f"   longest frame while scrolling through them: {scroll:.0f} ms")
    browser.screenshot(f"{SHOTS}/many.png")
    # The oldest ones make room for further ones. The end is the end also of lines that aren't drawn yet.
    browser.run("document.getElementById('log').focus()")
    browser.key("Home")
    browser.wait_for("the oldest", "!document.getElementById('newest').hidden")
    newest = browser.run("""(async () => {
      const line = { time: null, level: 'INFO', logger: 'a', pid: 1, tid: 1, message: 'further', attributes: {} };
      const rows = Array.from({ length: 2000 }, (_, i) => [1e9 + i, 1, line]);
      source_.dispatchEvent(new MessageEvent('lines', { data: JSON.stringify(rows), lastEventId: '1000001999' }));
      document.getElementById('log').dispatchEvent(new KeyboardEvent('keydown', { key: 'End', bubbles: true }));
      for (let i = 0; i < 5; i++) { await new Promise((done) => requestAnimationFrame(done)); }
      return document.getElementById('newest').hidden && document.getElementById('row-1000001999') !== null;
    })()""")
    expect(newest, "the key End doesn't lead to the newest message")
    browser.wait_for("2000 older ones dropped", "/^100,000 messages · 2,00\\d older ones dropped/.test(document.getElementById('count').textContent)")
    burst.end()
    page.program.end()


def main(arguments):
    if arguments and arguments[0] in ("-h", "--help"):
        print(__doc__.strip())
        return 0
    os.makedirs(WORK, exist_ok=True)
    browser = None
    code = 0
    heading = "the start of the browser"
    try:
        browser = Browser(f"{WORK}/chromium")
        # Some events come too seldom to wait for.
        browser.call("Page.addScriptToEvaluateOnNewDocument",
                     source="window.EventSource = class extends EventSource { constructor(...all) { super(...all); window.source_ = this; } };")
        state = {}

        def found():
            state["page"], state["services"] = scene_found(browser)

        scenes = [
            (scene_found, found), (scene_filter, lambda: scene_filter(browser)), (scene_level, lambda: scene_level(browser)),
            (scene_keyboard, lambda: scene_keyboard(browser)), (scene_saved, lambda: scene_saved(browser)),
            (scene_hostile, lambda: scene_hostile(browser)), (scene_reload, lambda: scene_reload(browser)),
            (scene_told, lambda: scene_told(browser)),
            (scene_return, lambda: scene_return(browser, state["services"])), (scene_lost, lambda: scene_lost(browser, state["page"])),
            (scene_many, lambda: scene_many(browser)),
        ]
        for scene, run in scenes[-1:] if arguments == ["--many"] else scenes:
            heading = scene.__doc__
            print(f"== {heading}", flush=True)
            run()
            expect(not browser.problems, f"the browser reports {browser.problems}")
    except (BrowserError, OSError) as error:
        print(f"page_test: {heading}: {error}", file=sys.stderr)
        code = 1
        try:
            browser.screenshot(f"{SHOTS}/failed.png")
            print(f"the page: {SHOTS}/failed.png\nreports of the browser: {browser.problems}", file=sys.stderr)
        except (BrowserError, OSError, AttributeError):
            pass
    finally:
        if browser:
            browser.close()
        for program in Program.started:
            program.end()
    return code


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
