# SPDX-License-Identifier: MIT
"""Numbers that documents and manual pages tell are those of the constants in the public headers."""

import re
import sys
from pathlib import Path

HEADERS = Path("Frameworks/include")
DOCUMENTS = ("*.md", "Documentation/**/*.md", "Documentation/man/*")
SECONDS = r"\W+(?:seconds?|s)\b"
# Header, constant, and the sentences that tell its number, which is the group.
FACTS = (
    ("Platform/Files/NSFileCoordinator.h", "readerLockTimeout",
     r"\breaders?\b[^.|]{0,80}?\b(\w+)" + SECONDS),
    ("Platform/Files/NSFilePresenter.h", "filePollingInterval",
     r"\bpoll(?:ed|s|ing)?\b[^.|]{0,80}?\bevery\W+(\w+)" + SECONDS),
    ("Platform/Files/NSFilePresenter.h", "openWriterTimeout",
     r"\bkeeps? the file open\b[^.|]{0,80}?\b(\w+)" + SECONDS),
    ("Platform/Files/Files.h", "maximumSymbolicLinks", r"\bup to (\w+) (?:symbolic )?(?:links|hops)\b"),
)
WORDS = ("zero", "one", "two", "three", "four", "five", "six", "seven", "eight", "nine", "ten")


def number(word):
    return WORDS.index(word.lower()) if word.lower() in WORDS else int(word)


def is_number(word):
    return word.isdigit() or word.lower() in WORDS


def constant(header, name):
    found = re.search(rf"\bconstexpr\b[^;]*\b{name}\s*[({{=]\s*(\d+)", (HEADERS / header).read_text())
    return int(found.group(1)) if found else None


def main():
    texts = {path: path.read_text() for pattern in DOCUMENTS for path in Path(".").glob(pattern)
             if path.is_file()}
    problems, told = [], 0
    for header, name, sentence in FACTS:
        expected = constant(header, name)
        if expected is None:
            problems.append(f"{header}: no constant {name}")
            continue
        for path, text in sorted(texts.items()):
            for match in re.finditer(sentence, text, re.IGNORECASE):
                if not is_number(match.group(1)):
                    continue
                told += 1
                if number(match.group(1)) != expected:
                    line = text.count("\n", 0, match.start(1)) + 1
                    problems.append(f"{path}:{line}: {match.group(1)}, but {name} is {expected}")
    if told == 0:
        problems.append("no document tells any of the numbers: the sentences of this check are stale")
    print("\n".join(problems) or f"{told} numbers in documents are those of {len(FACTS)} constants")
    return 1 if problems else 0


sys.exit(main())
