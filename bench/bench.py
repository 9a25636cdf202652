"""Measures the program beside its yardsticks.

    bench.py measure DESKTOP FILE     adds what is measured on this desktop to the file, one JSON object a line
    bench.py report FILE [--check]    prints it as tables; with --check exits with 1 when a bound is missed
"""

import json
import statistics
import subprocess
import sys
import tempfile
from collections.abc import Iterator
from dataclasses import asdict, dataclass
from pathlib import Path

from cases import BUILD, CASES, PHASES, PROGRAM, SERIES, Bound, Case, Point

RUNS = 11
PAIRS = 15  # of a program's run and its yardstick's, behind those that only warm
WARMING = 2
HEADINGS = ("case", "ms", "CPU ms", "MB", "yardstick", "ms", "CPU ms", "MB", "bounds")


@dataclass
class Cost:
    """Medians over the runs of one command; nothing where it was not measured."""

    wall_ms: float
    cpu_ms: float | None = None
    peak_mb: float | None = None
    bytes: int | None = None


def run_once(command: tuple[str, ...], input_file: Path) -> tuple[int, ...]:
    done = subprocess.run([BUILD / "bench-measure", input_file, *command], capture_output=True, text=True)
    if done.returncode:
        sys.exit(f"bench: {command} failed: {done.stdout} {done.stderr}")
    return tuple(map(int, done.stdout.split()))


def cost(runs: list[tuple[int, ...]]) -> Cost:
    wall, cpu, peak, size = (statistics.median(figures) for figures in zip(*runs))
    return Cost(wall / 1000, cpu / 1000, peak / 1024, int(size))


def row(name: str, program: Cost, yardstick_name: str, yardstick: Cost | None, bounds: list[dict]) -> dict:
    both = {"program": asdict(program), "yardstick_cost": asdict(yardstick) if yardstick else None}
    return {"case": name, "yardstick": yardstick_name, "bounds": bounds} | both


def judged(bound: Bound, values: list[float]) -> dict:
    """By the median of what each pair gave, which is steadier than that of two medians."""
    value = statistics.median(values)
    lower, _, upper = statistics.quantiles(values) if len(values) > 1 else [value] * 3
    kept = value <= bound.limit if bound.is_upper else value >= bound.limit
    return asdict(bound) | {"value": value, "quartiles": [lower, upper], "kept": kept}


def measure(case: Case) -> dict:
    """Both commands in turn, so that what else the machine does meets both."""
    with tempfile.TemporaryDirectory() as folder:
        request = Path(folder, "request.json")
        request.write_text(json.dumps(case.request), encoding="utf-8")
        commands = ((PROGRAM,), case.yardstick)
        pairs = [[run_once(command, request) for command in commands] for _ in range(WARMING + PAIRS)][WARMING:]
    program, yardstick = (cost(list(of_one)) for of_one in zip(*pairs))
    values = {
        "times the yardstick's": [ours[0] / theirs[0] for ours, theirs in pairs],
        "times as fast": [theirs[0] / ours[0] for ours, theirs in pairs],
        "times the bytes": [program.bytes * 3 / 4 / max(yardstick.bytes, 1)],  # the program writes base64
        "of its time on a processor": [ours[1] / ours[0] for ours, _ in pairs],
        "MB": [program.peak_mb],
    }
    return row(case.name, program, case.yardstick_name, yardstick, [judged(b, values[b.unit]) for b in case.bounds])


def core_rows() -> list[dict]:
    """The cases that bench-core measures within one process."""
    output = subprocess.run([BUILD / "bench-core"], check=True, capture_output=True, text=True).stdout
    rows = []
    for line in output.splitlines():
        name, program, yardstick = line.split("\t")
        ours, theirs = float(program), float(yardstick)
        if theirs:
            bound = judged(Bound(2, "times the yardstick's"), [ours / theirs])
            rows.append(row(name, Cost(ours), "the JSON library alone", Cost(theirs), [bound]))
        else:
            rows.append(row(name, Cost(ours), "", None, [judged(Bound(5, "ms"), [ours])]))
    return rows


