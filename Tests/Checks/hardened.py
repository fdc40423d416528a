# SPDX-License-Identifier: MIT
"""What is shipped is built with the protections of its compiler and linker, and the library shows no
variable that a host or another library could change.

    python3 hardened.py LIBRARY PROGRAM...
"""

import re
import subprocess
import sys


def output(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


def problems_of(path, is_program):
    segments = output("readelf", "-lW", path)
    dynamic = output("readelf", "-dW", path)
    imports = output("nm", "-D", "--undefined-only", path)
    stack = re.search(r"GNU_STACK.*", segments)
    if stack is None or "RWE" in stack.group():
        yield "the stack can be executed"
    if "GNU_RELRO" not in segments or "NOW" not in dynamic:
        yield "addresses of functions stay writable"
    if re.search(r"\bLOAD\b.*\bRWE\b", segments):
        yield "a segment can be written and executed"
    if "TEXTREL" in dynamic:
        yield "code is changed while it is loaded"
    if "__stack_chk_fail" not in imports:
        yield "the stack is not protected"
    if not re.search(r"__\w+_chk\b", imports.replace("__stack_chk_fail", "")):
        yield "sizes of buffers are not checked"
    if is_program and "PIE" not in dynamic:
        yield "the program lies at a fixed address"


def shown_variables(library):
    """Type information and tables of virtual functions are read-only once loaded."""
    for line in output("nm", "-D", "--defined-only", "-C", library).splitlines():
        _, kind, name = line.split(" ", 2)
        if kind in "BbDdGgSsCc" or (kind in "Vu" and not name.startswith(("typeinfo", "vtable"))):
            yield f"a variable is shown: {name}"


def main():
    library, *programs = sys.argv[1:]
    problems = [f"{path}: {problem}" for path in (library, *programs)
                for problem in problems_of(path, is_program=path != library)]
    problems += shown_variables(library)
    print("\n".join(problems) or "hardened")
    return 1 if problems else 0


sys.exit(main())
