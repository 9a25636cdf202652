"""Secrets stay where they are, and a sensitive application is not pictured."""

import os
import tempfile
import unittest
from pathlib import Path

import sign_in_window
from perception import ask, capture
from witnesses import accessible_tree, nodes

IDENTIFIER = "org.example.SignIn"
REQUEST = {"app_bundle_id": IDENTIFIER}
SENSITIVE = 'bundle_id_blocklist:\n  - "org.example.*"\nax_role_text_blocklist:\n  - AXSecureTextField\n'


def policy(text: str) -> dict[str, str]:
    """The environment in which a file with this text is the policy. The file goes with the private desktop."""
    with tempfile.NamedTemporaryFile("w", dir=os.environ["HOME"], suffix=".yaml", delete=False) as file:
        file.write(text)
    return {"TAVIK_PERCEPTION_CONFIG": file.name}


DELIVERED: dict[str, str | None] = {"TAVIK_PERCEPTION_CONFIG": None}


def setUpModule() -> None:
    folder = Path(os.environ["XDG_DATA_HOME"]) / "applications"
    folder.mkdir(parents=True)
    entry = ("[Desktop Entry]", "Type=Application", "Name=Sign In", f"StartupWMClass={sign_in_window.NAME}")
    (folder / f"{IDENTIFIER}.desktop").write_text("\n".join(entry) + "\n")


def password_values(data: dict) -> list[str | None]:
    return [node.get("value") for node in nodes(data["ax_tree"]) if node["role"] == "AXSecureTextField"]


class PolicyTest(unittest.TestCase):
    def test_delivered_policy_withholds_passwords(self) -> None:
        response = ask(REQUEST, DELIVERED)
        data = response["data"]
        self.assertEqual(password_values(data), ["<redacted>", "<redacted>"])
        self.assertTrue(data["redaction_applied"])
        data["image"] = None
        for secret in (sign_in_window.PLAIN_SECRET, sign_in_window.BULLETED_SECRET, "●"):
            self.assertNotIn(secret, str(response))
        self.assertIn("alice", [node.get("value") for node in nodes(data["ax_tree"])])

    def test_empty_policy_withholds_nothing(self) -> None:
        data = capture(REQUEST, policy(""))
        self.assertEqual(
            password_values(data), ["●" * len(sign_in_window.BULLETED_SECRET), sign_in_window.PLAIN_SECRET]
        )
        self.assertFalse(data["redaction_applied"])
        self.assertNotIn("sensitive_app_match", data)

    def test_sensitive_application_is_not_pictured(self) -> None:
        for reason, request, has_tree in (
            ("the application asked for", REQUEST | {"level": "pixel_perfect"}, True),
            ("the screen while it is frontmost", {"target": "screen"}, False),
            ("a region while it is frontmost", {"target": "region", "region": {"x": 0, "y": 0, "w": 9, "h": 9}}, False),
        ):
            with self.subTest(reason):
                data = capture(request, policy(SENSITIVE))
                self.assertIsNone(data["image"])
                self.assertEqual((data["sensitive_app_match"], data["sensitive_bundle_id"]), (True, IDENTIFIER))
                self.assertTrue(data["redaction_applied"])
                self.assertEqual(data["ax_tree"] is not None, has_tree)

    def test_walk_is_bounded_and_texts_are_whole(self) -> None:
        tree = capture(REQUEST, policy(""))["ax_tree"]
        self.assertEqual(tree, accessible_tree(sign_in_window.NAME))
        titles = [node.get("title") for node in nodes(tree)]
        self.assertIn(sign_in_window.GREETING, titles)
        for last, beyond in (("Button 49", "Button 50"), ("7 more", "6 more")):
            self.assertIn(last, titles)
            self.assertNotIn(beyond, titles)
