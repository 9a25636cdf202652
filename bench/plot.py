"""Draws how cost grows, from the figures of script/bench: plot.py FILE PICTURE."""

import json
import subprocess
import sys
from pathlib import Path

# Title, label and unit of the horizontal axis, and the series of each diagram.
DIAGRAMS = (
    ("Tree of a page in Chromium", "nodes", 1, {"nodes": "tree, no picture"}),
    ("Part of a screen", "million pixels", 1e6, {"pixel_perfect": "PNG", "read": "JPEG, 1600 wide at most"}),
)

rows = [json.loads(line) for line in Path(sys.argv[1]).read_text(encoding="utf-8").splitlines()]
script = [
    "set terminal svg size 860,310 font 'sans,11' background 'white'",
    f"set multiplot layout 1,{len(DIAGRAMS)}",
    "set ylabel 'ms, whole process'; set grid; set key left top; set xrange [0:*]; set yrange [0:*]",
]
for title, label, unit, series in DIAGRAMS:
    for name in series:
        points = sorted((row["size"] / unit, row["ms"]) for row in rows if row.get("series") == name)
        script += [f"${name} << END", *(f"{size} {ms}" for size, ms in points), "END"]
    curves = ", ".join(f"${name} with linespoints pointtype 7 title '{text}'" for name, text in series.items())
    script.append(f"set title '{title}'; set xlabel '{label}'; plot {curves}")
with open(sys.argv[2], "w", encoding="utf-8") as picture:
    subprocess.run(["gnuplot"], input="\n".join(script), stdout=picture, text=True, check=True)
