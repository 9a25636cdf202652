"""Applications are found, pictures are of what was asked for, and looking leaves no trace. Runs on two monitors."""

import os
import shutil
import socket
import subprocess
import unittest
from concurrent.futures import ThreadPoolExecutor
from unittest.mock import patch

from perception import PIXELS, TREE, ask, capture, code, picture
from witnesses import (
    Window,
    differing_pixels,
    screenshot,
    size_and_type,
    state_of_desktop,
    tool,
    wait_for,
    windows_of_class,
)


class ApplicationsTest(unittest.TestCase):
    def setUp(self) -> None:
        """The calculator and the terminal beside each other, the terminal active."""
        self.calculator, self.editor, self.terminal = map(Window, ("Galculator", "FeatherPad", "XTerm"))
        self.editor.move(980, 40)
        self.calculator.move(20, 40)
        self.terminal.move(450, 40)
        self.terminal.activate()

    def test_found_as_the_desktop_knows_it(self) -> None:
        for reason, request, identity in (
            ("desktop file named like the program", {"app_bundle_id": "galculator"}, ("galculator", "Galculator")),
            ("its name, whatever the letter case", {"app_name": "GALCULATOR"}, ("galculator", "Galculator")),
            ("desktop file with StartupWMClass", {"app_bundle_id": "debian-xterm"}, ("debian-xterm", "XTerm")),
        ):
            with self.subTest(reason):
                context = capture(request | TREE)["context"]
                self.assertEqual((context["app_bundle_id"], context["app_name"]), identity)

    @unittest.skipUnless(shutil.which("bwrap"), "bubblewrap is not installed")
    def test_found_by_its_sandbox(self) -> None:
        """Which bubblewrap makes, as for Flatpak, with the file that Flatpak puts there."""
        folders = ("/etc", "/usr", "/lib", "/lib64", "/bin", "/tmp", "/dev", "/var")
        binds = [part for folder in folders if os.path.exists(folder) for part in ("--dev-bind", folder, folder)]
        read_end, write_end = os.pipe()
        os.write(write_end, b"[Application]\nname=org.example.Boxed\n")
        os.close(write_end)
        box = ("bwrap", "--die-with-parent", *binds, "--proc", "/proc", "--ro-bind-data", str(read_end), "/.flatpak-info")
        with subprocess.Popen([*box, "xterm", "-T", "boxed"], pass_fds=(read_end,)) as boxed:
            self.addCleanup(boxed.kill)
            tool("xdotool", "search", "--sync", "--onlyvisible", "--name", "^boxed$")
            self.assertEqual(capture({"app_bundle_id": "org.example.Boxed"})["ax_tree"], {})
            boxed.kill()
            wait_for(lambda: len(windows_of_class("XTerm")) == 1, "its window is still there")

    def test_of_several_processes_the_one_in_use(self) -> None:
        request = {"app_name": "XTerm"} | PIXELS
        size = size_and_type(picture(request))
        process = subprocess.Popen(["xterm", "-class", "Second", "-geometry", "20x4"])
        for end in (self.terminal.restore, process.wait, process.kill):
            self.addCleanup(end)
        tool("xdotool", "search", "--sync", "--onlyvisible", "--class", "^Second$")
        second = Window("Second")
        for reason, prepare, is_first in (
            ("it is active", second.activate, False),
            ("the other one is active", self.terminal.activate, True),
            ("and was active later", self.editor.activate, True),
            ("and is minimized", self.terminal.minimize, False),
        ):
            with self.subTest(reason):
                prepare()
                self.assertEqual(size_and_type(picture(request)) == size, is_first)

    def test_windows_of_another_machine(self) -> None:
        """Which reach the server through a process of this machine, whose tree and name are not theirs."""
        request = {"app_bundle_id": "galculator"}
        self.assertNotEqual(capture(request | TREE)["ax_tree"], {})
        self.calculator.claim("elsewhere.example", 1)
        self.addCleanup(self.calculator.claim, socket.gethostname(), self.calculator.process)
        data = capture(request)
        self.assertEqual((data["ax_tree"], data["context"]["app_name"]), ({}, "Galculator"))
        self.assertTrue(data["image"])
        self.calculator.activate()
        self.assertEqual(capture({"target": "focused_element"})["context"]["app_bundle_id"], "galculator")

    def test_not_found(self) -> None:
        for reason, name in (("a process without a window", "openbox"), ("installed, but not running", "UXTerm")):
            with self.subTest(reason):
                self.assertEqual(code({"app_name": name}), "target_app_not_running")

    def test_focused_element_is_the_frontmost_applications(self) -> None:
        self.editor.activate()
        data = capture({"target": "focused_element"} | TREE)
        self.assertEqual(data["context"]["app_bundle_id"], "featherpad")
        self.assertEqual(data["ax_tree"]["role"], "AXTextArea")

    def test_input_focus_decides_where_no_window_is_active(self) -> None:
        self.addCleanup(self.editor.activate)  # which has the window manager say it again
        tool("xprop", "-root", "-f", "_NET_ACTIVE_WINDOW", "32x", "-set", "_NET_ACTIVE_WINDOW", "0x0")
        self.assertEqual(capture({"target": "screen"} | TREE)["context"]["app_bundle_id"], "debian-xterm")

    def test_application_without_accessibility(self) -> None:
        data = capture({"app_name": "XTerm"})
        self.assertTrue(data["image"].startswith("data:image/jpeg;base64,"))
        self.assertEqual((data["level_used"], data["ax_tree"], data["ax_node_count"]), ("read", {}, 1))
        self.assertTrue(data["tcc_accessibility"])

    def test_pixels(self) -> None:
        region = {"x": 301, "y": 33, "w": 257, "h": 101}
        for reason, request, expected in (
            ("the frontmost application's window", {"target": "focused_element"}, self.terminal.screenshot()),
            ("the first monitor alone", {"target": "screen"}, screenshot("root") + "[960x700+0+0]"),
            ("parts of two windows", {"target": "region", "region": region}, screenshot("root") + "[257x101+301+33]"),
        ):
            with self.subTest(reason):
                self.assertEqual(differing_pixels(picture(request | PIXELS), expected), "0")

    def test_several_helpers_at_one_covered_window(self) -> None:
        expected = self.calculator.screenshot()
        self.editor.activate()
        self.editor.move(10, 30)
        before = state_of_desktop()
        with patch("perception.LIMIT_SECONDS", 5.0), ThreadPoolExecutor(12) as helpers:
            pictures = list(helpers.map(picture, [{"app_name": "Galculator"} | PIXELS] * 36))
        self.assertEqual(state_of_desktop(), before)
        self.assertEqual({differing_pixels(one, expected) for one in pictures}, {"0"})

    def test_size_and_type(self) -> None:
        for level, expected in (("glance", "800x583 JPEG"), ("read", "960x700 JPEG"), ("pixel_perfect", "960x700 PNG")):
            with self.subTest(level):
                self.assertEqual(size_and_type(picture({"target": "screen", "level": level})), expected)

    def test_leaves_no_trace(self) -> None:
        before = state_of_desktop()
        for application in ("galculator", "FeatherPad", "XTerm", "UXTerm"):
            ask({"app_name": application, "allow_focus_steal": True})
        for target in ("focused_element", "screen"):
            ask({"target": target})
        self.assertEqual(state_of_desktop(), before)

    def test_a_trace_would_be_seen(self) -> None:
        before = state_of_desktop()
        with subprocess.Popen(["cat"], stdin=subprocess.PIPE):
            self.calculator.activate()
            after = state_of_desktop()
        self.assertEqual({kind for kind in before if before[kind] == after[kind]}, {"pointer"})
