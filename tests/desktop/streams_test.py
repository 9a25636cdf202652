"""Whatever becomes of the streams, a run exits with 0 and writes one response or nothing."""

import fcntl
import json
import os
import re
import shutil
import subprocess
import time
import unittest

from perception import HELPER, response_of, run

SCREEN = b'{"target":"screen","level":"pixel_perfect"}'
DIAGNOSTIC = b"[tavik-perception-helper] decode error: "


def shell(script: str) -> subprocess.CompletedProcess:
    """Runs a script in which $0 is the helper, with a request on standard input."""
    return run(SCREEN, command=("/bin/bash", "-c", script, HELPER))


class StreamsTest(unittest.TestCase):
    def test_request_that_is_none(self) -> None:
        done = run(b'{"target":' + b"[" * 1_000_000)  # deeper than any stack
        self.assertEqual(response_of(done)["code"], "target_required")
        self.assertEqual((done.stderr.count(DIAGNOSTIC), done.stderr.count(b"\n")), (1, 1))

    def test_nothing_is_opened_in_vain(self) -> None:
        """A request that names no target: no connection to anyone, and no library that only other requests need."""
        if not shutil.which("strace"):
            self.skipTest("strace is not installed")
        trace = ("strace", "-f", "-qq", "-e", "trace=connect,openat", HELPER)
        done = run(b"{}", {"ASAN_OPTIONS": "detect_leaks=0"}, trace)  # leaks cannot be sought under a tracer
        self.assertEqual(response_of(done)["code"], "target_required")
        calls = done.stderr.decode()
        self.assertNotIn("connect(", calls)
        opened = set(re.findall(r"/(lib[^/]*?)\.so\S* O_RDONLY\S* = \d", calls.replace('",', "")))
        self.assertIn("libc", opened)
        self.assertLessEqual(opened, {"libc", "libm", "libgcc_s", "libstdc++", "libresolv"})

    def test_no_trace_is_left(self) -> None:
        """No socket but to this machine's own desktop, no file opened for writing or changed, no program started."""
        if not shutil.which("strace"):
            self.skipTest("strace is not installed")
        calls = "trace=socket,openat,open,creat,mkdir,mkdirat,unlink,unlinkat,rename,renameat2,link,symlink,chmod,execve"
        for request in (b'{"app_name":"galculator","level":"read"}', SCREEN, b'{"target":"focused_element"}'):
            done = run(request, {"ASAN_OPTIONS": "detect_leaks=0"}, ("strace", "-f", "-qq", "-e", calls, HELPER))
            self.assertTrue(json.loads(done.stdout)["ok"])
            for call in done.stderr.decode().splitlines()[1:]:  # the first starts the helper
                with self.subTest(call):
                    looks = r"socket\(AF_(UNIX|NETLINK)|open(at)?\(.*(O_RDONLY|O_PATH|/dev/null)|open.*= -1|---|\+\+\+"
                    self.assertRegex(call, looks)
                    self.assertNotRegex(call, "O_CREAT|O_TRUNC")

    def test_input(self) -> None:
        byte_by_byte = 'while IFS= read -r -n 1 c; do printf %s "$c"; sleep 0.005; done | "$0"'
        for reason, script, succeeds in (("closed", '"$0" <&-', False), ("slow", byte_by_byte, True)):
            with self.subTest(reason):
                done = shell(script)
                self.assertEqual(response_of(done)["ok"], succeeds)

    def test_output_that_nobody_takes(self) -> None:
        for reason, script in (
            ("closed", '"$0" >&-'),
            ("full", '"$0" >/dev/full'),
            ("read only", '"$0" 1</dev/null'),
            ("every stream closed", '"$0" <&- >&- 2>&-'),
            ("the reader has gone", '"$0" | : ; exit "${PIPESTATUS[0]}"'),
        ):
            with self.subTest(reason):
                done = shell(script)
                self.assertEqual((done.returncode, done.stdout, done.stderr), (0, b"", b""))

    def test_slow_reader_gets_everything(self) -> None:
        """A pipe that another owner has made non-blocking takes 4 KB, and then nothing for a while."""
        reading, writing = os.pipe()
        fcntl.fcntl(writing, fcntl.F_SETFL, os.O_NONBLOCK)
        fcntl.fcntl(writing, fcntl.F_SETPIPE_SZ, 4096)
        with subprocess.Popen([HELPER], stdin=subprocess.PIPE, stdout=writing) as process:
            os.close(writing)
            process.stdin.write(b'{"target":"screen","format":"png","max_long_edge_px":0}')
            process.stdin.close()
            time.sleep(0.5)
            with open(reading, "rb") as stream:
                written = stream.read()
        self.assertEqual(process.returncode, 0)
        self.assertGreater(len(json.loads(written)["data"]["image"]), 3 * 4096)
