"""Under Wayland: native windows and one through XWayland are found, pictured and placed, as the compositor has them.

TAVIK_SCALE is that of every monitor. Windows stand where its pixels are whole.
"""

import contextlib
import json
import os
import select
import shutil
import signal
import tempfile
import unittest
from pathlib import Path

import compositors
from compositors import IS_KWIN, command
from perception import HELPER, PIXELS, TREE, ask, capture, code, image_bytes, picture, response_of, run
from witnesses import differing_pixels, output_of, processes, wait_for

SCALE = float(os.environ["TAVIK_SCALE"])
CALCULATOR, EDITOR, TERMINAL = "galculator", "featherpad", "XTerm"
ROUNDED_ROWS = round(6 * SCALE) if IS_KWIN else 0  # which KWin blends with what the screen showed before
PLACES = {CALCULATOR: (20, 40, 352, 400), TERMINAL: (460, 40, 298, 197), EDITOR: (460, 260, 400, 260)}


def setUpModule() -> None:
    compositors.be_allowed_to_look()


def place(window: str, monitor: int = 1) -> None:
    compositors.place(window, *PLACES[window], monitor)


def screenshot(window: str | None = None, monitor: int = 1) -> str:
    """The monitor's, or the window's part of it without those rows, to ImageMagick."""
    path = compositors.screenshot(monitor)
    x, y, width, height = (round(side * SCALE) for side in PLACES[window]) if window else (0, 0, 0, 0)
    return f"{path}[{width}x{height - ROUNDED_ROWS}+{x}+{y + ROUNDED_ROWS}]" if window else path


def without_rounded_rows(png: bytes) -> bytes:
    return output_of("/usr/bin/convert", "png:-", "-chop", f"0x{ROUNDED_ROWS}", "png:-", stdin=png)


def compositor() -> int:
    return next(int(pid) for pid in processes() if Path(f"/proc/{pid}/comm").read_text() == f"{compositors.PROCESS}\n")


class WaylandTest(unittest.TestCase):
    def setUp(self) -> None:
        for window in PLACES:
            place(window)
        command("focus", CALCULATOR)

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
            seen = without_rounded_rows(png) if png and window else png
            last = differing_pixels(seen, screenshot(window, monitor)) if seen else answer["code"]
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
                expected = [round(side * SCALE) for side in PLACES[window]]
                self.assertEqual(capture({"app_bundle_id": name} | TREE)["ax_tree"]["frame"], expected)

    def test_frontmost_and_screen(self) -> None:
        for window, identifier in ((EDITOR, "featherpad"), (TERMINAL, "debian-xterm"), (CALCULATOR, "galculator")):
            command("focus", window)
            context = capture({"target": "screen"} | TREE)["context"]
            self.assertEqual((context["app_bundle_id"], context["scale_factor"]), (identifier, SCALE))

    def test_covered(self) -> None:
        """KWin has a picture of every window; on sway there is what the monitors show."""
        request = {"app_bundle_id": "featherpad"} | PIXELS
        self.still(request, EDITOR)
        expected = picture(request)
        shown = without_rounded_rows(expected)
        compositors.place(CALCULATOR, 500, 300, *PLACES[CALCULATOR][2:])
        wait_for(lambda: int(differing_pixels(shown, screenshot(EDITOR))) > 10_000, "the window is not covered")
        self.assertEqual(code(request), "ok" if IS_KWIN else "capture_failed")
        if IS_KWIN:
            self.assertEqual(picture(request), expected)

    def test_out_of_sight(self) -> None:
        for there, back, expected in (
            ("minimize", "restore", "target_window_minimized"),
            ("send away", "bring back", "target_app_has_no_window"),
        ):
            with self.subTest(expected):
                command(there, EDITOR)
                self.assertEqual(code({"app_bundle_id": "featherpad"} | PIXELS), expected)
                command(back, EDITOR)

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
