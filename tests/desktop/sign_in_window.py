"""A GTK window made to order: secrets, more children than are walked, and boxes deeper than the walk goes.

Both secrets are password fields to assistive technology. The first shows bullets, as password fields do; the second
shows its text, as those of careless applications do.
"""

import gi

for module, version in (("Atk", "1.0"), ("Gdk", "3.0"), ("Gtk", "3.0")):
    gi.require_version(module, version)
from gi.repository import Atk, Gdk, GLib, Gtk  # noqa: E402

NAME = "sign-in-window"
BULLETED_SECRET = "correct horse"
PLAIN_SECRET = "battery staple"
GREETING = "Grüße, 世界 👩‍👩‍👧"
BUTTONS = 60
DEPTH = 12


def password_entry(secret: str, *, visible: bool) -> Gtk.Entry:
    entry = Gtk.Entry(text=secret, visibility=visible)
    entry.get_accessible().set_role(Atk.Role.PASSWORD_TEXT)
    entry.get_accessible().set_description("Password")
    return entry


def add_nested_boxes(outer: Gtk.Box) -> None:
    for left in range(DEPTH, 0, -1):
        inner = Gtk.Box()
        inner.add(Gtk.Label(label=f"{left} more"))
        outer.add(inner)
        outer = inner


def build_window() -> Gtk.Window:
    column = Gtk.Box(orientation=Gtk.Orientation.VERTICAL)
    column.add(Gtk.Label(label=GREETING))
    column.add(Gtk.Entry(text="alice"))
    column.add(password_entry(BULLETED_SECRET, visible=False))
    column.add(password_entry(PLAIN_SECRET, visible=True))
    column.add(Gtk.CheckButton(label="Remember me"))
    many = Gtk.FlowBox(max_children_per_line=20)
    for number in range(BUTTONS):
        many.add(Gtk.Button(label=f"Button {number}"))
    column.add(many)
    add_nested_boxes(column)
    window = Gtk.Window(title="Sign in")
    window.add(column)
    window.connect("destroy", Gtk.main_quit)
    return window


if __name__ == "__main__":
    GLib.set_prgname(NAME)
    Gdk.set_program_class(NAME)
    build_window().show_all()
    Gtk.main()
