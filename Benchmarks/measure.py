# SPDX-License-Identifier: MIT
"""Runs the benchmark programs side by side, and prints one table.

All participants take turns within each round, so that a slow moment of the machine meets all of
them. Everything happens in a fresh folder, which is removed afterwards.
"""

import argparse
import collections
import json
import os
import plistlib
import re
import shutil
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import comparison
import table
from processes import Bus, Pair

SIZES = (100, 1000, 10000)
# The participants in the order of their turns. A program that was not built is skipped.
PARTICIPANTS = ("limit", "own", "before", "qsettings", "kconfig", "gsettings", "dconf", "libplist",
                "gnustep")
# The store as it is, and as it was in another commit.
STORES = ("own", "before")
PROGRAM_OF = {"dconf": "gsettings", "before": "own"}
SECONDS_TOGETHER = 60
SETTINGS_TOGETHER = 3000  # 900 of them are integers: enough for 100 in each of eight processes


def time_of(name):
    """The clock of a row: elapsed time if the row waits, otherwise processor time."""
    return "real_time" if name.endswith(("/manual_time", "/real_time")) else "cpu_time"


class Effort:
    """Numbers of repetitions."""

    def __init__(self, is_once, rounds):
        self.sizes = SIZES[:1] if is_once else SIZES
        self.rounds = 1 if is_once else rounds
        self.minimum_seconds = 0 if is_once else 0.03
        self.processes = 1 if is_once else 8 * rounds
        self.changes = 3 if is_once else 30 * rounds
        self.writes_together = 3 if is_once else 100


class Figures:
    """Samples by row, size and participant: nanoseconds, bytes or a count."""

    def __init__(self):
        self.samples = collections.defaultdict(list)
        self.notes = []

    def add(self, row, size, participant, sample):
        self.samples[row, size, participant].append(sample)

    def as_json(self):
        return [{"row": row, "size": size, "participant": participant, "samples": samples}
                for (row, size, participant), samples in sorted(self.samples.items())]


