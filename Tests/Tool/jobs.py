# SPDX-License-Identifier: MIT
"""Does the jobs of a page with the commands that it shows, and compares every line that they print with the page.

    jobs.py TOOL PAGE            compares
    jobs.py TOOL PAGE --write    writes into the page what the commands print

Each job has a home folder of its own. A command that ends in "&" goes on while the next ones run; what the page
shows below it is waited for. Skipped (exit code 77) where a program of a job is missing and the others are done.
"""

import difflib
import json
import os
import re
import selectors
import shlex
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

SKIPPED = 77
MOST_SECONDS = 120
END = "\x01"
JOBS = 20
PROGRAMS = ("jq", "script")  # that a machine may lack
BLOCK = re.compile(r"(?<=^```console\n).*?(?=^```$)", re.DOTALL | re.MULTILINE)

# As sshd does it: no terminal, a home folder of its own, few variables.
SSH = """host="$1"; shift
mkdir -p "$HOME/../$host"
cd "$HOME/../$host" && exec env -i HOME="$PWD" PATH="$PATH" sh -c "$*"
"""


class Shell:
    """A shell that gets one command after the other, as at a terminal."""

    def __init__(self, home, environment):
        reading, self.commands = os.pipe()
        self.process = subprocess.Popen(
            ["bash", f"/dev/fd/{reading}"], cwd=home, env=environment, pass_fds=[reading], stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True)
        os.close(reading)
        self.selector = selectors.DefaultSelector()
        self.selector.register(self.process.stdout, selectors.EVENT_READ)
        self.unread = ""

    def read_until(self, is_enough):
        deadline = time.monotonic() + MOST_SECONDS
        while not is_enough(self.unread) and time.monotonic() < deadline:
            if self.selector.select(deadline - time.monotonic()):
                piece = os.read(self.process.stdout.fileno(), 65536)
                if not piece:
                    break
                self.unread += piece.decode()
        text, self.unread = self.unread, ""
        return text

    def run(self, command, shown_lines):
        """What the command prints; of one in the background, as many lines as the page shows."""
        os.write(self.commands, f"{command}\n(status=$?; printf '{END}'; exit $status)\n".encode())
        printed = self.read_until(lambda text: END in text)
        if END not in printed:
            raise AssertionError(f"no end after {MOST_SECONDS} s: {command}\n{printed}")
        printed = printed.replace(END, "")
        if command.endswith("&"):
            self.unread = printed
            printed = self.read_until(lambda text: text.count("\n") >= shown_lines)
        return printed

    def close(self):
        os.close(self.commands)
        self.process.stdout.close()
        self.process.wait(MOST_SECONDS)


def commands_of(block):
    """Pairs of a command, with the lines that continue it, and what the page shows below it."""
    pairs = []
    for line in block.splitlines(keepends=True):
        if line.startswith("$ "):
            pairs.append([line[2:], ""])
        elif line.startswith("> "):
            pairs[-1][0] += line[2:]
        else:
            pairs[-1][1] += line
    return [(command.rstrip("\n"), shown) for command, shown in pairs]


def shown_command(command):
    return "$ " + command.replace("\n", "\n> ") + "\n"


def comparable(text):
    """Without what differs each time."""
    text = re.sub(r"\d{4}-\d\d-\d\d \d\d:\d\d:\d\d", "2026-11-22 09:30:00", text)
    return re.sub(r"qrvsettings\[\d+\]", "qrvsettings[4711]", text)


def saves_in(home, environment):
    """The numbers of the saves in the history, in their order. They may have gaps; the page has none."""
    printed = subprocess.run(["qrvsettings", "history", "--json"], cwd=home, env=environment, capture_output=True,
                             text=True, check=False).stdout
    return [json.loads(line)["id"] for line in printed.splitlines()]


def with_own_save(command, home, environment):
    """The command, where it names a save as the page numbers it."""
    return re.sub(r"(?<=qrvsettings undo )\d+", lambda number: str(
        saves_in(home, environment)[int(number.group()) - 1]), command)


def with_saves_of_page(printed, home, environment):
    pattern = re.compile(r"^\d+(?=  \d{4}-)|(?<=\(save )\d+(?=\)$)", re.MULTILINE)
    if not pattern.search(printed):
        return printed
    saves = saves_in(home, environment)
    return pattern.sub(lambda number: str(saves.index(int(number.group())) + 1), printed)


def write_program(path, text):
    path.write_text(f"#!/bin/sh\n{text}\n")
    path.chmod(0o755)


def environment_of(home, programs, tool):
    """With a tool that keeps the options of its sanitizers where the page clears the environment."""
    sanitizers = [f"{name}={shlex.quote(value)}" for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")]
    write_program(programs / "qrvsettings", f'exec env {" ".join(sanitizers)} {shlex.quote(str(tool))} "$@"')
    write_program(programs / "ssh", SSH)
    return {"PATH": f"{programs}:{os.environ['PATH']}", "HOME": str(home), "LC_ALL": "C.UTF-8", "TZ": "UTC",
            "TERM": "xterm-256color"}


def do_job(job, tool):
    """The job's section of the page, with what its commands print now."""
    with tempfile.TemporaryDirectory() as folder:
        home, programs = Path(folder).resolve() / "me", Path(folder).resolve() / "programs"
        home.mkdir()
        programs.mkdir()
        environment = environment_of(home, programs, Path(tool).resolve())
        shell = Shell(home, environment)

        def filled(match):
            text = ""
            for command, shown in commands_of(match.group()):
                printed = shell.run(with_own_save(command, home, environment), shown.count("\n"))
                printed = with_saves_of_page(printed, home, environment)
                text += shown_command(command) + comparable(printed.replace(str(home.parent), "/home"))
            return text

        try:
            return BLOCK.sub(filled, job)
        finally:
            shell.close()


def main():
    tool, page = sys.argv[1], Path(sys.argv[2])
    head, *jobs = re.split(r"^(?=## )", page.read_text(), flags=re.MULTILINE)
    missing = [program for program in PROGRAMS if shutil.which(program) is None]
    left_out = {job for job in jobs if any(re.search(rf"\b{program} -", job) for program in missing)}
    done = [job if job in left_out else do_job(job, tool) for job in jobs]
    if sys.argv[3:] == ["--write"]:
        page.write_text(head + "".join(done))
        return 0
    problems = [difference for job, now in zip(jobs, done) if comparable(job) != now
                for difference in difflib.unified_diff(comparable(job).splitlines(), now.splitlines(), page.name,
                                                       "printed now", lineterm="")]
    if len(jobs) != JOBS:
        problems.append(f"{len(jobs)} jobs, not {JOBS}")
    if problems:
        print("\n".join(problems))
        return 1
    print(f"{len(jobs) - len(left_out)} jobs are done as {page.name} shows; missing programs: {missing or 'none'}")
    return SKIPPED if left_out else 0


sys.exit(main())
