# SPDX-License-Identifier: MIT
"""The manual page of the settings file, and the tool's explanations and completion, have the settings that are
known, as their table has them.

    python3 known_settings.py [TOOL]     compares
    python3 known_settings.py --write    writes the list into the page
"""

import json
import re
import subprocess
import sys
import tempfile
from pathlib import Path

TABLE = Path("Frameworks/include/QRVSettings/KnownSettingsTable.h")
DEFAULTS = Path("Frameworks/QRVSettings/QRVSettings+Defaults.cpp")
PAGE = Path("Documentation/man/qrvsettings.5")
ENTRY = re.compile(r'^QRV_SETTING\("([^"]+)", (\S+), (\w+),\s+(\w+), (.+), (\w+),\s+"((?:[^"\\]|\\.)*)"\)$',
                   re.MULTILINE)
# Between these lines of the page.
START = ".\\\" The known settings: Tests/Checks/known_settings.py writes them.\n"
END = ".\\\" End of the known settings.\n"
KINDS = {"Null": "Any kind"}
PLACES = {"Application": "", "Profile": ", of each profile", "Record": ", record of the store"}


def entries():
    table = TABLE.read_text()
    found = ENTRY.findall(table)
    if len(found) != len(re.findall(r"^QRV_SETTING\(", table, re.MULTILINE)):
        sys.exit(f"{TABLE} has entries in a form that {sys.argv[0]} cannot read")
    return found


def default_text(expression, constants):
    """What the page says of a default; arrays and dictionaries are left to the tool."""
    text = constants.get(expression, expression)
    return f", default {text}" if re.fullmatch(r'-?\d+|true|false|"[^"]*"', text) else ""


def page_text(text):
    return text.replace('\\"', '"').replace("-", "\\-")


def paragraph(entry, constants):
    key_path, _, _, kind, default, scope, sentence = entry
    what = KINDS.get(kind, kind) + default_text(default, constants) + PLACES[scope]
    return f".TP\n.B {key_path}\n{page_text(what)}.\n{page_text(sentence)}\n"


def listed():
    constants = dict(re.findall(r'constexpr const char\* (\w+) = ("[^"]*");', DEFAULTS.read_text()))
    return "".join(paragraph(entry, constants) for entry in entries())


def problems_of_page():
    _, start, rest = PAGE.read_text().partition(START)
    in_page, end, _ = rest.partition(END)
    if not start or not end:
        yield f"{PAGE}: the lines that enclose the known settings are not there"
    elif in_page != listed():
        yield f"{PAGE}: the known settings are not those of {TABLE}; python3 {sys.argv[0]} --write writes them"


def write_page():
    before, _, rest = PAGE.read_text().partition(START)
    PAGE.write_text(before + START + listed() + END + rest.partition(END)[2])


def output(tool, *arguments):
    """Of the tool as a user has it who has no settings, and whose applications have installed no lists."""
    with tempfile.TemporaryDirectory() as home:
        places = ("HOME", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_DATA_HOME", "XDG_DATA_DIRS", "XDG_STATE_HOME")
        return subprocess.run([tool, *arguments], env=dict.fromkeys(places, home), capture_output=True, text=True,
                              check=True).stdout


def has_default(key_path, default):
    """The default of a level is made of those below it."""
    return default != "nullptr" or any(other[0].startswith(key_path + ".") for other in entries())


def problems_of_tool(tool):
    wanted = [{"keyPath": key_path, "kind": "any" if kind == "Null" else kind.lower(), "scope": scope.lower(),
               "sentence": sentence.replace('\\"', '"'), "hasDefault": has_default(key_path, default)}
              for key_path, _, _, kind, default, scope, sentence in entries()]
    described = json.loads(output(tool, "describe", "--json"))
    found = [{**{name: setting[name] for name in ("keyPath", "kind", "scope", "sentence")},
              "hasDefault": setting["default"] is not None} for setting in described]
    yield from (f"describe has {setting}, which is not in {TABLE}" for setting in found if setting not in wanted)
    yield from (f"describe lacks {setting}" for setting in wanted if setting not in found)
    candidates = output(tool, "completion", "candidates", "--", "describe", "").splitlines()
    offered = [f'{setting["keyPath"]}\t{setting["sentence"]}' for setting in wanted]
    if candidates != offered:
        yield f"the completion offers {sorted(set(candidates) ^ set(offered))} otherwise than {TABLE}"


def main():
    if sys.argv[1:] == ["--write"]:
        write_page()
    problems = list(problems_of_page())
    for tool in sys.argv[1:]:
        problems += problems_of_tool(tool) if tool != "--write" else []
    print("\n".join(problems) or f"{len(entries())} settings are everywhere as in their table")
    return 1 if problems else 0


sys.exit(main())
