"""Measures the program beside its yardsticks.

    bench.py page                          a page of 2000 elements, to standard output
    bench.py measure DESKTOP FILE          adds the rows of the cases on this desktop to the file, one JSON object each
    bench.py report FILE [--check]         prints the rows as a table; with --check exits with 1 when a bound is missed
"""

import json
import statistics
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path

from cases import BUILD, CASES, PROGRAM, Case

RUNS = 11


@dataclass
class Cost:
    """Medians over the runs of one command."""

    wall_ms: float
    cpu_ms: float
    peak_mb: float
    bytes: int


def page() -> str:
    """45 groups of 44 buttons: none has more children than are looked at."""
    groups = "".join(
        f'<div role="group" aria-label="Group {group}">'
        + "".join(f"<button>{group}, {button}</button>" for button in range(1, 45))
        + "</div>"
        for group in range(1, 46)
    )
    return (
        f'<!DOCTYPE html><html lang="en"><meta charset="utf-8"><title>2000 elements</title><body>{groups}</body></html>'
    )


def run_once(command: tuple[str, ...], input_file: Path) -> tuple[int, ...]:
    done = subprocess.run([BUILD / "bench-measure", input_file, *command], capture_output=True, text=True)
    if done.returncode:
        sys.exit(f"bench: {command} failed: {done.stdout} {done.stderr}")
    return tuple(map(int, done.stdout.split()))


def cost(runs: list[tuple[int, ...]]) -> Cost:
    wall, cpu, peak, size = (statistics.median(figures) for figures in zip(*runs))
    return Cost(wall / 1000, cpu / 1000, peak / 1024, int(size))


def measure(case: Case) -> dict:
    """Both commands in turn, so that what else the machine does meets both."""
    with tempfile.TemporaryDirectory() as folder:
        request = Path(folder, "request.json")
        request.write_text(case.input, encoding="utf-8")
        commands = ((PROGRAM,), case.yardstick)
        run_once(commands[0], request), run_once(commands[1], request)
        runs = [[run_once(command, request) for command in commands] for _ in range(RUNS)]
    program, yardstick = (cost(list(of_one)) for of_one in zip(*runs))
    return {
        "case": case.name,
        "program": vars(program),
        "yardstick": case.yardstick_name,
        "yardstick_cost": vars(yardstick),
        "bounds": bounds(case, program, yardstick),
    }


def bounds(case: Case, program: Cost, yardstick: Cost) -> list[dict]:
    """What was to be reached, what was, and whether that is enough."""
    ratio = program.wall_ms / yardstick.wall_ms
    found = []
    if case.most:
        found.append({"text": f"at most {case.most:g} times", "got": ratio, "kept": ratio <= case.most})
    if case.times:
        found.append({"text": f"{case.times:g} times as fast", "got": 1 / ratio, "kept": 1 / ratio >= case.times})
    if case.most_bytes:
        image = program.bytes * 3 / 4  # base64
        found.append(
            {
                "text": f"at most {case.most_bytes:g} times the bytes",
                "got": image / yardstick.bytes,
                "kept": image <= case.most_bytes * yardstick.bytes,
            }
        )
    if case.screen_pixels:
        limit = 3 * 4 * case.screen_pixels / 2**20 + 16
        found.append({"text": f"at most {limit:.0f} MB", "got": program.peak_mb, "kept": program.peak_mb <= limit})
    return found


def report(rows: list[dict]) -> str:
    lines = [
        f"{'case':34} {'ms':>7} {'CPU ms':>7} {'MB':>6}  {'yardstick':28} {'ms':>7} {'CPU ms':>7} {'MB':>6}  bounds"
    ]
    for row in rows:
        ours, theirs = row["program"], row["yardstick_cost"]
        kept = "; ".join(
            f"{bound['got']:.2f} ({bound['text']}{'' if bound['kept'] else ': MISSED'})" for bound in row["bounds"]
        )
        lines.append(
            f"{row['case']:34} {ours['wall_ms']:7.2f} {ours['cpu_ms']:7.2f} {ours['peak_mb']:6.1f}  "
            f"{row['yardstick']:28} {theirs['wall_ms']:7.2f} {theirs['cpu_ms']:7.2f} {theirs['peak_mb']:6.1f}  {kept}"
        )
    return "\n".join(lines)


def main(arguments: list[str]) -> int:
    match arguments:
        case ["page"]:
            print(page())
        case ["measure", desktop, file]:
            with open(file, "a", encoding="utf-8") as rows:
                for one in CASES:
                    if one.desktop == desktop:
                        print(json.dumps(measure(one)), file=rows, flush=True)
        case ["report", file, *options] if set(options) <= {"--check"}:
            rows = [json.loads(line) for line in Path(file).read_text(encoding="utf-8").splitlines()]
            print(report(rows))
            return int("--check" in options and not all(bound["kept"] for row in rows for bound in row["bounds"]))
        case _:
            sys.exit(__doc__)
    return 0


sys.exit(main(sys.argv[1:]))
