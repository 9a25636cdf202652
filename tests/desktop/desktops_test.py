"""The same windows under window managers that differ: what is minimized, elsewhere or covered, and what belongs to one.

Runs once for each manager, which TAVIK_WINDOW_MANAGER names. The window is an xterm; a calculator covers it.
"""

import os
import re
import shlex
import subprocess
import unittest

from perception import PIXELS, code, picture
from witnesses import Window, corner, differing_pixels, frame_of, output_of, screenshot, size_and_type, tool, wait_for
from x_client import XClient

MANAGER = os.environ["TAVIK_WINDOW_MANAGER"]
REQUEST = {"app_bundle_id": "debian-xterm"} | PIXELS
PLACE, ASIDE, OVER = (100, 100), (600, 100), (150, 60)
# Commands out of sight and back, with the window in place of {}, and the code with which pixels are refused meanwhile.
HIDDEN = (
    ("wmctrl -t 1 -ir {}", "wmctrl -t 0 -ir {}", "target_app_has_no_window"),
    ("xdotool windowminimize {}", "xdotool windowactivate {}", "target_window_minimized"),
)
HIDDEN_BY_I3 = (("i3-msg [id={}] move workspace 2", "i3-msg [id={}] move workspace 1", "target_app_has_no_window"),)


def size_of(window: str) -> tuple[int, ...]:
    return tuple(int(side) for side in re.findall(r"(?:Width|Height): (\d+)", tool("xwininfo", "-id", window)))


def client_part(client: str) -> str:
    """The part of the screen where the client is, to ImageMagick."""
    (width, height), (x, y) = size_of(client), corner(client)
    return f"{width}x{height}+{x}+{y}"


def decorated_part(client: str) -> str:
    """With its decorations, as the manager tells them; the frame where it tells none."""
    extents = re.search(r"= (\d+), (\d+), (\d+), (\d+)", tool("xprop", "-id", client, "_NET_FRAME_EXTENTS"))
    if not extents:
        return client_part(frame_of(client))
    (left, right, top, bottom), (width, height), (x, y) = map(int, extents.groups()), size_of(client), corner(client)
    return f"{width + left + right}x{height + top + bottom}+{x - left}+{y - top}"


def wrong_pixels(png: bytes, screen: str, part: str) -> str:
    """Without the rows in which Mutter, Muffin and Marco round the corners, on the screen alone."""
    size = part.partition("+")[0]
    if (seen := size_and_type(png).split()[0]) != size:
        return f"{seen} instead of {size}"
    rows = ("+repage", "-shave", f"0x{8 if MANAGER in ('mutter', 'muffin', 'marco') else 0}", "+repage")
    expected = f"{screen}.png"
    tool("/usr/bin/convert", screen, "-crop", part, *rows, expected)
    return differing_pixels(output_of("/usr/bin/convert", "png:-", *rows, "png:-", stdin=png), expected)


def place(window: Window, x: int, y: int) -> None:
    """Managers differ in which corner they put there; decorations are less than 60 pixels."""
    tool("xdotool", "windowmove", window.client, str(x), str(y))
    arrived = lambda: all(0 <= at - to < 60 for at, to in zip(corner(window.client), (x, y), strict=True))  # noqa: E731
    wait_for(arrived, "the window does not get there")


@unittest.skipIf(MANAGER == "none", "it has no such states")
class ManagedTest(unittest.TestCase):
    def setUp(self) -> None:
        self.window, self.cover = Window("XTerm"), Window("Galculator")
        place(self.window, *PLACE)
        place(self.cover, *ASIDE)
        self.window.activate()
        self.cover.activate()
        tool("xdotool", "mousemove", "10", "650")

    def assert_shows(self, part: str) -> None:
        """The picture is this part of the screen, in the end: a compositing manager takes its time to draw."""
        wrong = lambda: wrong_pixels(picture(REQUEST), screenshot("root"), part)  # noqa: E731
        wait_for(lambda: wrong() == "0", f"wrong pixels: {wrong()}")

    def test_uncovered(self) -> None:
        self.assert_shows(decorated_part(self.window.client))

    def test_covered(self) -> None:
        client = self.window.client
        # Title bars of KWin are nowhere but on the screen: where they are covered, the client is all there is.
        part = client_part(client) if MANAGER == "kwin" else decorated_part(client)
        self.assert_shows(decorated_part(client))
        expected = screenshot("root")
        place(self.cover, *OVER)
        self.assertEqual(wrong_pixels(picture(REQUEST), expected, part), "0")

    def test_out_of_sight(self) -> None:
        tool("wmctrl", "-n", "2")
        for hide, show, expected in HIDDEN_BY_I3 if MANAGER == "i3" else HIDDEN:
            with self.subTest(expected):
                tool(*shlex.split(hide.format(self.window.client)))
                try:
                    wait_for(lambda: code(REQUEST) == expected, f"{code(REQUEST)} instead")
                finally:
                    tool(*shlex.split(show.format(self.window.client)))
                wait_for(lambda: code(REQUEST) == "ok", "the window does not come back")


@unittest.skipUnless(MANAGER == "none", "a window manager lists the windows")
class UnmanagedTest(unittest.TestCase):
    def test_manager_without_a_list(self) -> None:
        """As that of XWayland in Weston: its check window names itself, and there is no list of clients."""
        window = subprocess.Popen(["xterm"])
        self.addCleanup(window.wait)
        self.addCleanup(window.kill)
        wait_for(lambda: code(REQUEST) == "ok", "the window does not come up")
        client = self.enterContext(XClient())
        check = client.create_window(1, 1)
        for holder in (client.root, check):
            client.set_windows(holder, "_NET_SUPPORTING_WM_CHECK", [check])
        self.assertEqual(code(REQUEST), "ok")
