"""What README and examples show integrators, run as they stand there."""

import os
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

from perception import HELPER

PROJECT = Path(__file__).parents[2]
CALLING = (PROJECT / "README.md").read_text().split("\n## Calling it from a program\n")[1].split("\n## ")[0]
STAND_IN = str(PROJECT / "examples/stand_in.py")


def run(*command: str, folder: str, stdin: bytes = b"") -> subprocess.CompletedProcess:
    """With the helper where README's commands look for it: built, and installed."""
    built = Path(folder) / "build/release"
    if not built.exists():
        built.parent.mkdir()
        built.symlink_to(Path(HELPER).parent)
    environment = os.environ | {"PATH": f"{Path(HELPER).parent}:{os.environ['PATH']}"}
    return subprocess.run(command, cwd=folder, env=environment, input=stdin, capture_output=True, timeout=20)


class ExamplesTest(unittest.TestCase):
    def setUp(self) -> None:
        self.folder = self.enterContext(tempfile.TemporaryDirectory())

    def test_readme(self) -> None:
        for language, command, shown in (
            ("sh", ("/bin/sh", "-ec"), b'"app_name":"Galculator"'),
            ("python", ("/usr/bin/python3", "-c"), b""),
        ):
            with self.subTest(language):
                (example,) = re.findall(rf"```{language}\n(.*?)```", CALLING, re.DOTALL)
                done = run(*command, example, folder=self.folder)
                self.assertEqual((done.returncode, done.stderr), (0, b""))
                self.assertIn(shown, done.stdout)
        self.assertGreater((Path(self.folder) / "capture.jpeg").stat().st_size, 1000)

    def test_answers_are_replayed_to_the_byte(self) -> None:
        request = b'{"app_name":"galculator"}'
        recorded = run(STAND_IN, "record", "answers", HELPER, folder=self.folder, stdin=request)
        self.assertIn(b'"image":"data:', recorded.stdout)
        replay = (STAND_IN, "replay", f"{self.folder}/answers")
        done = subprocess.run(replay, input=request, capture_output=True)
        self.assertEqual((done.returncode, done.stdout), (0, recorded.stdout))
        self.assertEqual(subprocess.run(replay, input=b"{}", capture_output=True).returncode, 1)
