# SPDX-License-Identifier: MIT
"""No object of the libraries is destroyed while the process exits: its threads may still use it, and so may
destructors and exit handlers of the host.

    python3 nothing_destroyed.py FILE...

FILE is an archive or a shared library. What registers a destructor imports one of the functions below.
"""

import re
import subprocess
import sys

REGISTERS = re.compile(r"\b(__cxa_atexit|__cxa_thread_atexit(?:_impl)?|atexit|at_quick_exit|on_exit)\b")
# The text of the last error of a thread that ends is given back; the object itself stays.
ALLOWED = {("QRVSettingsC+Boundary.cpp.o", "__cxa_thread_atexit")}


def imports(path):
    """The names that the members of an archive, or a shared library, import, each with the member."""
    kind = ["-D"] if ".so" in path else []
    output = subprocess.run(["nm", *kind, "-A", "--undefined-only", path],
                            check=True, capture_output=True, text=True).stdout
    for line in output.splitlines():
        place, name = re.fullmatch(r"(.*):\s+[Uwv] (\S+)", line).groups()
        yield place.rpartition(":")[2], name.partition("@")[0]


def main():
    problems = []
    for path in sys.argv[1:]:
        found = list(imports(path))
        if not found:
            problems.append(f"{path} imports nothing")
        problems += [f"{path}: {member} has an object that is destroyed at exit ({name})"
                     for member, name in found
                     if REGISTERS.fullmatch(name) and (member, name) not in ALLOWED]
    print("\n".join(problems) or f"nothing of {len(sys.argv) - 1} libraries is destroyed at exit")
    return 1 if problems else 0


sys.exit(main())
