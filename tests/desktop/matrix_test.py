"""The window of each toolkit in the states in which people leave windows: its pixels, its tree, and always in time.

Runs on two monitors, with and without a compositing manager.
"""

import os
import signal
import unittest
from collections.abc import Callable
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path
from typing import NamedTuple

from perception import PIXELS, TREE, capture, code, picture
from witnesses import Window, accessible_tree, nodes, tool, values, window_list, windows_of_class
from witnesses import differing_pixels, size_of, state_of_desktop

TRIES = 5  # while an application changes by itself
WITHHOLDS_NOTHING = {"TAVIK_PERCEPTION_CONFIG": f"{os.environ['HOME']}/empty-policy.yaml"}


class Application(NamedTuple):
    """One to look at, and the one that lies on top of it."""

    toolkit: str
    window_class: str
    request: dict
    name: str  # as assistive technology knows it; empty without a tree
    cover: str = "XTerm"


APPLICATIONS = (
    Application("GTK 3", "Galculator", {"app_bundle_id": "galculator"}, "galculator"),
    Application("GTK 4", "gnome-calculator", {"app_bundle_id": "org.gnome.Calculator"}, "gnome-calculator"),
    Application("Qt 5", "FeatherPad", {"app_bundle_id": "featherpad"}, "FeatherPad"),
    Application("Chromium", "Chromium", {"app_bundle_id": "chromium"}, "Chromium"),
    Application("Xt", "XTerm", {"app_bundle_id": "debian-xterm"}, "", cover="FeatherPad"),
)

# Where the window and its cover lie: the monitors are 960x700 each, the cover is 900x600.
HERE, ASIDE = (20, 40), (1000, 60)
PLACES = (
    ("uncovered", HERE, ASIDE),
    ("partly covered", HERE, (150, 200)),
    ("wholly covered", HERE, (10, 30)),
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


def on_each(test: Callable) -> Callable:
    """The test for every application that has come up."""

    def on_all(self: unittest.TestCase) -> None:
        for application in APPLICATIONS:
            with self.subTest(application.toolkit):
                if not windows_of_class(application.window_class):
                    self.skipTest(f"{application.window_class} is not installed, or did not come up")
                test(self, application)

    return on_all


def set_the_scene(application: Application) -> tuple[Window, Window]:
    """The window and its cover side by side, the cover active, every other window minimized."""
    window, cover = map(Window, (application.window_class, application.cover))
    for other in {line.split()[0] for line in window_list()} - {window.client, cover.client}:
        tool("xdotool", "windowminimize", other)
    window.activate()
    cover.activate()
    tool("xdotool", "windowsize", cover.client, "900", "600")
    uncovered_picture(window, cover)
    return window, cover


def uncovered_picture(window: Window, cover: Window) -> str:
    cover.move(*ASIDE)
    window.move(*HERE)
    return window.screenshot()


def at_rest(witness: Callable[[], object], look: Callable[[], object]) -> tuple:
    """What is seen, and what a witness says before and after alike: Chromium's toolbar changes by itself."""
    for _ in range(TRIES):
        before, seen, after = witness(), look(), witness()
        if before == after:
            return seen, before
    raise AssertionError("the application does not come to rest")


def without_frames(node: dict) -> dict:
    children = {"children": [without_frames(child) for child in node["children"]]} if "children" in node else {}
    return {key: value for key, value in node.items() if key != "frame"} | children


class MatrixTest(unittest.TestCase):
    maxDiff = 2000

    def look(self, application: Application, moves: list[tuple[Window, tuple[int, int]]]) -> bytes:
        for window, place in moves:
            window.move(*place)
        before = state_of_desktop()
        seen = picture(application.request | PIXELS)
        self.assertEqual(state_of_desktop(), before)
        return seen

    @on_each
    def test_1_places(self, application: Application) -> None:
        window, cover = set_the_scene(application)
        expected = uncovered_picture(window, cover)
        for state, place, place_of_cover in PLACES:
            with self.subTest(state):
                for _ in range(TRIES):
                    seen = self.look(application, [(cover, place_of_cover), (window, place)])
                    wrong = differing_pixels(seen, expected)
                    if wrong == "0" or expected == (expected := uncovered_picture(window, cover)):
                        break  # else it has changed by itself: FeatherPad's notice goes
                self.assertEqual(wrong, "0")

    @on_each
    def test_2_hidden(self, application: Application) -> None:
        client = set_the_scene(application)[0].client
        for state, hide, show, expected in HIDDEN:
            with self.subTest(state):
                tool(*hide.split(), client)
                try:
                    if state == "shaded" and "_SHADED" not in tool("xprop", "-id", client, "_NET_WM_STATE"):
                        self.skipTest("a window without a title bar of the manager's cannot be shaded")
                    self.assertEqual(code(application.request | PIXELS), expected)
                    self.assertEqual("role" in capture(application.request | TREE)["ax_tree"], bool(application.name))
                finally:
                    tool(*show.split(), client)

    @on_each
    def test_3_trees(self, application: Application) -> None:
        if not application.name:
            self.skipTest("it has no tree")
        Path(WITHHOLDS_NOTHING["TAVIK_PERCEPTION_CONFIG"]).touch()
        window, _ = set_the_scene(application)
        data, expected = at_rest(
            lambda: accessible_tree(application.name), lambda: capture(application.request | TREE, WITHHOLDS_NOTHING)
        )
        # Toolkits disagree whether the title bar or the shadow belongs to a window: its frame is that of its picture.
        expected["frame"] = [*window.corner, *size_of(picture(application.request | PIXELS))]
        self.assertEqual(data["ax_tree"]["frame"], expected["frame"])
        # GTK 4 says where elements are within the window alone.
        seen = without_frames if application.toolkit == "GTK 4" else dict
        self.assertEqual(seen(data["ax_tree"]), seen(expected))
        self.assertEqual(data["ax_node_count"], len(nodes(data["ax_tree"])))

    @on_each
    def test_4_password_on_a_page(self, application: Application) -> None:
        if application.toolkit != "Chromium":
            self.skipTest("it shows no page")
        tree = capture(application.request | TREE)["ax_tree"]
        self.assertEqual(values(tree, "AXSecureTextField"), ["<redacted>"])
        for secret in ("correct horse", "•"):  # nor in what a parent repeats of it
            self.assertNotIn(secret, str(tree))
        self.assertIn("alice", values(tree, "AXTextField"))

    def test_5_stopped(self) -> None:
        applications = [application for application in APPLICATIONS if windows_of_class(application.window_class)]
        stopped = []
        try:
            for application in applications:
                window, _ = set_the_scene(application)
                window.activate()
                os.kill(window.process, signal.SIGSTOP)
                stopped.append(window.process)
                for request in (application.request | PIXELS, {"target": "screen"}):
                    with self.subTest(request):
                        capture(request)
            requests = [{"target": "focused_element"}, *(application.request | TREE for application in applications)]
            with ThreadPoolExecutor(len(requests)) as helpers:
                for seen in helpers.map(capture, requests):
                    self.assertIn("ax_tree", seen)
        finally:
            for process in stopped:
                os.kill(process, signal.SIGCONT)
