"""GTK windows that ask for trouble, one kind by each name on the command line.

popup: a menu-like window of no manager's, over the window; crowd: ten thousand buttons; name: a title of a megabyte;
restless: another size every few milliseconds; glass: a translucent colour, in a window with an alpha channel.
"""

import sys

import gi

for module, version in (("Gdk", "3.0"), ("Gtk", "3.0")):
    gi.require_version(module, version)
from gi.repository import Gdk, GLib, Gtk  # noqa: E402

CROWD = 10_000
LONG_NAME = "N" * 1_000_000
PLACE = (20, 40)


def crowd() -> Gtk.Widget:
    box = Gtk.Box()
    for number in range(CROWD):
        box.add(Gtk.Button(label=str(number)))
    scrolled = Gtk.ScrolledWindow()
    scrolled.add(box)
    return scrolled


def add_popup() -> None:
    popup = Gtk.Window(type=Gtk.WindowType.POPUP, title="over")
    popup.add(Gtk.Label(label="over everything"))
    popup.resize(150, 120)
    popup.move(PLACE[0] + 60, PLACE[1] + 50)
    popup.show_all()


def keep_resizing(window: Gtk.Window) -> None:
    sizes = [0]

    def resize() -> bool:
        sizes[0] += 1
        window.resize(300 + 10 * (sizes[0] % 20), 200)
        return True

    GLib.timeout_add(7, resize)


def make_glass(window: Gtk.Window) -> None:
    window.set_visual(window.get_screen().get_rgba_visual())
    style = Gtk.CssProvider()
    style.load_from_data(b"window { background: rgba(255, 127, 0, 0.5); }")
    window.get_style_context().add_provider(style, Gtk.STYLE_PROVIDER_PRIORITY_APPLICATION)


def main(kind: str) -> None:
    name = f"hostile-{kind}"
    GLib.set_prgname(name)
    Gdk.set_program_class(name)
    window = Gtk.Window(title=LONG_NAME if kind == "name" else kind)
    window.set_default_size(300, 200)
    window.add(crowd() if kind == "crowd" else Gtk.Label(label=kind, xalign=0))
    if kind == "glass":
        make_glass(window)
    if kind == "restless":
        keep_resizing(window)
    window.connect("destroy", Gtk.main_quit)
    window.show_all()
    window.move(*PLACE)
    if kind == "popup":
        GLib.timeout_add(300, add_popup)
    Gtk.main()


if __name__ == "__main__":
    main(sys.argv[1])
