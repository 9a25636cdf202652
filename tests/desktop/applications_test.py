"""Applications are found, their trees are what libatspi reads, and looking at them leaves no trace."""

import subprocess
import unittest

from perception import ask, capture, code
from witnesses import accessible_tree, activate, client_window, nodes, state_of_desktop

WITHOUT_IMAGE = {"include_image": False}


class ApplicationsTest(unittest.TestCase):
    maxDiff = None

    def test_found_as_the_desktop_knows_it(self) -> None:
        for reason, request, identity in (
            ("desktop file named like the program", {"app_bundle_id": "galculator"}, ("galculator", "Galculator")),
            ("its name, whatever the letter case", {"app_name": "GALCULATOR"}, ("galculator", "Galculator")),
            ("blanks around the name", {"app_name": " FeatherPad\n"}, ("featherpad", "FeatherPad")),
            ("desktop file with StartupWMClass", {"app_bundle_id": "debian-xterm"}, ("debian-xterm", "XTerm")),
            ("no such identifier", {"app_bundle_id": "no", "app_name": "xterm"}, ("debian-xterm", "XTerm")),
        ):
            with self.subTest(reason):
                context = capture(request | WITHOUT_IMAGE)["context"]
                self.assertEqual((context["app_bundle_id"], context["app_name"]), identity)

    def test_not_found(self) -> None:
        for reason, request in (
            ("a part of a name", {"app_name": "Galc"}),
            ("a process without a window", {"app_name": "openbox"}),
            ("installed, but not running", {"app_name": "UXTerm"}),
        ):
            with self.subTest(reason):
                self.assertEqual(code(request), "target_app_not_running")

    def test_tree_is_what_another_client_reads(self) -> None:
        for toolkit, request, name in (
            ("GTK 3", {"app_bundle_id": "galculator"}, "galculator"),
            ("Qt 5", {"app_bundle_id": "featherpad"}, "FeatherPad"),
        ):
            with self.subTest(toolkit):
                before = accessible_tree(name)
                data = capture(request | WITHOUT_IMAGE)
                after = accessible_tree(name)  # FeatherPad changes by itself when its notice goes
                self.assertEqual(data["ax_tree"], before if data["ax_tree"] != after else after)
                self.assertEqual(data["ax_node_count"], len(nodes(data["ax_tree"])))
                self.assertGreater(data["ax_node_count"], 50)

    def test_focused_element_is_the_frontmost_applications(self) -> None:
        activate(client_window("FeatherPad"))
        data = capture({"target": "focused_element"} | WITHOUT_IMAGE)
        self.assertEqual(data["context"]["app_bundle_id"], "featherpad")
        self.assertEqual(data["ax_tree"]["role"], "AXTextArea")

    def test_application_without_accessibility(self) -> None:
        data = capture({"app_name": "XTerm"})
        self.assertTrue(data["image"].startswith("data:image/jpeg;base64,"))
        self.assertEqual((data["level_used"], data["ax_tree"], data["ax_node_count"]), ("read", {}, 1))
        self.assertTrue(data["tcc_accessibility"])

    def test_leaves_no_trace(self) -> None:
        activate(client_window("XTerm"))
        before = state_of_desktop()
        for application in ("galculator", "FeatherPad", "XTerm", "UXTerm"):
            ask({"app_name": application, "allow_focus_steal": True})
        for target in ("focused_element", "screen"):
            ask({"target": target})
        self.assertEqual(state_of_desktop(), before)

    def test_a_trace_would_be_seen(self) -> None:
        activate(client_window("XTerm"))
        before = state_of_desktop()
        with subprocess.Popen(["cat"], stdin=subprocess.PIPE):
            activate(client_window("Galculator"))
            after = state_of_desktop()
        self.assertEqual({kind for kind in before if before[kind] == after[kind]}, {"pointer"})
