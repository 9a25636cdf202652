"""Checks that README's tables and the schemas list the members of request and answer and the error codes that the code
has.

    readme.py PROJECT_FOLDER PROGRAM_FOLDER
"""

import json
import re
import sys
from pathlib import Path

project, program = map(Path, sys.argv[1:3])
NAME = re.compile(r"`(\w+)`")


def names_in(file: str, pattern: str) -> set[str]:
    found = set(re.findall(pattern, (program / file).read_text(encoding="utf-8")))
    return found or sys.exit(f"{file} has nothing like {pattern}")


def tables_of(heading: str) -> list[set[str]]:
    """The names in the first column of each table under a heading."""
    section = (project / "README.md").read_text(encoding="utf-8").split(f"\n## {heading}\n")[1].split("\n## ")[0]
    tables = re.findall(r"(?:^\|.*\n)+", section, re.MULTILINE)
    return [{name for row in table.splitlines() for name in NAME.findall(row.split("|")[1])} for table in tables]


def schema_of(what: str) -> dict:
    return json.loads((project / f"schema/{what}.schema.json").read_bytes())


KEY = r'(?:[{\[]|\badd\w*\()"(\w+)"[,\]]'
request = tables_of("The request")[0]
answer, codes = tables_of("The answer")
response = schema_of("response")["$defs"]
failure, unwritten = (response[kind]["properties"]["code"] for kind in ("failure", "unwritten"))
faults = [
    f"{what}: {' '.join(sorted(said ^ known))} stands only in one of {where} and code"
    for what, in_readme, in_schema, known in [
        ("request members", request, set(schema_of("request")["properties"]),
         names_in("protocol/request.h", r'RequestMember\{"(\w+)"')),
        ("answer members", answer, set(response["data"]["properties"]), names_in("driver/data_object.cpp", KEY)),
        ("error codes", codes, {*failure["enum"], unwritten["const"]},
         names_in("protocol/error_replies.h", r'(?:\.code = |"code": )"(\w+)"')),
    ]
    for where, said in (("README", in_readme), ("schema", in_schema))
    if said != known
]
text = (project / "README.md").read_text(encoding="utf-8")
for file in ("target/capture_context.cpp", "accessibility/walk_ax_element.cpp"):
    faults += [f"README does not name {key} of {file}" for key in names_in(file, KEY) - set(NAME.findall(text))]
print("\n".join(faults) or "README and schemas list what the code has")
sys.exit(1 if faults else 0)
