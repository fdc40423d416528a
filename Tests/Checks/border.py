# SPDX-License-Identifier: MIT
"""The compiler holds the border: whoever is not of the library sees its public headers, under the include
lines that hosts have, and no inner one.

    python3 border.py COMPILE_COMMANDS FOLDER...

tries it with the include paths of all sources that are compiled into these folders of the build.
"""

import json
import shlex
import subprocess
import sys
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
# The include lines of hosts. A line may be added; one that goes breaks a host.
INCLUDE_LINES = (
    "Platform/Dispatch/Adapters/GLib.h", "Platform/Dispatch/Adapters/Qt.h", "Platform/Dispatch/Dispatch.h",
    "Platform/Dispatch/NSOperationQueue.h", "Platform/Export.h", "Platform/Files/Files.h",
    "Platform/Files/NSFileCoordinator.h", "Platform/Files/NSFilePresenter.h",
    "Platform/PropertyLists/NSPropertyListSerialization.h", "Platform/System/NSAppearance.h",
    "Platform/System/System.h", "Platform/System/Terminal.h", "Platform/Values/PropertyListValue.h",
    "QRVHistory/QRVHistory.h", "QRVLogger/DDLog.h", "QRVSettings/Adapters/DesktopAppearance.h",
    "QRVSettings/Adapters/GLibAppearance.h", "QRVSettings/Adapters/QtAppearance.h", "QRVSettings/FileChange.h",
    "QRVSettings/KeyPath.h", "QRVSettings/NSDictionary+QRV.h", "QRVSettings/QRVHeldKeys.h",
    "QRVSettings/QRVKeys.h", "QRVSettings/QRVKnownSettings.h", "QRVSettings/QRVSettings.h",
    "QRVSettings/QRVSettingsC.h")


def inner_headers():
    frameworks = SOURCE / "Frameworks"
    return sorted(path.relative_to(frameworks).as_posix() for path in frameworks.rglob("*.h")
                  if not path.is_relative_to(frameworks / "include"))


def include_path(words):
    """What a command of the compiler, in words, says of where headers lie."""
    path = []
    for place, word in enumerate(words):
        if word in ("-I", "-isystem", "-iquote"):
            path += [word, words[place + 1]]
        elif word.startswith(("-I", "-isystem")):
            path.append(word)
    return path


def compiler(arguments, text, folder):
    return subprocess.run(["c++", "-std=c++20", "-x", "c++", *arguments, "-"], input=text, cwd=folder,
                          capture_output=True, text=True, check=False)


def found(headers, path, folder):
    text = "".join(f'#if __has_include("{header}")\nFOUND {header}\n#endif\n' for header in headers)
    lines = compiler(["-E", *path], text, folder).stdout.splitlines()
    return [line.removeprefix("FOUND ") for line in lines if line.startswith("FOUND ")]


def problems_of(path, folder="."):
    """What is wrong with an include path, which may be relative to a folder."""
    inner = inner_headers()
    if not inner:
        yield "no inner headers found"
    yield from (f"finds the inner header {header}" for header in found(inner, path, folder))
    for header in inner[:1] + inner[-1:]:
        result = compiler(["-fsyntax-only", *path], f'#include "{header}"\n', folder)
        if result.returncode == 0 or header not in result.stderr:
            yield f"compiles what includes the inner header {header}"
    public = found(INCLUDE_LINES, path, folder)
    yield from (f"does not find the public header {header}" for header in INCLUDE_LINES if header not in public)
    result = compiler(["-fsyntax-only", *path], '#include "QRVSettings/QRVSettings.h"\n', folder)
    if result.returncode != 0:
        yield f"does not compile what a host includes:\n{result.stderr}"


def include_paths(commands, folder):
    """Those of what is compiled into a folder of the build, each once, with a source that has it."""
    paths = {}
    for command in commands:
        words = shlex.split(command["command"])
        if words[words.index("-o") + 1].startswith(f"{folder}/"):
            paths[command["directory"], tuple(include_path(words))] = command["file"]
    return paths


def main():
    commands = json.loads(Path(sys.argv[1]).read_text())
    problems, tried = [], 0
    for folder in sys.argv[2:]:
        paths = include_paths(commands, folder)
        if not paths:
            problems.append(f"nothing is compiled in {folder}")
        for (directory, path), source in paths.items():
            tried += 1
            problems += [f"the include path of {source} {problem}" for problem in problems_of(path, directory)]
    print("\n".join(problems) or f"{tried} include paths show what is public, and nothing else")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
