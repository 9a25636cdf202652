"""Frames are in pixels of the screen also where an application counts in units of its own, as these do."""

import unittest

from perception import capture, image_bytes
from witnesses import Window, nodes, pixels, screenshot, size_of, windows_of_class

BORDER = 5  # more than that of an entry field
WHITE = "ffffff"


def points_within(frame: list[int]) -> list[tuple[int, int]]:
    """At each edge of an entry field, where no text is."""
    left, top, width, height = frame
    right, bottom, high, middle = left + width - 1, top + height - 1, top + height // 4, left + width // 2
    edges = ((left + BORDER, high), (right - BORDER, high), (middle, top + BORDER), (middle, bottom - BORDER))
    return list(edges)


def points_around(fields: list[list[int]]) -> list[tuple[int, int]]:
    """Beside each of the entry fields, which stand below each other, and above and below them all."""
    lines = ((left - BORDER, left + width + BORDER, top + height // 4) for left, top, width, height in fields)
    sides = [(x, high) for left, right, high in lines for x in (left, right)]
    (left, top, width, _), (*_, last_top, _, last_height) = fields[0], fields[-1]
    return [*sides, (left + width // 2, top - BORDER), (left + width // 2, last_top + last_height + BORDER)]


class ScaleTest(unittest.TestCase):
    def test_frames(self) -> None:
        for window_class in ("made-secrets", "qt-sign-in"):
            with self.subTest(window_class):
                if not windows_of_class(window_class):
                    self.skipTest("it is not installed, or did not come up")
                window = Window(window_class)
                window.activate()
                window.move(121, 83)
                data = capture({"app_bundle_id": window_class, "level": "pixel_perfect"})
                self.assertEqual(data["ax_tree"]["frame"], [*window.corner, *size_of(image_bytes(data))])
                fields = [node["frame"] for node in nodes(data["ax_tree"]) if node["role"].endswith("TextField")]
                within = [point for frame in fields for point in points_within(frame)]
                seen = screenshot("root")
                self.assertEqual(set(pixels(seen, within)), {WHITE})
                self.assertNotIn(WHITE, pixels(seen, points_around(fields)))
