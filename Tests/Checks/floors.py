# SPDX-License-Identifier: MIT
"""Rooms: a room includes those below it, never the reverse; one door to the system."""

import re
import sys
from pathlib import Path

PLATFORM = ("Threads", "Descriptors", "Values", "PropertyLists", "Log", "Files", "Machine", "Dispatch",
            "Presenters", "Coordination")
BELOW_THE_WINDOW = ("Values", "PropertyLists", "Log", "Files", "Machine", "Dispatch", "Presenters", "Coordination",
                    "QRVSettings", "QRVHistory", "Reporting", "Text", "Settings", "Doctor", "History", "Rows", "Edits")
# Every room with the rooms that it may include besides itself. A room comes after those that it
# includes, so that there is no circle. Tools and examples see public headers only, because no other
# header lies on their include path.
ROOMS = {
    "Frameworks/Platform/Threads": (),
    "Frameworks/Platform/Descriptors": ("Threads",),
    "Frameworks/Platform/Values": ("Threads",),
    "Frameworks/Platform/PropertyLists": ("Values",),
    "Frameworks/Platform/Log": ("Threads", "Values"),
    "Frameworks/Platform/Files": ("Threads", "Descriptors", "Values"),
    "Frameworks/Platform/Machine": ("Threads", "Files", "Log"),
    "Frameworks/Platform/Dispatch": ("Threads", "Descriptors", "Files"),
    "Frameworks/Platform/Presenters": ("Threads", "Descriptors", "Values", "Files", "Dispatch"),
    "Frameworks/Platform/Coordination": ("Threads", "Descriptors", "Files", "Presenters"),
    "Frameworks/QRVLogger": PLATFORM,
    "Frameworks/QRVSettings": (*PLATFORM, "QRVLogger"),
    "Frameworks/QRVHistory": ("Values", "PropertyLists", "Log", "Files", "Dispatch", "QRVSettings"),
    "Tools/settings-editing/Reporting": (),
    "Tools/settings-editing/Text": ("Values", "PropertyLists", "QRVSettings", "Reporting"),
    "Tools/settings-editing/History": ("Values", "QRVSettings", "QRVHistory", "Reporting", "Text"),
    "Tools/settings-editing/Settings": ("Values", "PropertyLists", "Log", "Files", "Coordination",
                                        "QRVLogger", "QRVSettings", "Reporting", "Text"),
    "Tools/settings-editing/Doctor": ("Values", "PropertyLists", "Files", "Presenters", "QRVSettings", "Reporting",
                                      "Text", "Settings"),
    "Tools/settings-editing/Rows": ("Values", "QRVSettings", "Reporting", "Text", "Settings"),
    "Tools/settings-editing/Edits": ("Values", "PropertyLists", "Log", "Files", "QRVSettings", "QRVHistory", "Reporting", "Text",
                                     "History", "Settings", "Rows"),
    "Tools/qrvsettings/Process": ("PropertyLists", "Files", "Reporting"),
    "Tools/qrvsettings/Options": ("QRVSettings", "Reporting", "Text", "Settings", "Process", "History"),
    "Tools/qrvsettings/Commands": ("Values", "PropertyLists", "Log", "Files", "Machine", "Dispatch",
                                   "QRVSettings", "Reporting", "Text", "Settings", "Doctor", "Rows", "Edits",
                                   "Process", "History", "Options"),
    "Tools/qrvsettings/Parser": ("Reporting", "Text", "Process", "Options", "Commands"),
    "Tools/qrvsettings": ("Log", "Reporting", "Process", "History", "Parser"),
    "Tools/qrvsettings-window/Translations": (),
    "Tools/qrvsettings-window/Look": ("Values", "Machine", "QRVSettings", "Reporting", "Text"),
    "Tools/qrvsettings-window/Session": (*BELOW_THE_WINDOW, "Look"),
    "Tools/qrvsettings-window/Editors": (*BELOW_THE_WINDOW, "Look", "Session"),
    "Tools/qrvsettings-window/Table": (*BELOW_THE_WINDOW, "Look", "Session", "Editors"),
    "Tools/qrvsettings-window/Panes": (*BELOW_THE_WINDOW, "Look", "Session", "Editors"),
    "Tools/qrvsettings-window/Dialogs": (*BELOW_THE_WINDOW, "Look", "Session", "Editors"),
    "Tools/qrvsettings-window/Main": (*BELOW_THE_WINDOW, "Look", "Session", "Editors", "Table", "Panes", "Dialogs"),
    "Tools/qrvsettings-window": (*BELOW_THE_WINDOW, "Translations", "Look", "Session", "Panes", "Main"),
    "Examples": (*PLATFORM, "QRVLogger", "QRVSettings", "QRVHistory"),
}
# Public headers keep the include lines of hosts: these do not lie in a folder named after their room.
ROOM_OF_HEADER = {
    "Platform/Files/NSFileCoordinator.h": "Coordination",
    "Platform/Files/NSFilePresenter.h": "Presenters",
    "Platform/System/NSAppearance.h": "Machine",
    "Platform/System/System.h": "Log",
    "Platform/System/Terminal.h": "Log",
}
INCLUDABLE_ANYWHERE = {"Platform/Export.h"}
PUBLIC_FOLDER = "Frameworks/include"
# C++ headers that the store must not use: it has no system call, thread or lock of its own.
KEPT_FROM_THE_STORE = {
    "thread", "mutex", "shared_mutex", "condition_variable", "future", "semaphore", "barrier",
    "latch", "fstream", "filesystem", "cstdlib", "csignal",
}
# What C itself defines; a header that C includes cannot name them otherwise.
OF_THE_LANGUAGE = {"stdbool.h", "stddef.h", "stdint.h"}
FORBIDDEN_FOLDERS = {"util", "utils", "common"}
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)


