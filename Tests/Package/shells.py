# SPDX-License-Identifier: MIT
"""A shell that is started as usual finds the completion of an installed copy, and offers what the tool tells.

    python3 shells.py bash|zsh|fish PREFIX FOLDER

Skipped (exit code 77) where the shell is not installed. FOLDER is of the test's own.
"""

import os
import pty
import re
import select
import shutil
import signal
import subprocess
import sys
import time
from pathlib import Path

SKIPPED = 77
SECONDS = 120
LOADER_OF_BASH = Path("/usr/share/bash-completion/bash_completion")
PLACE_OF_ZSH = "/usr/share/zsh/vendor-completions"

ODD = "odd:one\\2 $(touch hit)"
KEY_PATH = "CPU.Menubar.Enabled"
SENTENCE = "Print the value of a setting in each layer, and which layer answers"
OPTION = "Print every value as JSON, not only dictionaries and arrays"


class Failure(Exception):
    pass


def output_of(command, environment, folder):
    result = subprocess.run(command, env=environment, cwd=folder, capture_output=True, text=True, check=False,
                            timeout=SECONDS)
    if result.returncode or result.stderr:
        raise Failure(f"{command[0]} ends with status {result.returncode}:\n{result.stdout}{result.stderr}")
    return result.stdout


def known_line(environment, folder):
    """What the tool tells of a known setting: its key path, a tab and a sentence."""
    line = output_of(["qrvsettings", "completion", "candidates", "--", "get", KEY_PATH], environment, folder).strip()
    if not re.fullmatch(rf"{KEY_PATH}\t\S.*", line):
        raise Failure(f"the tool tells {line!r}")
    return line


def expect(offered, line, wanted):
    if offered != wanted:
        raise Failure(f'offered for "{line}": {offered!r} instead of {wanted!r}')


# bash has no place for sentences, and quotes what it inserts.
IN_BASH = r"""
. "$1"
_completion_loader qrvsettings || [ $? -eq 124 ]
[[ $(complete -p qrvsettings) == *'-F _qrvsettings'* ]] || exit 9
shift
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
_qrvsettings qrvsettings "${COMP_WORDS[COMP_CWORD]}"
printf '%s\n' "${COMPREPLY[@]}"
"""


def bash(environment, folder, prefix):
    if not LOADER_OF_BASH.exists():
        return SKIPPED
    for line, wanted in (("qrvsettings ex", ["explain", "export"]),
                         ("qrvsettings get --js", ["--json"]),
                         ("qrvsettings get CPU.Menubar.E", [KEY_PATH]),
                         ("qrvsettings get odd", [r"odd:one\\2\ \$\(touch\ hit\)"])):
        command = ["bash", "--norc", "-c", IN_BASH, "bash", LOADER_OF_BASH, *line.split(" ")]
        expect(output_of(command, environment, folder).splitlines(), line, wanted)
    return 0


def fish(environment, folder, prefix):
    for line, wanted in (("qrvsettings expl", f"explain\t{SENTENCE}"),
                         ("qrvsettings get --js", f"--json\t{OPTION}"),
                         ("qrvsettings get CPU.Menubar.E", known_line(environment, folder)),
                         ("qrvsettings get --layer=st", "--layer=stored"),
                         ("qrvsettings get odd", ODD),
                         ("qrvsettings import settings.pl", "settings.plist")):
        expect(output_of(["fish", "-c", f"complete -C '{line}'"], environment, folder), line, f"{wanted}\n")
    return 0


class Terminal:
    """A shell at a terminal, where its user types."""

    def __init__(self, command, environment, folder):
        self.process, self.descriptor = pty.fork()
        if self.process == 0:
            os.chdir(folder)
            os.execvpe(command[0], command, environment)
        self.text = ""

    def expect(self, wanted):
        """Waits until this is on the screen, after what was waited for before."""
        end = time.monotonic() + SECONDS
        while wanted not in self.text:
            if time.monotonic() > end or not self.read(end - time.monotonic()):
                raise Failure(f"the terminal does not show {wanted!r}, but {self.text!r}")
        self.text = self.text[self.text.index(wanted) + len(wanted):]

    def read(self, seconds):
        if not select.select([self.descriptor], [], [], seconds)[0]:
            return False
        try:
            piece = os.read(self.descriptor, 65536).decode(errors="replace")
        except OSError:
            return False
        self.text = re.sub(r"\x1b(?:\[[0-9;?]*[A-Za-z]|[=>])|\r", "", self.text + piece)
        return True

    def type(self, keys):
        os.write(self.descriptor, keys.encode())

    def end(self):
        os.close(self.descriptor)
        os.kill(self.process, signal.SIGKILL)
        os.waitpid(self.process, 0)


IN_ZSH = """
PS1='ready> '
fpath=("$PLACE" $fpath)
autoload -Uz compinit
compinit -u -d "$HOME/dump"
"""
CLEAR = "\x15"  # the line that was typed


def zsh(environment, folder, prefix):
    places = output_of(["zsh", "-f", "-c", "print -l $fpath"], environment, folder).splitlines()
    if PLACE_OF_ZSH not in places:
        raise Failure(f"zsh looks for completions in {places}")
    sentence = known_line(environment, folder).split("\t")[1]
    place = prefix / PLACE_OF_ZSH.removeprefix("/usr/")
    Path(environment["HOME"], ".zshrc").write_text(IN_ZSH)
    shell = Terminal(["zsh", "-d", "-i"], {**environment, "PLACE": str(place), "TERM": "xterm", "COLUMNS": "200"}, folder)
    try:
        shell.expect("ready> ")
        # The first key loads the script, and has to complete as well.
        for typed, shown in (("qrvsettings ex\t\t", (f"explain  -- {SENTENCE}", "export   -- ")),
                             ("qrvsettings get --j\t", ("--json ",)),
                             ("qrvsettings get --\t\t", (f"--json     -- {OPTION}",)),
                             ("qrvsettings get CPU.Menubar.E\t", (f"{KEY_PATH} ",)),
                             ("qrvsettings get CPU.Menubar.\t\t", (f"{KEY_PATH}  ", f"-- {sentence}")),
                             ("qrvsettings get odd\t", (r"odd:one\\2\ \$\(touch\ hit\) ",)),
                             ("qrvsettings get --layer=st\t", ("--layer=stored ",)),
                             ("qrvsettings import settings.pl\t", ("settings.plist ",))):
            shell.type(CLEAR + typed)
            for text in shown:
                shell.expect(text)
    finally:
        shell.end()
    return 0


def main():
    shell, prefix, folder = sys.argv[1], Path(sys.argv[2]), Path(sys.argv[3])
    if shutil.which(shell) is None:
        print(f"{shell} is not installed")
        return SKIPPED
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    (folder / "settings.plist").touch()
    environment = {"PATH": f"{prefix}/bin:/usr/local/bin:/usr/bin:/bin", "HOME": str(folder), "LC_ALL": "C.UTF-8",
                   "XDG_CONFIG_HOME": str(folder), "XDG_CONFIG_DIRS": str(folder / "site"),
                   "XDG_DATA_DIRS": f"{prefix}/share:/usr/local/share:/usr/share"}
    try:
        output_of(["qrvsettings", "set", "--quiet", ODD, "1"], environment, folder)
        status = {"bash": bash, "zsh": zsh, "fish": fish}[shell](environment, folder, prefix)
        if (folder / "hit").exists():
            raise Failure("what a key path says was run")
    except Failure as failure:
        print(failure)
        return 1
    return status


sys.exit(main())
