# SPDX-License-Identifier: MIT
"""The shared library shows the names of the checked-in list, and no others, and no variables.

    python3 exported_symbols.py LIBRARY LIST [--write]
"""

import subprocess
import sys
from pathlib import Path


# Functions, and what the compiler makes for classes and keeps read-only.
NO_VARIABLES = {"T", "W", "V"}


def exported(library):
    """The names, each with nm's letter for its kind."""
    output = subprocess.run(["nm", "-D", "--defined-only", "-C", library],
                            check=True, capture_output=True, text=True).stdout
    lines = [line.split(" ", 2) for line in output.splitlines()]
    return {name: kind for _, kind, name in lines}


def main():
    library, list_path = sys.argv[1], Path(sys.argv[2])
    kinds = exported(library)
    actual = set(kinds)
    if "--write" in sys.argv:
        list_path.write_text("\n".join(sorted(actual)) + "\n")
        return 0
    expected = set(list_path.read_text().splitlines())
    problems = [f"no longer exported: {name}" for name in sorted(expected - actual)]
    problems += [f"exported and not in the list: {name}" for name in sorted(actual - expected)]
    problems += [f"a variable that hosts could change: {name}"
                 for name in sorted(actual) if kinds[name] not in NO_VARIABLES]
    print("\n".join(problems) or f"{len(actual)} names, as listed")
    return 1 if problems else 0


sys.exit(main())
