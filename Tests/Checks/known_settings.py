# SPDX-License-Identifier: MIT
"""The manual page of the settings file lists the settings that are known, as their table has them.

    python3 known_settings.py            compares
    python3 known_settings.py --write    writes the list into the page
"""

import re
import sys
from pathlib import Path

TABLE = Path("Frameworks/include/QRVSettings/KnownSettingsTable.h")
DEFAULTS = Path("Frameworks/QRVSettings/QRVSettings+Defaults.cpp")
PAGE = Path("Documentation/man/qrvsettings.5")
ENTRY = re.compile(r'^QRV_SETTING\("([^"]+)", (\S+), (\w+),\s+(\w+), (.+), (\w+),\s+"((?:[^"\\]|\\.)*)"\)$',
                   re.MULTILINE)
# Between these lines of the page.
START = ".\\\" The known settings: Tests/Checks/known_settings.py writes them.\n"
END = ".\\\" End of the known settings.\n"
KINDS = {"Null": "Any type"}
PLACES = {"Application": "", "Profile": ", in each profile", "Record": ", a record of the store"}


def entries():
    table = TABLE.read_text()
    found = ENTRY.findall(table)
    if len(found) != len(re.findall(r"^QRV_SETTING\(", table, re.MULTILINE)):
        sys.exit(f"{TABLE} has entries in a form that {sys.argv[0]} cannot read")
    return found


def default_text(expression, constants):
    """What the page says of a default; arrays and dictionaries are left to the tool."""
    text = constants.get(expression, expression)
    return f", {text} by default" if re.fullmatch(r'-?\d+|true|false|"[^"]*"', text) else ""


def page_text(text):
    return text.replace('\\"', '"').replace("-", "\\-")


def paragraph(entry, constants):
    key_path, _, _, kind, default, scope, sentence = entry
    what = KINDS.get(kind, kind) + default_text(default, constants) + PLACES[scope]
    return f".TP\n.B {key_path}\n{page_text(what)}.\n{page_text(sentence)}\n"


def listed():
    constants = dict(re.findall(r'constexpr const char\* (\w+) = ("[^"]*");', DEFAULTS.read_text()))
    return "".join(paragraph(entry, constants) for entry in entries())


def main():
    page = PAGE.read_text()
    before, start, rest = page.partition(START)
    in_page, end, after = rest.partition(END)
    if not start or not end:
        print(f"{PAGE}: the lines that enclose the known settings are not there")
        return 1
    if sys.argv[1:] == ["--write"]:
        PAGE.write_text(before + start + listed() + end + after)
        return 0
    if in_page != listed():
        print(f"{PAGE}: the known settings are not those of {TABLE}; python3 {sys.argv[0]} --write writes them")
        return 1
    print(f"{len(entries())} settings are in the manual page as in their table")
    return 0


sys.exit(main())
