#!/usr/bin/python3
"""Stands in for the helper in the tests of a program that calls it, where there is no desktop.

    stand_in.py record FOLDER HELPER    asks the helper, gives its answer, and keeps it in the folder
    stand_in.py replay FOLDER           gives the kept answer to the same request, byte for byte
"""

import hashlib
import subprocess
import sys
from pathlib import Path


def main(mode: str, folder: str, *helper: str) -> int:
    request = sys.stdin.buffer.read()
    kept = Path(folder) / f"{hashlib.sha256(request).hexdigest()}.json"
    if mode == "record":
        answer = subprocess.run(helper, input=request, stdout=subprocess.PIPE, check=True).stdout
        kept.parent.mkdir(parents=True, exist_ok=True)
        kept.write_bytes(answer)
    elif not kept.exists():
        print(f"stand_in: no answer is kept for {request.decode(errors='replace')}", file=sys.stderr)
        return 1
    sys.stdout.buffer.write(kept.read_bytes())
    return 0


if __name__ == "__main__":
    if len(sys.argv) < 3 or sys.argv[1] not in ("record", "replay") or (sys.argv[1] == "record") != (len(sys.argv) > 3):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
