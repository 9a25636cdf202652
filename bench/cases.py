"""What is measured, beside which yardstick, and what is to be reached."""

import json
import os
import shlex
from dataclasses import dataclass
from pathlib import Path

BUILD = Path(os.environ["TAVIK_BENCH_BUILD"])
PROGRAM = str(BUILD / "tavik-perception-helper")
WALK = f"/usr/bin/python3 {shlex.quote(str(Path(__file__).with_name('pyatspi_walk.py')))}"


@dataclass(frozen=True)
class Case:
    """A request, and a shell command as yardstick. `most` bounds the program's time in times the yardstick's; `times`
    says how many times as fast it is to be; `most_bytes` bounds its output in times the yardstick's."""

    desktop: str
    name: str
    request: dict
    yardstick_name: str
    yardstick: tuple[str, ...]
    most: float | None = None
    times: float | None = None
    most_bytes: float | None = None
    screen_pixels: int = 0  # of the screen that is captured

    @property
    def input(self) -> str:
        return json.dumps(self.request)


def shell(command: str) -> tuple[str, ...]:
    return ("sh", "-ec", command)


def tree(application: str, **more: object) -> dict:
    return {"app_bundle_id": application, "include_image": False} | more


def screen(level: str) -> dict:
    return {"target": "screen", "level": level, "include_ax_tree": False}


WITHOUT_PREFETCH = ("the same, one call at a time", (str(BUILD / "perception-without-prefetch"),))
GET_IMAGE = ("GetImage alone", (str(BUILD / "bench-get_image"),))
CALCULATOR = "maim -i $(xdotool search --onlyvisible --class galculator) -f jpg | cat; " + WALK + " galculator"
FULL_HD, UHD = 1920 * 1080, 3840 * 2160

CASES = (
    Case("applications", "{}", {}, "read, write 500 bytes", (str(BUILD / "bench-echo"),), most=2.5),
    Case(
        "applications",
        "glance of galculator",
        {"app_bundle_id": "galculator", "level": "glance"},
        "maim, pyatspi",
        shell(CALCULATOR),
        times=5,
    ),
    Case(
        "applications",
        "screen 1920x1080, read",
        screen("read"),
        "maim | convert",
        shell("maim -f png | convert png:- -resize 1600 -quality 85 jpg:-"),
        times=6,
        screen_pixels=FULL_HD,
    ),
    Case("applications", "screen 1920x1080, read", screen("read"), *GET_IMAGE, most=4, screen_pixels=FULL_HD),
    Case("applications", "tree of galculator (GTK 3)", tree("galculator"), *WITHOUT_PREFETCH, times=3.5),
    Case("applications", "tree of gnome-calculator (GTK 4)", tree("org.gnome.Calculator"), *WITHOUT_PREFETCH, times=2),
    Case("applications", "tree of FeatherPad (Qt 5)", tree("featherpad"), *WITHOUT_PREFETCH, times=2),
    Case("applications", "tree of Chromium, 2000 elements", tree("chromium"), *WITHOUT_PREFETCH, times=3.5),
    Case(
        "applications",
        "tree of Chromium, 2000 elements",
        tree("chromium"),
        "pyatspi",
        shell(WALK + " Chromium"),
        times=4,
    ),
    Case(
        "screen",
        "screen 3840x2160, pixel_perfect",
        screen("pixel_perfect"),
        "maim (PNG)",
        shell("maim -f png | cat"),
        times=4,
        most_bytes=1.1,
        screen_pixels=UHD,
    ),
    Case("screen", "screen 3840x2160, pixel_perfect", screen("pixel_perfect"), *GET_IMAGE, most=3.5, screen_pixels=UHD),
    Case("screen", "screen 3840x2160, read", screen("read"), *GET_IMAGE, most=4, screen_pixels=UHD),
)
