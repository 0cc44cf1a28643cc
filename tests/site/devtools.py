"""A headless Chromium, driven through the pipe of its DevTools protocol: no package is needed beside the browser."""

import base64
import json
import os
import shutil
import subprocess
import tempfile

FLAGS = """--headless --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking
--disable-component-update --disable-sync --disable-extensions --mute-audio --hide-scrollbars --disable-dev-shm-usage
--allow-file-access-from-files --remote-debugging-pipe""".split()


class Browser:
    """One browser with a profile of its own, which goes away with it."""

    def __init__(self):
        self.profile = tempfile.mkdtemp(prefix="vexcov-browser-")
        to_browser, self.write_end = os.pipe()
        self.read_end, from_browser = os.pipe()

        def place_pipes():
            # The protocol wants descriptors 3 and 4; dup first, as either pipe may be on one of them.
            incoming, outgoing = os.dup(to_browser), os.dup(from_browser)
            os.dup2(incoming, 3)
            os.dup2(outgoing, 4)

        self.process = subprocess.Popen(
            ["chromium", *FLAGS, f"--user-data-dir={self.profile}", "about:blank"], preexec_fn=place_pipes,
            close_fds=False, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self.received = b""
        self.number = 0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()
        os.close(self.write_end)
        os.close(self.read_end)
        shutil.rmtree(self.profile, ignore_errors=True)

    def read_message(self):
        while b"\0" not in self.received:
            piece = os.read(self.read_end, 1 << 20)
            if not piece:
                raise RuntimeError("the browser has ended")
            self.received += piece
        message, self.received = self.received.split(b"\0", 1)
        return json.loads(message)

    def call(self, method, session=None, events=None, **parameters):
        """Calls a method and returns its result; what happens meanwhile is appended to `events`."""
        self.number += 1
        request = {"id": self.number, "method": method, "params": parameters}
        if session:
            request["sessionId"] = session
        data = json.dumps(request).encode() + b"\0"
        while data:
            data = data[os.write(self.write_end, data):]
        while True:
            message = self.read_message()
            if message.get("id") == self.number:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']['message']}")
                return message["result"]
            if events is not None:
                events.append(message)

    def new_page(self, **settings):
        return Page(self, **settings)


class Page:
    """A tab: what it says on its console and what it asks of the network or the disk is kept."""

    def __init__(self, browser, width=1200, height=800, dark=False, scripts=True):
        self.browser = browser
        self.events = []
        target = browser.call("Target.createTarget", url="about:blank")["targetId"]
        self.target = target
        self.session = browser.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(f"{domain}.enable")
        self.resize(width, height)
        self.set_dark(dark)
        if not scripts:
            self.call("Emulation.setScriptExecutionDisabled", value=True)

    def call(self, method, **parameters):
        return self.browser.call(method, session=self.session, events=self.events, **parameters)

    def close(self):
        self.browser.call("Target.closeTarget", targetId=self.target)

    def resize(self, width, height):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)

    def set_dark(self, dark):
        self.call("Emulation.setEmulatedMedia",
                  features=[{"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])

    def wait_for(self, method):
        seen = len(self.events)
        while True:
            for event in self.events[seen:]:
                if event.get("sessionId") == self.session and event["method"] == method:
                    return event
            seen = len(self.events)
            self.events.append(self.browser.read_message())

    def open(self, url):
        """Opens a page and waits until it is loaded. Forgets the events of the one before."""
        self.events.clear()
        self.call("Page.navigate", url=url)
        if not any(event["method"] == "Page.loadEventFired" for event in self.events):
            self.wait_for("Page.loadEventFired")

    def run(self, expression):
        """The value of an expression, also where the page itself may run no script."""
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(result["exceptionDetails"]["exception"].get("description", "exception"))
        return result["result"].get("value")

    def press(self, key, code=None, key_code=0, text=""):
        for kind in ("keyDown", "keyUp"):
            parameters = {"key": key, "code": code or key, "windowsVirtualKeyCode": key_code}
            if kind == "keyDown" and text:
                parameters["text"] = text
            self.call("Input.dispatchKeyEvent", type=kind, **parameters)

    def screenshot(self, path, whole=False):
        picture = self.call("Page.captureScreenshot", format="png", captureBeyondViewport=whole)
        with open(path, "wb") as file:
            file.write(base64.b64decode(picture["data"]))

    def complaints(self):
        """Messages of the page: errors, warnings, what a policy refused."""
        said = []
        for event in self.events:
            parameters = event.get("params", {})
            if event["method"] == "Runtime.consoleAPICalled":
                said.append(str(parameters["args"]))
            elif event["method"] == "Runtime.exceptionThrown":
                said.append(parameters["exceptionDetails"]["text"])
            elif event["method"] == "Log.entryAdded":
                said.append(parameters["entry"]["text"])
        return said

    def requests(self):
        return [event["params"]["request"]["url"] for event in self.events
                if event["method"] == "Network.requestWillBeSent"]
