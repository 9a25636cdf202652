"""The window of each toolkit in the states in which people leave windows: its pixels, its tree, and in what time.

Runs on two monitors, with and without a compositing manager. Each cell becomes a line of the file TAVIK_MATRIX, if set.
"""

import json
import os
import re
import signal
import subprocess
import time
import unittest
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from dataclasses import dataclass
from pathlib import Path

from perception import HELPER, Environment, ask, capture, run
from witnesses import (
    accessible_tree,
    activate,
    client_window,
    differing_pixels,
    drawn_part,
    frame_window,
    image_bytes,
    move,
    nodes,
    state_of_desktop,
    still_screenshot,
    tool,
    window_list,
    windows_of_class,
)

PIXELS = {"level": "pixel_perfect", "include_ax_tree": False}
TREE = {"include_image": False}
PASSWORD = "correct horse"  # on sign_in_page.html
LIMIT_SECONDS = 2.0  # for whatever an application does or leaves undone
TRIES = 5  # while an application changes by itself
COMPOSITED = "composited" if "TAVIK_COMPOSITED" in os.environ else "plain"
WITHOUT_PREFETCH = os.environ["TAVIK_WITHOUT_PREFETCH"]
WITHHOLDS_NOTHING = {"TAVIK_PERCEPTION_CONFIG": f"{os.environ['HOME']}/empty-policy.yaml"}


@dataclass
class Application:
    """One to look at, and the one that lies on top of it."""

    toolkit: str
    window_class: str
    bundle: str
    name: str = ""  # as assistive technology knows it; empty without a tree
    cover: str = "XTerm"

    @property
    def request(self) -> dict:
        return {"app_bundle_id": self.bundle}


APPLICATIONS = (
    Application("GTK 3", "Galculator", "galculator", "galculator"),
    Application("GTK 4", "gnome-calculator", "org.gnome.Calculator", "gnome-calculator"),
    Application("Qt 5", "FeatherPad", "featherpad", "FeatherPad"),
    Application("Chromium", "Chromium", "chromium", "Chromium"),
    Application("Xt", "XTerm", "debian-xterm", cover="FeatherPad"),
)

# Where the window and its cover lie: the monitors are 960x700 each, the cover is 900x600.
ASIDE = (1000, 60)
PLACES = (
    ("uncovered", (20, 40), ASIDE),
    ("partly covered", (20, 40), (150, 200)),
    ("wholly covered", (20, 40), (10, 30)),
    ("partly outside", (-120, 450), ASIDE),
    ("outside and covered", (-120, 450), (-20, 80)),
    ("on the second monitor", (1100, 100), (10, 30)),
)

# Hidden states, the command into each and the one out of it, and the code with which pixels are refused.
HIDDEN = (
    ("minimized", "xdotool windowminimize", "xdotool windowactivate", "target_window_minimized"),
    ("shaded", "wmctrl -b add,shaded -ir", "wmctrl -b remove,shaded -ir", "target_window_minimized"),
    ("on another workspace", "wmctrl -t 1 -ir", "wmctrl -t 0 -ir", "target_app_has_no_window"),
)


def command_on(client: str, command: str) -> None:
    tool(*command.split(), client)


def process_of(application: Application) -> int:
    return int(tool("xdotool", "getwindowpid", client_window(application.window_class)))


def note(application: Application, state: str, wrong: str, count: object, seconds: float) -> None:
    if file := os.environ.get("TAVIK_MATRIX"):
        cells = (COMPOSITED, application.toolkit, state, wrong, str(count), f"{seconds * 1000:.0f}")
        with open(file, "a", encoding="utf-8") as table:
            table.write(" | ".join(cells) + "\n")


def timed(request: dict, environment: Environment | None = None) -> tuple[dict, float]:
    begin = time.monotonic()
    response = ask(request, environment)
    return response, time.monotonic() - begin


def at_rest(witness: Callable[[], object], look: Callable[[], object]) -> tuple:
    """What a witness says, before and after alike, and what is seen between: Chromium's toolbar changes by itself."""
    for _ in range(TRIES):
        before, seen, after = witness(), look(), witness()
        if before == after:
            return before, seen
    raise AssertionError("the application does not come to rest")


def without_frames(node: dict) -> dict:
    children = {"children": [without_frames(child) for child in node["children"]]} if "children" in node else {}
    return {key: value for key, value in node.items() if key != "frame"} | children


def undated_answer(request: dict, program: str = HELPER) -> bytes:
    answer = run(json.dumps(request).encode(), program=program).stdout
    return re.sub(rb'"captured_at_utc":"[^"]*"', b"", answer)


def wrong_pixels(response: dict, expected: str) -> str:
    """How many, or the code of a response without a picture."""
    return differing_pixels(image_bytes(response["data"]), expected) if response["ok"] else response["code"]


def pixels_in(screenshot: str) -> bytes:
    return Path(screenshot.partition("[")[0]).read_bytes()


