"""The doctor says what the helper can look at, and looks as quietly."""

import json
import os
import signal
import subprocess
import time
import unittest
from pathlib import Path

from perception import HELPER, TREE, Environment, capture, run
from witnesses import Window, processes, state_of_desktop

DOCTOR = str(Path(HELPER).with_name("tavik-perception-doctor"))
BOUND = 100  # elements that are counted


def diagnose(status: int, environment: Environment | None = None, *options: str) -> dict:
    done = run(b"", environment, [DOCTOR, "--json", *options])
    assert (done.returncode, done.stderr, done.stdout.count(b"\n")) == (status, b"", 1), done
    return json.loads(done.stdout)


def faults(report: dict) -> list[str]:
    return [finding["about"] for finding in report["findings"] if finding["level"] == "fault"]


def policy(text: str) -> str:
    file = Path(os.environ["HOME"]) / "policy.yaml"
    file.write_text(text)
    return str(file)


class DoctorTest(unittest.TestCase):
    def test_what_it_lists_is_what_the_helper_answers_to(self) -> None:
        before = state_of_desktop()
        report = diagnose(0)
        self.assertEqual(state_of_desktop(), before)
        applications = {one["app_bundle_id"]: one for one in report["applications"]}
        self.assertEqual(set(applications), {"galculator", "featherpad", "debian-xterm"})
        for identifier, one in applications.items():
            with self.subTest(identifier):
                data = capture({"app_bundle_id": identifier} | TREE)
                context = {member: data["context"][member] for member in ("app_bundle_id", "app_name")}
                self.assertLessEqual(context.items(), one.items())
                self.assertEqual(capture({"app_name": one["app_name"]} | TREE)["context"]["app_bundle_id"], identifier)
                self.assertEqual(one["elements"], min(data["ax_node_count"], BOUND) if data["ax_tree"] else 0)
        frontmost = capture({"target": "focused_element"} | TREE)["context"]["app_bundle_id"]
        self.assertEqual([name for name, one in applications.items() if one["is_frontmost"]], [frontmost])
        self.assertEqual({name: one["toolkit"] for name, one in applications.items()},
                         {"galculator": "GTK 3", "featherpad": "Qt 5", "debian-xterm": "Xt and Xaw"})  # fmt: skip

    def test_application_that_does_not_answer(self) -> None:
        process = Window("Galculator").process
        sensitive = policy("ax_role_text_blocklist:\n- AXSecureTextField\nbundle_id_blocklist:\n- galculator\n")
        os.kill(process, signal.SIGSTOP)
        self.addCleanup(os.kill, process, signal.SIGCONT)
        for reason, status, environment in (
            ("is said", 1, {}),
            ("is not asked where it is sensitive", 0, {"TAVIK_PERCEPTION_CONFIG": sensitive}),
        ):
            with self.subTest(reason):
                (one,) = (one for one in diagnose(status, environment)["applications"] if one["app_name"] == "Galculator")
                self.assertIsNone(one["elements"])
                self.assertEqual("remedy" in one, status == 1)

    def test_what_is_missing(self) -> None:
        nowhere: Environment = {"XDG_RUNTIME_DIR": "/nonexistent", "DBUS_SESSION_BUS_ADDRESS": None, "DISPLAY": None}
        for reason, environment, expected in (
            ("everything", nowhere, ["desktop", "pictures", "trees"]),
            ("the cookie", {"XAUTHORITY": "/dev/null"}, ["desktop", "pictures"]),
            ("a display whose name is no text", {"DISPLAY": ":\udcff"}, ["desktop", "pictures"]),
            ("the policy", {"TAVIK_PERCEPTION_CONFIG": "~/policy.yaml"}, ["policy"]),
        ):
            with self.subTest(reason):
                self.assertEqual(faults(diagnose(1, environment)), expected)

    def test_patterns_beside_what_runs(self) -> None:
        roles = "ax_role_text_blocklist:\n- AXSecureTextField\nbundle_id_blocklist:\n"
        for pattern, status in (("FeatherPad", 1), ("xterm", 1), ("featherpad", 0), ("f*p?d", 0)):
            with self.subTest(pattern):
                report = diagnose(status, None, "--policy", policy(f"{roles}- {pattern}\n"))
                self.assertEqual(faults(report), ["policy"] * status)
                matches = report["policy"]["lines"][-1].get("matches", [])
                self.assertEqual(matches, [] if status else ["featherpad"])

    def test_policy_through_a_pipe(self) -> None:
        command = 'cat "$1" | exec "$0" --policy /dev/stdin'
        roles = policy("ax_role_text_blocklist:\n- AXSecureTextField\n")
        done = subprocess.run(["sh", "-c", command, DOCTOR, roles], capture_output=True, text=True, check=True)
        self.assertIn("Roles with withheld values: 1", done.stdout)

    def test_server_that_does_not_answer(self) -> None:
        (server,) = (int(one) for one in processes() if Path(f"/proc/{one}/comm").read_text() == "Xvfb\n")
        os.kill(server, signal.SIGSTOP)
        self.addCleanup(os.kill, server, signal.SIGCONT)
        start = time.monotonic()
        done = subprocess.run([DOCTOR], capture_output=True, check=False)
        self.assertLess(time.monotonic() - start, 8)
        self.assertIn(b"no X server lets this program in", done.stdout)

    def test_usage(self) -> None:
        for option, status in (("--help", 0), ("--version", 0), ("--nonsense", 2), ("word", 2), ("--policy", 2)):
            with self.subTest(option):
                done = run(b"", None, [DOCTOR, option])
                self.assertEqual((done.returncode, bool(done.stdout)), (status, status == 0))
