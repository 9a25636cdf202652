"""The viewer's page in a browser, made of answers about real applications.

TAVIK_SCREENSHOTS names a folder that then gets a screenshot of each page, light and dark.
"""

import base64
import itertools
import json
import os
import subprocess
import unittest
from pathlib import Path

import browser
from made_window import SECRETS
from perception import capture, code
from witnesses import windows_of_class

VIEW = Path(__file__).parents[2] / "clients/tools/view/view.py"
GALCULATOR = {"app_bundle_id": "galculator"}
APPLICATIONS = (
    ("GTK 3", "Galculator", GALCULATOR),
    ("Qt 5", "FeatherPad", {"app_bundle_id": "featherpad", "level": "read"}),
    ("Chromium", "Chromium", {"app_bundle_id": "chromium", "level": "pixel_perfect"}),
    ("no tree", "XTerm", {"app_bundle_id": "debian-xterm"}),
    ("withheld values", "made-secrets", {"app_bundle_id": "made-secrets"}),
)
HOSTILE = '</script><!--<script><img src=x onerror="document.title=1">{style}'
TEXTS = ("role", "title", "value", "help", "description")
WIDE, HIGH = 1280, 800

# What the test looks at: the row and the frame that are shown, in order of the tree and in pixels of the window.
SHOWN = """(() => {
  const row = document.querySelector(".row.shown"), place = row.getBoundingClientRect();
  const view = row.closest(".tree").getBoundingClientRect();
  const box = document.querySelector("rect.shown")?.getBoundingClientRect();
  const visible = place.top > view.top - 1 && place.bottom < view.bottom + 1;
  const index = [...document.querySelectorAll(".row")].indexOf(row);
  return { visible, index, box: box && [box.x, box.y, box.width, box.height] };
})()"""
SHEET = """(() => {
  const box = (document.querySelector(".sheet img") ?? document.querySelector(".sheet")).getBoundingClientRect();
  return [box.x, box.y, box.width, box.height];
})()"""


def view(answer: object, *options: str) -> subprocess.CompletedProcess:
    text = answer if isinstance(answer, bytes) else json.dumps(answer).encode()
    return subprocess.run([VIEW, *options], input=text, capture_output=True, timeout=20)


def nodes(tree: dict) -> list[dict]:
    return [tree, *itertools.chain.from_iterable(map(nodes, tree.get("children", [])))]


def area(frame: list[int]) -> int:
    return frame[2] * frame[3]


class ViewTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls) -> None:
        if not browser.is_installed():
            raise unittest.SkipTest("chromium is not installed")
        cls.browser = browser.Browser()
        cls.addClassCleanup(cls.browser.close)
        cls.browser.call(
            "Emulation.setDeviceMetricsOverride", width=WIDE, height=HIGH, deviceScaleFactor=1, mobile=False
        )

    def show(self, name: str, answer: dict, *options: str) -> str:
        """The page's text, once the page is there."""
        page = Path(os.environ["HOME"]) / "page.html"
        done = view(answer, "--output", str(page), *options)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, b"", b""))
        self.assertEqual(page.stat().st_mode & 0o777, 0o600)
        self.browser.open(page, "!!document.querySelector('[data-ready]')")
        if folder := os.environ.get("TAVIK_SCREENSHOTS"):
            for scheme in ("light", "dark"):
                feature = {"name": "prefers-color-scheme", "value": scheme}
                self.browser.call("Emulation.setEmulatedMedia", features=[feature])
                seen = self.browser.call("Page.captureScreenshot")["data"]
                (Path(folder) / f"{name} {scheme}.png").write_bytes(base64.b64decode(seen))
        self.assertEqual(self.browser.trouble, [])
        return self.browser.evaluate("document.body.innerText")

    def check_frames(self, tree: dict) -> int:
        """Points at the centre of every element: it is the one that is shown, or a smaller one that lies there, and its
        frame is within a pixel of where the picture has it. Returns how many of them are shown themselves."""
        elements = nodes(tree)
        menus = [element for element in elements if element.get("role") == "AXMenu" and "frame" not in element]
        closed = {id(item) for menu in menus for item in nodes(menu)}  # Qt gives them frames
        left, top, width, height = tree["frame"]
        sheet = self.browser.evaluate(SHEET)
        scale = sheet[2] / width
        itself = 0
        for index, element in enumerate(elements):
            x, y, w, h = element.get("frame", [0, 0, 0, 0])
            centre = (x + w / 2 - left, y + h / 2 - top)
            if id(element) in closed or min(w, h) < 2 or not (0 <= centre[0] < width and 0 <= centre[1] < height):
                continue
            self.browser.point_at(sheet[0] + centre[0] * scale, sheet[1] + centre[1] * scale)
            shown = self.browser.evaluate(SHOWN)
            found = elements[shown["index"]]
            self.assertTrue(shown["visible"])
            self.assertNotIn(id(found), closed)
            self.assertLessEqual(area(found["frame"]), area([x, y, w, h]), element)
            if shown["index"] != index:
                continue
            itself += 1
            where = [sheet[0] + (x - left) * scale, sheet[1] + (y - top) * scale, w * scale, h * scale]
            for side, (seen, expected) in enumerate(zip(shown["box"], where, strict=True)):
                self.assertAlmostEqual(seen, expected, delta=1, msg=f"{element} {side}")
        return itself

    def test_answers(self) -> None:
        for name, window_class, request in APPLICATIONS:
            with self.subTest(name):
                if not windows_of_class(window_class):
                    self.skipTest("it is not installed")
                data = capture(request)
                text = self.show(name, {"ok": True, "data": data})
                self.assertIn(data["context"]["app_name"], text)
                tree = data["ax_tree"]
                if name == "no tree":
                    self.assertIn("no accessibility tree", text)
                    continue
                leaves = [element for element in nodes(tree) if "children" not in element and "frame" in element]
                self.assertGreater(self.check_frames(tree), min(5, len(leaves) // 2))
                if name == "withheld values":
                    self.assertIn("2 values withheld: the policy names the role AXSecureTextField", text)
                    for secret in SECRETS:
                        self.assertNotIn(secret, text)

    def test_search(self) -> None:
        data = capture(GALCULATOR)
        self.show("search", {"ok": True, "data": data})
        all_nodes = nodes(data["ax_tree"])
        wanted = next(node["title"] for node in reversed(all_nodes) if node.get("title"))
        self.browser.evaluate(
            f"(i => {{ i.value = {json.dumps(wanted.upper())}; i.dispatchEvent(new Event('input')); }})"
            "(document.querySelector('input[type=search]'))"
        )
        found, visible = self.browser.evaluate("""[
          document.querySelectorAll(".row.found").length,
          [...document.querySelectorAll(".row")].filter(row => row.getClientRects().length).length]""")
        has = [wanted.lower() in str([node.get(name) for name in TEXTS]).lower() for node in all_nodes]
        self.assertEqual(found, sum(has))
        self.assertTrue(found <= visible < len(all_nodes))

    def test_what_is_withheld_and_what_fails(self) -> None:
        data = capture(GALCULATOR)
        withheld = data | {"image": None, "sensitive_app_match": True, "sensitive_bundle_id": "a.b"}
        text = self.show("withheld picture", {"ok": True, "data": withheld})
        self.assertIn("Picture withheld: the policy calls a.b sensitive", text)
        self.check_frames(data["ax_tree"])
        inner = data | {"ax_tree": {"role": "AXButton", "frame": [5, 5, 20, 10]}}
        self.assertIn("--picture", self.show("focused", {"ok": True, "data": inner}))
        self.assertEqual(self.browser.evaluate("document.querySelectorAll('rect').length"), 0)
        place = ",".join(map(str, data["ax_tree"]["frame"]))
        self.assertNotIn("--picture", self.show("placed", {"ok": True, "data": inner}, f"--picture={place}"))
        self.assertIn("target_required", self.show("error", {"ok": False, "code": code({}), "error": "e", "hint": "h"}))

    def test_hostile_text_stays_text(self) -> None:
        data = capture(GALCULATOR)
        data["context"]["app_name"] = data["ax_tree"]["title"] = data["ax_tree"]["children"][0]["description"] = HOSTILE
        text = self.show("hostile", {"ok": True, "data": data})
        self.assertEqual(text.count(HOSTILE), 3)
        self.assertEqual(self.browser.evaluate("document.title"), HOSTILE)
        self.assertEqual(self.browser.evaluate("document.images.length + 10 * document.scripts.length"), 21)
        # Were there a hole: what is not the page's own does not run.
        hole = "<img src=x onerror='document.title=1'>"
        self.browser.evaluate(f'document.body.insertAdjacentHTML("beforeend", "{hole}")')
        self.browser.evaluate("new Promise(done => setTimeout(done, 100))")
        self.assertEqual(self.browser.evaluate("document.title"), HOSTILE)
        self.assertTrue(self.browser.trouble)  # the browser has noticed, so the other tests would have
        self.browser.trouble.clear()


class InputTest(unittest.TestCase):
    def test_bad_input(self) -> None:
        good = {"ok": True, "data": {"context": {}, "image": None, "ax_tree": None}}
        self.assertEqual(view(good).returncode, 0)
        for reason, text, options in (
            ("not JSON", b"{", ()),
            ("not JSON", b'"\xff"', ()),
            ("nested too deeply", b"[" * 100_000, ()),
            ('member "ok"', b"[]", ()),
            ("data is not", {"ok": True}, ()),
            ("data.image", {"ok": True, "data": good["data"] | {"image": "https://example.com/a.png"}}, ()),
            ("data.image", {"ok": True, "data": good["data"] | {"image": "data:image/png;base64,%%%%"}}, ()),
            ("children[0].frame", {"ok": True, "data": good["data"] | {"ax_tree": {"children": [{"frame": [1]}]}}}, ()),
            ("No such file", good, ("/nowhere",)),
            ("No such file", good, ("--output", "/nowhere/page.html")),
            ("--picture", good, ("--picture", "1,2,3,0")),
        ):
            with self.subTest(reason):
                done = view(text, *options)
                self.assertEqual((done.returncode, done.stdout), (2, b""))
                self.assertIn(reason, done.stderr.decode())
                self.assertNotIn("Traceback", done.stderr.decode())
