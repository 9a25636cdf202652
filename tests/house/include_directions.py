"""Checks who includes whom in the program's folders, and that only the backends see the system's headers."""

import re
import sys
from pathlib import Path

CORE = ["text", "platform", "protocol", "policy", "target", "accessibility", "capture", "driver"]
ANY = [""]

# Folder -> the folders of ours, all above it in this table, that it may include besides itself, and how the headers of
# libraries begin that it may include besides the C++ standard library's.
MAY_INCLUDE: dict[str, tuple[list[str], list[str]]] = {
    "text": ([], ["utf8proc.h"]),
    "platform": (["text"], []),
    "platform/imaging": (["platform", "text"], ["simde/", "jpeglib.h", "png.h", "isa-l/"]),
    "platform/posix": (["platform", "text"], ANY),
    "platform/linux": (["platform", "platform/imaging", "platform/posix", "text"], ANY),
    "platform/macos": (["platform", "platform/posix", "text"], ANY),
    "protocol": (["platform", "text"], ["boost/json"]),
    "policy": (["platform", "text"], []),
    "target": (["platform", "text", "protocol"], ["boost/json"]),
    "accessibility": (["platform", "text", "protocol", "target", "policy"], ["boost/json"]),
    "capture": (["platform", "text", "protocol", "target"], ["boost/asio"]),
    "driver": (CORE[:-1], ["boost/asio", "boost/json"]),
    "": (["driver", "platform"], []),  # main.cpp
}

INCLUDE = re.compile(r'^\s*#\s*(?:include|import)\s+(["<])([^">]+)[">]', re.MULTILINE)
# Headers of the C++ standard library have no suffix, but for the C library's old names, which nobody here uses.
STANDARD = re.compile(r"^[a-z_]+$")


def faults_of(root: Path, file: Path) -> list[str]:
    name = file.relative_to(root).as_posix()
    folder = name.rpartition("/")[0]
    if folder not in MAY_INCLUDE:
        return [f"{name}: a folder that the table does not know"]
    ours, libraries = MAY_INCLUDE[folder]
    source = file.read_text(encoding="utf-8")
    faults = []
    for kind, header in INCLUDE.findall(source):
        if kind == '"' and not (root / header).is_file():
            faults.append(f"{name}: {header} is not written from the program's folder")
        elif kind == '"' and header.rpartition("/")[0] not in [folder, *ours]:
            faults.append(f"{name}: must not include {header}")
        elif kind == "<" and not STANDARD.match(header) and not header.startswith(tuple(libraries)):
            faults.append(f"{name}: must not include <{header}>")
    if folder in CORE and re.search(r"^\s*#\s*if", source, re.MULTILINE):
        faults.append(f"{name}: the core knows no systems, so it has no #if")
    if folder != "platform" and re.search(r"\bvirtual\b", re.sub(r"//.*", "", source)):
        faults.append(f"{name}: only the interfaces have virtual functions")
    if folder == "platform" and re.search(r"\b(Region|Target)\b", source):
        faults.append(f"{name}: the interfaces know no Region and no Target")
    return faults


root = Path(sys.argv[1])
files = sorted(path for path in root.rglob("*") if path.suffix in {".h", ".cpp", ".mm"})
faults = [fault for file in files for fault in faults_of(root, file)]
for place, (folder, (ours, _)) in enumerate(MAY_INCLUDE.items()):
    faults += [f"{folder}: {other} is not above it" for other in ours if other not in list(MAY_INCLUDE)[:place]]
print("\n".join(faults) or f"{len(files)} files include only what they may")
sys.exit(1 if faults or not files else 0)
