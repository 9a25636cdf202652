"""Windows that ask for trouble get an answer, in time and bounded in size; their pixels stay their own."""

import os
import signal
import subprocess
import time
import unittest
from collections.abc import Iterator
from concurrent.futures import ThreadPoolExecutor
from contextlib import contextmanager
from pathlib import Path

import hostile_window
from perception import ask, capture
from witnesses import (
    activate,
    client_window,
    differing_pixels,
    frame_window,
    image_bytes,
    move,
    nodes,
    processes,
    state_of_desktop,
    still_screenshot,
    tool,
    windows_of_class,
)

LIMIT_SECONDS = 2.0  # for whatever an application does or leaves undone
PIXELS = {"level": "pixel_perfect", "include_ax_tree": False}
TREE = {"include_image": False}


def request(kind: str) -> dict:
    return {"app_name": f"hostile-{kind}"}


def process_of(kind: str) -> int:
    return int(tool("xdotool", "getwindowpid", client_window(f"hostile-{kind}")))


@contextmanager
def trouble(kind: str) -> Iterator[int]:
    """The window does what it waited to do, and goes at the end."""
    process = process_of(kind)
    os.kill(process, signal.SIGUSR1)
    try:
        yield process
    finally:
        os.kill(process, signal.SIGKILL)


class HostileTest(unittest.TestCase):
    def in_time(self, request: dict) -> dict:
        begin = time.monotonic()
        response = ask(request)
        self.assertLess(time.monotonic() - begin, LIMIT_SECONDS)
        return response

    def test_crowd_is_cut_off(self) -> None:
        titles = [node.get("title") for node in nodes(self.in_time(request("crowd"))["data"]["ax_tree"])]
        self.assertIn("49", titles)
        self.assertNotIn("50", titles)

    def test_long_name_is_bounded(self) -> None:
        data = self.in_time(request("name"))["data"]
        self.assertTrue(hostile_window.LONG_NAME.startswith(data["ax_tree"]["title"]))
        self.assertTrue(data["image"])

    def test_hanging_application(self) -> None:
        """What is on the screen is its own. Where it is covered, its bare background would be had, but nothing else."""
        window = client_window("hostile-hang")
        activate(window)
        expected = still_screenshot(frame_window(window))
        with trouble("hang") as process:
            data = self.in_time(request("hang") | PIXELS)["data"]
            self.assertEqual(differing_pixels(image_bytes(data), expected), "0")
            activate(client_window("hostile-crowd"))
            for state, number in (("busy", signal.SIGUSR1), ("asleep", signal.SIGUSR2)):
                with self.subTest(state):
                    os.kill(process, number)
                    self.assertEqual(self.in_time(request("hang") | PIXELS).get("code"), "capture_failed")
                    self.assertEqual(self.in_time(request("hang") | TREE)["data"]["ax_tree"], {})

    def test_stopped_or_killed_in_the_walk(self) -> None:
        for kind in ("stop", "kill"):
            with self.subTest(kind):
                process = process_of(kind)
                tree = self.in_time(request(kind) | TREE)["data"]["ax_tree"]
                if kind == "stop":
                    os.kill(process, signal.SIGCONT)
                self.assertEqual([node.get("title") for node in nodes(tree)], [kind, None, "first", None, None])

    def test_stopped_accessibility_bus(self) -> None:
        (bus,) = (pid for pid in processes() if b"accessibility.conf" in Path(f"/proc/{pid}/cmdline").read_bytes())
        os.kill(int(bus), signal.SIGSTOP)
        try:
            tree_alone, both = self.in_time(request("glass") | TREE), self.in_time(request("glass"))
        finally:
            os.kill(int(bus), signal.SIGCONT)
        self.assertEqual(tree_alone.get("code"), "accessibility_permission_required")
        self.assertIsNone(both["data"]["ax_tree"])
        self.assertTrue(both["data"]["image"])

    def test_several_helpers_at_one_covered_window(self) -> None:
        window, cover = map(client_window, ("hostile-name", "hostile-crowd"))
        activate(window)
        activate(cover)
        move(cover, 600, 40)
        expected = still_screenshot(frame_window(window))
        move(cover, *hostile_window.PLACE)
        before = state_of_desktop()
        with ThreadPoolExecutor() as pool:
            answers = list(pool.map(capture, [request("name") | PIXELS] * 6))
        self.assertEqual(state_of_desktop(), before)
        self.assertEqual({differing_pixels(image_bytes(data), expected) for data in answers}, {"0"})

    def test_popup_is_not_in_the_picture(self) -> None:
        window = client_window("hostile-popup")
        activate(window)
        with trouble("popup"):
            popup = tool("xdotool", "search", "--sync", "--onlyvisible", "--name", "^over$").strip()
            tool("xdotool", "windowraise", popup)
            covered = image_bytes(capture(request("popup") | PIXELS))
            tool("xdotool", "windowunmap", "--sync", popup)
            self.assertEqual(differing_pixels(covered, still_screenshot(frame_window(window))), "0")

    def test_translucent_colour_is_itself(self) -> None:
        """Orange at half opacity is held as (128, 64, 0, 128), and is orange again in the picture."""
        data = capture(request("glass") | PIXELS)
        middle = ["-gravity", "center", "-crop", "1x1+0+0", "+repage"]
        command = ["/usr/bin/convert", "png:-", *middle, "-depth", "8", "rgba:-"]
        pixel = subprocess.run(command, input=image_bytes(data), check=True, capture_output=True).stdout
        for value, wanted in zip(pixel, (255, 127, 0, 128), strict=True):
            self.assertAlmostEqual(value, wanted, delta=2)

    def test_restless_window_keeps_its_colour(self) -> None:
        """It lies partly under another one now and then. A picture has one of its sizes, and its colour alone."""
        activate(client_window("hostile-crowd"))
        found = set()
        with trouble("restless"):
            for _ in range(20):
                response = self.in_time(request("restless") | PIXELS)
                picture = image_bytes(response["data"]) if response["ok"] else b""
                show = ("/usr/bin/convert", "png:-", "-format", "%wx%h of %k: %[hex:p{0,0}]", "info:")
                found.add(tool(*show, stdin=picture) if picture else response["code"])
        self.assertLessEqual(
            found, {"capture_failed", *(f"{width}x200 of 1: FF7F00" for width in hostile_window.WIDTHS)}
        )
        self.assertTrue(found - {"capture_failed"})

    def test_passwords_of_qt(self) -> None:
        if not windows_of_class("qt-sign-in"):
            self.skipTest("python3-pyqt5 is not installed")
        data = capture({"app_name": "qt-sign-in"} | TREE)
        found = [node.get("value") for node in nodes(data["ax_tree"]) if node["role"] == "AXSecureTextField"]
        self.assertEqual(found, ["<redacted>"] * 3)
        for secret in ("correct horse", "•", "●"):
            self.assertNotIn(secret, str(data))
