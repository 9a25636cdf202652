"""A GTK window made to order, of the kind that the command line names.

secrets: a password field that shows bullets, and one that shows its text, as those of careless applications do; crowd:
a table of ten thousand rows; two: a second window, of the class Vault; name: a title of a megabyte; glass: a
translucent colour, in a window with an alpha channel; stop, kill: that signal to itself when it is asked for the name
of what lies between its labels. Three wait for SIGUSR1. popup: a menu-like window of no manager's, over the window; restless: one colour all over, another place and
size every 40 ms; hang: serves neither its window nor its bus, being busy, and after SIGUSR2 asleep.
"""

import itertools
import os
import signal
import sys
import time

import gi

for module, version in (("Atk", "1.0"), ("Gdk", "3.0"), ("Gtk", "3.0")):
    gi.require_version(module, version)
from gi.repository import Atk, Gdk, GLib, Gtk  # noqa: E402

SECRETS = ("correct horse", "battery staple")
CROWD = 10_000
LONG_NAME = "N" * 1_000_000
PLACE = (20, 40)
WIDTHS = range(300, 500, 10)  # of the restless window


def column_of(*widgets: Gtk.Widget) -> Gtk.Widget:
    column = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
    for widget in widgets:
        column.add(widget)
    return column


def password_entry(secret: str, *, visible: bool) -> Gtk.Entry:
    entry = Gtk.Entry(text=secret, visibility=visible)
    entry.get_accessible().set_role(Atk.Role.PASSWORD_TEXT)
    entry.get_accessible().set_description("Password")
    return entry


def secrets() -> Gtk.Widget:
    bulleted, plain = SECRETS
    passwords = (password_entry(bulleted, visible=False), password_entry(plain, visible=True))
    return column_of(Gtk.Label(label="Grüße 👩‍👩‍👧"), Gtk.Entry(text="alice"), *passwords)


def crowd() -> Gtk.Widget:
    rows = Gtk.ListStore(str)
    for number in range(1, CROWD):
        rows.append([str(number)])
    table = Gtk.TreeView(model=rows, headers_visible=False)  # whose first child is its header, hidden
    table.append_column(Gtk.TreeViewColumn("", Gtk.CellRendererText(), text=0))
    scrolled = Gtk.ScrolledWindow()
    scrolled.add(table)
    return scrolled


class Trap(Atk.Object):
    def do_get_name(self) -> str:
        os.kill(os.getpid(), getattr(signal, f"SIG{sys.argv[1].upper()}"))
        return "late"

    def do_ref_state_set(self) -> Atk.StateSet:
        states = Atk.StateSet()
        states.add_state(Atk.StateType.VISIBLE)
        return states


class Trapped(Gtk.DrawingArea):
    trap = None

    def do_get_accessible(self) -> Atk.Object:
        self.trap = self.trap or Trap(accessible_parent=self.get_parent().get_accessible())
        return self.trap


def trapped() -> Gtk.Widget:
    return column_of(Gtk.Label(label="first"), Trapped(), Gtk.Label(label="last"))


def add_popup(_: Gtk.Window) -> None:
    popup = Gtk.Window(type=Gtk.WindowType.POPUP, title="over")
    popup.add(Gtk.Label(label="over everything"))
    popup.resize(150, 120)
    popup.move(PLACE[0] + 60, PLACE[1] + 50)
    popup.show_all()


def keep_moving(window: Gtk.Window) -> None:
    steps = itertools.count()

    def move() -> bool:
        step = next(steps)
        window.resize(WIDTHS[step % len(WIDTHS)], 200)
        window.move(PLACE[0] + 37 * (step % 11), PLACE[1])
        return True

    GLib.timeout_add(40, move)


def hang(_: Gtk.Window) -> None:
    os.nice(19)  # the helper's answer is measured, not its share of the processor
    while True:
        pass


def paint(window: Gtk.Window, colour: str) -> None:
    style = Gtk.CssProvider()
    style.load_from_data(f"window {{ background: {colour}; }} label {{ color: {colour}; }}".encode())
    Gtk.StyleContext.add_provider_for_screen(window.get_screen(), style, Gtk.STYLE_PROVIDER_PRIORITY_APPLICATION)


CONTENT = {"secrets": secrets, "crowd": crowd, "stop": trapped, "kill": trapped}
TROUBLE = {"popup": add_popup, "restless": keep_moving, "hang": hang}


def main(kind: str) -> None:
    GLib.set_prgname(f"made-{kind}")
    Gdk.set_program_class(f"made-{kind}")
    window = Gtk.Window(title=LONG_NAME if kind == "name" else kind, decorated=kind != "restless")
    window.set_default_size(300, 200)
    window.add(CONTENT.get(kind, lambda: Gtk.Label(label=kind, xalign=0))())
    if kind == "glass":
        window.set_visual(window.get_screen().get_rgba_visual())
        paint(window, "rgba(255, 127, 0, 0.5)")
    if kind in ("restless", "hang"):  # what the server fills in by itself, before they draw
        window.realize()
        window.get_window().set_background_rgba(Gdk.RGBA(1, 127 / 255, 0, 1))
    if kind == "restless":
        paint(window, "rgb(255, 127, 0)")
    if kind == "two":
        vault = Gtk.Window(title="vault")
        vault.set_wmclass("vault", "Vault")
        vault.add(Gtk.Label(label="vault"))
        vault.show_all()
    signal.signal(signal.SIGUSR1, lambda *_: TROUBLE[kind](window))
    signal.signal(signal.SIGUSR2, lambda *_: time.sleep(1000))
    window.connect("destroy", Gtk.main_quit)
    window.show_all()
    window.move(*PLACE)
    Gtk.main()


if __name__ == "__main__":
    main(sys.argv[1])
