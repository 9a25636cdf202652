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
from functools import partial
from pathlib import Path

HERE = Path(__file__).parent
GOLDEN = HERE / "imported_symbols.txt"
DEPLOYMENT_TARGET = "14.0"
FRAMEWORK_SYMBOL = re.compile(r"\bU? ?_(OBJC_CLASS_\$_\w+|_*k?(?:AX|CF|CG|NS)\w+)$", re.MULTILINE)

# There is no C++ library for Apple's systems here: GCC's stands in, whose headers take the compiler for one of Linux.
STANDIN = ["-U__nonnull", "-D_GNU_SOURCE", "-DTAVIK_OWN_DECLARATIONS", "-nostdinc++"]
STANDIN_ON_ARM = ["-D__x86_64__", "-D__builtin_ia32_pause()=0"]


def system_headers(compiler: str) -> list[str]:
    said = subprocess.run([compiler, "-x", "c++", "-E", "-v", "-"], input="", capture_output=True, text=True).stderr
    return [f"-isystem{line.strip()}" for line in said.split("search starts here:")[-1].splitlines() if line[:1] == " "]


def imports_of(architecture: str, source: Path) -> set[str]:
    """Ends the run with the compiler's words where it has any."""
    command = [COMPILER, "-target", f"{architecture}-apple-macosx{DEPLOYMENT_TARGET}", "-x", "objective-c++"]
    command += ["-std=c++20", "-fobjc-arc", "-Wall", "-Wextra", "-Wunguarded-availability", "-Werror", *STANDIN]
    command += STANDIN_ON_ARM if architecture == "arm64" else []
    command += [*HEADERS, f"-I{HERE / 'include'}", f"-I{PROGRAM}", "-c", str(source)]
    with tempfile.NamedTemporaryFile(suffix=".o") as made:
        if subprocess.run([*command, "-o", made.name]).returncode != 0:
            sys.exit(f"{source.name} does not compile for {architecture}")
        listed = subprocess.run(["llvm-nm", "-u", made.name], capture_output=True, text=True, check=True).stdout
    return set(FRAMEWORK_SYMBOL.findall(listed))


def all_imports_of(architecture: str) -> set[str]:
    with ThreadPoolExecutor() as pool:
        sources = sorted((PROGRAM / "platform/macos").glob("*.mm"))
        return set().union(*pool.map(partial(imports_of, architecture), sources))


COMPILER, PROGRAM = sys.argv[1], Path(sys.argv[2])
if not shutil.which(COMPILER) or not shutil.which("llvm-nm"):
    print("skipped: needs clang++ and llvm-nm")
    sys.exit(77)
HEADERS = system_headers(COMPILER)
imports = {architecture: all_imports_of(architecture) for architecture in ("arm64", "x86_64")}
if "--accept" in sys.argv:
    GOLDEN.write_text("\n".join(sorted(imports["arm64"])) + "\n")
golden = set(GOLDEN.read_text().split())
for architecture, symbols in imports.items():
    for symbol in sorted(symbols ^ golden):
        print(f"{architecture}: {symbol} is {'not reviewed' if symbol in symbols else 'no longer used'}")
sys.exit(any(symbols != golden for symbols in imports.values()))
