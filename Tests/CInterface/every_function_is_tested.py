# SPDX-License-Identifier: MIT
"""The C header, the names that the library shows and the tests in C know the same functions.

    python3 every_function_is_tested.py HEADER LIST FOLDER_OF_TESTS
"""

import re
import sys
from pathlib import Path


def without_comments(text):
    return re.sub(r"//.*", "", text)


def main():
    header, names, folder = (Path(argument) for argument in sys.argv[1:])
    declared = set(re.findall(r"^QRV_EXPORT\b[^;(]*?\b(qrv_\w+)\(",
                              without_comments(header.read_text()), re.MULTILINE))
    shown = {name for name in names.read_text().splitlines() if name.startswith("qrv_")}
    tests = "".join(without_comments(path.read_text()) for path in folder.glob("*.c"))
    called = set(re.findall(r"\b(qrv_\w+)\(", tests))
    problems = [f"declared and not shown: {name}" for name in sorted(declared - shown)]
    problems += [f"shown and not declared: {name}" for name in sorted(shown - declared)]
    problems += [f"called by no test: {name}" for name in sorted(declared - called)]
    if not declared:
        problems.append(f"{header} declares nothing")
    print("\n".join(problems) or f"{len(declared)} functions are shown and tested")
    return 1 if problems else 0


sys.exit(main())
