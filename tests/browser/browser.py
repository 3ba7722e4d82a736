"""A headless browser, driven by the DevTools protocol over two pipes."""

import base64
import json
import os
import select
import shutil
import subprocess
import time


class BrowserError(Exception):
    pass


class Browser:
    """One page of a browser of its own, with a fresh profile in the folder `work`."""

    def __init__(self, work):
        shutil.rmtree(work, ignore_errors=True)
        os.makedirs(work)
        self.number = 0
        self.problems = []  # exceptions of scripts, and what the browser has refused
        self.buffer = b""
        to_browser, self.out = os.pipe()
        self.into, from_browser = os.pipe()

        def give_pipes():
            # Away from 3 and 4 first: one of them may be the other's place.
            high = [os.dup(to_browser), os.dup(from_browser)]
            high = [os.dup2(high[0], 60), os.dup2(high[1], 61)]
            os.dup2(high[0], 3)
            os.dup2(high[1], 4)

        self.process = subprocess.Popen(
            ["chromium", "--headless=new", "--remote-debugging-pipe", "--no-sandbox", "--disable-gpu", "--no-first-run",
             "--disable-dev-shm-usage", "--disable-background-networking", "--disable-component-update", "--disable-sync",
             "--force-color-profile=srgb", f"--user-data-dir={work}/profile", "about:blank"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=open(f"{work}/stderr", "wb"),
            preexec_fn=give_pipes, close_fds=False, env={**os.environ, "HOME": work})
        os.close(to_browser)
        os.close(from_browser)
        self.session = None
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log"):
            self.call(f"{domain}.enable")
        self.downloads = f"{work}/downloads"
        self.call("Browser.setDownloadBehavior", behavior="allow", downloadPath=self.downloads)

    def close(self):
        self.process.terminate()
        self.process.wait(20)
        os.close(self.out)
        os.close(self.into)

    # ---- the protocol

    def call(self, method, **parameters):
        self.number += 1
        message = {"id": self.number, "method": method, "params": parameters}
        if self.session and not method.startswith(("Target.", "Browser.")):
            message["sessionId"] = self.session
        os.write(self.out, json.dumps(message).encode() + b"\0")
        wanted = self.number
        while True:
            answer = self.read()
            if answer.get("id") == wanted:
                if "error" in answer:
                    raise BrowserError(f"{method}: {answer['error']}")
                return answer["result"]

    def read(self, seconds=60):
        end = time.monotonic() + seconds
        while b"\0" not in self.buffer:
            ready, _, _ = select.select([self.into], [], [], max(0, end - time.monotonic()))
            if not ready:
                raise BrowserError("the browser doesn't answer")
            data = os.read(self.into, 1 << 20)
            if not data:
                raise BrowserError("the browser has ended")
            self.buffer += data
        text, self.buffer = self.buffer.split(b"\0", 1)
        message = json.loads(text)
        if message.get("method") == "Runtime.exceptionThrown":
            details = message["params"]["exceptionDetails"]
            self.problems.append(details.get("exception", {}).get("description", details["text"]))
        elif message.get("method") == "Log.entryAdded" and message["params"]["entry"]["level"] == "error":
            self.problems.append(message["params"]["entry"]["text"])
        return message

    # ---- what a user does and sees

    def run(self, expression):
        """The value of a JavaScript expression; a promise is waited for."""
        result = self.call("Runtime.evaluate", expression=expression, awaitPromise=True, returnByValue=True)
        if "exceptionDetails" in result:
            raise BrowserError(result["exceptionDetails"].get("exception", {}).get("description", expression))
        return result["result"].get("value")

    def wait_for(self, what, expression, seconds=30):
        """Until the expression is true; `what` names it in the failure."""
        end = time.monotonic() + seconds
        while True:
            value = self.run(f"Boolean({expression})")
            if value:
                return value
            if time.monotonic() > end:
                raise BrowserError(f"never seen: {what}")
            time.sleep(0.05)

    def go(self, address):
        self.call("Page.navigate", url=address)
        self.wait_for("the page", "document.readyState === 'complete'")

    def look(self, width, height, scheme="light", scale=1):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=scale,
                  mobile=width < 600)
        self.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])

    def click(self, selector):
        place = self.run(f"(() => {{ const e = document.querySelector({json.dumps(selector)}); e.scrollIntoView({{block: 'nearest'}});"
                         " const r = e.getBoundingClientRect(); return [r.x + r.width / 2, r.y + r.height / 2]; })()")
        for kind in ("mousePressed", "mouseReleased"):
            self.call("Input.dispatchMouseEvent", type=kind, x=place[0], y=place[1], button="left", clickCount=1)

    def type(self, text):
        self.call("Input.insertText", text=text)

    def key(self, key):
        codes = {"Enter": 13, "Tab": 9, "Escape": 27, "End": 35, "Home": 36, "ArrowUp": 38, "ArrowDown": 40,
                 "ArrowLeft": 37, "ArrowRight": 39}
        text = {"Enter": "\r"}.get(key, key if len(key) == 1 else "")
        event = {"key": key, "code": key, "windowsVirtualKeyCode": codes.get(key, ord(key[0].upper()))}
        self.call("Input.dispatchKeyEvent", type="keyDown" if text else "rawKeyDown", text=text, **event)
        self.call("Input.dispatchKeyEvent", type="keyUp", **event)

    def screenshot(self, path):
        data = self.call("Page.captureScreenshot", format="png")["data"]
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(base64.b64decode(data))
