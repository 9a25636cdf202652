"""Random requests are valid by schema/request.schema.json exactly when the helper decodes them.

It runs where it reaches no desktop, so that all there is to tell is whether it has written its diagnostic.
"""

import json
import os
import random
import re
import subprocess
import sys
import unittest
from concurrent.futures import ThreadPoolExecutor
from decimal import Decimal
from pathlib import Path

from jsonschema import Draft202012Validator

HELPER = os.environ["TAVIK_PERCEPTION_HELPER"]
PROJECT = Path(__file__).parents[2]
SCHEMA = json.loads((PROJECT / "schema/request.schema.json").read_bytes())
COUNT, SEED = 3000, 20261125

# Numbers as they are written; "#" marks them, since Python would write them its own way.
WHOLE = "0 -0 1 800 -5 800.0 8e2 80E+1 8000e-1 0.0 -0.0e5 0e99999999999 9223372036854775807 -9223372036854775808 1e18"
NEAR_THE_ENDS = "9223372036854775807.0 922337203685477580e1 9223372036854775808 -9223372036854775809 1e19 1e400"
NOT_WHOLE = "0.5 -1.5 1e-400 800.0000000000000001 -0.0000000001 1e-1"
NUMBERS = [f"#{number}" for number in f"{WHOLE} {NEAR_THE_ENDS} {NOT_WHOLE}".split()]
WORDS = ["", "auto", "read", "Read", "read ", "axOnly", "app", "screen", "region", "png", "null", "1", "é\n\"\0👩"]
ANYTHING = [None, True, False, [], {}, [None], {"x": "#1"}, *NUMBERS, *WORDS]


def rectangle(chance: random.Random) -> dict:
    rectangle = {key: chance.choice(NUMBERS[:8]) for key in "xywh"}
    match chance.randrange(6):
        case 0:
            del rectangle[chance.choice("xywh")]
        case 1:
            rectangle[chance.choice(["x", "w", "X", "z"])] = chance.choice(ANYTHING)
    return rectangle


def fitting(member: dict, chance: random.Random):
    """A value that the schema's own words suggest for a member, and so near to what is right."""
    if "properties" in member:
        return rectangle(chance)
    if "enum" in member:
        return chance.choice(member["enum"])
    if "type" not in member:
        return chance.choice(NUMBERS)
    return chance.choice([True, False] if "boolean" in member["type"] else WORDS)


def request(chance: random.Random) -> bytes:
    members = SCHEMA["properties"]
    content = {}
    for key in chance.sample(list(members), chance.randrange(6)):
        content[key] = fitting(members[key], chance) if chance.random() < 0.85 else chance.choice(ANYTHING)
    if chance.random() < 0.3:
        content[chance.choice(["Level", "regions", "", "level\0", "x"])] = chance.choice(ANYTHING)
    document = content if chance.random() < 0.98 else chance.choice(ANYTHING)
    text = json.dumps(document, ensure_ascii=chance.random() < 0.5)
    return re.sub('"#([^"]*)"', r"\1", text).encode()


def as_written(number: str) -> int | float:
    """Not rounded: 1e-400 is no whole number. What is far too large stands for itself as something too large."""
    value = Decimal(number)
    if value and value.adjusted() > 30:
        return 10**30
    return int(value) if value == value.to_integral_value() else 0.5


def is_decoded(text: bytes) -> bool:
    done = subprocess.run([HELPER], input=text, env={"PATH": ""}, capture_output=True, timeout=10)
    return not done.stderr


class RequestSchemaTest(unittest.TestCase):
    def test_schema_and_decoder_agree(self) -> None:
        Draft202012Validator.check_schema(SCHEMA)
        validator = Draft202012Validator(SCHEMA)
        chance = random.Random(SEED)
        requests = [request(chance) for _ in range(COUNT)]
        with ThreadPoolExecutor(os.cpu_count()) as helpers:
            decoded = list(helpers.map(is_decoded, requests))
        differences = [
            f"{text.decode()}: the helper {'decodes' if decodes else 'refuses'} it"
            for text, decodes in zip(requests, decoded)
            if validator.is_valid(json.loads(text, parse_float=as_written)) != decodes
        ]
        self.assertEqual(differences, [])
        self.assertTrue(COUNT / 4 < sum(decoded) < COUNT * 3 / 4, f"{sum(decoded)} of {COUNT} are decoded")


if __name__ == "__main__":
    unittest.main(argv=sys.argv)
