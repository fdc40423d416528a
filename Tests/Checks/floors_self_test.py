# SPDX-License-Identifier: MIT
"""floors.py names each kind of wrong include in a tree that has all of them, and none in a tree that has none."""

import subprocess
import sys
import tempfile
from pathlib import Path

import floors

STORE = "Frameworks/QRVSettings"


def include_line(room):
    """An include line that leads to a room."""
    for header, of_room in floors.ROOM_OF_HEADER.items():
        if of_room == floors.short_name(room):
            return header
    folder = Path(room)
    shown = folder.relative_to("Frameworks") if folder.parts[0] == "Frameworks" else folder.name
    return f"{shown}/Something.h"


def wrong_includes():
    """Source, its text, and what is to be said of it: each room includes one that it may not."""
    for room, included in floors.ROOMS.items():
        allowed = {floors.short_name(room), *included}
        other = next((other for other in floors.ROOMS if floors.short_name(other) not in allowed), None)
        if other is not None:
            name = include_line(other)
            yield (f"{room}/Wrong.cpp", f'#include "{name}"\n',
                   f"includes {name}, and {floors.short_name(room)} may not include {floors.short_name(other)}")
    yield ("Frameworks/include/QRVLogger/Wrong.h", '#include "QRVSettings/QRVSettings.h"\n',
           "includes QRVSettings/QRVSettings.h, and QRVLogger may not include QRVSettings")
    yield (f"{STORE}/System.cpp", "#include <unistd.h>\n", "includes the system header <unistd.h>")
    yield (f"{STORE}/Threads.h", "#  include <mutex>\n", "includes <mutex>, which the store leaves to Platform")
    yield (f"{STORE}/Roundabout.cpp", '#include "../Platform/Threads/Mutex.h"\n',
           "includes ../Platform/Threads/Mutex.h, and includes go by the names of rooms")
    yield "Frameworks/Nowhere.cpp", "", "lies in no room"


RIGHT_INCLUDES = {
    f"{STORE}/Right.cpp": '#include "Platform/System/System.h"\n#include "Right.h"\n#include <vector>\n#include <stdint.h>\n',
    "Frameworks/Platform/Threads/RightLinux.cpp": '#include <unistd.h>\n#include "Platform/Export.h"\n',
    "Frameworks/include/Platform/Dispatch/Adapters/Right.h": '#include <glib.h>\n#include "Platform/Dispatch/Dispatch.h"\n',
}


def write(path, text):
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(text)


def make_tree(root):
    for room in floors.ROOMS:
        (root / room).mkdir(parents=True, exist_ok=True)
    for header in {*floors.ROOM_OF_HEADER, *floors.INCLUDABLE_ANYWHERE}:
        write(root / floors.PUBLIC_FOLDER / header, "")
    for path, text in RIGHT_INCLUDES.items():
        write(root / path, text)


def said_of(root):
    result = subprocess.run([sys.executable, Path(floors.__file__).resolve()], cwd=root,
                            capture_output=True, text=True, check=False)
    return result.returncode, set(result.stdout.splitlines())


def main():
    with tempfile.TemporaryDirectory() as folder:
        root = Path(folder)
        make_tree(root)
        status, lines = said_of(root)
        if status != 0:
            print("A right tree is refused:", *sorted(lines), sep="\n")
            return 1
        wanted = {"Frameworks/Platform/util: a folder of that name has no subject"}
        (root / "Frameworks/Platform/util").mkdir()
        for path, text, problem in wrong_includes():
            write(root / path, text)
            wanted.add(f"{path}: {problem}")
        status, lines = said_of(root)
        problems = [f"not said: {line}" for line in sorted(wanted - lines)]
        problems += [f"said without reason: {line}" for line in sorted(lines - wanted)]
        if status == 0:
            problems.append("the exit status is that of success")
        print("\n".join(problems) or f"{len(wanted)} wrong places were found")
        return 1 if problems else 0


sys.exit(main())
