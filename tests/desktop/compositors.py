"""The Wayland compositor under test: puts windows where a test wants them, and shows what is on its monitors."""

import json
import os
import shutil
import sys
import tempfile
from collections.abc import Iterator, Sequence
from pathlib import Path

from gi.repository import Gio, GLib
from perception import HELPER
from witnesses import output_of, tool, wait_for

IS_KWIN = "SWAYSOCK" not in os.environ
WITNESS = f"{os.environ['HOME']}/witness"
PROCESS = "kwin_wayland" if IS_KWIN else "sway"
ENTRY = "clients/apple/Helpers/PerceptionHelper/tavik-perception-helper.desktop.in"

# To sway in its own words, with the window as [app_id=...]; to KWin as a script, with the window as w.
COMMANDS = {
    "place": (
        "{0} move to output HEADLESS-{monitor}, resize set {width} {height}, move position {x} {y}",
        "const at = workspace.clientArea(KWin.FullScreenArea, {monitor} - 1, 1);"
        "w.frameGeometry = {{x: at.x + {x}, y: at.y + {y}, width: {width}, height: {height}}};",
    ),
    "focus": ("{0} focus", "workspace.activeClient = w;"),
    "fill": ("{0} floating disable", "w.setMaximize(true, true);"),
    "float": ("{0} floating enable", "w.setMaximize(false, false);"),
    "minimize": ("{0} move scratchpad", "w.minimized = true;"),
    "restore": ("{0} scratchpad show", "w.minimized = false;"),
    "send away": ("{0} move to workspace 7", "workspace.createDesktop(1, 'two'); w.desktop = 2;"),
    "bring back": ("{0} move to workspace 1", "w.desktop = 1;"),
}


def command(name: str, window: str, **values: int) -> None:
    """Of an application: as X11 and Wayland's applications name it."""
    text = COMMANDS[name][IS_KWIN].format(f"[{'class' if window == 'XTerm' else 'app_id'}={window}]", **values)
    if IS_KWIN:
        is_meant = f"w.resourceClass.toString().toLowerCase() == '{window.lower()}'"
        run_script(f"for (const w of workspace.clientList()) if ({is_meant}) {{ {text} }}")
        return
    for answer in json.loads(tool("swaymsg", "-r", text)):
        assert answer["success"], (text, answer)


def place(window: str, x: int, y: int, width: int, height: int, monitor: int = 1) -> None:
    command("place", window, x=x, y=y, width=width, height=height, monitor=monitor)
    sizes = kwins_sizes if IS_KWIN else sways_sizes
    wait_for(lambda: (width, height) in sizes(), f"{window} does not take its place")


def screenshot(monitor: int) -> str:
    """The file of what the monitor shows."""
    path = os.path.join(tempfile.gettempdir(), f"tavik-{os.getpid()}-{monitor}.png")
    if IS_KWIN:
        tool(WITNESS, __file__, f"Virtual-{monitor - 1}", path)
    else:
        tool("grim", "-o", f"HEADLESS-{monitor}", path)
    return path


def sways_sizes(node: dict | None = None) -> Iterator[tuple[int, int]]:
    node = node or json.loads(tool("swaymsg", "-r", "-t", "get_tree"))
    if node.get("pid"):
        yield node["rect"]["width"], node["rect"]["height"]
    for child in node["nodes"] + node["floating_nodes"]:
        yield from sways_sizes(child)


def call_kwin(path: str, method: str, types: str = "", *arguments: object, descriptors: Sequence[int] = ()) -> tuple:
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    sent = Gio.UnixFDList()
    for descriptor in descriptors:
        sent.append(descriptor)
    call = ("org.kde.KWin", path, *method.rsplit(".", 1), GLib.Variant(f"({types})", arguments))
    return bus.call_with_unix_fd_list_sync(*call, None, Gio.DBusCallFlags.NONE, 5000, sent, None)[0].unpack()


def run_script(text: str) -> None:
    with tempfile.NamedTemporaryFile("w", suffix=".js") as script:
        script.write(text)
        script.flush()
        (number,) = call_kwin("/Scripting", "org.kde.kwin.Scripting.loadScript", "s", script.name)
        call_kwin(f"/{number}", "org.kde.kwin.Script.run")
        call_kwin("/Scripting", "org.kde.kwin.Scripting.unloadScript", "s", script.name)


def kwins_sizes() -> list[tuple[int, int]]:
    (matches,) = call_kwin("/WindowsRunner", "org.kde.krunner1.Match", "s", "window")
    told = (call_kwin("/KWin", "org.kde.KWin.getWindowInfo", "s", match[0].removeprefix("0_"))[0] for match in matches)
    return [(window["width"], window["height"]) for window in told]


def save_kwins_screenshot(output: str, path: str) -> None:
    """The pixels follow the answer."""
    reading, writing = os.pipe()
    with open(reading, "rb") as pipe, open(writing, "wb"):
        arguments = (output, {"native-resolution": GLib.Variant("b", True)}, 0)
        capture = ("org.kde.KWin.ScreenShot2.CaptureScreen", "sa{sv}h", *arguments)
        (told,) = call_kwin("/org/kde/KWin/ScreenShot2", *capture, descriptors=[writing])
        pixels = pipe.read(told["stride"] * told["height"])
    form = ("-size", f"{told['width']}x{told['height']}", "-depth", "8", "bgra:-", "-alpha", "off")
    output_of("/usr/bin/convert", *form, path, stdin=pixels)


def be_allowed_to_look() -> None:
    """Installs the helper's desktop file, and one like it for this witness; KWin alone asks for them."""
    if not IS_KWIN:
        return
    shutil.copy(sys.executable, WITNESS)  # under its own name Python has a desktop file already, without these rights
    folder = Path(os.environ["XDG_DATA_HOME"]) / "applications"
    folder.mkdir(parents=True)
    for name, program in (("helper", HELPER), ("witness", WITNESS)):
        entry = (Path(__file__).parents[2] / ENTRY).read_text().replace("@program@", program)
        (folder / f"{name}.desktop").write_text(entry)
    tool("kbuildsycoca5")


if __name__ == "__main__":
    save_kwins_screenshot(*sys.argv[1:])
