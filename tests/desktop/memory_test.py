"""Whichever allocation fails, alone or with all after it, there is one answer, in time, and no more.

Takes some of them; with TAVIK_EVERY_ALLOCATION in the environment, every one.
"""

import itertools
import json
import os
import unittest
from concurrent.futures import ThreadPoolExecutor

import perception
from perception import PIXELS, TREE, response_of, run

FAILING_MEMORY = {"LD_PRELOAD": os.environ["TAVIK_FAILING_MEMORY"]}
RUNS = 30
REQUESTS = ({}, *({"app_bundle_id": "galculator"} | wanted for wanted in (TREE, PIXELS)), {"target": "screen"})
perception.LIMIT_SECONDS = 5.0  # xcb forgets a reply that it has no memory for, which is then waited for


class MemoryTest(unittest.TestCase):
    def test_an_answer_without_memory(self) -> None:
        for request in REQUESTS:
            text = json.dumps(request).encode()
            count = int(run(text, FAILING_MEMORY | {"ALLOCATION_COUNT": "2"}).stderr)
            step = 1 if "TAVIK_EVERY_ALLOCATION" in os.environ else max(1, count // RUNS)
            cases = list(itertools.product(range(1, count + 1, step), ({}, {"FAILING_FOR_GOOD": "1"})))
            with ThreadPoolExecutor(4) as helpers:
                runs = [
                    helpers.submit(run, text, FAILING_MEMORY | {"FAILING_ALLOCATION": str(number)} | lasting)
                    for number, lasting in cases
                ]
            for (number, lasting), done in zip(cases, runs, strict=True):
                with self.subTest(request, allocation=number, of=count, lasting=bool(lasting)):
                    response_of(done.result())
