"""On sway: native windows and one through XWayland are found, pictured and placed; grim and sway itself are the witnesses.

TAVIK_SCALE is that of every monitor. Windows stand where its pixels are whole.
"""

import contextlib
import json
import os
import signal
import tempfile
import unittest
from collections.abc import Iterator
from pathlib import Path

from perception import PIXELS, TREE, ask, capture, code, image_bytes, picture
from witnesses import differing_pixels, processes, tool, wait_for

SCALE = float(os.environ["TAVIK_SCALE"])
CALCULATOR, EDITOR, TERMINAL = "app_id=galculator", "app_id=featherpad", "class=XTerm"
PLACES = {CALCULATOR: (20, 40, 352, 344), TERMINAL: (420, 40, 300, 200), EDITOR: (420, 260, 400, 240)}


def sway(*command: str) -> None:
    for answer in json.loads(tool("swaymsg", "-r", *command)):
        assert answer["success"], (command, answer)


def windows(node: dict | None = None) -> Iterator[dict]:
    node = node or json.loads(tool("swaymsg", "-r", "-t", "get_tree"))
    if node.get("pid"):
        yield node
    for child in node["nodes"] + node["floating_nodes"]:
        yield from windows(child)


def place(window: str, monitor: int = 1) -> None:
    x, y, width, height = PLACES[window]
    sway(f"[{window}] move to output HEADLESS-{monitor}, resize set {width} {height}, move position {x} {y}")

    def has_arrived() -> bool:
        sizes = [(found["rect"]["width"], found["rect"]["height"]) for found in windows()]
        return (width, height) in sizes

    wait_for(has_arrived, f"{window} does not take its place")


def screenshot(window: str | None = None, monitor: int = 1) -> str:
    """The monitor's, or the window's part of it, to ImageMagick."""
    path = os.path.join(tempfile.gettempdir(), f"tavik-{os.getpid()}-{monitor}.png")
    tool("grim", "-o", f"HEADLESS-{monitor}", path)
    x, y, width, height = (round(side * SCALE) for side in PLACES[window]) if window else (0, 0, 0, 0)
    return f"{path}[{width}x{height}+{x}+{y}]" if window else path


class WaylandTest(unittest.TestCase):
    def setUp(self) -> None:
        for window in PLACES:
            place(window)
        sway(f"[{CALCULATOR}] focus")

    def still(self, request: dict, window: str | None = None, monitor: int = 1) -> None:
        """The picture is the witness's, once the window has been drawn at its new place."""
        last = ""

        def is_equal() -> bool:
            nonlocal last
            last = differing_pixels(picture(request | PIXELS), screenshot(window, monitor))
            return last == "0"

        with contextlib.suppress(AssertionError):
            wait_for(is_equal, "")
        self.assertEqual(last, "0", request)

    def test_pictures(self) -> None:
        region = {"x": 11, "y": 21, "w": 300, "h": 200}
        self.still({"app_bundle_id": "galculator"}, CALCULATOR)
        self.still({"app_bundle_id": "featherpad"}, EDITOR)
        self.still({"target": "focused_element"}, CALCULATOR)
        self.still({"target": "screen"})
        expected = screenshot() + "[300x200+11+21]"
        self.assertEqual(differing_pixels(picture({"target": "region", "region": region} | PIXELS), expected), "0")
        if SCALE == 1:  # XWayland's windows have the compositor's units for pixels
            self.still({"app_name": "XTerm"}, TERMINAL)

    def test_trees_lie_over_pictures(self) -> None:
        for name, window in (("galculator", CALCULATOR), ("featherpad", EDITOR)):
            with self.subTest(name):
                expected = [round(side * SCALE) for side in PLACES[window]]
                self.assertEqual(capture({"app_bundle_id": name} | TREE)["ax_tree"]["frame"], expected)

    def test_frontmost_and_screen(self) -> None:
        for window, identifier in ((EDITOR, "featherpad"), (TERMINAL, "debian-xterm"), (CALCULATOR, "galculator")):
            sway(f"[{window}] focus")
            context = capture({"target": "screen"} | TREE)["context"]
            self.assertEqual((context["app_bundle_id"], context["scale_factor"]), (identifier, SCALE))

    def test_covered_and_out_of_sight(self) -> None:
        request = {"app_bundle_id": "featherpad"} | PIXELS
        for there, back, expected in (
            (f"[{CALCULATOR}] move position 500 300", f"[{CALCULATOR}] move position 20 40", "capture_failed"),
            (f"[{EDITOR}] move scratchpad", f"[{EDITOR}] scratchpad show", "target_window_minimized"),
            (f"[{EDITOR}] move to workspace 7", f"[{EDITOR}] move to workspace 1", "target_app_has_no_window"),
        ):
            with self.subTest(expected):
                sway(there)
                self.assertEqual(code(request), expected)
                sway(back)

    def test_second_monitor(self) -> None:
        place(CALCULATOR, 2)
        self.still({"app_bundle_id": "galculator"}, CALCULATOR, 2)
        x, y, width, height = (round(side * SCALE) for side in PLACES[CALCULATOR])
        self.assertEqual(capture({"app_bundle_id": "galculator"} | TREE)["ax_tree"]["frame"][2:], [width, height])

    def test_policy(self) -> None:
        with tempfile.NamedTemporaryFile("w", suffix=".yaml") as policy:
            policy.write("bundle_id_blocklist:\n  - galculator\n")
            policy.flush()
            for request in ({"target": "screen"}, {"app_name": "galculator"}):
                data = capture(request, {"TAVIK_PERCEPTION_CONFIG": policy.name})
                self.assertEqual((data["image"], data["sensitive_bundle_id"]), (None, "galculator"))
            sway(f"[{EDITOR}] focus")
            self.assertTrue(image_bytes(capture({"target": "screen"}, {"TAVIK_PERCEPTION_CONFIG": policy.name})))

    def test_without_sways_own_interface(self) -> None:
        """A picture of the screen only where who is in front is certain."""
        for socket in (None, "/nowhere"):
            answer = ask({"target": "screen"} | PIXELS, {"SWAYSOCK": socket})
            seen = answer["data"]["context"].get("app_bundle_id") if answer["ok"] else answer["code"]
            self.assertIn(seen, ("galculator", "capture_failed"))

    def test_without_a_compositor(self) -> None:
        """What runs through XWayland is there, as on an X server."""
        data = capture({"app_name": "XTerm"} | PIXELS, {"WAYLAND_DISPLAY": "/nowhere"})
        self.assertTrue(image_bytes(data))
        self.assertEqual(ask({"app_name": "galculator"}, {"WAYLAND_DISPLAY": "/nowhere"})["code"], "target_app_not_running")

    def test_silent_compositor(self) -> None:
        compositor = next(pid for pid in processes() if Path(f"/proc/{pid}/comm").read_text() == "sway\n")
        os.kill(int(compositor), signal.SIGSTOP)
        try:
            self.assertEqual(code({"app_name": "galculator"} | TREE), "target_app_not_running")
        finally:
            os.kill(int(compositor), signal.SIGCONT)


if __name__ == "__main__":
    unittest.main()
