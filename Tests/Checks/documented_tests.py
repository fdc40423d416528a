# SPDX-License-Identifier: MIT
"""Every test that a document names exists.

A name ends with "*" or "..." when it stands for all tests that begin so.
"""

import re
import sys
from pathlib import Path

DOCUMENTS = ("Documentation/Durability.md", "Documentation/Testing.md", "Fuzz/README.md")
NAME = re.compile(r"`([A-Z]\w+\.[A-Z*]\w*)(\*|\.\.\.)?`")
TEST = re.compile(r"^(?:TEST|TEST_F|TEST_P|TYPED_TEST|RC_GTEST_PROP)\((\w+),\s*(\w+)", re.MULTILINE)


def tests():
    found = {".".join(match) for path in Path("Tests").rglob("*.cpp") for match in TEST.findall(path.read_text())}
    fuzzers = {f"Fuzz.{path.stem}Replays" for path in Path("Fuzz").glob("*.cpp")}
    return found | fuzzers


def exists(name, is_beginning, known):
    if name.endswith("*"):
        name, is_beginning = name[:-1], True
    return any(test.startswith(name) if is_beginning else test == name for test in known)


def main():
    known = tests()
    named = 0
    problems = []
    for document in DOCUMENTS:
        for name, ending in NAME.findall(Path(document).read_text()):
            named += 1
            if not exists(name, bool(ending), known):
                problems.append(f"{document}: there is no test {name}{ending}")
    if not named:
        problems.append("the documents name no test")
    print("\n".join(problems) or f"{named} names of tests")
    return 1 if problems else 0


sys.exit(main())
