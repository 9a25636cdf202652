"""Whichever allocation fails, alone or with all after it, there is one answer, in time, and no more.

Takes some of them; with TAVIK_EVERY_ALLOCATION in the environment, every one.
"""

import json
import os
import unittest

from perception import PIXELS, TREE, response_of, run

FAILING_MEMORY = {"LD_PRELOAD": os.environ["TAVIK_FAILING_MEMORY"]}
RUNS = 40
REQUESTS = ({}, *({"app_bundle_id": "galculator"} | wanted for wanted in (TREE, PIXELS)), {"target": "screen"})


class MemoryTest(unittest.TestCase):
    def test_an_answer_without_memory(self) -> None:
        for request in REQUESTS:
            text = json.dumps(request).encode()
            count = int(run(text, FAILING_MEMORY | {"ALLOCATION_COUNT": "2"}).stderr)
            step = 1 if "TAVIK_EVERY_ALLOCATION" in os.environ else max(1, count // RUNS)
            for number in range(1, count + 1, step):
                for lasting in ({}, {"FAILING_FOR_GOOD": "1"}):
                    with self.subTest(request, allocation=number, of=count, lasting=bool(lasting)):
                        response_of(run(text, FAILING_MEMORY | {"FAILING_ALLOCATION": str(number)} | lasting))
