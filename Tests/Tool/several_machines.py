# SPDX-License-Identifier: MIT
"""Machines share settings by Git, by a synchroniser's copies and by files of the site, with the commands that
qrvsettings(7) shows, taken from the page. The README shows some of them.

    several_machines.py TOOL PAGE README

Skipped (exit code 77) where there is no git.
"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

SKIPPED = 77


def commands_of(page, heading):
    """The examples of a section, as they are typed."""
    section = re.split(r"\n\.S[SH] ", page.partition(f"\n.SS {heading}\n")[2])[0]
    return [block.replace("\\-", "-") for block in re.findall(r"\.EX\n(.*?)\.EE", section, re.DOTALL)]


def require_same_commands(page, readme):
    block = readme.partition("\n## Settings of several machines\n")[2].partition("```sh\n")[2].partition("```")[0]
    shown = "".join(commands_of(page, "Settings in a Git repository")).splitlines()
    lines = [re.sub(r"  +# .*", "", line) for line in block.splitlines()]
    if not lines or not all(line in shown for line in lines):
        raise AssertionError(f"the README has other commands than the page: {lines}")


class Machine:
    """A user's home folder with a clone of the repository."""

    def __init__(self, folder, name, tool):
        self.home = folder / name
        self.clone = self.home / "dotfiles"
        self.home.mkdir()
        self.environment = {
            "PATH": f"{Path(tool).resolve().parent}:{os.environ['PATH']}", "HOME": str(self.home), "LC_ALL": "C.UTF-8",
            "GIT_CONFIG_NOSYSTEM": "1", "GIT_AUTHOR_NAME": name, "GIT_AUTHOR_EMAIL": f"{name}@example.org",
            "GIT_COMMITTER_NAME": name, "GIT_COMMITTER_EMAIL": f"{name}@example.org",
            **{name: value for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")}}

    def run(self, lines, expected=0):
        result = subprocess.run(["sh", "-e", "-c", lines], cwd=self.clone if self.clone.exists() else self.home,
                                env=self.environment, capture_output=True, text=True)
        if result.returncode != expected:
            raise AssertionError(f"{lines}\nended with {result.returncode}:\n{result.stdout}{result.stderr}")
        return result.stdout + result.stderr

    def expect(self, key_path, value):
        found = self.run(f"qrvsettings get --layer stored {key_path} || true").splitlines()[0]
        if found != value:
            raise AssertionError(f"{key_path} is {found} in {self.home.name}, not {value}")


def expect_in(text, *parts):
    for part in parts:
        if part not in text:
            raise AssertionError(f'"{part}" is not in:\n{text}')


def machine_has_id():
    """Without one, the settings of its hardware are reset at each start."""
    file = Path("/etc/machine-id")
    return file.exists() and file.read_text().strip() not in ("", "uninitialized")


def share(page, folder, tool):
    create, configure, take, exchange, keep, take_theirs = commands_of(page, "Settings in a Git repository")
    subprocess.run(["git", "init", "-q", "--bare", "-b", "main", folder / "repository"], check=True)
    first, second = (Machine(folder, name, tool) for name in ("first", "second"))
    first.run("git clone -q ../repository dotfiles")
    first.run("qrvsettings set CPU.Menubar.Width 40; qrvsettings set Network.Menubar.Global.PrimaryInterface eth0")
    first.run(create + "git push -q origin HEAD:main; git branch -q -u origin/main")
    first.run(configure)
    second.run("git clone -q ../repository dotfiles")
    second.run("qrvsettings set Network.Menubar.Global.PrimaryInterface wlan0")
    second.run(configure + take)
    second.expect("CPU.Menubar.Width", "40")

    # Different settings.
    first.run("qrvsettings set CPU.Menubar.Width 60")
    first.run(exchange)
    second.run("qrvsettings set Memory.Menubar.Width 50")
    second.run(exchange)
    first.run(exchange)
    for machine in first, second:
        machine.expect("CPU.Menubar.Width", "60")
        machine.expect("Memory.Menubar.Width", "50")
    if machine_has_id():
        first.expect("Network.Menubar.Global.PrimaryInterface", "eth0")
        second.expect("Network.Menubar.Global.PrimaryInterface", "wlan0")

    # The same setting: what Git leaves, and both ways on.
    for number, (way_on, kept) in enumerate(((keep, "2"), (take_theirs, "1")), 1):
        first.run(f"qrvsettings set CPU.Menubar.Width {number}1; qrvsettings set First {number}")
        first.run(exchange)
        second.run(f"qrvsettings set CPU.Menubar.Width {number}2; qrvsettings set Second {number}")
        said = second.run(exchange, expected=1)
        expect_in(said, "qrvsettings: conflict, CPU.Menubar.Width: base ", f"ours {number}2, theirs {number}1",
                  "CONFLICT (content): Merge conflict in settings.plist")
        expect_in(second.run("git status --short"), "UU settings.plist")
        expect_in(second.run("cat settings.plist"), f"<integer>{number}2</integer>", "<key>First</key>")
        second.run(way_on)
        second.run("qrvsettings import --portable settings.plist")
        second.run(exchange)
        first.run(exchange)
        for machine in first, second:
            machine.expect("CPU.Menubar.Width", f"{number}{kept}")
            machine.expect("First", str(number))
            machine.expect("Second", str(number))


def take_copy(page, folder, tool):
    (command,) = commands_of(page, "Conflict copies of a file synchroniser")
    machine = Machine(folder, "synchronised", tool)
    machine.run("qrvsettings set A 1; qrvsettings set B 1")
    machine.run('cp "$(qrvsettings path)" copy')
    machine.run("qrvsettings set A 2; qrvsettings set C 3; qrvsettings unset B")
    machine.run(command)
    for key_path, value in (("A", "1"), ("B", "1"), ("C", "3")):
        machine.expect(key_path, value)


def fill_site(page, folder, tool):
    site_file, install, show = commands_of(page, "A fleet")
    user = Machine(folder, "user", tool)
    site = folder / "site"
    user.environment["XDG_CONFIG_DIRS"] = str(site)
    user.run("qrvsettings set UpdateFrequency 5")
    (user.home / "site.plist").write_text(site_file)
    user.run(install.replace("/etc/xdg", str(site)))
    expect_in(user.run(show), "UpdateFrequency\t3\n", str(site))
    expect_in(user.run("qrvsettings get UpdateFrequency"), "3\n")
    expect_in(user.run("qrvsettings set UpdateFrequency 6", expected=5), "UpdateFrequency")


def main():
    tool, page, readme = sys.argv[1:]
    if shutil.which("git") is None:
        print("there is no git")
        return SKIPPED
    text = Path(page).read_text()
    require_same_commands(text, Path(readme).read_text())
    with tempfile.TemporaryDirectory() as folder:
        share(text, Path(folder), tool)
        take_copy(text, Path(folder), tool)
        fill_site(text, Path(folder), tool)
    print("machines share settings")
    return 0


sys.exit(main())
