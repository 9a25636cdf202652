"""Checks that every C++ file is formatted as .clang-format says."""

import subprocess
import sys
from pathlib import Path

root = Path(sys.argv[1])
folders = [root / name for name in ("clients", "tests", "fuzz", "bench")]
files = sorted(str(path) for folder in folders for path in folder.rglob("*") if path.suffix in {".h", ".cpp", ".c", ".mm"})
sys.exit(subprocess.run(["clang-format", "--dry-run", "--Werror", *files], check=False).returncode if files else 1)