def short_name(room):
    return room.split("/")[-1]


def room_of_include(name):
    """The short name of the room that an include line leads to; None for a file beside the includer."""
    if name in ROOM_OF_HEADER:
        return ROOM_OF_HEADER[name]
    for folder in list(Path(name).parents)[:-1]:
        for room in ROOMS:
            if f"/{room}".endswith(f"/{folder}"):
                return short_name(room)
    return None


def room_of_file(path):
    if path.is_relative_to(PUBLIC_FOLDER):
        short = room_of_include(path.relative_to(PUBLIC_FOLDER).as_posix())
        return next((room for room in ROOMS if short_name(room) == short), None)
    rooms = [room for room in ROOMS if path.is_relative_to(room)]
    return max(rooms, key=len, default=None)


def is_system_header(name):
    return name.endswith(".h") and name not in OF_THE_LANGUAGE


def is_adapter(path):
    """An adapter is the host's code: it joins ours to another library."""
    return path.parent.name == "Adapters"


def may_include_system_headers(path):
    return path.name.endswith("Linux.cpp") or is_adapter(path)


def problems_of(path):
    room = room_of_file(path)
    if room is None:
        yield "lies in no room"
        return
    allowed = {short_name(room), *ROOMS[room]}
    for bracket, name in INCLUDE.findall(path.read_text()):
        if ".." in Path(name).parts:
            yield f"includes {name}, and includes go by the names of rooms"
        if bracket == '"' and name not in INCLUDABLE_ANYWHERE:
            target = room_of_include(name)
            if target is not None and target not in allowed:
                yield f"includes {name}, and {short_name(room)} may not include {target}"
        if bracket == "<" and is_system_header(name) and not may_include_system_headers(path):
            yield f"includes the system header <{name}>"
        if (bracket == "<" and room == "Frameworks/QRVSettings" and name in KEPT_FROM_THE_STORE
                and not is_adapter(path)):
            yield f"includes <{name}>, which the store leaves to Platform"


def problems_of_the_table():
    seen = []
    for room, included in ROOMS.items():
        if not Path(room).is_dir():
            yield f"{room}: a room of the table that is not there"
        yield from (f"{room}: may include {other}, which is not below it"
                    for other in included if other not in seen)
        seen.append(short_name(room))
    for header in {*ROOM_OF_HEADER, *INCLUDABLE_ANYWHERE}:
        if not (Path(PUBLIC_FOLDER) / header).is_file():
            yield f"{header}: not among the public headers"


def main():
    problems = list(problems_of_the_table())
    sources = 0
    for floor in ("Frameworks", "Tools", "Examples"):
        for path in sorted(Path(floor).rglob("*")):
            if path.is_dir() and path.name.lower() in FORBIDDEN_FOLDERS:
                problems.append(f"{path}: a folder of that name has no subject")
            if path.suffix in {".h", ".cpp"} and path.name != "Export.h":
                sources += 1
                problems += [f"{path}: {problem}" for problem in problems_of(path)]
    print("\n".join(problems) or f"{sources} sources keep to {len(ROOMS)} rooms")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
