"""The helper as a process: requests in, responses out, and what must hold of every run."""

import base64
import json
import os
import subprocess
from collections.abc import Sequence
from pathlib import Path

from jsonschema import Draft202012Validator
from jsonschema.exceptions import best_match

HELPER = os.environ["TAVIK_PERCEPTION_HELPER"]
LIMIT_SECONDS = 2.0  # for an answer, whatever applications do or leave undone
SCHEMA = Path(__file__).parents[2] / "schema/response.schema.json"
VALIDATOR = Draft202012Validator(json.loads(SCHEMA.read_bytes()))
PIXELS = {"level": "pixel_perfect", "include_ax_tree": False}
TREE = {"include_image": False}

Environment = dict[str, str | None]  # what a run has otherwise than this process; None takes a variable away


def run(
    request: bytes, environment: Environment | None = None, command: Sequence[str] = (HELPER,)
) -> subprocess.CompletedProcess:
    changed = os.environ | (environment or {})
    variables = {name: value for name, value in changed.items() if value is not None}
    return subprocess.run(command, input=request, env=variables, capture_output=True, timeout=LIMIT_SECONDS)


def response_of(done: subprocess.CompletedProcess) -> dict:
    assert done.returncode == 0, (done.returncode, done.stderr.decode(errors="replace"))
    assert done.stdout.endswith(b"}\n") and done.stdout.count(b"\n") == 1, done.stdout[-200:]
    response = json.loads(done.stdout)
    if not VALIDATOR.is_valid(response):
        fault = best_match(VALIDATOR.iter_errors(response))
        raise AssertionError(f"{fault.json_path}: {fault.message[:500]}")
    return response


def ask(request: dict, environment: Environment | None = None) -> dict:
    """The one JSON object of a run that exits with 0 and says nothing on standard error."""
    done = run(json.dumps(request).encode(), environment)
    assert done.stderr == b"", done.stderr.decode(errors="replace")
    return response_of(done)


def capture(request: dict, environment: Environment | None = None) -> dict:
    """The data of a request that succeeds."""
    response = ask(request, environment)
    assert response["ok"], response
    return response["data"]


def code(request: dict, environment: Environment | None = None) -> str:
    """The code of a request that fails; "ok" of one that does not."""
    return ask(request, environment).get("code", "ok")


def image_bytes(data: dict) -> bytes:
    return base64.b64decode(data["image"].partition(";base64,")[2], validate=True)


def picture(request: dict) -> bytes:
    return image_bytes(capture(request))
