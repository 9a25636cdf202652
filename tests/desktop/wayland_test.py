"""Under Wayland: native windows and one through XWayland are found, pictured and placed, as the compositor has them.

TAVIK_SCALE is that of every monitor. Windows stand where its pixels are whole.
"""

import contextlib
import functools
import json
import os
import re
import select
import shutil
import signal
import subprocess
import tempfile
import unittest
from pathlib import Path

import compositors
from compositors import IS_KWIN, command
from perception import HELPER, PIXELS, TREE, ask, capture, code, image_bytes, picture, response_of, run
from witnesses import differing_pixels, nodes, output_of, processes, size_of, tool, wait_for

SCALE = float(os.environ["TAVIK_SCALE"])
CALCULATOR, EDITOR, TERMINAL = "galculator", "featherpad", "XTerm"
GTK4, PATTERN = "org.gnome.Calculator", "org.example.Pattern"
PLACES = {
    CALCULATOR: (20, 40, 352, 400),
    TERMINAL: (460, 40, 298, 197),
    EDITOR: (460, 260, 400, 260),
    GTK4: (460, 40, 400, 520),
    PATTERN: (460, 540, 302, 122),
}
# Rows at top and bottom with round corners, which KWin blends with what the screen showed before.
ROUNDED = {CALCULATOR: (6, 0), TERMINAL: (6, 0), EDITOR: (6, 0), GTK4: (12, 12)} if IS_KWIN else {}
# Of buffers, and the monitor to show them on; each compositor takes formats of its own.
PATTERNS = (("XRGB8888", 2), ("ARGB8888" if IS_KWIN else "XBGR8888", 1))
HAS_GTK4 = shutil.which("gnome-calculator") is not None
BUTTON, ORANGE = "= =", "#ff7800"  # the only one of this title there, and the only one of this colour


def setUpModule() -> None:
    compositors.be_allowed_to_look()
    if HAS_GTK4:
        place(GTK4, 2)


def place(window: str, monitor: int = 1) -> None:
    compositors.place(window, *PLACES[window], monitor)


def pixels_of(window: str) -> list[int]:
    return [round(side * SCALE) for side in PLACES[window]]


def screenshot(window: str | None = None, monitor: int = 1) -> str:
    """The monitor's, or the window's part of it without those rows, to ImageMagick."""
    path = compositors.screenshot(monitor)
    if not window:
        return path
    (x, y, width, height), (top, bottom) = pixels_of(window), rounded_rows(window)
    return f"{path}[{width}x{height - top - bottom}+{x}+{y + top}]"


@functools.cache
def pattern() -> str:
    """The file of what pattern_window.cpp shows, by the same formula."""
    _, _, width, height = pixels_of(PATTERN)
    colours = (x * 0x9E3779 + y * 0x3C6EF5 + 0x1F83D9 & 0xFFFFFF for y in range(height) for x in range(width))
    path = Path(os.environ["HOME"]) / "pattern.ppm"
    path.write_bytes(f"P6 {width} {height} 255\n".encode() + b"".join(colour.to_bytes(3, "big") for colour in colours))
    return str(path)


def rounded_rows(window: str | None) -> list[int]:
    return [round(rows * SCALE) for rows in ROUNDED.get(window, (0, 0))]


def without_rounded_rows(png: bytes, window: str | None) -> bytes:
    top, bottom = rounded_rows(window)
    chop = ("-chop", f"0x{top}", "-gravity", "south", "-chop", f"0x{bottom}")
    return output_of("/usr/bin/convert", "png:-", *chop, "png:-", stdin=png) if top else png


def compositor() -> int:
    return next(int(pid) for pid in processes() if Path(f"/proc/{pid}/comm").read_text() == f"{compositors.PROCESS}\n")


