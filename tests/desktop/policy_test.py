"""Secrets stay where they are, and a sensitive application is not pictured."""

import json
import os
import shutil
import signal
import socket
import time
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from made_window import SECRETS
from perception import HELPER, PIXELS, TREE, Environment, capture, response_of, run
from witnesses import Window, accessible_tree, values, windows_of_class

IDENTIFIER = "org.example.SignIn"
REQUEST = {"app_bundle_id": IDENTIFIER}
DELIVERED: Environment = {"TAVIK_PERCEPTION_CONFIG": None}


def policy(text: str) -> Environment:
    """The environment in which a file with this text is the policy."""
    file = Path(os.environ["HOME"]) / "policy.yaml"
    file.write_text(text)
    return {"TAVIK_PERCEPTION_CONFIG": str(file)}


def setUpModule() -> None:
    folder = Path(os.environ["XDG_DATA_HOME"]) / "applications"
    folder.mkdir(parents=True)
    entry = "[Desktop Entry]\nType=Application\nName=Sign In\nStartupWMClass=made-secrets\n"
    (folder / f"{IDENTIFIER}.desktop").write_text(entry)


class PolicyTest(unittest.TestCase):
    def test_delivered_policy_withholds_passwords(self) -> None:
        for toolkit, window_class, request, count in (
            ("GTK 3", "made-secrets", REQUEST, 2),
            ("Qt 5", "qt-sign-in", {"app_name": "qt-sign-in"}, 4),
        ):
            with self.subTest(toolkit):
                if not windows_of_class(window_class):
                    self.skipTest("it is not installed")
                data = capture(request | TREE, DELIVERED)
                self.assertEqual(values(data["ax_tree"], "AXSecureTextField"), ["<redacted>"] * count)
                self.assertTrue(data["redaction_applied"])
                for secret in (*SECRETS, "•", "●"):
                    self.assertNotIn(secret, str(data))
                self.assertEqual(values(data["ax_tree"], "AXTextField"), ["alice"])

    def test_helper_that_has_lost_its_files_has_the_delivered_policy(self) -> None:
        alone = shutil.copy(HELPER, os.environ["HOME"])
        answer = response_of(run(json.dumps(REQUEST | TREE).encode(), DELIVERED, [alone]))
        self.assertEqual(values(answer["data"]["ax_tree"], "AXSecureTextField"), ["<redacted>"] * 2)

    def test_policy_that_is_not_text_is_none(self) -> None:
        environment = policy("bundle_id_blocklist:\n")
        with open(environment["TAVIK_PERCEPTION_CONFIG"], "ab") as file:
            file.write(b"# caf\xe9\n")
        tree = capture(REQUEST | TREE, environment)["ax_tree"]
        self.assertEqual(values(tree, "AXSecureTextField"), ["<redacted>"] * 2, "the delivered one holds")

    def test_every_window_of_a_process_speaks_for_it(self) -> None:
        sensitive = policy('bundle_id_blocklist:\n  - "Vault"\n')
        for identifier in ("made-two", "vault"):
            with self.subTest(identifier):
                data = capture({"app_bundle_id": identifier} | PIXELS, sensitive)
                self.assertEqual((data["image"], data.get("sensitive_bundle_id")), (None, "Vault"))

    def test_empty_policy_withholds_nothing(self) -> None:
        data = capture(REQUEST, policy(""))
        self.assertEqual(values(data["ax_tree"], "AXSecureTextField"), ["●" * len(SECRETS[0]), SECRETS[1]])
        self.assertEqual(data["ax_tree"], accessible_tree("made-secrets"))
        self.assertFalse(data["redaction_applied"])
        self.assertTrue(data["image"])

    def test_sensitive_application_is_not_pictured(self) -> None:
        Window("made-secrets").activate()
        sensitive = policy('bundle_id_blocklist:\n  - "org.example.*"\n')
        for reason, request in (("asked for", REQUEST | PIXELS), ("frontmost", {"target": "screen"})):
            with self.subTest(reason):
                data = capture(request, sensitive)
                self.assertIsNone(data["image"])
                self.assertEqual((data["sensitive_app_match"], data["sensitive_bundle_id"]), (True, IDENTIFIER))

    def test_a_window_hides_no_process(self) -> None:
        """Neither the script that an interpreter runs, nor the process through which another machine's windows come."""
        sensitive = policy('bundle_id_blocklist:\n  - "made_window.py"\n')
        window = Window("made-secrets")
        self.addCleanup(window.claim, socket.gethostname(), window.process)
        for machine, process in ((socket.gethostname(), window.process), ("elsewhere.example", 1)):
            with self.subTest(machine):
                window.claim(machine, process)
                self.assertEqual(capture(REQUEST | PIXELS, sensitive).get("sensitive_bundle_id"), "made_window.py")

    def test_one_that_comes_to_the_front_meanwhile_is_not_pictured(self) -> None:
        first, sensitive = Window("made-two"), Window("made-secrets")
        first.activate()
        os.kill(first.process, signal.SIGSTOP)  # which holds up the walk of its tree
        try:
            with ThreadPoolExecutor() as executor:
                running = executor.submit(
                    capture, {"target": "focused_element"}, policy('bundle_id_blocklist:\n  - "org.example.*"\n')
                )
                time.sleep(0.5)
                self.assertFalse(running.done())
                sensitive.activate()
                data = running.result()
        finally:
            os.kill(first.process, signal.SIGCONT)
        self.assertEqual((data["image"], data.get("sensitive_bundle_id")), (None, IDENTIFIER))
