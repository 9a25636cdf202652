"""Windows that ask for trouble get an answer, in time and bounded in size; their pixels stay their own."""

import itertools
import os
import re
import signal
import threading
import unittest
from collections.abc import Iterator
from concurrent.futures import ThreadPoolExecutor
from contextlib import contextmanager
from pathlib import Path

import made_window
from perception import PIXELS, TREE, ask, capture, code, image_bytes, picture
from witnesses import Window, differing_pixels, frame_of, nodes, output_of, processes, tool
from x_client import XClient


def request(kind: str, wanted: dict | None = None) -> dict:
    return {"app_name": f"made-{kind}"} | (wanted or {})


@contextmanager
def trouble(kind: str) -> Iterator[int]:
    """The window does what it waited to do, and goes at the end."""
    process = Window(f"made-{kind}").process
    os.kill(process, signal.SIGUSR1)
    try:
        yield process
    finally:
        os.kill(process, signal.SIGKILL)


class HostileTest(unittest.TestCase):
    def test_crowd_is_cut_off(self) -> None:
        titles = [node.get("title") for node in nodes(capture(request("crowd"))["ax_tree"])]
        self.assertIn("50", titles)
        self.assertNotIn("51", titles)

    def test_long_name_is_bounded(self) -> None:
        data = capture(request("name"))
        self.assertTrue(made_window.LONG_NAME.startswith(data["ax_tree"]["title"]))
        self.assertTrue(data["image"])

    def test_hanging_application(self) -> None:
        """What is on the screen is its own. Where it is covered, its bare background would be had, but nothing else.
        Nobody waits for its tree, and then for its pixels, as long as for one of them."""
        window = Window("made-hang")
        window.activate()
        expected = window.screenshot()
        with trouble("hang") as process:
            self.assertEqual(differing_pixels(picture(request("hang", PIXELS)), expected), "0")
            Window("made-crowd").activate()
            for state, number in (("busy", signal.SIGUSR1), ("asleep", signal.SIGUSR2)):
                with self.subTest(state):
                    os.kill(process, number)
                    for wanted in (PIXELS, {"level": "pixel_perfect"}):
                        self.assertEqual(code(request("hang", wanted)), "capture_failed")
                    self.assertEqual(capture(request("hang", TREE))["ax_tree"], {})

    def test_stopped_or_killed_in_the_walk(self) -> None:
        for kind in ("stop", "kill"):
            with self.subTest(kind):
                process = Window(f"made-{kind}").process
                titles = [node.get("title") for node in nodes(capture(request(kind, TREE))["ax_tree"])]
                if kind == "stop":
                    os.kill(process, signal.SIGCONT)
                self.assertEqual(titles, [kind, None, "first", None, None])

    def test_stopped_accessibility_bus(self) -> None:
        (bus,) = (pid for pid in processes() if b"accessibility.conf" in Path(f"/proc/{pid}/cmdline").read_bytes())
        os.kill(int(bus), signal.SIGSTOP)
        try:
            self.assertEqual(code(request("glass", TREE)), "accessibility_permission_required")
            both = capture(request("glass"))
        finally:
            os.kill(int(bus), signal.SIGCONT)
        self.assertIsNone(both["ax_tree"])
        self.assertTrue(both["image"])

    def test_popup_is_not_in_the_picture(self) -> None:
        window = Window("made-popup")
        window.activate()
        with trouble("popup"):
            popup = tool("xdotool", "search", "--sync", "--onlyvisible", "--name", "^over$").strip()
            tool("xdotool", "windowraise", popup)
            covered = picture(request("popup", PIXELS))
            tool("xdotool", "windowunmap", "--sync", popup)
            self.assertEqual(differing_pixels(covered, window.screenshot()), "0")

    def test_windows_that_are_gone(self) -> None:
        """A list of them, longer than any that a window manager leaves behind."""
        with XClient() as client:
            window = client.create_window(1, 1)
            listed = client.windows("_NET_CLIENT_LIST")
            client.set_windows(client.root, "_NET_CLIENT_LIST", [*range(window + 1, window + 4001), *listed])
            try:
                for wanted in (request("glass", TREE), {"target": "focused_element"}):
                    self.assertTrue(capture(wanted)["ax_tree"])
            finally:
                client.set_windows(client.root, "_NET_CLIENT_LIST", listed)

    def test_windows_of_thousands_of_parts(self) -> None:
        """One, and below another."""
        window = Window("made-name")
        tool("xdotool", "windowsize", "--sync", window.client, "700", "600")
        window.activate()
        frame = int(frame_of(window.client), 16)
        with XClient() as client:
            client.leave_dots(frame, 350, 200)
            try:
                self.assertEqual(code(request("name", PIXELS)), "ok")
                over = client.create_window(1000, 800)
                client.leave_dots(over, 100, 50)
                client.show_over_all(over)
                self.assertIn(code(request("name", PIXELS)), ("ok", "capture_failed"))
            finally:
                client.make_whole(frame)

    def test_flickering_screen_is_of_one_moment(self) -> None:
        with XClient() as client, ThreadPoolExecutor(1) as painter:
            over = client.create_window(1600, 1000)
            client.show_over_all(over)
            is_over = threading.Event()

            def flicker() -> None:
                for colour in itertools.cycle((0x123456, 0xFEDCBA)):
                    if is_over.is_set():
                        return
                    client.fill(over, colour)

            painting = painter.submit(flicker)
            region = {"target": "region", "region": {"x": 0, "y": 0, "w": 1600, "h": 1000}} | PIXELS
            found = {tool("/usr/bin/convert", "png:-", "-unique-colors", "txt:-", stdin=picture(region)) for _ in range(8)}
            is_over.set()
            painting.result()
        for listing in found:
            self.assertEqual(len(re.findall("#[0-9A-F]{6}", listing)), 1, listing)

    def test_translucent_colour_is_itself(self) -> None:
        """Orange at half opacity is held as (128, 64, 0, 128), and is orange again in the picture."""
        middle = ("-gravity", "center", "-crop", "1x1+0+0", "+repage", "-depth", "8")
        pixel = output_of("/usr/bin/convert", "png:-", *middle, "rgba:-", stdin=picture(request("glass", PIXELS)))
        for value, wanted in zip(pixel, (255, 127, 0, 128), strict=True):
            self.assertAlmostEqual(value, wanted, delta=2)

    def test_restless_window_keeps_its_colour(self) -> None:
        """It lies partly under another one now and then. A picture has one of its sizes, and its colour alone."""
        Window("made-crowd").activate()
        show = ("/usr/bin/convert", "png:-", "-format", "%wx%h of %k: %[hex:p{0,0}]", "info:")
        found = set()
        with trouble("restless"):
            for _ in range(20):
                answer = ask(request("restless", PIXELS))
                found.add(tool(*show, stdin=image_bytes(answer["data"])) if answer["ok"] else answer["code"])
        sizes = {f"{width}x200 of 1: FF7F00" for width in made_window.WIDTHS}
        self.assertLessEqual(found, {"capture_failed", *sizes})
        self.assertTrue(found & sizes)
