"""The helper as a process: requests in, responses out, and what must hold of every run."""

import json
import os
import subprocess

HELPER = os.environ["TAVIK_PERCEPTION_HELPER"]
DEADLINE_SECONDS = 20  # a run that takes longer hangs

Environment = dict[str, str | None]  # what a run has otherwise than this process; None takes a variable away


def run(request: bytes, environment: Environment | None = None, program: str = HELPER) -> subprocess.CompletedProcess:
    changed = os.environ | (environment or {})
    variables = {name: value for name, value in changed.items() if value is not None}
    return subprocess.run([program], input=request, env=variables, capture_output=True, timeout=DEADLINE_SECONDS)


def ask(request: dict, environment: Environment | None = None) -> dict:
    """The one JSON object of a run that exits with 0 and says nothing on standard error."""
    done = run(json.dumps(request).encode(), environment)
    assert (done.returncode, done.stderr) == (0, b""), (done.returncode, done.stderr.decode(errors="replace"))
    assert done.stdout.endswith(b"}\n") and done.stdout.count(b"\n") == 1, done.stdout[-200:]
    return json.loads(done.stdout)


def capture(request: dict, environment: Environment | None = None) -> dict:
    """The data of a request that succeeds."""
    response = ask(request, environment)
    assert response["ok"], response
    return response["data"]


def code(request: dict, environment: Environment | None = None) -> str:
    """The code of a request that fails; "ok" of one that does not."""
    return ask(request, environment).get("code", "ok")
