"""The desktop as other tools see it: windows, pixels, accessibility trees, processes."""

import contextlib
import hashlib
import os
import re
import subprocess
import time
from collections.abc import Callable
from itertools import filterfalse, islice
from pathlib import Path

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

# The AX roles of the AT-SPI roles that occur in the applications under test, but for those that have the same name.
ROLES = {
    "AXButton": ["push button"],
    "AXCheckBox": ["check box", "toggle button"],
    "AXGroup": ["alert", "filler", "layered pane", "list item", "notification", "panel", "paragraph", "status bar"],
    "AXIncrementor": ["spin button"],
    "AXMenu": ["menu", "popup menu"],
    "AXMenuItem": ["menu item", "check menu item", "radio menu item"],
    "AXRadioButton": ["page tab"],
    "AXScrollArea": ["scroll pane"],
    "AXSecureTextField": ["password text"],
    "AXSplitGroup": ["split pane"],
    "AXSplitter": ["separator"],
    "AXStaticText": ["label", "static"],
    "AXTabGroup": ["page tab list"],
    "AXToolbar": ["tool bar"],
    "AXWebArea": ["document web"],
    "AXWindow": ["frame"],
}

NOWHERE = -(2**31)  # where GTK 3 says that closed menus are


def output_of(*command: str, stdin: bytes = b"") -> bytes:
    return subprocess.run(command, input=stdin, check=True, capture_output=True, timeout=20).stdout


def tool(*command: str, stdin: bytes = b"") -> str:
    return output_of(*command, stdin=stdin).decode(errors="replace")


def wait_for(attempt: Callable[[], object], otherwise: str) -> object:
    """What an attempt yields at last; nothing and False are failures."""
    deadline = time.monotonic() + 10
    while (result := attempt()) in (None, False):
        assert time.monotonic() < deadline, otherwise
    return result


def window_list() -> list[str]:
    """A line for each window: its identifier first, its class among the rest."""

    def listing() -> list[str] | None:  # which fails when a window vanishes meanwhile
        done = subprocess.run(["wmctrl", "-lx"], capture_output=True, text=True)
        return done.stdout.splitlines() if done.returncode == 0 else None

    return wait_for(listing, "the windows cannot be listed")


def windows_of_class(window_class: str) -> list[str]:
    return [line.split()[0] for line in window_list() if f".{window_class} " in line]


def corner(window: str) -> tuple[int, ...]:
    return tuple(int(at) for at in re.findall(r"Absolute upper-left [XY]: +(-?\d+)", tool("xwininfo", "-id", window)))


def height(window: str) -> int:
    return int(re.search(r"Height: (\d+)", tool("xwininfo", "-id", window)).group(1))


def frame_of(client: str) -> str:
    """The window manager's frame around a client: its ancestor just below the root."""
    tree = tool("xwininfo", "-tree", "-id", client)
    parent, root = (re.search(f"{kind} window id: (0x[0-9a-f]+)", tree).group(1) for kind in ("Parent", "Root"))
    return client if parent == root else frame_of(parent)


def screenshot(window: str) -> str:
    """The file, in the desktop's home, of what xwd sees of an uncovered window, or "root", once it has stopped changing.
    The same pixels are in the same file."""
    target = ["-root"] if window == "root" else ["-id", window]
    shots = [b"", output_of("xwd", "-silent", *target)]
    while shots[-1] != shots[-2]:
        shots.append(output_of("xwd", "-silent", *target))
    file = Path(os.environ["HOME"]) / f"{hashlib.sha256(shots[-1]).hexdigest()}.xwd"
    file.write_bytes(shots[-1])
    return str(file)


class Window:
    """The one window of a class."""

    def __init__(self, window_class: str) -> None:
        (self.client,) = windows_of_class(window_class)

    @property
    def process(self) -> int:
        return int(tool("xdotool", "getwindowpid", self.client))

    def move(self, x: int, y: int) -> None:
        """Returns when the window is there: its frame, or what is in it, as the window's gravity has it."""
        tool("xdotool", "windowmove", self.client, str(x), str(y))
        wait_for(lambda: (x, y) in map(corner, (self.client, frame_of(self.client))), "the window does not get there")

    def activate(self) -> None:
        tool("xdotool", "windowactivate", self.client)
        active = ("xprop", "-root", "_NET_ACTIVE_WINDOW")
        wait_for(lambda: int(tool(*active).split()[-1], 16) == int(self.client, 16), "it does not become active")

    @property
    def margins(self) -> tuple[int, ...]:
        """Of the shadow that it draws itself: left, right, top, bottom."""
        found = re.search(r"= (\d+), (\d+), (\d+), (\d+)", tool("xprop", "-id", self.client, "_GTK_FRAME_EXTENTS"))
        return tuple(map(int, found.groups())) if found else (0, 0, 0, 0)

    @property
    def corner(self) -> tuple[int, int]:
        """Of the window and its decorations, without that shadow."""
        left, _, top, _ = self.margins
        x, y = corner(frame_of(self.client))
        return x + left, y + top

    def minimize(self) -> None:
        tool("xdotool", "windowminimize", "--sync", self.client)

    def restore(self) -> None:
        """Returns when the window manager has unrolled it."""
        self.activate()
        wait_for(lambda: height(frame_of(self.client)) > height(self.client), "the window is not unrolled")

    def claim(self, machine: str, process: int) -> None:
        """Has the window say that this process of this machine made it."""
        for name, kind, value in (("WM_CLIENT_MACHINE", "8s", machine), ("_NET_WM_PID", "32c", str(process))):
            tool("xprop", "-id", self.client, "-f", name, kind, "-set", name, value)

    def screenshot(self) -> str:
        """Of the same, to ImageMagick."""
        left, right, top, bottom = self.margins
        if not any(self.margins):
            return screenshot(frame_of(self.client))
        extent = tool("xwininfo", "-id", frame_of(self.client))
        width, height = (int(side) for side in re.findall(r"(?:Width|Height): (\d+)", extent))
        part = f"[{width - left - right}x{height - top - bottom}+{left}+{top}]"
        return screenshot(frame_of(self.client)) + part


