# SPDX-License-Identifier: MIT
"""One program or library links a library, and others do not, themselves or by what they link.

    python3 linked_libraries.py LIBRARY FILE --without FILE...
"""

import subprocess
import sys


def linked(path):
    return subprocess.run(["ldd", path], check=True, capture_output=True, text=True).stdout


def main():
    library, with_it, _, *without_it = sys.argv[1:]
    problems = []
    if f"lib{library}.so" not in linked(with_it):
        problems.append(f"{with_it} does not link {library}")
    problems += [f"{path} links {library}" for path in without_it if f"lib{library}.so" in linked(path)]
    print("\n".join(problems) or f"{len(without_it)} files do not link {library}")
    return 1 if problems else 0


sys.exit(main())
