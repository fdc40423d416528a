# SPDX-License-Identifier: MIT
"""Measures the window beside an empty one, without a display, and prints a table.

    python3 window.py PROGRAMS [ROUNDS]
"""

import os
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path


class Measures:
    def __init__(self, programs, folder, settings):
        self.programs, self.settings = programs, settings
        self.environment = {**os.environ, "XDG_CONFIG_HOME": f"{folder}/config", "XDG_STATE_HOME": f"{folder}/state",
                            "XDG_CONFIG_DIRS": f"{folder}/site", "QT_QPA_PLATFORM": "offscreen",
                            "QRVSETTINGS_HISTORY": "0", "LC_ALL": "C.UTF-8"}
        self.samples = {}
        if settings:
            self.write("fill", settings)

    def write(self, *words):
        subprocess.run([self.programs / "window-writer", *map(str, words)], env=self.environment, check=True)

    def take(self, lines, prefix=""):
        for line in lines:
            name, tab, number = line.partition("\t")
            if tab:
                self.samples.setdefault(prefix + name, []).append(float(number))

    def started(self, *words):
        environment = {**self.environment, "QRV_STARTED": repr(time.monotonic() * 1000)}
        return subprocess.Popen([self.programs / "window-measures", *map(str, words)], env=environment,
                                stdout=subprocess.PIPE, text=True)

    def run(self, *words, prefix=""):
        process = self.started(*words)
        output, _ = process.communicate(timeout=300)
        if process.returncode:
            raise SystemExit(f"window-measures {words}: exit code {process.returncode}")
        self.take(output.splitlines(), prefix)

    def run_with_writer(self, words, writer):
        process = self.started(*words)
        assert process.stdout.readline() == "ready\n"
        self.write(*writer)
        output, _ = process.communicate(timeout=300)
        if process.returncode:
            raise SystemExit(f"window-measures {words}: exit code {process.returncode}")
        self.take(output.splitlines(), f"{words[0]} ")

    def median(self, name):
        return statistics.median(self.samples[name])

    def best(self, name):
        return min(self.samples[name])

    def worst(self, name):
        return max(self.samples[name])


def rows_of(measures):
    m, size = measures, measures.settings
    yield "empty window, painted", f"{m.median('empty start'):.0f} ms", ""
    yield (f"{size} settings, rows painted", f"{m.median('start start'):.0f} ms",
           f"{m.median('start start') / m.median('empty start'):.2f} x the empty window")
    yield "memory, empty window", f"{m.median('empty private'):.0f} MiB private", f"{m.median('empty resident'):.0f} MiB resident"
    yield "memory, all levels open", f"{m.median('start private'):.0f} MiB private", f"{m.median('start resident'):.0f} MiB resident"
    yield ("filter, a letter to paint", f"{m.median('filter letter'):.1f} ms",
           f"worst {m.worst('filter letter'):.1f} ms, repaint alone {m.median('filter repaint'):.1f} ms")
    yield ("writer to paint", f"{m.median('live writer'):.1f} ms",
           f"best {m.best('live writer'):.1f}, worst {m.worst('live writer'):.1f}; own share {m.median('live own'):.1f} ms")
    yield "1,000 changed keys, new rows to paint", f"{m.median('many handler'):.1f} ms", f"worst {m.worst('many handler'):.1f}"


def main():
    programs = Path(sys.argv[1])
    rounds = int(sys.argv[2]) if len(sys.argv) > 2 else 5
    for settings in (100, 10_000):
        with tempfile.TemporaryDirectory() as folder:
            measures = Measures(programs, folder, settings)
            for _ in range(rounds):
                measures.run("empty", prefix="empty ")
                measures.run("start", prefix="start ")
                measures.run("filter", prefix="filter ")
                measures.run_with_writer(("live", 20), ("time", 20))
            for _ in range(rounds):
                measures.write("fill", max(settings, 1000))
                measures.run_with_writer(("many", 1000), ("many", 1000))
            print(f"\n{settings} stored settings, {rounds} rounds")
            for name, figure, beside in rows_of(measures):
                print(f"  {name:42}{figure:>20}   {beside}")
    with tempfile.TemporaryDirectory() as folder:
        measures = Measures(programs, folder, 100)
        measures.run("idle", 10)
        print(f"\nwake-ups of an idle window in 10 s: {measures.median('wakeups'):.0f}")


main()
