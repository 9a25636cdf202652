"""Looks at a desktop for so many minutes, while its applications come, go, stop and die, and says what that has left.

Every answer is checked, and whatever the helpers could leave behind is counted before and after: connections to the X
server and to the buses, descriptors, memory, processes, and what a user would see.
"""

import itertools
import json
import os
import random
import signal
import subprocess
import sys
import time
from collections import Counter
from concurrent.futures import ThreadPoolExecutor
from contextlib import suppress
from pathlib import Path

import perception
from perception import PIXELS, TREE, response_of, run
from witnesses import Window, processes, state_of_desktop, tool, window_list

perception.LIMIT_SECONDS = 12.0  # eight at once share the processors; the helper's own limit is 10 s
SERVERS = ("Xvfb", "dbus-daemon", "at-spi2-registryd", "at-spi-bus-launcher", "openbox")
MORE_MEMORY = 16 * 2**20  # that a server may have kept of what it once needed
SIDE_BY_SIDE = 8

APPLICATIONS = ({"app_bundle_id": "galculator"}, {"app_name": "FeatherPad"}, {"app_name": "XTerm"}, {"app_name": "none"})
TARGETS = ({"target": "screen"}, {"target": "focused_element"}, {"target": "region", "region": {"x": 5, "y": 5, "w": 90, "h": 60}})
WANTED = ({}, TREE, PIXELS, {"level": "glance"}, {"format": "png"})
REQUESTS = [b"", b"{}", b"{", *(json.dumps(what | how).encode() for what in APPLICATIONS + TARGETS for how in WANTED)]


def servers() -> dict[str, Path]:
    """The folders in /proc of the processes that could keep something, by name and number."""
    found = {}
    for pid in sorted(processes(), key=int):
        name = name_of(pid)
        if name and any(server.startswith(name) for server in SERVERS):
            found[f"{name} {len(found)}"] = Path(f"/proc/{pid}")
    return found


def name_of(pid: str) -> str:
    with suppress(OSError):
        return Path(f"/proc/{pid}/comm").read_text().strip()
    return ""


def memory(process: Path) -> int:
    return int((process / "statm").read_text().split()[1]) * os.sysconf("SC_PAGE_SIZE")


def names_on(*bus: str) -> int:
    call = ("--dest=org.freedesktop.DBus", "--object-path=/org/freedesktop/DBus", "--method=org.freedesktop.DBus.ListNames")
    return tool("gdbus", "call", *bus, *call).count("':")


def figures() -> dict[str, object]:
    address = tool("gdbus", "call", "--session", "--dest=org.a11y.Bus", "--object-path=/org/a11y/bus",
                   "--method=org.a11y.Bus.GetAddress").split("'")[1]
    descriptors = {f"descriptors of {name}": len(list((process / "fd").iterdir())) for name, process in servers().items()}
    buses = {"session bus": names_on("--session"), "accessibility bus": names_on(f"--address={address}")}
    seen = state_of_desktop() | descriptors | buses
    seen["pointer"] = seen["pointer"].partition(" window:")[0]  # under which windows come and go
    seen["processes"] = sum(name_of(pid).startswith("tavik-percep") for pid in seen["processes"])
    return seen


def settled(wanted: dict[str, object] | None = None) -> dict[str, object]:
    """The figures once they stay as they are, or are as wanted."""
    for _ in range(50):
        seen = figures()
        if seen == (wanted or seen) and seen == figures():
            break
        time.sleep(0.2)
    return seen


def disturb(step: int) -> None:
    """One of the applications has something happen to it, and is as before at the end."""
    window = Window(("Galculator", "FeatherPad")[step % 2])
    if step % 3 == 0:
        os.kill(window.process, signal.SIGSTOP)
        time.sleep(0.3)
        os.kill(window.process, signal.SIGCONT)
    elif step % 3 == 1:
        window.move(20 + step % 50, 40)
        time.sleep(0.1)
        window.move(20, 40)
    else:
        guest = subprocess.Popen(["xterm", "-T", "guest", "-e", "sleep", "60"], stderr=subprocess.DEVNULL)
        while not any("guest" in line for line in window_list()):
            time.sleep(0.02)
        time.sleep(random.random() / 2)
        guest.kill()
        guest.wait()


def soak(seconds: float) -> Counter:
    answers = Counter()
    end = time.monotonic() + seconds

    def ask(text: bytes) -> str:
        answer = response_of(run(text))
        return "ok" if answer["ok"] else answer["code"]

    requests = itertools.cycle(REQUESTS)
    with ThreadPoolExecutor(SIDE_BY_SIDE + 1) as helpers:
        for step in itertools.count():
            if time.monotonic() >= end:
                return answers
            trouble = helpers.submit(disturb, step)
            for _ in range(SIDE_BY_SIDE):
                answers[ask(next(requests))] += 1
            answers.update(helpers.map(ask, itertools.islice(requests, SIDE_BY_SIDE)))
            trouble.result()


def main() -> int:
    soak(2)  # caches and pools fill
    before, sizes = settled(), {name: memory(process) for name, process in servers().items()}
    answers = soak(float(sys.argv[1]) * 60)
    after = settled(before)
    print(f"soak: {answers.total()} answers:", ", ".join(f"{count} {code}" for code, count in answers.most_common()))
    changes = [f"{what}: {before.get(what)} became {after.get(what)}" for what in before | after
               if before.get(what) != after.get(what)]
    for name, process in servers().items():
        size, grown = memory(process), memory(process) - sizes.get(name, 0)
        print(f"soak: {name} has {size >> 10} KiB, {grown >> 10:+d}")
        if grown > MORE_MEMORY:
            changes.append(f"{name} has grown by {grown >> 20} MiB")
    print(*(f"soak: {change}" for change in changes), sep="\n")
    return bool(changes)


if __name__ == "__main__":
    sys.exit(main())