def size_and_type(picture: bytes, source: str = "-") -> str:
    return tool("/usr/bin/identify", "-format", "%wx%h %m", source, stdin=picture)


def size_of(picture: bytes) -> tuple[int, ...]:
    return tuple(map(int, size_and_type(picture).split()[0].split("x")))


def pixels(file: str, points: list[tuple[int, int]]) -> list[str]:
    """The colours there: red, green and blue in hexadecimal digits."""
    width = int(tool("/usr/bin/identify", "-format", "%w", file))
    colours = output_of("/usr/bin/convert", file, "-depth", "8", "rgb:-")
    return [colours[3 * (y * width + x) :][:3].hex() for x, y in points]


def differing_pixels(png: bytes, expected: str) -> str:
    """How many pixels ImageMagick finds different; the sizes when they differ, which `compare` overlooks."""
    size, expected_size = (size_and_type(png, source).split()[0] for source in ("png:-", expected))
    if size != expected_size:
        return f"{size} instead of {expected_size}"
    # On black, as the server holds what is translucent: its colours are multiplied by their opacity. That and the
    # division in the picture round by one level of 255.
    is_opaque = tool("/usr/bin/identify", "-format", "%[opaque]", "-", stdin=png).lower() == "true"
    opaque = output_of("/usr/bin/convert", "png:-", "-background", "black", "-alpha", "remove", "png:-", stdin=png)
    measure = ["-metric", "AE", "-fuzz", "0" if is_opaque else "0.7%", "-alpha", "off"]
    command = ["/usr/bin/compare", *measure, "png:-", expected, "null:"]
    return subprocess.run(command, input=opaque, capture_output=True, timeout=20).stderr.decode()


def accessible_tree(application_name: str) -> dict:
    """The tree of an application's first window as libatspi reads it, in the form of a response's."""
    desktop = Atspi.get_desktop(0)
    applications = (desktop.get_child_at_index(index) for index in range(desktop.get_child_count()))
    (application,) = (one for one in applications if one and one.get_name() == application_name)
    application.clear_cache()
    return accessible_node(application.get_child_at_index(0), 0)


def accessible_role(accessible: Atspi.Accessible) -> str:
    name = accessible.get_role_name()
    if name in ("text", "entry"):
        return "AXTextArea" if accessible.get_state_set().contains(Atspi.StateType.MULTI_LINE) else "AXTextField"
    return next((role for role, names in ROLES.items() if name in names), "AX" + name.title().replace(" ", ""))


def accessible_node(accessible: Atspi.Accessible, depth: int) -> dict:
    texts = {"title": accessible.get_name(), "description": accessible.get_description()}
    node = {"role": accessible_role(accessible)} | {key: text for key, text in texts.items() if text}
    interfaces = accessible.get_interfaces()
    if "Text" in interfaces:
        text = Atspi.Text.get_text(accessible, 0, -1)
        if not text.strip() or text.strip("\ufffc \n"):  # not the places of embedded objects alone
            node["value"] = text
    if "Component" in interfaces:
        frame = Atspi.Component.get_extents(accessible, Atspi.CoordType.SCREEN)
        if frame.width > 0 and frame.height > 0 and frame.x != NOWHERE:
            node["frame"] = [frame.x, frame.y, frame.width, frame.height]
    count = accessible.get_child_count() if depth < 8 else 0
    children = filterfalse(is_hidden, (accessible.get_child_at_index(at) for at in range(count)))
    if walked := [accessible_node(child, depth + 1) for child in islice(children, 50)]:
        node["children"] = walked
    return node


def is_hidden(accessible: Atspi.Accessible | None) -> bool:
    if accessible is None:
        return True  # it has gone since its parent was asked how many children there are
    states = accessible.get_state_set()
    shown = states.contains(Atspi.StateType.VISIBLE) or states.contains(Atspi.StateType.SHOWING)
    return not shown and "menu" not in accessible.get_role_name()


def nodes(tree: dict) -> list[dict]:
    """All nodes of a tree, in pre-order."""
    return [tree, *(node for child in tree.get("children", []) for node in nodes(child))]


def values(tree: dict, role: str) -> list[str | None]:
    return [node.get("value") for node in nodes(tree) if node["role"] == role]


def processes() -> set[str]:
    """Every process of this private desktop: the descendants of the script that made it."""
    parents = {}
    for status in Path("/proc").glob("[0-9]*/status"):
        with contextlib.suppress(OSError):  # it has ended meanwhile
            parents[status.parent.name] = re.search(r"PPid:\t(\d+)", status.read_text(errors="replace")).group(1)
    family = {str(os.getppid())}
    while grown := {pid for pid, parent in parents.items() if parent in family} - family:
        family |= grown
    return family


def state_of_desktop() -> dict[str, object]:
    """All that looking must leave as it was."""
    return {
        "active window": tool("xprop", "-root", "_NET_ACTIVE_WINDOW"),
        "stacking order": tool("xprop", "-root", "_NET_CLIENT_LIST_STACKING"),
        "keyboard focus": tool("xdotool", "getwindowfocus"),
        "pointer": tool("xdotool", "getmouselocation"),
        "processes": processes(),
    }
