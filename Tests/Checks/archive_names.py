# SPDX-License-Identifier: MIT
"""The static library takes no name that a host may have: each global name in it is exported, or belongs to
the standard library, to a given class or to a namespace of ours.

    python3 archive_names.py ARCHIVE LIST
"""

import re
import subprocess
import sys
from pathlib import Path

NAMESPACES = {"QRVPlatform", "QRVInside", "__gnu_cxx"}
# Classes that hosts are given, and what is derived from their names.
GIVEN_CLASS = re.compile(r"(NS|DD|Dispatch|PropertyList|QRV[A-Z]|qrv_)")
# An encoded name begins with what the symbol is of its entity (a table of virtual functions, a guard, a
# member of another function), then tells scopes from the outside in, each with its length.
ENTITY = re.compile(r"_Z(?:T[VTIS]|GV|GR|Th\w*?_|Z)*(?P<nested>N?)[VKRO]*(?P<rest>.*)")
# Placement new and delete, inline functions of <new>, which a build without optimisation emits.
PLACEMENT = {"_ZnwmPv", "_ZnamPv", "_ZdlPvS_", "_ZdaPvS_"}
FUNCTION_OF_A_TYPE = re.compile(r"_ZT[IS][PKRF]")  # type information of a pointer or a function type


def names(archive, *options):
    output = subprocess.run(["nm", "--defined-only", "--extern-only", "--format=posix", *options, archive],
                            check=True, capture_output=True, text=True).stdout
    lines = [line for line in output.splitlines() if line and not line.endswith(":")]
    return [re.sub(r" [A-Za-z](?: [0-9a-f]+)*$", "", line).rstrip() for line in lines]


def outermost(encoded):
    """The outermost scope or name, and whether there are others in it; ("std", True) for the standard library."""
    entity = ENTITY.match(encoded)
    if entity is None:
        return encoded, False
    rest = entity["rest"]
    if rest.startswith("S"):
        return "std", True
    length = re.match(r"\d+", rest)
    if length is None:
        return encoded, False
    name = rest[length.end():][:int(length.group())]
    describes_a_class = re.match(r"_ZT[VTIS]", encoded) is not None
    return name, bool(entity["nested"]) or describes_a_class or encoded.startswith("_ZZ")


def is_plain(encoded, shown, exported):
    if shown in exported or encoded in PLACEMENT or encoded.startswith("DW.ref.") or FUNCTION_OF_A_TYPE.match(encoded):
        return False
    name, has_members = outermost(encoded)
    return not (has_members and (name == "std" or name in NAMESPACES or GIVEN_CLASS.match(name)))


def main():
    archive, exported = sys.argv[1], set(Path(sys.argv[2]).read_text().splitlines())
    symbols = dict(zip(names(archive), names(archive, "--demangle")))
    plain = sorted({shown for encoded, shown in symbols.items() if is_plain(encoded, shown, exported)})
    if not symbols:
        plain.append("(no names found)")
    print("\n".join(f"a host may have this name too: {name}" for name in plain)
          or f"{len(symbols)} names, none of them plain")
    return 1 if plain else 0


sys.exit(main())
