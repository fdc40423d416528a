# SPDX-License-Identifier: MIT
"""An upper floor includes a lower one, never the reverse; one door to the system."""

import re
import sys
from pathlib import Path

# What the sources of a floor may include of ours, by the first folder of the include path.
FLOORS = {
    "Frameworks/Platform": {"Platform"},
    "Frameworks/QRVLogger": {"Platform", "QRVLogger"},
    "Frameworks/QRVSettings": {"Platform", "QRVLogger", "QRVSettings"},
    "Tools": {"public"},
    "Examples": {"public"},
}
# C++ headers that the store must not use: it has no system call, thread or lock of its own.
KEPT_FROM_THE_STORE = {
    "thread", "mutex", "shared_mutex", "condition_variable", "future", "semaphore", "barrier",
    "latch", "fstream", "filesystem", "cstdlib", "csignal",
}
# What C itself defines; a header that C includes cannot name them otherwise.
OF_THE_LANGUAGE = {"stdbool.h", "stddef.h", "stdint.h"}
FORBIDDEN_FOLDERS = {"util", "utils", "common"}
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def public_headers():
    text = Path("Frameworks/CMakeLists.txt").read_text()
    sets = re.findall(r"set\(QRV_(?:PUBLIC|ADAPTER)_HEADERS([^)]*)\)", text)
    return {name for names in sets for name in names.split()}


def is_system_header(name):
    return name.endswith(".h") and name not in OF_THE_LANGUAGE


def may_include_system_headers(path):
    # An adapter is the host's code: it joins ours to another library.
    return path.name.endswith("Linux.cpp") or path.parent.name == "Adapters"


def problems_of(path, floor, public):
    allowed = FLOORS[floor]
    for bracket, name in INCLUDE.findall(path.read_text()):
        first = name.split("/")[0]
        if bracket == '"' and "public" in allowed:
            beside = (path.parent / name).exists() or (Path(floor) / path.parts[1] / name).exists()
            if name not in public and not beside:
                yield f"includes {name}, which is not public"
        elif bracket == '"' and first not in allowed:
            yield f"includes {name}, which is on a higher floor"
        if bracket == "<" and is_system_header(name) and not may_include_system_headers(path):
            yield f"includes the system header <{name}>"
        if bracket == "<" and floor == "Frameworks/QRVSettings" and name in KEPT_FROM_THE_STORE:
            yield f"includes <{name}>, which the store leaves to Platform"


def main():
    public = public_headers()
    problems = [f"{name}: not there, but listed as public"
                for name in sorted(public) if not (Path("Frameworks") / name).is_file()]
    seen = 0
    for floor in FLOORS:
        for path in sorted(Path(floor).rglob("*")):
            if path.is_dir() and path.name.lower() in FORBIDDEN_FOLDERS:
                problems.append(f"{path}: a folder of that name has no subject")
            if path.suffix in {".h", ".cpp"}:
                seen += 1
                problems += [f"{path}: {problem}" for problem in problems_of(path, floor, public)]
    if seen == 0:
        problems.append("no sources found: run this in the root of the tree")
    print("\n".join(problems) or f"{seen} sources keep to their floors")
    return 1 if problems else 0


sys.exit(main())
