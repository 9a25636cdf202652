"""What is measured, beside which yardstick, and what is to be reached."""

import os
import shlex
from dataclasses import dataclass
from pathlib import Path

BUILD = Path(os.environ["TAVIK_BENCH_BUILD"])
PROGRAM = str(BUILD / "tavik-perception-helper")
WALK = f"/usr/bin/python3 {shlex.quote(str(Path(__file__).with_name('pyatspi_walk.py')))}"


@dataclass(frozen=True)
class Bound:
    limit: float
    unit: str
    is_upper: bool = True


@dataclass(frozen=True)
class Case:
    """A request on one of the desktops of script/bench, and the command beside it."""

    desktop: str
    name: str
    request: dict
    yardstick_name: str
    yardstick: tuple[str, ...]
    bounds: tuple[Bound, ...]


def at_most(limit: float) -> Bound:
    return Bound(limit, "times the yardstick's")


def times_as_fast(limit: float) -> Bound:
    return Bound(limit, "times as fast", is_upper=False)


def memory_for(width: int, height: int) -> Bound:
    """Three times the raw pixels of the surface, and 16 MB."""
    return Bound(round(3 * 4 * width * height / 2**20 + 16), "MB")


def shell(command: str) -> tuple[str, ...]:
    return ("sh", "-ec", command)


def tree(application: str) -> dict:
    return {"app_bundle_id": application, "include_image": False}


def screen(level: str) -> dict:
    return {"target": "screen", "level": level, "include_ax_tree": False}


WITHOUT_PREFETCH = ("one call at a time", (str(BUILD / "perception-without-prefetch"),))
GET_IMAGE = ("GetImage alone", (str(BUILD / "bench-get_image"),))
CALCULATOR = f"maim -i $(xdotool search --onlyvisible --class galculator) -f jpg | cat; {WALK} galculator"
CONVERTED = "maim -f png | convert png:- -resize 1600 -quality 85 jpg:-"
HD, UHD = memory_for(1920, 1080), memory_for(3840, 2160)
READ_HD = ("applications", "screen 1920x1080, read", screen("read"))
PERFECT_UHD = ("screen", "screen 3840x2160, pixel_perfect", screen("pixel_perfect"))
CHROMIUM = ("applications", "tree of Chromium, 2000 elements", tree("chromium"))

CASES = (
    Case("applications", "{}", {}, "read, write 500 bytes", (str(BUILD / "bench-echo"),), (at_most(2.5),)),
    Case(
        "applications",
        "glance of galculator",
        {"app_bundle_id": "galculator", "level": "glance"},
        "maim, then pyatspi",
        shell(CALCULATOR),
        (times_as_fast(5),),
    ),
    Case(*READ_HD, "maim | convert", shell(CONVERTED), (times_as_fast(6), HD)),
    Case(*READ_HD, *GET_IMAGE, (at_most(4),)),
    Case("applications", "tree of galculator", tree("galculator"), *WITHOUT_PREFETCH, (times_as_fast(3.5),)),
    Case(
        "applications", "tree of GNOME Calculator", tree("org.gnome.Calculator"), *WITHOUT_PREFETCH, (times_as_fast(2),)
    ),
    Case("applications", "tree of FeatherPad", tree("featherpad"), *WITHOUT_PREFETCH, (times_as_fast(2),)),
    Case(*CHROMIUM, *WITHOUT_PREFETCH, (times_as_fast(3.5),)),
    Case(
        *CHROMIUM,
        "pyatspi",
        shell(WALK + " Chromium"),
        (times_as_fast(4), Bound(0.35, "of its time on a processor")),
    ),
    Case(*PERFECT_UHD, "maim", shell("maim -f png | cat"), (times_as_fast(4), Bound(1.1, "times the bytes"), UHD)),
    Case(*PERFECT_UHD, *GET_IMAGE, (at_most(3.5),)),
    Case(
        "sway",
        "glance of galculator on sway",
        {"app_bundle_id": "galculator", "level": "glance"},
        "grim, then pyatspi",
        shell(f"grim -t jpeg - | cat; {WALK} galculator"),
        (times_as_fast(3),),
    ),
    Case(
        "sway",
        "screen 1920x1080 on sway, pixel_perfect",
        screen("pixel_perfect"),
        "grim",
        shell("grim -"),
        (times_as_fast(2),),
    ),
    Case("screen", "screen 3840x2160, read", screen("read"), *GET_IMAGE, (at_most(4), UHD)),
)


@dataclass(frozen=True)
class Point:
    """A request of a series that shows how cost grows."""

    desktop: str
    series: str
    request: dict


def region(scale: int, level: str) -> dict:
    return screen(level) | {"target": "region", "region": {"x": 0, "y": 0, "w": 960 * scale, "h": 540 * scale}}


SERIES = (
    Point("elements", "nodes", tree("chromium")),
    *(Point("screen", level, region(scale, level)) for level in ("pixel_perfect", "read") for scale in (1, 2, 3, 4)),
)

# Of what the steps of a run are measured: the application whose tree is read, the longest side and format of the picture.
PHASES = {
    "applications": ("galculator 1600 jpeg", "chromium 1600 jpeg"),
    "screen": ("none 4096 png", "none 1600 jpeg"),
}
