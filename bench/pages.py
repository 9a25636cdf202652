"""Pages for the browser under test: pages.py elements BUTTONS | text prints one."""

import html
import sys
from pathlib import Path


def page(title: str, body: str) -> str:
    return f'<!DOCTYPE html><html lang="en"><meta charset="utf-8"><title>{title}</title><body>{body}</body></html>'


def elements(buttons: str) -> str:
    """45 groups of at most 50 buttons: none has more children than are looked at."""
    group = '<div role="group" aria-label="Group {0}">{1}</div>'
    button = "<button>{0}, {1}</button>"
    groups = (
        group.format(one, "".join(button.format(one, two) for two in range(int(buttons)))) for one in range(1, 46)
    )
    return page(f"{45 * int(buttons)} elements", "".join(groups))


def text() -> str:
    """Columns of small print that fill a screen of 3840x2160, of a text that every Debian system has."""
    words = html.escape(Path("/usr/share/common-licenses/GPL-3").read_text(encoding="utf-8")) * 2
    style = (
        "font: 13px sans-serif; columns: 8; column-fill: auto; height: 2000px; overflow: hidden; white-space: pre-wrap"
    )
    return page("Text", f'<div style="{style}">{words}</div>')


print({"elements": elements, "text": text}[sys.argv[1]](*sys.argv[2:]))