class WaylandTest(unittest.TestCase):
    def setUp(self) -> None:
        for window in (CALCULATOR, TERMINAL, EDITOR):
            place(window)
        command("focus", CALCULATOR)

    def show_pattern(self, pixel_format: str, monitor: int) -> None:
        shown = subprocess.Popen([os.environ["TAVIK_PATTERN_WINDOW"], str(SCALE), pixel_format], stdout=subprocess.PIPE)
        for cleanup in (shown.stdout.close, shown.wait, shown.kill):
            self.addCleanup(cleanup)
        self.assertTrue(shown.stdout.readline())
        place(PATTERN, monitor)

    def still(self, request: dict, window: str | None = None, monitor: int = 1) -> None:
        """The picture is the witness's, once the window has been drawn at its new place. No other's shadow falls on it,
        and no text cursor blinks in it."""
        for front in (window, CALCULATOR) if window else ():
            command("focus", front)
        last = ""

        def is_equal() -> bool:
            nonlocal last
            answer = ask(request | PIXELS)
            png = image_bytes(answer["data"]) if answer["ok"] else b""
            seen = png and without_rounded_rows(png, window)
            expected = pattern() if window == PATTERN else screenshot(window, monitor)
            last = differing_pixels(seen, expected) if seen else answer["code"]
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
        if SCALE == 1 or IS_KWIN:  # on sway XWayland's windows have the compositor's units for pixels
            self.still({"app_name": "XTerm"}, TERMINAL)

    def test_trees_lie_over_pictures(self) -> None:
        for name, window in (("galculator", CALCULATOR), ("featherpad", EDITOR)):
            with self.subTest(name):
                self.assertEqual(capture({"app_bundle_id": name} | TREE)["ax_tree"]["frame"], pixels_of(window))

    def test_frontmost_and_screen(self) -> None:
        for window, identifier in ((EDITOR, "featherpad"), (TERMINAL, "debian-xterm"), (CALCULATOR, "galculator")):
            command("focus", window)
            context = capture({"target": "screen"} | TREE)["context"]
            self.assertEqual((context["app_bundle_id"], context["scale_factor"]), (identifier, SCALE))

    def test_known_pixels(self) -> None:
        """On each monitor, and covered: KWin has a picture of every window, on sway there is what the monitors show."""
        request = {"app_bundle_id": PATTERN}
        for pixel_format, monitor in PATTERNS:
            with self.subTest(pixel_format):
                self.doCleanups()
                self.show_pattern(pixel_format, monitor)
                self.still(request, PATTERN)
        shown = picture(request | PIXELS)
        compositors.place(CALCULATOR, 500, 300, *PLACES[CALCULATOR][2:])
        command("focus", CALCULATOR)
        wait_for(lambda: int(differing_pixels(shown, screenshot(PATTERN))) > 10_000, "the window is not covered")
        answer = ask(request | PIXELS)
        seen = differing_pixels(image_bytes(answer["data"]), pattern()) if answer["ok"] else answer["code"]
        self.assertEqual(seen, "0" if IS_KWIN else "capture_failed")

    @unittest.skipUnless(HAS_GTK4, "it is not installed")
    def test_gtk_4(self) -> None:
        """Which draws its decorations itself: round corners and a shadow, both gone where it fills the monitor."""
        request = {"app_bundle_id": GTK4}
        self.addCleanup(place, GTK4, 2)
        place(GTK4)
        data = capture(request | TREE)
        self.assertEqual((data["context"]["app_name"], data["ax_tree"]["frame"]), ("Calculator", pixels_of(GTK4)))
        place(GTK4, 2)
        self.still(request, GTK4, 2)
        self.assert_tree_lies_over_picture(request)
        self.addCleanup(command, "float", GTK4)
        command("fill", GTK4)
        self.still(request, None, 2)
        self.assert_tree_lies_over_picture(request)

    def assert_tree_lies_over_picture(self, request: dict) -> None:
        """The window exactly, and the middle of the button: GTK 4 leaves its padding out."""
        data = capture(request | {"level": "pixel_perfect"})
        left, top, *size = data["ax_tree"]["frame"]
        self.assertEqual((*size,), size_of(image_bytes(data)))
        ((x, y, width, height),) = (node["frame"] for node in nodes(data["ax_tree"]) if node.get("title") == BUTTON)
        extent = ("-alpha", "off", "-fill", "white", "+opaque", ORANGE, "-format", "%@", "info:")
        seen = tool("/usr/bin/convert", "png:-", *extent, stdin=image_bytes(data))
        seen_width, seen_height, seen_x, seen_y = map(int, re.split("[x+]", seen))
        middle = (2 * (x - left) + width, 2 * (y - top) + height)
        self.assertEqual(middle, (2 * seen_x + seen_width, 2 * seen_y + seen_height))

    def test_out_of_sight(self) -> None:
        for there, back, expected in (
            ("minimize", "restore", "target_window_minimized"),
            ("send away", "bring back", "target_app_has_no_window"),
        ):
            with self.subTest(expected):
                command(there, EDITOR)
                self.assertEqual(code({"app_bundle_id": "featherpad"} | PIXELS), expected)
                command(back, EDITOR)

    def test_policy(self) -> None:
        with tempfile.NamedTemporaryFile("w", suffix=".yaml") as policy:
            policy.write("bundle_id_blocklist:\n  - galculator\n")
            policy.flush()
            for request in ({"target": "screen"}, {"app_name": "galculator"}):
                data = capture(request, {"TAVIK_PERCEPTION_CONFIG": policy.name})
                self.assertEqual((data["image"], data["sensitive_bundle_id"]), (None, "galculator"))
            command("focus", EDITOR)
            data = capture({"target": "screen"} | PIXELS, {"TAVIK_PERCEPTION_CONFIG": policy.name})
            self.assertTrue(image_bytes(data))

    @unittest.skipIf(IS_KWIN, "it is of sway")
    def test_without_sways_own_interface(self) -> None:
        """A picture of the screen only where who is in front is certain."""
        for socket in (None, "/nowhere"):
            answer = ask({"target": "screen"} | PIXELS, {"SWAYSOCK": socket})
            seen = answer["data"]["context"].get("app_bundle_id") if answer["ok"] else answer["code"]
            self.assertIn(seen, ("galculator", "capture_failed"))

    @unittest.skipUnless(IS_KWIN, "it is for KWin to allow")
    def test_not_allowed(self) -> None:
        """A program that no desktop file names: applications are known, and not pictured."""
        stranger = [shutil.copy(HELPER, os.environ["HOME"])]
        for request, expected in (
            ({"app_bundle_id": "galculator"} | PIXELS, "screen_recording_permission_required"),
            ({"app_name": "XTerm"} | PIXELS, "screen_recording_permission_required"),
            ({"target": "screen"} | PIXELS, "screen_recording_permission_required"),
            ({"app_bundle_id": "galculator"} | TREE, "ok"),
        ):
            answer = response_of(run(json.dumps(request).encode(), command=stranger))
            self.assertEqual(answer.get("code", "ok"), expected, request)

    def test_without_a_compositor(self) -> None:
        """What runs through XWayland is there, as on an X server."""
        terminal = ask({"app_name": "XTerm"} | PIXELS, {"WAYLAND_DISPLAY": "/nowhere"})
        # KWin's XWayland holds no title bars
        self.assertEqual(terminal.get("code", "ok"), "capture_failed" if IS_KWIN else "ok")
        self.assertEqual(ask({"app_name": "galculator"}, {"WAYLAND_DISPLAY": "/nowhere"})["code"], "target_app_not_running")

    def test_silent_compositor(self) -> None:
        os.kill(compositor(), signal.SIGSTOP)
        try:
            self.assertEqual(code({"app_name": "galculator"} | TREE), "target_app_not_running")
            self.assertNotEqual(code({"target": "screen"} | PIXELS), "ok", "a policy could not hold")
        finally:
            os.kill(compositor(), signal.SIGCONT)


class WithoutCompositorTest(unittest.TestCase):
    def test_compositor_that_is_gone(self) -> None:
        """Comes last: its applications go with it."""
        pid = compositor()
        ending = os.pidfd_open(pid)
        os.kill(pid, signal.SIGKILL)
        select.select([ending], [], [], 10)
        for request, expected in (
            ({"app_name": "galculator"}, "target_app_not_running"),
            ({"target": "screen"} | PIXELS, "screen_recording_permission_required"),
        ):
            self.assertEqual(code(request), expected)


if __name__ == "__main__":
    unittest.main()
