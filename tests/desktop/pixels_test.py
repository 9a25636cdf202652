"""Images hold the pixels that another tool sees, whatever covers the window. Runs on two monitors."""

import unittest

from perception import capture, code
from witnesses import (
    activate,
    client_window,
    differing_pixels,
    frame_window,
    image_bytes,
    move,
    size_and_type,
    still_screenshot,
    tool,
)

CALCULATOR = {"app_name": "galculator"}
SCREEN = {"target": "screen"}
REGION = {"x": 301, "y": 33, "w": 257, "h": 101}


class PixelsTest(unittest.TestCase):
    def setUp(self) -> None:
        """The calculator and the terminal beside each other, the terminal active, nothing covered."""
        self.calculator, self.editor, self.terminal = map(client_window, ("Galculator", "FeatherPad", "XTerm"))
        move(self.editor, 980, 40)
        move(self.calculator, 20, 40)
        move(self.terminal, 450, 40)
        activate(self.terminal)

    def assert_pixels(self, request: dict, expected: str) -> None:
        data = capture(request | {"level": "pixel_perfect", "include_ax_tree": False})
        self.assertEqual(differing_pixels(image_bytes(data), expected), "0")

    def test_what_is_on_the_screen(self) -> None:
        terminal, calculator = frame_window(self.terminal), frame_window(self.calculator)
        for reason, request, window, part in (
            ("an active window, with its title bar", {"app_name": "XTerm"}, terminal, ""),
            ("a window in the background", CALCULATOR, calculator, ""),
            ("the frontmost application's window", {"target": "focused_element"}, terminal, ""),
            ("the first monitor alone", SCREEN, "root", "[960x700+0+0]"),
            ("parts of two windows", {"target": "region", "region": REGION}, "root", "[257x101+301+33]"),
        ):
            with self.subTest(reason):
                self.assert_pixels(request, still_screenshot(window) + part)

    def test_what_is_not_on_the_screen(self) -> None:
        expected = still_screenshot(frame_window(self.calculator))
        for reason, window, x, y in (
            ("partly covered", self.terminal, 150, 100),
            ("partly outside the screen", self.calculator, -120, 500),
            ("on the second monitor", self.calculator, 1000, 100),
        ):
            with self.subTest(reason):
                move(window, x, y)
                self.assert_pixels(CALCULATOR, expected)

    def test_wholly_covered(self) -> None:
        expected = still_screenshot(frame_window(self.calculator))
        tool("xdotool", "windowsize", "--sync", self.editor, "900", "600")
        move(self.editor, 10, 30)
        activate(self.editor)
        self.assert_pixels(CALCULATOR, expected)

    def test_minimized(self) -> None:
        tool("xdotool", "windowminimize", "--sync", self.calculator)
        try:
            self.assertEqual(code(CALCULATOR), "target_window_minimized")
            self.assertEqual(capture(CALCULATOR | {"include_image": False})["ax_tree"]["role"], "AXWindow")
        finally:
            activate(self.calculator)

    def test_size_and_type(self) -> None:
        for reason, request, expected in (
            ("a glance is 800 long", {"level": "glance"}, "800x583 JPEG"),
            ("never enlarged", {"level": "read"}, "960x700 JPEG"),
            ("the limit asked for", {"max_long_edge_px": 333, "format": "png"}, "333x242 PNG"),
            ("0 is no limit", {"level": "glance", "max_long_edge_px": 0}, "960x700 JPEG"),
            ("an unknown type is JPEG", {"level": "pixel_perfect", "format": "webp"}, "960x700 JPEG"),
        ):
            with self.subTest(reason):
                self.assertEqual(size_and_type(image_bytes(capture(SCREEN | request))), expected)
