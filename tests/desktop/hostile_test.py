"""Windows that ask for trouble get an answer, in time and bounded in size; their pixels stay their own."""

import subprocess
import time
import unittest

import hostile_window
from perception import ask, capture
from witnesses import (
    activate,
    client_window,
    differing_pixels,
    frame_window,
    image_bytes,
    nodes,
    still_screenshot,
    tool,
)

LIMIT_SECONDS = 3.0


def request(kind: str) -> dict:
    return {"app_name": f"hostile-{kind}"}


class HostileTest(unittest.TestCase):
    def test_crowd_is_cut_off(self) -> None:
        begin = time.monotonic()
        data = capture(request("crowd"))
        self.assertLess(time.monotonic() - begin, LIMIT_SECONDS)
        titles = [node.get("title") for node in nodes(data["ax_tree"])]
        self.assertIn("49", titles)
        self.assertNotIn("50", titles)

    def test_long_name_is_bounded(self) -> None:
        begin = time.monotonic()
        data = capture(request("name"))
        self.assertLess(time.monotonic() - begin, LIMIT_SECONDS)
        self.assertTrue(hostile_window.LONG_NAME.startswith(data["ax_tree"]["title"]))
        self.assertTrue(data["image"])

    def test_popup_is_not_in_the_picture(self) -> None:
        window = client_window("hostile-popup")
        activate(window)
        popups = tool("xdotool", "search", "--onlyvisible", "--name", "^over$").split()
        self.assertEqual(len(popups), 1)
        tool("xdotool", "windowraise", popups[0])
        shape = request("popup") | {"level": "pixel_perfect", "include_ax_tree": False}
        covered = image_bytes(capture(shape))
        tool("xdotool", "windowunmap", "--sync", popups[0])
        self.assertEqual(differing_pixels(covered, still_screenshot(frame_window(window))), "0")

    def test_translucent_colour_is_itself(self) -> None:
        """Orange at half opacity is held as (128, 64, 0, 128), and is orange again in the picture."""
        data = capture(request("glass") | {"level": "pixel_perfect", "include_ax_tree": False})
        middle = ["-gravity", "center", "-crop", "1x1+0+0", "+repage"]
        command = ["/usr/bin/convert", "png:-", *middle, "-depth", "8", "rgba:-"]
        pixel = subprocess.run(command, input=image_bytes(data), check=True, capture_output=True).stdout
        for value, wanted in zip(pixel, (255, 127, 0, 128), strict=True):
            self.assertAlmostEqual(value, wanted, delta=2)

    def test_restless_window_is_answered_in_time(self) -> None:
        for _ in range(10):
            begin = time.monotonic()
            response = ask(request("restless") | {"level": "pixel_perfect", "include_ax_tree": False})
            self.assertLess(time.monotonic() - begin, LIMIT_SECONDS)
            self.assertIn(response.get("code", "ok"), ("ok", "capture_failed"))
