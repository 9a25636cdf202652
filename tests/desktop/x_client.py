"""An X client that puts on the server what no toolkit would: by Xlib itself, which other bindings do not wrap whole."""

import ctypes
import re
from collections.abc import Sequence

from witnesses import tool

XLIB, XEXT = ctypes.CDLL("libX11.so.6"), ctypes.CDLL("libXext.so.6")
XID = ctypes.c_ulong
XLIB.XOpenDisplay.restype = ctypes.c_void_p
for function in (XLIB.XDefaultRootWindow, XLIB.XCreateSimpleWindow, XLIB.XInternAtom):
    function.restype = XID
XA_WINDOW = 33  # <X11/Xatom.h>
OVERRIDE_REDIRECT = 1 << 9  # CWOverrideRedirect: <X11/X.h>
SHAPE_BOUNDING, SHAPE_SET, SHAPE_UNION, YX_BANDED = 0, 0, 1, 3  # <X11/extensions/shapeconst.h>, <X11/X.h>

MOST_RECTANGLES = 30_000  # in one request without the extension BIG-REQUESTS


class Rectangle(ctypes.Structure):
    """XRectangle: <X11/Xlib.h>."""

    _fields_ = [("x", ctypes.c_short), ("y", ctypes.c_short), ("width", ctypes.c_ushort), ("height", ctypes.c_ushort)]


class Attributes(ctypes.Structure):
    """XSetWindowAttributes of a 64-bit machine: <X11/Xlib.h>."""

    _fields_ = [("before", XID * 11), ("override_redirect", ctypes.c_int), ("after", XID * 2)]


class XClient:
    """Its windows go when it is closed."""

    def __init__(self) -> None:
        self.display = ctypes.c_void_p(XLIB.XOpenDisplay(None))
        self.root = XLIB.XDefaultRootWindow(self.display)

    def __enter__(self) -> "XClient":
        return self

    def __exit__(self, *_) -> None:
        XLIB.XCloseDisplay(self.display)

    def create_window(self, width: int, height: int) -> int:
        """At the corner of the screen, not shown."""
        return XLIB.XCreateSimpleWindow(self.display, XID(self.root), 0, 0, width, height, 0, XID(0), XID(0))

    def show_over_all(self, window: int) -> None:
        """As a window of no manager's."""
        attributes = Attributes(override_redirect=1)
        XLIB.XChangeWindowAttributes(self.display, XID(window), XID(OVERRIDE_REDIRECT), ctypes.byref(attributes))
        XLIB.XMapRaised(self.display, XID(window))
        XLIB.XSync(self.display, 0)

    def fill(self, window: int, pixel: int) -> None:
        XLIB.XSetWindowBackground(self.display, XID(window), XID(pixel))
        XLIB.XClearWindow(self.display, XID(window))
        XLIB.XSync(self.display, 0)

    def leave_dots(self, window: int, columns: int, rows: int) -> None:
        """Of any client's window: every second pixel both ways is its shape."""
        dots = [Rectangle(2 * column, 2 * row, 1, 1) for row in range(rows) for column in range(columns)]
        operation = SHAPE_SET
        for start in range(0, len(dots), MOST_RECTANGLES):
            part = dots[start : start + MOST_RECTANGLES]
            shape = (SHAPE_BOUNDING, 0, 0, (Rectangle * len(part))(*part), len(part), operation, YX_BANDED)
            XEXT.XShapeCombineRectangles(self.display, XID(window), *shape)
            operation = SHAPE_UNION
        XLIB.XSync(self.display, 0)

    def make_whole(self, window: int) -> None:
        """Takes its shape away."""
        XEXT.XShapeCombineMask(self.display, XID(window), SHAPE_BOUNDING, 0, 0, XID(0), SHAPE_SET)
        XLIB.XSync(self.display, 0)

    def windows(self, name: str) -> list[int]:
        """The list of windows in a property of the root."""
        return [int(number, 16) for number in re.findall("0x[0-9a-f]+", tool("xprop", "-root", name))]

    def set_windows(self, window: int, name: str, value: Sequence[int]) -> None:
        """Replaces a property by this list of windows."""
        ids = [XID(number) for number in (window, XLIB.XInternAtom(self.display, name.encode(), 0), XA_WINDOW)]
        XLIB.XChangeProperty(self.display, *ids, 32, 0, (XID * len(value))(*value), len(value))
        XLIB.XSync(self.display, 0)