def point(of: Point) -> dict:
    """How many nodes or pixels there are, and the median milliseconds of the whole process."""
    with tempfile.TemporaryDirectory() as folder:
        request = Path(folder, "request.json")
        request.write_text(json.dumps(of.request), encoding="utf-8")
        wall = statistics.median(run_once((PROGRAM,), request)[0] for _ in range(RUNS)) / 1000
        answer = subprocess.run([PROGRAM], input=request.read_bytes(), check=True, capture_output=True).stdout
    area = of.request.get("region")
    size = area["w"] * area["h"] if area else json.loads(answer)["data"]["ax_node_count"]
    return {"series": of.series, "size": size, "ms": wall}


def phases(arguments: str) -> dict:
    """The median milliseconds of each step."""
    command = [BUILD / "bench-phases", *arguments.split()]
    runs = [subprocess.run(command, check=True, capture_output=True, text=True).stdout for _ in range(RUNS)]
    steps = zip(*([line.split("\t") for line in run.splitlines()] for run in runs))
    medians = {laps[0][0]: statistics.median(float(milliseconds) for _, milliseconds in laps) for laps in steps}
    return {"phases": arguments, "steps": medians}


def rows_of(desktop: str) -> Iterator[dict]:
    if desktop == "core":
        yield from core_rows()
    yield from (measure(case) for case in CASES if case.desktop == desktop)
    yield from (point(of) for of in SERIES if of.desktop == desktop)
    yield from map(phases, PHASES.get(desktop, ()))


def figures(cost: dict | None) -> list[str]:
    numbers = [cost[name] if cost else None for name in ("wall_ms", "cpu_ms", "peak_mb")]
    return ["" if number is None else f"{number:.{decimals}f}" for number, decimals in zip(numbers, (2, 2, 1))]


def shown(bound: dict) -> str:
    side = "at most" if bound["is_upper"] else "at least"
    lower, upper = bound["quartiles"]
    spread = f"{lower:.2f} to {upper:.2f}, " if lower < upper else ""
    missed = "" if bound["kept"] else ": MISSED"
    return f"{bound['value']:.2f} {bound['unit']} ({spread}{side} {bound['limit']:g}{missed})"


def report(rows: list[dict]) -> str:
    cells = [HEADINGS]
    for one in rows:
        bounds = ", ".join(map(shown, one["bounds"]))
        cells.append((one["case"], *figures(one["program"]), one["yardstick"], *figures(one["yardstick_cost"]), bounds))
    widths = [max(map(len, column)) for column in zip(*cells)]
    aligned = [
        [
            cell.ljust(width) if index in (0, 4, 8) else cell.rjust(width)
            for index, (cell, width) in enumerate(zip(line, widths))
        ]
        for line in cells
    ]
    return "\n".join("  ".join(line).rstrip() for line in aligned)


def main(arguments: list[str]) -> int:
    match arguments:
        case ["measure", desktop, file]:
            with open(file, "a", encoding="utf-8") as rows:
                for one in rows_of(desktop):
                    print(json.dumps(one), file=rows, flush=True)
        case ["report", file, *options] if set(options) <= {"--check"}:
            rows = [json.loads(line) for line in Path(file).read_text(encoding="utf-8").splitlines()]
            cases = [one for one in rows if "case" in one]
            print(report(cases))
            for one in rows:
                if "phases" in one:
                    steps = (f"    {step:34}{milliseconds:8.2f}" for step, milliseconds in one["steps"].items())
                    print(f"\n{one['phases']}, ms", *steps, sep="\n")
            return int("--check" in options and not all(bound["kept"] for one in cases for bound in one["bounds"]))
        case _:
            sys.exit(__doc__)
    return 0


sys.exit(main(sys.argv[1:]))
