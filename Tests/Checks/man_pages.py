# SPDX-License-Identifier: MIT
"""The manual pages render without warnings and without broken sentences.

Skipped (exit code 77) where there is no man.
"""

import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

SKIPPED = 77
PAGES = "Documentation/man"
# A full stop that a macro has put in the middle of a sentence; a sentence that ends without one.
BROKEN = (
    (re.compile(r"\S*[a-zA-Z)]\.  ?(?=[a-z])\S*"), "a full stop in the middle of a sentence"),
    (re.compile(r"\S+ [.,;:](?= |$)"), "a blank before a punctuation mark"),
    (re.compile(r"(?<![.])\.\.(?![.])\S*"), "two full stops"),
)


def rendered(page):
    environment = {**os.environ, "MANWIDTH": "2000", "LC_ALL": "C.UTF-8", "MAN_KEEP_FORMATTING": ""}
    result = subprocess.run(["man", "--warnings", "--local-file", page], env=environment, capture_output=True, text=True)
    return result.stdout, result.stderr, result.returncode


def prose(text):
    """The paragraphs; not the program code in the examples, nor the names of files."""
    for line in text.splitlines():
        line = line.strip()
        if " " in line and not line.startswith(("<", "$", "qrvsettings ")):
            yield line


def problems_of(page):
    text, warnings, code = rendered(page)
    yield from (f"{page}: {line}" for line in warnings.splitlines())
    if code or not text:
        yield f"{page}: man ends with exit code {code}"
    for line in prose(text):
        for pattern, what in BROKEN:
            yield from (f'{page}: {what}: "{line[max(0, match.start() - 30):match.end() + 30]}"'
                        for match in pattern.finditer(line))


def main():
    if shutil.which("man") is None:
        print("there is no man")
        return SKIPPED
    pages = sorted(Path(PAGES).glob("*.[1-9]"))
    problems = [problem for page in pages for problem in problems_of(page)]
    if not pages:
        problems.append(f"{PAGES} has no pages")
    print("\n".join(problems) or f"{len(pages)} manual pages render")
    return 1 if problems else 0


sys.exit(main())
