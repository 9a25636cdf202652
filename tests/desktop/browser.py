"""A headless Chromium that looks at one page and tells what is on it, over the DevTools protocol."""

import json
import os
import select
import shutil
import subprocess
import tempfile
import time
from pathlib import Path

PATIENCE_SECONDS = 30.0
TROUBLE = ("Runtime.consoleAPICalled", "Runtime.exceptionThrown", "Log.entryAdded")
# Its pipe is at the descriptors 3 and 4, and it reaches no network.
COMMAND = (
    'exec "$0" 3<&$1 4>&$2 --headless --remote-debugging-pipe --user-data-dir="$3" --no-sandbox --no-first-run '
    "--disable-gpu --disable-background-networking --proxy-server=127.0.0.1:9 --host-resolver-rules='MAP * ~NOTFOUND'"
)


def is_installed() -> bool:
    return shutil.which("chromium") is not None


class Browser:
    def __init__(self) -> None:
        self.trouble: list[dict] = []  # all that pages have written to the console, and what the browser says of them
        self.profile = tempfile.TemporaryDirectory(dir=os.environ["HOME"], ignore_cleanup_errors=True)
        reading, self.requests = os.pipe()
        self.answers, writing = os.pipe()
        command = ("bash", "-c", COMMAND, "chromium", str(reading), str(writing), self.profile.name)
        self.process = subprocess.Popen(command, pass_fds=(reading, writing), stderr=subprocess.DEVNULL)
        os.close(reading)
        os.close(writing)
        self.number, self.received, self.session = 0, b"", {}
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = {"sessionId": self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]}
        for domain in ("Page", "Runtime", "Log"):
            self.call(f"{domain}.enable")

    def close(self) -> None:
        self.session = {}
        self.call("Browser.close")
        self.process.wait(PATIENCE_SECONDS)
        os.close(self.requests)
        os.close(self.answers)
        self.profile.cleanup()

    def next_message(self, deadline: float) -> dict:
        while b"\0" not in self.received:
            if not select.select([self.answers], [], [], max(0.0, deadline - time.monotonic()))[0]:
                raise TimeoutError("Chromium says nothing")
            self.received += os.read(self.answers, 1 << 20) or b"{}\0"
        message, _, self.received = self.received.partition(b"\0")
        return json.loads(message)

    def call(self, method: str, **parameters) -> dict:
        self.number += 1
        question = {"id": self.number, "method": method, "params": parameters} | self.session
        os.write(self.requests, json.dumps(question).encode() + b"\0")
        deadline = time.monotonic() + PATIENCE_SECONDS
        while (message := self.next_message(deadline)).get("id") != self.number:
            if message.get("method") in TROUBLE:
                self.trouble.append(message["params"])
        if "result" not in message:
            raise RuntimeError(f"{method}: {message}")
        return message["result"]

    def evaluate(self, expression: str):
        done = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in done:
            raise RuntimeError(str(done["exceptionDetails"]))
        return done["result"].get("value")

    def open(self, page: Path, ready: str) -> None:
        """Returns when this expression holds in the page."""
        self.call("Page.navigate", url=page.as_uri())
        deadline = time.monotonic() + PATIENCE_SECONDS
        while not self.evaluate(ready):
            if time.monotonic() > deadline:
                raise TimeoutError(f"not in the page: {ready}")
            time.sleep(0.02)

    def point_at(self, x: float, y: float) -> None:
        self.call("Input.dispatchMouseEvent", type="mouseMoved", x=x, y=y)
