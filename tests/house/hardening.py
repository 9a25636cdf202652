"""The release is built as what reads from strangers should be: readelf says so."""

import re
import subprocess
import sys

WANTED = (
    ("at an address of its own in every run", "-h", r"Type: +DYN"),
    ("tables of functions that cannot be written", "-l", r"GNU_RELRO"),
    ("bound before anything runs", "-d", r"BIND_NOW|FLAGS.*NOW"),
    ("a stack that cannot be executed", "-l", r"GNU_STACK.* RW +0x"),
    ("guarded stacks", "--dyn-syms", r"__stack_chk_fail"),
    ("checked buffers", "--dyn-syms", r"_chk@"),
)

failures = [
    what
    for what, option, sign in WANTED
    if not re.search(sign, subprocess.run(["readelf", "-W", option, sys.argv[1]], capture_output=True, text=True).stdout)
]
if " .symtab " in subprocess.run(["readelf", "-W", "-S", sys.argv[1]], capture_output=True, text=True).stdout:
    failures.append("no symbols")
print(*(f"hardening: the program lacks: {what}" for what in failures), sep="\n")
sys.exit(bool(failures))
