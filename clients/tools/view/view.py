#!/usr/bin/python3
"""Makes of an answer of tavik-perception-helper one HTML page that stands alone: the picture with the frames of the
elements over it, and the tree beside it.

The page reaches nothing: its Content-Security-Policy allows its own script and style, by their hashes, and the picture.
What the answer says is data to it, and is shown as text.
"""

import argparse
import base64
import binascii
import hashlib
import json
import os
import re
import sys
from pathlib import Path

FOLDER = Path(__file__).resolve().parent
TEXTS = ("role", "title", "value", "help", "description")
IMAGE_HEAD = re.compile(r"data:image/(?:png|jpeg);base64,")

PAGE = """\
<!DOCTYPE html>
<html lang="en">
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="{policy}">
<meta name="referrer" content="no-referrer">
<meta name="viewport" content="width=device-width">
<meta name="color-scheme" content="light dark">
<title>Perception</title>
<style>{style}</style>
<body>
<script type="application/json" id="data">{data}</script>
<script>{script}</script>
</body>
</html>
"""


class NotAnAnswer(Exception):
    """Says what is wrong with the input."""


def need(holds: bool, what: str) -> None:
    if not holds:
        raise NotAnAnswer(what)


def checked_element(element: object, path: str) -> None:
    need(isinstance(element, dict), f"{path} is not an object")
    for key in TEXTS:
        need(isinstance(element.get(key, ""), str), f"{path}.{key} is not a string")
    frame = element.get("frame", [0, 0, 0, 0])
    is_frame = isinstance(frame, list) and len(frame) == 4 and all(type(number) is int for number in frame)
    need(is_frame, f"{path}.frame is not four whole numbers")
    children = element.get("children", [])
    need(isinstance(children, list), f"{path}.children is not an array")
    for place, child in enumerate(children):
        checked_element(child, f"{path}.children[{place}]")


def checked_image(image: object) -> None:
    if image is None:
        return
    head = IMAGE_HEAD.match(image) if isinstance(image, str) else None
    need(head is not None, "data.image is not a data URL of a PNG or JPEG picture")
    try:
        base64.b64decode(image[head.end() :], validate=True)
    except (binascii.Error, ValueError) as error:
        raise NotAnAnswer(f"data.image: {error}") from error


def read_answer(text: bytes) -> dict:
    """The answer that the text holds, as far as the page relies on it."""
    try:
        answer = json.loads(text)
        need(isinstance(answer, dict) and isinstance(answer.get("ok"), bool), 'no JSON object with the member "ok"')
        if answer["ok"]:
            data = answer.get("data")
            need(isinstance(data, dict), "data is not an object")
            need(isinstance(data.get("context"), dict), "data.context is not an object")
            checked_image(data.get("image"))
            if data.get("ax_tree") is not None:
                checked_element(data["ax_tree"], "data.ax_tree")
    except RecursionError as error:
        raise NotAnAnswer("nested too deeply") from error
    except ValueError as error:  # not JSON, or not UTF-8
        raise NotAnAnswer(f"not JSON: {error}") from error
    return answer


def digest(text: str) -> str:
    return "'sha256-" + base64.b64encode(hashlib.sha256(text.encode()).digest()).decode() + "'"


def page_of(answer: dict, picture: list[int] | None) -> str:
    """The page. picture: the rectangle of the screen that the picture shows; None to take it from the tree."""
    style, script = ((FOLDER / name).read_text(encoding="utf-8") for name in ("page.css", "page.js"))
    policy = (
        f"default-src 'none'; script-src {digest(script)}; style-src {digest(style)}; img-src data:; "
        "base-uri 'none'; form-action 'none'"
    )
    # In a script element nothing ends the data but "</script", and "<!--" would hide that: no "<" remains.
    data = json.dumps({"answer": answer, "picture": picture}, separators=(",", ":")).replace("<", "\\u003c")
    return PAGE.format(policy=policy, style=style, data=data, script=script)


def rectangle(text: str) -> list[int]:
    numbers = [int(number) for number in text.split(",")]
    if len(numbers) != 4 or min(numbers[2:]) < 1:
        raise ValueError
    return numbers


def version() -> str:
    file = FOLDER / "version"  # comes with the installation
    return file.read_text(encoding="utf-8").strip() if file.exists() else "(not installed)"


def arguments_of(command_line: list[str]) -> argparse.Namespace:
    parser = argparse.ArgumentParser(prog="tavik-perception-view", description=__doc__.partition("\n\n")[0])
    parser.add_argument("response", nargs="?", default="-", metavar="RESPONSE.json",
                        help="what tavik-perception-helper answered; standard input when absent or -")  # fmt: skip
    parser.add_argument("-o", "--output", metavar="FILE",
                        help="write the page into FILE, which only you can read; else to standard output")  # fmt: skip
    parser.add_argument("--picture", type=rectangle, metavar="X,Y,W,H",
                        help="what the picture shows, in the coordinates of the frames. Needed for the target "
                             "focused_element alone: it is the frame of the window, which an answer for the "
                             "application has. (--picture=-5,... where X is negative)")  # fmt: skip
    parser.add_argument("--version", action="version", version=f"%(prog)s {version()}")
    return parser.parse_args(command_line)


def private(path: str, flags: int) -> int:
    return os.open(path, flags, 0o600)


def main(command_line: list[str]) -> int:
    arguments = arguments_of(command_line)
    name = "standard input" if arguments.response == "-" else arguments.response
    try:
        text = sys.stdin.buffer.read() if arguments.response == "-" else Path(arguments.response).read_bytes()
        page = page_of(read_answer(text), arguments.picture).encode()
        if arguments.output:
            with open(arguments.output, "wb", opener=private) as file:
                file.write(page)
        else:
            sys.stdout.buffer.write(page)
            sys.stdout.buffer.flush()
    except NotAnAnswer as fault:
        print(f"tavik-perception-view: {name} is no answer of the helper: {fault}", file=sys.stderr)
        return 2
    except OSError as error:
        print(f"tavik-perception-view: {error.filename or 'standard output'}: {error.strerror}", file=sys.stderr)
        return 2
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
