"""Checks who includes whom in the program's folders, and that only the backends see the system's headers."""

import re
import sys
from pathlib import Path

CORE = {"platform", "text", "protocol", "policy", "target", "accessibility", "capture", "driver"}

# Folder -> the folders of ours that it may include besides itself.
MAY_INCLUDE: dict[str, set[str]] = {
    "text": set(),
    "platform": {"text"},
    "platform/imaging": {"platform", "text"},
    "platform/linux": {"platform", "platform/imaging", "text"},
    "platform/macos": {"platform", "platform/imaging", "text"},
    "protocol": {"platform", "text"},
    "policy": {"platform", "text"},
    "target": {"platform", "text", "protocol"},
    "accessibility": {"platform", "text", "protocol", "target", "policy"},
    "capture": {"platform", "text", "protocol", "target"},
    "driver": CORE - {"driver"},
    "": {"driver", "platform"},  # main.cpp
}

# Folder -> the libraries whose headers it may include besides the C++ standard library's; None: any, system headers too.
LIBRARIES: dict[str, set[str] | None] = {
    "text": {"utf8proc.h"},
    "platform/imaging": {"zimg.h", "turbojpeg.h", "png.h"},
    "platform/linux": None,
    "platform/macos": None,
    "protocol": {"boost/json"},
    "target": {"boost/json"},
    "accessibility": {"boost/json"},
    "capture": {"boost/asio"},
    "driver": {"boost/asio", "boost/json"},
}

INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s+(["<])([^">]+)[">]', re.MULTILINE)
# Headers of the C++ standard library have no suffix, but for the C library's old names, which nobody here uses.
STANDARD = re.compile(r"^[a-z_]+$")


def folder_of(path: str) -> str:
    return path.rpartition("/")[0]


def library_is_allowed(folder: str, header: str) -> bool:
    allowed = LIBRARIES.get(folder, set())
    return STANDARD.match(header) is not None or allowed is None or any(header.startswith(name) for name in allowed)


def faults_of(root: Path, file: Path) -> list[str]:
    name = file.relative_to(root).as_posix()
    folder = folder_of(name)
    if folder not in MAY_INCLUDE:
        return [f"{name}: a folder that the table does not know"]
    source = file.read_text(encoding="utf-8")
    faults = []
    for kind, header in INCLUDE.findall(source):
        if kind == '"' and not (root / header).is_file():
            faults.append(f"{name}: {header} is not written from the program's folder")
        elif kind == '"' and folder_of(header) != folder and folder_of(header) not in MAY_INCLUDE[folder]:
            faults.append(f"{name}: must not include {header}")
        elif kind == "<" and not library_is_allowed(folder, header):
            faults.append(f"{name}: must not include <{header}>")
    if folder in CORE and re.search(r"^\s*#\s*if", source, re.MULTILINE):
        faults.append(f"{name}: the core knows no systems, so it has no #if")
    if folder != "platform" and re.search(r"\bvirtual\b", re.sub(r"//.*", "", source)):
        faults.append(f"{name}: only the interfaces have virtual functions")
    if folder == "platform" and re.search(r"\b(Region|Target)\b", source):
        faults.append(f"{name}: the interfaces know no Region and no Target")
    return faults


def cycle_in(table: dict[str, set[str]]) -> list[str]:
    """The folders that remain when those that include none of the remaining ones are taken away, again and again."""
    remaining = dict(table)
    while leaves := [folder for folder, others in remaining.items() if not others & remaining.keys()]:
        for folder in leaves:
            del remaining[folder]
    return sorted(remaining)


def main() -> int:
    root = Path(sys.argv[1])
    files = sorted(path for path in root.rglob("*") if path.suffix in {".h", ".cpp", ".mm"})
    faults = [fault for file in files for fault in faults_of(root, file)]
    faults += [f"{folder}: part of a cycle" for folder in cycle_in(MAY_INCLUDE)]
    print("\n".join(faults) or f"{len(files)} files include only what they may")
    return 1 if faults or not files else 0


if __name__ == "__main__":
    sys.exit(main())
