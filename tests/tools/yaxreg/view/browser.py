"""A headless Chromium, driven through its DevTools pipe with nothing but the standard library."""

import base64
import fcntl
import json
import os
import select
import shutil
import subprocess
import tempfile
import time

TIMEOUT = 60  # seconds that an answer may take

FLAGS = [
    "--headless", "--disable-gpu", "--hide-scrollbars", "--mute-audio", "--no-first-run",
    "--no-default-browser-check", "--disable-extensions", "--disable-sync", "--disable-component-update",
    "--disable-background-networking", "--disable-dev-shm-usage", "--remote-debugging-pipe", "about:blank"]


def high_pipe():
    """A pipe whose ends are none of the descriptors that the browser wants."""
    ends = os.pipe()
    high = [fcntl.fcntl(end, fcntl.F_DUPFD_CLOEXEC, 10) for end in ends]
    for end in ends:
        os.close(end)
    return high


class Browser:
    """A browser with one page. `problems` are what the page has logged as a warning or an error, or thrown."""

    def __init__(self, program):
        self.folder = tempfile.mkdtemp()
        self.problems = []
        self.requests = []
        self.events = []
        self.last = 0
        self.pending = b""
        read_there, self.write_end = high_pipe()
        self.read_end, write_there = high_pipe()
        sandbox = ["--no-sandbox"] if os.getuid() == 0 else []
        words = [program, *sandbox, "--user-data-dir=" + self.folder, *FLAGS]
        # The browser reads commands from descriptor 3 and answers on 4.
        script = f'exec "$@" 3<&{read_there} 4>&{write_there} {read_there}<&- {write_there}>&-'
        self.process = subprocess.Popen(
            ["bash", "-c", script, "bash", *words], pass_fds=(read_there, write_there),
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env={**os.environ, "HOME": self.folder})
        os.close(read_there)
        os.close(write_there)
        self.session = None
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(domain + ".enable")

    def close(self):
        os.close(self.write_end)
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        os.close(self.read_end)
        shutil.rmtree(self.folder, ignore_errors=True)

    def call(self, method, **parameters):
        self.last += 1
        number = self.last
        message = {"id": number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        data = json.dumps(message).encode() + b"\0"
        while data:
            data = data[os.write(self.write_end, data):]
        while True:
            answer = self._receive()
            if answer.get("id") != number:
                self._note(answer)
            elif "error" in answer:
                raise RuntimeError(f"{method}: {answer['error']}")
            else:
                return answer["result"]

    def _receive(self):
        end = time.monotonic() + TIMEOUT
        while b"\0" not in self.pending:
            if not select.select([self.read_end], [], [], max(0, end - time.monotonic()))[0]:
                raise RuntimeError("the browser does not answer")
            data = os.read(self.read_end, 1 << 20)
            if not data:
                raise RuntimeError("the browser has ended")
            self.pending += data
        message, _, self.pending = self.pending.partition(b"\0")
        return json.loads(message)

    def _note(self, event):
        method, values = event.get("method"), event.get("params", {})
        if method == "Runtime.exceptionThrown":
            self.problems.append(values["exceptionDetails"].get("exception", values["exceptionDetails"]))
        elif method == "Runtime.consoleAPICalled" and values["type"] in ("error", "warning", "assert"):
            self.problems.append(values["args"])
        elif method == "Log.entryAdded" and values["entry"]["level"] in ("error", "warning"):
            self.problems.append(values["entry"]["text"])
        elif method == "Network.requestWillBeSent":
            self.requests.append(values["request"]["url"])
        elif method == "Page.loadEventFired":
            self.events.append(method)

    def show(self, path, width, height, scheme):
        """Opens a page in a window of that size."""
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)
        self.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": scheme}])
        self.events.clear()
        self.call("Page.navigate", url="file://" + os.path.abspath(path))
        while not self.events:
            self._note(self._receive())

    def run(self, script):
        """What an expression of the page is, when its promise is kept."""
        answer = self.call("Runtime.evaluate", expression=script, awaitPromise=True, returnByValue=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(answer["exceptionDetails"]["exception"].get("description"))
        return answer["result"].get("value")

    def press(self, *keys):
        """Keys by their names, "ArrowDown", or characters."""
        for key in keys:
            text = {"text": key} if len(key) == 1 else {"text": "\r"} if key == "Enter" else {}
            codes = {"Enter": 13, "Tab": 9}
            code = {"windowsVirtualKeyCode": codes[key]} if key in codes else {}
            self.call("Input.dispatchKeyEvent", type="keyDown", key=key, **code, **text)
            self.call("Input.dispatchKeyEvent", type="keyUp", key=key, **code)

    def picture(self, path):
        data = self.call("Page.captureScreenshot", captureBeyondViewport=True)["data"]
        with open(path, "wb") as file:
            file.write(base64.b64decode(data))
