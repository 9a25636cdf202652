"""Checks who includes whom in the program's folders and the tools', by the table in CONTRIBUTING.md, and that only the
backends see the system's headers.

    include_directions.py PROJECT_FOLDER PROGRAM_FOLDER
"""

import re
import sys
from collections import Counter
from pathlib import Path

CORE = ["text", "platform", "protocol", "policy", "target", "accessibility", "capture", "driver"]


def table_of(contributing: Path) -> dict[str, tuple[list[str], list[str]]]:
    """Folder -> the folders of ours that it may include besides itself, and how the headers of libraries begin that it may
    include besides the C++ standard library's. The main program's folder is ""."""
    row = re.compile(r"^\| `([^`]+)` \|[^|]*\|([^|]*)\|([^|]*)\|$", re.MULTILINE)
    names = re.compile(r"`([^`]+)`")
    return {"" if folder == "main.cpp" else folder: (names.findall(ours), [""] if "any" in libraries else names.findall(libraries))
            for folder, ours, libraries in row.findall(contributing.read_text(encoding="utf-8"))}


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
        if kind == '"' and not any((base / header).is_file() for base in BASES):
            faults.append(f"{name}: {header} is not written from the program's folder, or that of the tools' folder")
        elif kind == '"' and header.rpartition("/")[0] not in [folder, *ours]:
            faults.append(f"{name}: must not include {header}")
        elif kind == "<" and not STANDARD.match(header) and not header.startswith(tuple(libraries)):
            faults.append(f"{name}: must not include <{header}>")
    if folder in CORE and re.search(r"^\s*#\s*if", source, re.MULTILINE):
        faults.append(f"{name}: the core knows no systems, so it has no #if")
    if folder != "platform" and re.search(r"\bvirtual\b", re.sub(r"//.*|#include.*", "", source)):
        faults.append(f"{name}: only the interfaces have virtual functions")
    if folder == "platform" and re.search(r"\b(Region|Target)\b", source):
        faults.append(f"{name}: the interfaces know no Region and no Target")
    return faults


MAY_INCLUDE = table_of(Path(sys.argv[1]) / "CONTRIBUTING.md")
BASES = PROGRAM, CLIENTS = (Path(sys.argv[2]), Path(sys.argv[1]) / "clients")
SOURCES = {PROGRAM: PROGRAM, CLIENTS: CLIENTS / "tools"}
found = {base: sorted(path for path in folder.rglob("*") if path.suffix in {".h", ".cpp", ".mm"})
         for base, folder in SOURCES.items()}
faults = [fault for base, files in found.items() for file in files for fault in faults_of(base, file)]
files = [file for files in found.values() for file in files]
for place, (folder, (ours, _)) in enumerate(MAY_INCLUDE.items()):
    faults += [f"{folder}: {other} is not above it" for other in ours if other not in list(MAY_INCLUDE)[:place]]
headers = Counter(file.name for file in files if file.suffix == ".h")
faults += [f"{name}: {count} headers have that name" for name, count in headers.items() if count > 1]
print("\n".join(faults) or f"{len(files)} files include only what they may")
sys.exit(1 if faults or not files else 0)
