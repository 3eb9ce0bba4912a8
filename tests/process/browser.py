"""Drives Debian's Chromium, without a window, over the pipe of its developer tools."""

import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import time


class Browser:
    """One browser with one page. Every wait ends: after 20 seconds without an answer it fails."""

    def __init__(self, width=1280, height=800):
        program = shutil.which("chromium")
        if not program:
            raise AssertionError("chromium is not installed; packages.txt lists it")
        self.folder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        folder = pathlib.Path(self.folder.name)
        to, back = folder / "to", folder / "back"
        os.mkfifo(to)
        os.mkfifo(back)
        self.errors = open(folder / "errors", "w+b")
        # The browser reads commands from descriptor 3 and writes answers to descriptor 4.
        self.process = subprocess.Popen(
            ["/bin/sh", "-c", 'to=$1 back=$2; shift 2; exec "$@" 3<"$to" 4>"$back"', "sh", to, back,
             program, "--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
             "--no-first-run", "--hide-scrollbars", "--disable-background-networking",
             f"--user-data-dir={folder / 'profile'}", f"--window-size={width},{height}",
             "--remote-debugging-pipe", "about:blank"],
            stdin=subprocess.DEVNULL, stdout=self.errors, stderr=self.errors,
            env={**os.environ, "HOME": str(folder)})
        self.commands = open(to, "wb", buffering=0)
        self.answers = os.open(back, os.O_RDONLY)
        os.set_blocking(self.answers, False)
        self.buffer = bytearray()
        self.number = 0
        self.session = None
        self.loaded = False
        self.problems = []
        try:
            target = self.send("Target.createTarget", url="about:blank")["targetId"]
            self.session = self.send("Target.attachToTarget", targetId=target,
                                     flatten=True)["sessionId"]
            self.resize(width, height)
        except AssertionError:
            self.close()
            raise
        self.send("Page.enable")
        self.send("Runtime.enable")

    def close(self):
        self.commands.close()
        os.close(self.answers)
        self.process.terminate()
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.errors.close()
        self.folder.cleanup()

    def receive(self, deadline):
        while True:
            end = self.buffer.find(0)
            if end >= 0:
                message = json.loads(self.buffer[:end])
                del self.buffer[:end + 1]
                return message
            try:
                piece = os.read(self.answers, 1 << 20)
            except BlockingIOError:
                piece = None
            if piece == b"" or time.monotonic() > deadline:
                self.errors.seek(0)
                raise AssertionError("the browser does not answer: " +
                                     self.errors.read().decode(errors="replace")[-2000:])
            if piece:
                self.buffer += piece
            else:
                time.sleep(0.002)

    def take(self, message):
        if message.get("method") == "Page.loadEventFired":
            self.loaded = True
        elif message.get("method") == "Runtime.exceptionThrown":
            details = message["params"]["exceptionDetails"]
            self.problems.append(details.get("exception", {}).get("description", details["text"]))

    def send(self, method, **parameters):
        self.number += 1
        command = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            command["sessionId"] = self.session
        self.commands.write(json.dumps(command).encode() + b"\0")
        deadline = time.monotonic() + 20
        while True:
            message = self.receive(deadline)
            if message.get("id") != self.number:
                self.take(message)
                continue
            if "error" in message:
                raise AssertionError(f"{method}: {message['error']['message']}")
            return message["result"]

    def open(self, path):
        self.leave_by(lambda: self.send("Page.navigate", url=pathlib.Path(path).as_uri()))

    def leave_by(self, action):
        """Does what leads to another page, and waits until that has loaded: in between no script
        can be run."""
        self.loaded = False
        action()
        deadline = time.monotonic() + 20
        while not self.loaded:
            self.take(self.receive(deadline))

    def run(self, script):
        """The value of a JavaScript expression."""
        result = self.send("Runtime.evaluate", expression=script, returnByValue=True,
                           awaitPromise=True)
        if "exceptionDetails" in result:
            raise AssertionError(result["exceptionDetails"]["exception"]["description"])
        return result["result"].get("value")

    def wait_for(self, script):
        """Until the expression is true."""
        deadline = time.monotonic() + 20
        while not self.run(f"!!({script})"):
            if time.monotonic() > deadline:
                raise AssertionError(f"never true: {script}")
            time.sleep(0.01)

    def resize(self, width, height):
        self.send("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=False)

    def screenshot(self, x, y, width, height):
        """A part of what is to be seen, as the text of a PNG in base 64."""
        return self.send("Page.captureScreenshot", format="png", clip={
            "x": x, "y": y, "width": width, "height": height, "scale": 1})["data"]

    def mouse(self, kind, x, y, **more):
        self.send("Input.dispatchMouseEvent", type=kind, x=x, y=y, **more)

    def click(self, x, y):
        self.mouse("mouseMoved", x, y)
        self.mouse("mousePressed", x, y, button="left", buttons=1, clickCount=1)
        self.mouse("mouseReleased", x, y, button="left", clickCount=1)

    def drag(self, x, y, dx, dy):
        self.mouse("mouseMoved", x, y)
        self.mouse("mousePressed", x, y, button="left", buttons=1, clickCount=1)
        for part in (1, 2, 3, 4):
            self.mouse("mouseMoved", x + dx * part / 4, y + dy * part / 4, button="left", buttons=1)
        self.mouse("mouseReleased", x + dx, y + dy, button="left", clickCount=1)

    def key(self, key):
        text = {"Enter": "\r"}.get(key, key if len(key) == 1 else "")
        code = {"Enter": 13, "Escape": 27, "ArrowLeft": 37, "ArrowUp": 38, "ArrowRight": 39,
                "ArrowDown": 40, "Tab": 9}.get(key, ord(key[0]))
        self.send("Input.dispatchKeyEvent", type="keyDown", key=key, text=text,
                  windowsVirtualKeyCode=code)
        self.send("Input.dispatchKeyEvent", type="keyUp", key=key, windowsVirtualKeyCode=code)

    def type(self, text):
        self.send("Input.insertText", text=text)
