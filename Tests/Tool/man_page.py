# SPDX-License-Identifier: MIT
"""The manual page has every command and option that --help names, and no others, and its exit codes with
their meanings.

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
    options = set(re.findall(r"^  (?:-\w, )?(--[a-z-]+)", text, re.MULTILINE))
    listed = text.partition("\nCommands:\n")[2].partition("\n\n")[0]
    is_whole = re.search(r"^Usage: .* COMMAND \[ARGUMENT\.\.\.\]$", text, re.MULTILINE) is None
    return options, re.findall(r"^  ([a-z]+) ", listed, re.MULTILINE), is_whole


def helped(tool, command=()):
    """The options of each command that may stand without a further one, and of the program."""
    options, parts, is_whole = help_of(tool, command)
    found = {} if command and not is_whole else {command: options - EVERYWHERE if command else options}
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


def exit_codes_of_help(tool):
    text = subprocess.run([tool, "--help"], capture_output=True, text=True, check=True).stdout
    listed = text.partition("Exit codes:\n")[2].partition("\n\n")[0]
    listed = re.sub(r"\n {5}", " ", listed)
    return dict(re.findall(r"^  (\d)  (.+)$", listed, re.MULTILINE))


def exit_codes_of_page(page):
    section = page.partition("\n.SH EXIT STATUS\n")[2].partition("\n.SH ")[0]
    found = {}
    for entry in section.split(".TP\n")[1:]:
        code, *lines = entry.removeprefix(".B ").strip().splitlines()
        found[code] = " ".join(plain(line) for line in lines)
    return found


def plain(line):
    """The text of a line; a request for alternating fonts joins its words."""
    line = line.replace("\\-", "-")
    return line.removeprefix(".RB ").replace(" ", "") if line.startswith(".RB ") else line


def problems_of_exit_codes(tool, page):
    codes = exit_codes_of_help(tool)
    there = exit_codes_of_page(page)
    if len(codes) < 2:
        yield "the help names no exit codes"
    yield from (f"exit code {code} is {codes.get(code)!r} in the help, {there.get(code)!r} in the page"
                for code in sorted(codes.keys() | there.keys()) if codes.get(code) != there.get(code))


def main():
    tool, page = sys.argv[1:]
    wanted = helped(tool)
    there = documented(Path(page).read_text())
    problems = list(problems_of_exit_codes(tool, Path(page).read_text()))
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
