# SPDX-License-Identifier: MIT
"""The manual page has every command and option that --help names, and no others.

    man_page.py TOOL PAGE
"""

import re
import subprocess
import sys
from pathlib import Path

# Stand with every command in its help, and once in the page.
EVERYWHERE = {"--help", "--quiet"}


def help_of(tool, command):
    text = subprocess.run([tool, *command, "--help"], capture_output=True, text=True, check=True).stdout
    options = set(re.findall(r"^  (?:-\w,)?(--[a-z-]+)", text, re.MULTILINE))
    listed = text.partition("Subcommands:\n")[2]
    return options, re.findall(r"^  ([a-z]+) ", listed, re.MULTILINE)


def helped(tool, command=()):
    """The options of each command that takes no further command, and of the program."""
    options, parts = help_of(tool, command)
    found = {} if parts and command else {command: options - EVERYWHERE if command else options}
    for part in parts:
        found |= helped(tool, (*command, part))
    return found


def words_of_command(heading):
    return tuple(word for word in heading.split() if re.fullmatch("[a-z]+", word))


def documented(page):
    found = {}
    command = None
    is_tag = False
    for line in page.replace("\\-", "-").splitlines():
        if line.startswith(".SH "):
            command = () if line == ".SH OPTIONS" else None
        elif line.startswith(".SS "):
            command = words_of_command(line[4:])
        elif is_tag and command is not None:
            found[command] |= set(re.findall(r"--[a-z-]+", line))
        is_tag = line == ".TP"
        if command is not None:
            found.setdefault(command, set())
    return found


def main():
    tool, page = sys.argv[1:]
    wanted = helped(tool)
    there = documented(Path(page).read_text())
    problems = []
    for command in sorted(wanted.keys() | there.keys()):
        name = " ".join(("qrvsettings", *command))
        if command not in there:
            problems.append(f"{name} is in no section of the page")
        elif command not in wanted:
            problems.append(f"{name} is in the page, and no command")
        else:
            problems += [f"{name} {option} is not in the page" for option in wanted[command] - there[command]]
            problems += [f"{name} {option} is in the page, and no option" for option in there[command] - wanted[command]]
    if len(wanted) < 2:
        problems.append("the help names no commands")
    print("\n".join(problems) or f"{len(wanted) - 1} commands are documented")
    return 1 if problems else 0


sys.exit(main())
