"""Prints a response of the helper for a person: indented, its image saved beside the file and named by its path."""

import base64
import json
import re
import sys
from pathlib import Path


def save_image(url: str, folder: Path) -> str:
    """The path of the image that a data URL holds; its name ends as its type does."""
    kind, _, encoded = url.partition(";base64,")
    path = folder / f"capture.{kind.removeprefix('data:image/')}"
    path.write_bytes(base64.b64decode(encoded, validate=True))
    return str(path)


def indented(response: dict) -> str:
    """As JSON; frames, which hold nothing but numbers, on one line each."""
    text = json.dumps(response, indent=2, ensure_ascii=False)
    return re.sub(r"\[\n[-\d,\s]+\]", lambda numbers: "[" + " ".join(numbers[0][1:-1].split()) + "]", text)


def main() -> int:
    source = Path(sys.argv[1])
    response = json.loads(source.read_bytes())
    data = response.get("data", {})
    if data.get("image"):
        data["image"] = save_image(data["image"], source.parent)
    print(indented(response))
    return 0 if response["ok"] else 1


if __name__ == "__main__":
    sys.exit(main())
