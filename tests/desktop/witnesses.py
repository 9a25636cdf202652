"""The desktop as other tools see it: windows, pixels, accessibility trees, processes."""

import base64
import contextlib
import os
import re
import subprocess
import tempfile
import time
from pathlib import Path

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

# The AT-SPI roles that occur in the applications under test.
ROLES = {
    "AXButton": ["push button"],
    "AXCheckBox": ["check box", "toggle button"],
    "AXComboBox": ["combo box"],
    "AXGroup": ["alert", "filler", "layered pane", "list item", "notification", "panel", "paragraph", "status bar"],
    "AXIncrementor": ["spin button"],
    "AXList": ["list"],
    "AXMenu": ["menu", "popup menu"],
    "AXMenuBar": ["menu bar"],
    "AXMenuItem": ["menu item", "check menu item", "radio menu item"],
    "AXRadioButton": ["page tab"],
    "AXScrollArea": ["scroll pane"],
    "AXScrollBar": ["scroll bar"],
    "AXSecureTextField": ["password text"],
    "AXSlider": ["slider"],
    "AXSplitGroup": ["split pane"],
    "AXSplitter": ["separator"],
    "AXStaticText": ["label", "static"],
    "AXTabGroup": ["page tab list"],
    "AXTable": ["table"],
    "AXToolbar": ["tool bar"],
    "AXUnknown": ["unknown"],
    "AXWebArea": ["document web"],
    "AXWindow": ["frame"],
}

NOWHERE = -(2**31)  # where GTK 3 says that closed menus are


def tool(*command: str, stdin: bytes = b"") -> str:
    return output_of(*command, stdin=stdin).decode(errors="replace")


def output_of(*command: str, stdin: bytes = b"") -> bytes:
    return subprocess.run(command, input=stdin, check=True, capture_output=True, timeout=20).stdout


def window_list() -> list[str]:
    """A line for each window: its identifier first, its class among the rest."""
    deadline = time.monotonic() + 10
    while (listing := subprocess.run(["wmctrl", "-lx"], capture_output=True, text=True)).returncode:
        assert time.monotonic() < deadline, listing.stderr  # it fails when a window vanishes while it lists them
    return listing.stdout.splitlines()


def windows_of_class(window_class: str) -> list[str]:
    return [line.split()[0] for line in window_list() if f".{window_class} " in line]


def client_window(window_class: str) -> str:
    """The identifier of the one window of this class."""
    (window,) = windows_of_class(window_class)
    return window


def frame_window(client: str) -> str:
    """The window manager's frame around a client: its ancestor just below the root."""
    tree = tool("xwininfo", "-tree", "-id", client)
    parent, root = (re.search(f"{kind} window id: (0x[0-9a-f]+)", tree).group(1) for kind in ("Parent", "Root"))
    return client if parent == root else frame_window(parent)


def drawn_part(client: str) -> str:
    """The part of its frame that a window fills, without the shadow that some draw themselves, to ImageMagick."""
    margins = re.search(r"= (\d+), (\d+), (\d+), (\d+)", tool("xprop", "-id", client, "_GTK_FRAME_EXTENTS"))
    if not margins:
        return ""
    left, right, top, bottom = map(int, margins.groups())
    width, height = (int(side) for side in re.findall(r"(?:Width|Height): (\d+)", tool("xwininfo", "-id", client)))
    return f"[{width - left - right}x{height - top - bottom}+{left}+{top}]"


def corner(window: str) -> tuple[int, ...]:
    return tuple(int(at) for at in re.findall(r"Absolute upper-left [XY]: +(-?\d+)", tool("xwininfo", "-id", window)))


def move(client: str, x: int, y: int) -> None:
    """Returns when the window is there: its frame, or what is in it, as the window's gravity has it."""
    tool("xdotool", "windowmove", client, str(x), str(y))
    deadline = time.monotonic() + 10
    while (x, y) not in (corner(client), corner(frame_window(client))):
        assert time.monotonic() < deadline, "the window does not get there"


def active_window() -> int:
    """0 while there is none."""
    return int(tool("xprop", "-root", "_NET_ACTIVE_WINDOW").split()[-1], 16)


def activate(client: str) -> None:
    tool("xdotool", "windowactivate", client)
    deadline = time.monotonic() + 10
    while active_window() != int(client, 16):
        assert time.monotonic() < deadline, "the window does not become active"


def still_screenshot(window: str) -> str:
    """The file, in the desktop's home, of what xwd sees of an uncovered window once it has stopped changing."""
    target = ["-root"] if window == "root" else ["-id", window]
    shots = [b"", output_of("xwd", "-silent", *target)]
    while shots[-1] != shots[-2]:
        shots.append(output_of("xwd", "-silent", *target))
    with tempfile.NamedTemporaryFile(dir=os.environ["HOME"], suffix=".xwd", delete=False) as file:
        file.write(shots[-1])
    return file.name


def image_bytes(data: dict) -> bytes:
    return base64.b64decode(data["image"].partition(";base64,")[2], validate=True)


def size_and_type(picture: bytes, source: str = "-") -> str:
    return tool("/usr/bin/identify", "-format", "%wx%h %m", source, stdin=picture)


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
    return next((role for role, names in ROLES.items() if name in names), f"no role for {name}")


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
    if walked := min(accessible.get_child_count(), 50) if depth < 8 else 0:
        node["children"] = [accessible_node(accessible.get_child_at_index(at), depth + 1) for at in range(walked)]
    return node


def nodes(tree: dict) -> list[dict]:
    """All nodes of a tree, in pre-order."""
    return [tree, *(node for child in tree.get("children", []) for node in nodes(child))]


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
