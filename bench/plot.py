"""Draws how cost grows, from the figures of script/bench: plot.py FILE PICTURE."""

import json
import sys
from pathlib import Path

import matplotlib

matplotlib.use("svg")
from matplotlib import pyplot  # noqa: E402

matplotlib.rcParams["svg.hashsalt"] = "the same figures give the same file"

# Title, label and unit of the horizontal axis, and the series of each diagram.
DIAGRAMS = (
    ("Tree of a page in Chromium", "nodes", 1, {"nodes": "tree, no picture"}),
    ("Part of a screen", "million pixels", 1e6, {"pixel_perfect": "PNG", "read": "JPEG, 1600 wide at most"}),
)

rows = [json.loads(line) for line in Path(sys.argv[1]).read_text(encoding="utf-8").splitlines()]
figure, places = pyplot.subplots(1, len(DIAGRAMS), figsize=(9, 3.2), layout="constrained")
for axes, (title, label, unit, series) in zip(places, DIAGRAMS):
    for name, meaning in series.items():
        points = sorted((row["size"] / unit, row["ms"]) for row in rows if row.get("series") == name)
        axes.plot(*zip(*points), marker="o", label=meaning)
    axes.set(title=title, xlabel=label, ylabel="ms, whole process", xlim=0, ylim=0)
    axes.grid(alpha=0.3)
    axes.legend()
figure.savefig(sys.argv[2], metadata={"Date": None})
