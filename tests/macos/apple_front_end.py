"""Compiles the macOS backend with clang++'s front end for Apple's systems, both architectures, with automatic reference
counting, against declarations of our own, and compares what it takes from the frameworks with imported_symbols.txt.

    apple_front_end.py CLANGXX PROGRAM_FOLDER            the check
    apple_front_end.py CLANGXX PROGRAM_FOLDER --accept   writes the list anew, for review
"""

import re
import shutil
import subprocess
import sys
import tempfile
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

HERE, COMPILER, PROGRAM = Path(__file__).resolve().parent, sys.argv[1], Path(sys.argv[2]).resolve()
GOLDEN = HERE / "imported_symbols.txt"
FRAMEWORK_SYMBOL = re.compile(r"\bU? ?_(OBJC_CLASS_\$_\w+|_*k?(?:AX|CF|CG|NS|dispatch)\w+)$", re.MULTILINE)
FLAGS = ["-std=c++20", "-fobjc-arc", "-Wall", "-Wextra", "-Wunguarded-availability", "-Werror", f"-I{PROGRAM}"]
# There is no C++ library for Apple's systems here: GCC's stands in, whose headers take the compiler for one of Linux.
STANDIN = ["-U__nonnull", "-D_GNU_SOURCE", "-nostdinc++", f"-I{HERE / 'include'}"]
STANDIN_ON = {"x86_64": [], "arm64": ["-D__x86_64__", "-D__builtin_ia32_pause()=0"]}


def imports_of(architecture: str) -> set[str]:
    """Ends the run with the compiler's words where it has any."""
    command = [COMPILER, "-target", f"{architecture}-apple-macosx14.0", *FLAGS, *STANDIN, *STANDIN_ON[architecture]]
    with tempfile.TemporaryDirectory() as folder:
        if subprocess.run([*command, *HEADERS, "-c", *SOURCES], cwd=folder, check=False).returncode != 0:
            sys.exit(f"the backend does not compile for {architecture}")
        listing = subprocess.run(["llvm-nm", "-u", *Path(folder).iterdir()], capture_output=True, text=True, check=True)
    return set(FRAMEWORK_SYMBOL.findall(listing.stdout))


if not shutil.which(COMPILER) or not shutil.which("llvm-nm"):
    print("skipped: needs clang++ and llvm-nm")
    sys.exit(77)
SOURCES = sorted((PROGRAM / "platform/macos").glob("*.mm"))
said = subprocess.run([COMPILER, "-x", "c++", "-E", "-v", "/dev/null"], capture_output=True, text=True, check=True).stderr
HEADERS = [f"-isystem{path}" for path in re.findall(r"^ (/\S+)$", said, re.MULTILINE)]
with ThreadPoolExecutor() as pool:
    imports = dict(zip(STANDIN_ON, pool.map(imports_of, STANDIN_ON)))
if "--accept" in sys.argv:
    GOLDEN.write_text("\n".join(sorted(imports["arm64"])) + "\n")
golden = set(GOLDEN.read_text().split())
for architecture, symbols in imports.items():
    for symbol in sorted(symbols ^ golden):
        print(f"{architecture}: {symbol} is {'not reviewed' if symbol in symbols else 'no longer used'}")
sys.exit(any(symbols != golden for symbols in imports.values()))
