# SPDX-License-Identifier: MIT
"""A program that was linked with the last release runs with this library.

    python3 abi.py check LIBRARY RELEASED    RELEASED describes the library of the last release
    python3 abi.py write LIBRARY RELEASED    describes this library there
    python3 abi.py self_test LIBRARY RELEASED

LIBRARY has complete debug information. What this release adds is compatible; whatever it removes or lays out in
another way is not, unless the library has another soname. Skipped (exit code 77) where abidiff is not installed.
"""

import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

SKIPPED = 77
# The C++ library's types have a compatibility of their own, and hosts see the store's only as pointers. Without
# them a description is a twentieth as long; members of such types still count with their place and size.
LEFT_OUT = """
[suppress_type]
  name_regexp = ^(std|__gnu_cxx)::
  drop = yes
[suppress_type]
  name_regexp = ^QRVInside::
  drop = yes
"""
# Nothing of the machine that it is made on (`describe` takes the rest out), and nothing that changes whenever a line moves.
STYLE = ("--exported-interfaces-only", "--no-elf-needed", "--no-corpus-path", "--no-comp-dir-path", "--no-show-locs",
         "--no-parameter-names", "--type-id-style", "hash")
# Hosts see the objects behind values only as pointers, too; but values are described with what they point to.
NOT_COMPARED = """
[suppress_type]
  name = QRVPlatform::ValueObjects::Object
"""
# Bits of abidiff's exit code.
ERRORS = 1 | 2


def run(command, suppressions, **how):
    with tempfile.NamedTemporaryFile("w", suffix=".ini") as file:
        file.write(suppressions)
        file.flush()
        return subprocess.run([command[0], "--suppressions", file.name, *command[1:]], check=False, **how)


def describe(library, description):
    run(["abidw", *STYLE, "--out-file", description, library], LEFT_OUT).check_returncode()
    text = Path(description).read_text()
    Path(description).write_text(re.sub(r"( path=')[^']*/(?=Frameworks/)", r"\1", text))


def soname(description):
    return re.search(r"<abi-corpus [^>]*\bsoname='([^']*)'", Path(description).read_text())[1]


def incompatibilities(released, current):
    """What abidiff says is no longer as it was; empty when there is nothing."""
    if soname(released) != soname(current):
        return ""
    result = run(["abidiff", "--no-added-syms", released, current], NOT_COMPARED, capture_output=True, text=True)
    if result.returncode & ERRORS:
        raise RuntimeError(f"abidiff: {result.stdout}{result.stderr}")
    return result.stdout if result.returncode else ""


def check(released, current, _):
    found = incompatibilities(released, current)
    print(found or f"compatible with the last release ({soname(released)}; this is {soname(current)})")
    return 1 if found else 0


def changed(current, folder, pattern, replacement):
    text, count = re.subn(pattern, replacement, Path(current).read_text(), count=1)
    if not count:
        raise RuntimeError(f"the description has nothing like {pattern}")
    path = folder / "changed.xml"
    path.write_text(text)
    return path


def self_test(_, current, folder):
    """Each change of this library that counts is found, each that does not is accepted."""
    symbol = r" *<elf-symbol name='qrv_value_kind'.*\n"
    function = r" *<function-decl name='qrv_value_kind'[\s\S]*?</function-decl>\n"
    less = changed(changed(current, folder, symbol, ""), folder, function, "")
    other_soname = folder / "other.xml"
    other_soname.write_text(Path(less).read_text().replace("soname='libQRVSettings.so.7'", "soname='libQRVSettings.so.8'"))
    # The name of the change, the two libraries, and whether they are incompatible.
    cases = [("none", current, current, False),
             ("a function was added", less, current, False),
             ("a function is gone", current, less, True),
             ("it is gone, with another soname", current, other_soname, False)]
    problems = [what for what, old, new, wanted in cases if bool(incompatibilities(old, new)) != wanted]
    larger = changed(current, folder, r"(<class-decl name='qrv_color' size-in-bits=')256'", r"\g<1>320'")
    if not incompatibilities(current, larger):
        problems.append("a structure is larger")
    print("\n".join(f"wrong verdict: {problem}" for problem in problems) or "every verdict is right")
    return 1 if problems else 0


def main():
    step, library, released = sys.argv[1:]
    if shutil.which("abidiff") is None:
        print("abidiff is not installed")
        return SKIPPED
    if step == "write":
        describe(library, released)
        return 0
    with tempfile.TemporaryDirectory() as folder:
        current = f"{folder}/current.xml"
        describe(library, current)
        return {"check": check, "self_test": self_test}[step](released, current, Path(folder))


sys.exit(main())
