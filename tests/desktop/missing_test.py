"""What is missing is reported, quickly, and nothing is started in its place. Runs without an accessibility bus."""

import os
import socket
import subprocess
import unittest
from pathlib import Path

from perception import TREE, ask, capture, code
from witnesses import tool

TERMINAL = {"app_name": "XTerm"}
BUS = "org.freedesktop.DBus"
SESSION_BUS = ("--session", f"--dest={BUS}", "--object-path=/org/freedesktop/DBus")
RUNTIME = Path(os.environ["XDG_RUNTIME_DIR"])


class MissingTest(unittest.TestCase):
    def test_no_display(self) -> None:
        rows = (
            ("the screen cannot be pictured", {"target": "screen"}, "screen_recording_permission_required"),
            ("no application is found", TERMINAL, "target_app_not_running"),
            ("nor is a tree", {"target": "focused_element"} | TREE, "accessibility_permission_required"),
        )
        displays = [{"DISPLAY": display} for display in (None, "", ":4711", "nonsense", "[::1")]
        for environment in (*displays, {"XAUTHORITY": "/dev/null"}):
            for reason, request, expected in rows:
                with self.subTest(reason, environment=environment):
                    self.assertEqual(code(request, environment), expected)

    def test_no_accessibility(self) -> None:
        self.assertEqual(code(TERMINAL | TREE), "accessibility_permission_required")
        data = capture(TERMINAL)
        self.assertEqual((data["tcc_accessibility"], data["ax_tree"], data["ax_node_count"]), (False, None, 0))
        self.assertTrue(data["image"])
        self.assertTrue(capture(TERMINAL | TREE | {"include_ax_tree": False})["tcc_accessibility"])

    def test_no_session_bus(self) -> None:
        nowhere = {"XDG_RUNTIME_DIR": "/nonexistent"}
        for address in (None, "", "unix:path=/nonexistent", "nonsense"):
            with self.subTest(address=address):
                environment = nowhere | {"DBUS_SESSION_BUS_ADDRESS": address}
                self.assertFalse(capture(TERMINAL, environment)["tcc_accessibility"])

    def test_bus_that_never_answers(self) -> None:
        for variable in ("DBUS_SESSION_BUS_ADDRESS", "AT_SPI_BUS_ADDRESS"):
            path = RUNTIME / variable
            with self.subTest(variable), socket.socket(socket.AF_UNIX) as silent:
                silent.bind(str(path))
                silent.listen()
                ask(TERMINAL, {variable: f"unix:path={path}"})

    def test_asking_starts_no_service(self) -> None:
        """A session bus that would start the accessibility bus for whoever asks for it."""
        started, service = RUNTIME / "started", RUNTIME / "dbus-1/services/org.a11y.Bus.service"
        service.write_text(f"[D-BUS Service]\nName=org.a11y.Bus\nExec=/bin/sh -c 'touch {started}; exit 1'\n")
        tool("gdbus", "call", *SESSION_BUS, f"--method={BUS}.ReloadConfig")
        self.assertEqual(code(TERMINAL | TREE), "accessibility_permission_required")
        self.assertFalse(started.exists())
        with self.assertRaises(subprocess.CalledProcessError):  # the service fails, but it was started
            tool("gdbus", "call", *SESSION_BUS, f"--method={BUS}.StartServiceByName", "org.a11y.Bus", "0")
        self.assertTrue(started.exists())