class Bench:
    """`builds`: the folder of the programs and the tool, for `own` and perhaps for `before`."""

    def __init__(self, builds, effort, rows, folder):
        self.builds = builds
        self.effort = effort
        self.rows = rows
        self.folder = folder
        self.figures = Figures()
        self.number = 0
        self.buses = {}

    def has(self, participant, kind):
        if participant == "dconf" and not (shutil.which("dconf") and shutil.which("dbus-daemon")):
            return False
        return self.program(participant, kind).exists()

    def program(self, participant, kind):
        programs, _ = self.builds.get(participant, self.builds["own"])
        return programs / f"{PROGRAM_OF.get(participant, participant)}-{kind}"

    def participants(self, kind, *, among=PARTICIPANTS):
        return [name for name in among
                if (name in self.builds or name != "before") and self.has(name, kind)]

    def is_asked(self, *beginnings):
        return any(row.name.startswith(beginnings) for row in self.rows)

    def new_folder(self, size):
        self.number += 1
        folder = self.folder / str(self.number)
        folder.mkdir()
        (folder / "runtime").mkdir(mode=0o700)
        os.symlink(self.folder / f"files-{size}", folder / "files")
        return folder

    def environment(self, participant, folder, locale="C.UTF-8"):
        """The environment of a participant, without the user's session."""
        environment = {"PATH": os.environ["PATH"], "HOME": str(folder), "LC_ALL": locale,
                       "XDG_CONFIG_HOME": str(folder), "XDG_CONFIG_DIRS": str(folder / "site"),
                       "XDG_RUNTIME_DIR": str(folder / "runtime")}
        if participant == "dconf":
            environment["GSETTINGS_BACKEND"] = "dconf"
            if folder not in self.buses:
                self.buses[folder] = Bus(environment)
            environment["DBUS_SESSION_BUS_ADDRESS"] = self.buses[folder].address
        return environment

    def close_buses(self):
        for bus in self.buses.values():
            bus.close()
        self.buses.clear()

    def run(self, participant, kind, arguments, folder, **more):
        command = [str(self.program(participant, kind)), *map(str, arguments)]
        done = subprocess.run(command, env=self.environment(participant, folder, **more),
                              capture_output=True, text=True)
        if done.returncode != 0:
            raise SystemExit(f"{' '.join(command)}: {done.stderr}{done.stdout}")
        return done.stdout

    def prepare(self, participant, size):
        folder = self.new_folder(size)
        self.run(participant, "open", ["prepare", folder, size], folder)
        return folder

    def make_files(self):
        """The same settings as property-list files in both formats."""
        for size in (0, SETTINGS_TOGETHER, *self.effort.sizes):
            files = self.folder / f"files-{size}"
            files.mkdir()
            folder = self.prepare("own", size)
            written = next((folder / "Preferences").glob("*.plist")).read_bytes()
            (files / "XMLReading").write_bytes(written)
            (files / "BinaryReading").write_bytes(
                plistlib.dumps(plistlib.loads(written), fmt=plistlib.FMT_BINARY))
            shutil.copy(folder / "keys", files / "keys")

    def bytes_of(self, row, size):
        name = "BinaryReading" if row == "BinaryReading" else "XMLReading"
        return (self.folder / f"files-{size}" / name).stat().st_size

    # Rows inside one process

    def run_rows(self, participant, size, only, **more):
        folder = self.new_folder(size)
        printed = self.run(participant, "rows", [
            folder, size, f"--benchmark_min_time={self.effort.minimum_seconds}",
            f"--benchmark_filter={only}", "--benchmark_format=json"], folder, **more)
        self.close_buses()
        shutil.rmtree(folder)
        nanoseconds = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
        # Nothing is printed when the participant has none of the rows.
        for benchmark in json.loads(printed)["benchmarks"] if printed else ():
            if "error_message" in benchmark:
                raise SystemExit(f"{participant} {benchmark['name']}: {benchmark['error_message']}")
            if benchmark["run_type"] == "iteration":
                yield (benchmark["name"].split("/")[0],
                       benchmark[time_of(benchmark["name"])] * nanoseconds[benchmark["time_unit"]])

    def measure_rows(self):
        asked = {name for row in self.rows for name in row.names()
                 if not name.startswith((*OTHER_PROGRAMS, "LoadDefaults"))}
        only = f"^({'|'.join(sorted(asked))})/"
        for number in range(self.effort.rounds):
            for size in self.effort.sizes if asked else ():
                for participant in in_turn(self.participants("rows"), number):
                    for row, sample in self.run_rows(participant, size, only):
                        self.figures.add(row, size, participant, sample)
            if self.is_asked("LoadDefaults"):
                self.measure_start(number)

    def measure_start(self, number):
        for locale in ("de_DE.UTF-8", "C"):
            for participant in in_turn(self.participants("rows", among=("limit", *STORES)), number):
                for _, sample in self.run_rows(participant, 100, "LoadDefaults", locale=locale):
                    self.figures.add(f"LoadDefaults {locale}", 100, participant, sample)

    def count_allocations(self):
        for size in self.effort.sizes:
            for participant in self.participants("allocations", among=STORES):
                folder = self.new_folder(size)
                count = int(self.run(participant, "allocations", [folder, size], folder))
                self.figures.add("Allocations", size, participant, count)

    # Whole processes

    @staticmethod
    def time_process(command, environment):
        with open(os.devnull, "wb") as nowhere:
            redirection = [(os.POSIX_SPAWN_DUP2, nowhere.fileno(), 1)]
            start = time.perf_counter_ns()
            process = os.posix_spawn(command[0], command, environment, file_actions=redirection)
            _, status = os.waitpid(process, 0)
            elapsed = time.perf_counter_ns() - start
        if status != 0:
            raise SystemExit(f"{' '.join(command)}: status {status}")
        return elapsed

    def measure_processes(self, row, size, commands):
        """`commands`: command and environment for each participant."""
        for number in range(self.effort.processes):
            for participant in in_turn(commands, number):
                command, environment = commands[participant]
                self.figures.add(row, size, participant, self.time_process(command, environment))

    def measure_opening(self):
        for size in self.effort.sizes:
            commands, sums = {}, set()
            for participant in self.participants("open"):
                folder = self.prepare(participant, size)
                sums.add(self.run(participant, "open", ["read", folder], folder))
                commands[participant] = (
                    [str(self.program(participant, "open")), "read", str(folder)],
                    self.environment(participant, folder))
            if len(sums) != 1:
                raise SystemExit(f"the participants have read different settings: {sums}")
            self.measure_processes("OpenAndRead", size, commands)
            self.close_buses()

    def measure_memory(self):
        size = self.effort.sizes[-1]
        for participant in self.participants("open"):
            for command, row in (("load", "MemoryLoaded"), ("read", "MemoryRead")):
                peaks = {}
                for count in (0, size):
                    folder = self.prepare(participant, count)
                    peaks[count] = [
                        int(self.run(participant, "open", [command, folder, "memory"],
                                     folder).split()[1]) for _ in range(self.effort.rounds)]
                empty = sorted(peaks[0])[len(peaks[0]) // 2]
                for peak in peaks[size]:
                    self.figures.add(row, size, participant, peak)
                    self.figures.add(f"{row} each", size, participant, (peak - empty) / size)
            self.close_buses()

    def measure_tool(self):
        for size in (self.effort.sizes[0], self.effort.sizes[-1]):
            commands = {}
            for participant, (_, tool) in self.builds.items():
                folder = self.prepare(participant, size)
                key_path = (folder / "keys").read_text().splitlines()[0][1:]
                environment = self.environment(participant, folder)
                commands[participant] = ([str(tool), "get", key_path], environment)
            commands["limit"] = ([str(self.program("limit", "true"))], commands["own"][1])
            self.measure_processes("ToolGet", size, commands)

    # From one process to another

    def measure_propagation(self):
        for size in (self.effort.sizes[0], self.effort.sizes[-1]):
            pairs = {}
            for participant in self.participants("propagation"):
                folder = self.prepare(participant, size) if self.has(participant, "open") \
                    else self.new_folder(size)
                pairs[participant] = Pair(self.program(participant, "propagation"), folder,
                                          self.environment(participant, folder))
            for number in range(self.effort.changes):
                for participant in in_turn(pairs, number):
                    self.change(participant, pairs[participant], size)
            for participant, pair in pairs.items():
                pair.close()
                if pair.lost:
                    self.figures.notes.append(
                        f"Propagation {size}: {participant} was not told of {pair.lost} changes"
                        + (", and then left out" if pair.is_out() else ""))
            self.close_buses()

    # Several processes that write

    def measure_together(self):
        for processes in (2, 8):
            row = f"Together{processes}"
            for number in range(self.effort.rounds if self.is_asked(row) else 0):
                for participant in in_turn(self.participants("together"), number):
                    self.write_together(participant, processes, row)
                for participant in in_turn(self.participants("together", among=STORES), number):
                    self.write_together(participant, processes, f"{row} whole",
                                        BENCHMARK_WHOLE_TREES="1")

    def measure_turns(self):
        for size in (self.effort.sizes[0], self.effort.sizes[-1]):
            for participant in self.participants("together"):
                self.take_turns(participant, size)

    def start_together(self, participant, folder, arguments, **environment):
        return Pair.start([self.program(participant, "together"), *arguments],
                          {**self.environment(participant, folder), **environment})

    def write_together(self, participant, processes, row, **environment):
        """Each process writes settings of its own; how long that takes, and how many are lost."""
        folder = self.prepare(participant, SETTINGS_TOGETHER)
        writes = self.effort.writes_together
        started = [self.start_together(participant, folder,
                                       ["write", folder, index, processes, writes], **environment)
                   for index in range(processes)]
        start = time.perf_counter_ns()
        for process in started:
            process.stdin.write(b"\n")
            process.stdin.close()
        if not self.have_ended(started, participant, row):
            return
        self.figures.add(row, 100, participant, time.perf_counter_ns() - start)
        kept = int(self.run(participant, "together", ["count", folder, processes, writes], folder))
        self.figures.add(f"{row} lost", 100, participant, processes * writes - kept)
        self.close_buses()
        shutil.rmtree(folder)

    def have_ended(self, started, participant, row):
        deadline = time.monotonic() + SECONDS_TOGETHER
        try:
            statuses = [process.wait(max(0, deadline - time.monotonic())) for process in started]
        except subprocess.TimeoutExpired:
            for process in started:
                process.kill()
                process.wait()
            note = f"{row}: {participant} did not end within {SECONDS_TOGETHER} s"
            if note not in self.figures.notes:
                self.figures.notes.append(note)
            return False
        if any(statuses):
            raise SystemExit(f"{participant}: a process that writes together with others has failed")
        return True

    def take_turns(self, participant, size):
        """Two processes save in turns, so that each save finds that of the other."""
        folder = self.prepare(participant, size)
        pair = [self.start_together(participant, folder, ["turns", folder]) for _ in range(2)]
        for turn in range(2 + self.effort.changes):
            process = pair[turn % 2]
            process.stdin.write(b"\n")
            process.stdin.flush()
            elapsed = int(process.stdout.readline())
            if turn >= 2:
                self.figures.add("SaveAfterAnother", size, participant, elapsed)
        for process in pair:
            process.stdin.close()
            process.wait()
        self.close_buses()

    def change(self, participant, pair, size):
        if pair.is_out():
            return
        pair.processor_time()
        elapsed = pair.change()
        time.sleep(0.01)  # two changes within one tick of the file system's clock look like one
        if elapsed is not None:
            self.figures.add("Propagation", size, participant, elapsed)
            self.figures.add("WatchedChange", size, participant, pair.processor_time())


# What measures the rows whose names begin so; `measure_rows` measures all others.
OTHER_PROGRAMS = {
    "Allocations": Bench.count_allocations,
    "OpenAndRead": Bench.measure_opening,
    "Memory": Bench.measure_memory,
    "ToolGet": Bench.measure_tool,
    "Propagation": Bench.measure_propagation,
    "WatchedChange": Bench.measure_propagation,
    "Together": Bench.measure_together,
    "SaveAfterAnother": Bench.measure_turns,
}


def in_turn(names, number):
    """In every second round the last one begins."""
    return list(names) if number % 2 == 0 else list(names)[::-1]


def regular_expression(text):
    try:
        return re.compile(text, re.IGNORECASE)
    except re.error as problem:
        raise argparse.ArgumentTypeError(f'"{text}": {problem}') from None


def parse_arguments():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("programs", help="the folder of the benchmark programs")
    parser.add_argument("tool", help="the command-line tool")
    parser.add_argument("--before", nargs=2, metavar=("PROGRAMS", "TOOL"),
                        help="the same of another commit, to compare with")
    parser.add_argument("--rows", metavar="PATTERN", type=regular_expression, default="",
                        help="only rows whose title or name matches this regular expression")
    parser.add_argument("--rounds", metavar="N", type=int, default=5)
    parser.add_argument("--once", action="store_true", help="only see that everything runs")
    parser.add_argument("--json", metavar="FILE", help="write all samples there")
    arguments = parser.parse_args()
    if arguments.rounds < 1:
        parser.error("--rounds needs at least 1")
    arguments.rows = table.rows_like(arguments.rows) or parser.error(
        f'no row is like "{arguments.rows.pattern}"')
    return arguments


def main():
    arguments = parse_arguments()
    programs = Path(arguments.programs).resolve()
    builds = {"own": (programs, arguments.tool)}
    if arguments.before:
        builds["before"] = (Path(arguments.before[0]).resolve(), arguments.before[1])
    # Beside the programs, which are on a disk; a temporary folder may be in memory.
    folder = Path(tempfile.mkdtemp(prefix="run-", dir=programs.parent))
    bench = Bench(builds, Effort(arguments.once, arguments.rounds), arguments.rows, folder)
    try:
        bench.make_files()
        bench.measure_rows()
        for measure in dict.fromkeys(measure for beginning, measure in OTHER_PROGRAMS.items()
                                     if bench.is_asked(beginning)):
            measure(bench)
        lines, missing = table.lines_and_missing(arguments.rows, bench.figures.samples,
                                                 bench.bytes_of, bench.effort.sizes)
        compared = comparison.lines(arguments.rows, bench.figures.samples, bench.bytes_of,
                                    bench.effort.sizes)
    finally:
        bench.close_buses()
        shutil.rmtree(folder)
    if arguments.once:
        print(f"{len(lines)} rows were measured once")
    else:
        table.print_table(lines, bench.figures)
    if arguments.before and not arguments.once:
        comparison.print_table(compared)
    if arguments.json:
        Path(arguments.json).write_text(json.dumps(bench.figures.as_json(), indent=1) + "\n")
    if missing:
        print(f"nothing was measured for: {', '.join(missing)}", file=sys.stderr)
    return 1 if missing else 0


if __name__ == "__main__":
    sys.exit(main())