class MatrixTest(unittest.TestCase):
    maxDiff = 2000

    @classmethod
    def setUpClass(cls) -> None:
        cls.applications = [one for one in APPLICATIONS if windows_of_class(one.window_class)]

    @contextmanager
    def each(self, application: Application, state: str = "") -> Iterator[None]:
        with self.subTest(f"{application.toolkit}, {COMPOSITED}", state=state):
            yield

    def set_the_scene(self, application: Application) -> tuple[str, str]:
        """The window and its cover side by side, the cover active, every other window minimized."""
        window, cover = map(client_window, (application.window_class, application.cover))
        for other in {line.split()[0] for line in window_list()} - {window, cover}:
            tool("xdotool", "windowminimize", other)
        activate(window)
        activate(cover)
        tool("xdotool", "windowsize", cover, "900", "600")
        move(cover, *ASIDE)
        move(window, 20, 40)
        return window, cover

    def uncovered_picture(self, window: str, cover: str) -> str:
        move(cover, *ASIDE)
        move(window, 20, 40)
        return still_screenshot(frame_window(window)) + drawn_part(window)

    def look(self, application: Application, windows: tuple[str, str], places: tuple) -> tuple[dict, float]:
        for client, place in zip(reversed(windows), reversed(places), strict=True):
            move(client, *place)
        before = state_of_desktop()
        answer = timed(application.request | PIXELS)
        self.assertEqual(state_of_desktop(), before)
        return answer

    def test_0_all_are_there(self) -> None:
        for application in APPLICATIONS:
            with self.each(application):
                if application not in self.applications:
                    self.skipTest(f"{application.window_class} is not installed, or did not come up")

    def test_1_places(self) -> None:
        for application in self.applications:
            with self.each(application):
                windows = self.set_the_scene(application)
                expected = self.uncovered_picture(*windows)
                for state, *places in PLACES:
                    with self.each(application, state):
                        for _ in range(TRIES):
                            response, seconds = self.look(application, windows, places)
                            if (wrong := wrong_pixels(response, expected)) == "0":
                                break
                            earlier, expected = expected, self.uncovered_picture(*windows)
                            if pixels_in(earlier) == pixels_in(expected):  # FeatherPad's notice goes by itself
                                break
                        note(application, state, wrong, "", seconds)
                        self.assertEqual(wrong, "0")

    def test_2_hidden(self) -> None:
        for application in self.applications:
            with self.each(application):
                window, _ = self.set_the_scene(application)
                for state, hide, show, code in HIDDEN:
                    with self.each(application, state):
                        command_on(window, hide)
                        try:
                            if state == "shaded" and "_SHADED" not in tool("xprop", "-id", window, "_NET_WM_STATE"):
                                self.skipTest("a window without a title bar of the manager's cannot be shaded")
                            response, seconds = timed(application.request | PIXELS)
                            note(application, state, response.get("code", "ok"), "", seconds)
                            self.assertEqual(response.get("code"), code)
                        finally:
                            command_on(window, show)

    def test_3_trees(self) -> None:
        Path(WITHHOLDS_NOTHING["TAVIK_PERCEPTION_CONFIG"]).touch()
        for application in self.applications:
            if not application.name:
                continue
            with self.each(application):
                still_screenshot(frame_window(self.set_the_scene(application)[0]))
                expected, (response, seconds) = at_rest(
                    lambda: accessible_tree(application.name),
                    lambda: timed(application.request | TREE, WITHHOLDS_NOTHING),
                )
                data = response["data"]
                trees = [data["ax_tree"], expected]
                if application.toolkit == "GTK 4":  # which says where elements are within the window alone
                    trees = [without_frames(tree) for tree in trees]
                note(application, "tree", "", data["ax_node_count"], seconds)
                self.assertEqual(*trees)
                self.assertEqual(data["ax_node_count"], len(nodes(data["ax_tree"])))

    def test_4_prefetch_changes_nothing(self) -> None:
        for application in self.applications:
            if not application.name:
                continue
            with self.each(application):
                still_screenshot(frame_window(self.set_the_scene(application)[0]))  # the manager moves them about
                for request in (application.request | TREE, {"target": "focused_element"} | TREE):
                    expected, without = at_rest(
                        lambda: undated_answer(request), lambda: undated_answer(request, WITHOUT_PREFETCH)
                    )
                    self.assertEqual(without, expected)

    def test_5_password_on_a_page(self) -> None:
        for application in self.applications:
            if application.toolkit != "Chromium":
                continue
            with self.each(application):
                data = capture(application.request | TREE)
                found = [node for node in nodes(data["ax_tree"]) if node["role"] == "AXSecureTextField"]
                self.assertEqual([node.get("value") for node in found], ["<redacted>"])
                for secret in (PASSWORD, "•"):  # nor in what a parent repeats of it
                    self.assertNotIn(secret, str(data["ax_tree"]))
                self.assertIn("alice", [node.get("value") for node in nodes(data["ax_tree"])])

    def test_6_stopped(self) -> None:
        for application in self.applications:
            with self.each(application):
                self.set_the_scene(application)
                process = process_of(application)
                for state, request in (("stopped, tree", TREE), ("stopped, pixels", PIXELS)):
                    os.kill(process, signal.SIGSTOP)
                    try:
                        response, seconds = timed(application.request | request)
                    finally:
                        os.kill(process, signal.SIGCONT)
                    note(application, state, response.get("code", ""), "", seconds)
                    self.assertTrue(response["ok"], response)
                    self.assertLess(seconds, LIMIT_SECONDS)

    def test_7_killed_while_looked_at(self) -> None:
        for application in self.applications:
            with self.each(application):
                process = process_of(application)
                os.kill(process, signal.SIGSTOP)
                with subprocess.Popen([HELPER], stdin=subprocess.PIPE, stdout=subprocess.PIPE) as helper:
                    begin = time.monotonic()
                    helper.stdin.write(b'{"app_bundle_id":"%s"}' % application.bundle.encode())
                    helper.stdin.close()
                    time.sleep(0.15)  # into the walk
                    os.kill(process, signal.SIGKILL)
                    answer = helper.stdout.read()
                seconds = time.monotonic() - begin
                note(application, "killed", "", "", seconds)
                self.assertTrue(answer.endswith(b"}\n"))
                self.assertLess(seconds, LIMIT_SECONDS)
