# SPDX-License-Identifier: MIT
"""What the hot paths cost one thread, against the limits.

    counts.py instructions|allocations PROGRAM LIMITS            compares, and prints both
    counts.py instructions|allocations PROGRAM LIMITS --write    makes what is measured the figures of LIMITS

LIMITS has a line for each row: its name, instructions, allocations, all of one operation. What is measured may be
larger by a margin: the compiler, the C library and the random seed of the hashes move it a little. What allocates
nothing has none.
"""

import os
import plistlib
import re
import shutil
import subprocess
import sys
import tempfile
from pathlib import Path

# A factor, and what is added to it.
MARGINS = {"instructions": (1.15, 0), "allocations": (1.15, 0.05)}
COLUMNS = ("instructions", "allocations")
SKIPPED = 77


def run(command, folder):
    environment = {"PATH": os.environ["PATH"], "HOME": str(folder), "LC_ALL": "C", "XDG_CONFIG_HOME": str(folder),
                   "XDG_CONFIG_DIRS": str(folder / "site"), "XDG_RUNTIME_DIR": str(folder)}
    done = subprocess.run(list(map(str, command)), env=environment, capture_output=True, text=True)
    if done.returncode != 0:
        raise SystemExit(f"{' '.join(map(str, command))}: status {done.returncode}\n{done.stderr}{done.stdout}")
    return done.stdout


def prepare(program, folder):
    run([program, "prepare", folder], folder)
    settings, = (folder / "Preferences").glob("*.plist")
    binary = plistlib.dumps(plistlib.loads(settings.read_bytes()), fmt=plistlib.FMT_BINARY)
    (folder / "binary.plist").write_bytes(binary)


def rows_of(printed):
    """Operations and allocations by name, in the order of the program."""
    return {name: (int(operations), int(allocations))
            for name, operations, allocations in map(str.split, printed.splitlines())}


def allocations_of(program, folder):
    rows = rows_of(run([program, "run", folder], folder))
    return {name: allocations / operations for name, (operations, allocations) in rows.items()}


def instructions_of(program, folder):
    rows = rows_of(run(["valgrind", "--quiet", "--tool=callgrind", "--collect-atstart=no",
                        f"--callgrind-out-file={folder}/dump", program, "run", folder], folder))
    dumps = {}
    for path in folder.glob("dump*"):
        text = path.read_text()
        name = re.search(r"^desc: Trigger: Client Request: (\S+)$", text, re.MULTILINE)
        if name:
            dumps[name[1]] = int(re.search(r"^summary: (\d+)$", text, re.MULTILINE)[1])
    if set(dumps) != set(rows):
        raise SystemExit(f"callgrind has dumped {sorted(dumps)}, and the program has run {sorted(rows)}")
    return {name: dumps[name] / operations for name, (operations, _) in rows.items()}


def read_figures(path):
    lines = [line.split() for line in path.read_text().splitlines() if not line.startswith("#")]
    return {name: dict(zip(COLUMNS, map(float, figures))) for name, *figures in lines}


def write_figures(path, figures):
    head = [line for line in path.read_text().splitlines() if line.startswith("#")]
    lines = [f"{name:<18}{row.get('instructions', 0):>12.1f}{row.get('allocations', 0):>10.3f}"
             for name, row in figures.items()]
    path.write_text("\n".join([*head, *lines]) + "\n")


def limit_of(what, figure):
    factor, more = MARGINS[what]
    return figure * factor + more if figure else 0


def compare(what, measured, figures):
    """Prints all rows; returns what is wrong with them."""
    problems = [f"{name} has no limit" for name in measured if name not in figures]
    problems += [f"{name} was not measured" for name in figures if name not in measured]
    print(f"{what + ' of one operation':<32}{'measured':>12}{'limit':>12}")
    for name in measured:
        limit = limit_of(what, figures.get(name, {}).get(what, 0))
        is_over = measured[name] > limit
        print(f"{name:<32}{measured[name]:>12.2f}{limit:>12.2f}{'  OVER' if is_over else ''}")
        if is_over and name in figures:
            problems.append(f"{name}: {measured[name]:.2f} {what}, and the limit is {limit:.2f}")
    return problems


def main():
    what, program, path = sys.argv[1], sys.argv[2], Path(sys.argv[3])
    if what == "instructions" and not shutil.which("valgrind"):
        print("skipped: valgrind is not installed, which counts the instructions (scripts/setup --tests)")
        return SKIPPED
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        prepare(Path(program).resolve(), folder)
        measure = {"instructions": instructions_of, "allocations": allocations_of}[what]
        measured = measure(Path(program).resolve(), folder)
    figures = read_figures(path)
    if sys.argv[4:] == ["--write"]:
        write_figures(path, {name: {**figures.get(name, {}), what: value} for name, value in measured.items()})
        return 0
    problems = compare(what, measured, figures)
    if problems:
        print("\n" + "\n".join(problems)
              + f"\nIf that is meant: python3 {' '.join(sys.argv)} --write")
    return 1 if problems else 0


sys.exit(main())
