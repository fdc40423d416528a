# SPDX-License-Identifier: MIT
"""The rows of the benchmark: what each compares, its target, and its format."""

import statistics
from dataclasses import dataclass, field

OWN, LIMIT, BEFORE = "own", "limit", "before"
SMALLEST, LARGEST = 100, 10000


@dataclass
class Row:
    title: str
    name: str
    sizes: tuple = (100, 10000)
    # The row of the limit, when it has another name; "" for none.
    limit: str = None
    # The targets: (text, check) by size, or under None for all sizes. A check gets the `Cells` of
    # the row and returns yes, no, or None if a part was not measured.
    demands: dict = field(default_factory=dict)
    unit: str = "time"
    percentile: float = 50
    # The row of the other stores, when it has another name.
    peers: str = None

    def limit_name(self):
        return self.name if self.limit is None else self.limit

    def names(self):
        """What has to be measured for it."""
        return {self.name, self.limit_name(), self.peers or self.name} - {""}


@dataclass
class Cells:
    own: float
    spread: float
    limit: float
    peers: dict

    def best_peer(self):
        return min(self.peers.items(), key=lambda peer: peer[1], default=None)


def at_most_limit(factor):
    return (f"<= {factor} x limit",
            lambda cells: None if cells.limit is None else cells.own <= factor * cells.limit)


def faster_than_peers(factor=1):
    def check(cells):
        best = cells.best_peer()
        return None if best is None else cells.own * factor <= best[1]
    return ("best" if factor == 1 else f">= {factor} x best peer", check)


def at_most(value, text):
    return (f"<= {text}", lambda cells: cells.own <= value)


def better_than(peer, factor=1):
    return (f"< {peer}" if factor == 1 else f">= {factor} x {peer}",
            lambda cells: None if peer not in cells.peers
            else cells.own * factor < cells.peers[peer])


def at_most_beside_limit(value, text):
    return (f"<= {text} + limit",
            lambda cells: None if cells.limit is None else cells.own - cells.limit <= value)


HIT_OF_ONE = {None: [at_most_limit(1.1), faster_than_peers(5)]}
HIT_OF_ALL = {None: [at_most_limit(1.4), faster_than_peers(5)]}
ALL = (100, 1000, 10000)
BEST = {None: [faster_than_peers()]}
TOLD = {SMALLEST: [at_most_beside_limit(250_000, "250 us")],
        LARGEST: [at_most(5_000_000, "5 ms"), faster_than_peers(2)]}
TOLD_LATE = {SMALLEST: [at_most_limit(1.3)], LARGEST: [faster_than_peers(2)]}
# GSettings on a keyfile replaces the whole file, so it is no measure for saves that keep what others wrote.
FASTER_THAN_KEEPING = {None: [better_than("kconfig"), better_than("qsettings")]}
NOTHING_LOST = {None: [at_most(0, "0")]}
LOADED = {None: [at_most(15_000, "15 us")]}

ROWS = [
    Row("read, hot key", "ReadHotKey", demands=HIT_OF_ONE),
    Row("read, all keys", "ReadAllKeys", demands=HIT_OF_ALL),
    Row("  with an empty site", "SiteHotKey", limit="ReadHotKey", demands={None: [at_most_limit(1.5)]}),
    Row("boolean, hot key", "BooleanHotKey", demands=HIT_OF_ONE),
    Row("boolean, all keys", "BooleanAllKeys", demands=HIT_OF_ALL),
    Row("boolean, allocations", "Allocations", ALL, "", {None: [at_most(0, "0")]}, "count"),
    Row("held key, boolean", "HeldBooleans", limit="", demands={None: [at_most(10, "10 ns")]}),
    Row("held key, integer", "HeldIntegers", limit="", demands={None: [at_most(10, "10 ns")]}),
    Row("default, first read", "DefaultFirst", ALL, "",
        {SMALLEST: [at_most(350, "350 ns")], None: [at_most(700, "700 ns")]}),
    Row("default, read again", "DefaultAgain", ALL,
        demands={None: [at_most_limit(1.5), faster_than_peers()]}),
    Row("write in a burst", "WriteBurst", ALL,
        demands={SMALLEST: [at_most(1_400, "1.4 us")], None: [better_than("kconfig")],
                 LARGEST: [at_most(2_500, "2.5 us"), better_than("kconfig")]}),
    Row("write, first after load", "WriteFirst", ALL, ""),
    Row("write in a batch", "WriteInABatch", ALL, "", peers="WriteBurst"),
    Row("save to the disk", "Save", ALL,
        demands={SMALLEST: [at_most_limit(1.3), faster_than_peers()],
                 LARGEST: [at_most_limit(2), faster_than_peers()]}),
    Row("burst to the disk", "SaveBurstMerged", ALL, "Save", {SMALLEST: [at_most_limit(3)]},
        peers="SaveBurst"),
    Row("  of whole trees", "SaveBurst", ALL, ""),
    Row("write while a save waits", "WriteWhileASaveWaits", ALL, "WriteBurst",
        {None: [better_than("kconfig")]}, peers="WriteBurst"),
    Row("  in a burst from the start", "WriteBurstMerged", ALL, "WriteBurst",
        {SMALLEST: [at_most(700, "700 ns"), better_than("kconfig")], None: [better_than("kconfig")]},
        peers="WriteBurst"),
    Row("save after another's", "SaveAfterAnother", limit="Save", demands=FASTER_THAN_KEEPING),
    Row("2 processes together", "Together2", (100,), "", FASTER_THAN_KEEPING),
    Row("  settings lost", "Together2 lost", (100,), "", NOTHING_LOST, "count"),
    Row("  lost by whole trees", "Together2 whole lost", (100,), "", unit="count"),
    Row("8 processes together", "Together8", (100,), "", FASTER_THAN_KEEPING),
    Row("  settings lost", "Together8 lost", (100,), "", NOTHING_LOST, "count"),
    Row("  lost by whole trees", "Together8 whole lost", (100,), "", unit="count"),
    Row("XML writing", "XMLWriting", ALL, "", {None: [better_than("libplist", 3)]}, "speed"),
    Row("XML reading", "XMLReading", ALL, "", {None: [better_than("libplist", 4.5)]}, "speed"),
    Row("binary reading", "BinaryReading", ALL, "", {None: [better_than("libplist", 2.5)]}, "speed"),
    Row("process: open, read", "OpenAndRead", ALL, "", BEST),
    Row("peak memory, loaded", "MemoryLoaded", (10000,), "", {None: [better_than("libplist")]}, "bytes"),
    Row("  for each setting", "MemoryLoaded each", (10000,), "",
        {None: [at_most(170, "170 B"), better_than("kconfig")]}, "bytes"),
    Row("peak memory, all read", "MemoryRead", (10000,), "", {None: [better_than("libplist")]}, "bytes"),
    Row("  for each setting", "MemoryRead each", (10000,), "", {None: [better_than("kconfig")]}, "bytes"),
    Row("changed keys, equal", "CompareEqual", ALL, "CopyOfAMap", {None: [at_most_limit(1)]}),
    Row("changed keys, five", "CompareDifferent", ALL, "CopyOfAMap", {None: [at_most_limit(1)]}),
    Row("set to onChange", "Propagation", demands=TOLD),
    Row("  99th percentile", "Propagation", demands=TOLD_LATE, percentile=99),
    Row("  processor, listener", "WatchedChange", demands={SMALLEST: [at_most(250_000, "250 us")]}),
    Row("loadDefaults, de_DE", "LoadDefaults de_DE.UTF-8", (100,), demands=LOADED),
    Row("loadDefaults, C", "LoadDefaults C", (100,), demands=LOADED),
    Row("tool: get", "ToolGet", demands={SMALLEST: [at_most_limit(1.3)]}),
]


def rows_like(pattern):
    """The rows of which title or name match a compiled regular expression."""
    return [row for row in ROWS if pattern.search(row.title) or pattern.search(row.name)]


def percentile(samples, percent):
    if not samples:
        return None
    if percent == 50:
        return statistics.median(samples)
    ordered = sorted(samples)
    return ordered[min(len(ordered) - 1, int(len(ordered) * percent / 100))]


def deviation(samples):
    median = statistics.median(samples)
    return statistics.median(abs(sample - median) for sample in samples)


def scaled(value, units):
    for unit, size in units:
        if abs(value) >= size:
            return f"{value / size:.3g} {unit}" if value / size < 1000 else f"{value / size:.0f} {unit}"
    return f"{value:.3g} {units[-1][0]}"


def shown(value, unit, size_in_bytes):
    if value is None:
        return "-"
    if unit == "count":
        return f"{value:.0f}"
    if unit == "bytes":
        return scaled(value, [("MB", 1e6), ("kB", 1e4), ("B", 1)])
    if unit == "speed":
        return f"{size_in_bytes / value * 1e3:.0f} MB/s"
    return scaled(value, [("s", 1e9), ("ms", 1e6), ("us", 1e3), ("ns", 1)])


def cells_of(row, size, samples):
    own = samples.get((row.name, size, OWN))
    if not own:
        return None
    peers = {participant: percentile(values, row.percentile)
             for (name, of_size, participant), values in samples.items()
             if (name, of_size) == (row.peers or row.name, size) and participant not in (OWN, LIMIT, BEFORE) and values}
    return Cells(percentile(own, row.percentile), deviation(own),
                 percentile(samples.get((row.limit_name(), size, LIMIT)), row.percentile), peers)


def verdict(checks):
    known = [check for check in checks if check is not None]
    if not known:
        return "-"
    return "yes" if all(known) else "NO"


def line_of(row, size, cells, bytes_of):
    size_in_bytes = bytes_of(row.name, size) if row.unit == "speed" else None
    best = cells.best_peer()
    demands = row.demands.get(size, row.demands.get(None, []))
    spread = f"{cells.spread / cells.own:.0%}" if cells.own else "-"
    return [
        row.title, f"{size:,}", shown(cells.own, row.unit, size_in_bytes), spread,
        shown(cells.limit, row.unit, size_in_bytes),
        f"{cells.own / cells.limit:.2f}" if cells.limit else "-",
        f"{best[0]} {shown(best[1], row.unit, size_in_bytes)}" if best else "-",
        f"{best[1] / cells.own:.2f}" if best and cells.own else "-",
        ", ".join(text for text, _ in demands) or "-",
        verdict([check(cells) for _, check in demands]),
    ]


def lines_and_missing(rows, samples, bytes_of, sizes):
    """The lines of the table, and the rows that have no figure of our own."""
    lines, missing = [], []
    for row in rows:
        for size in (size for size in row.sizes if size in sizes):
            cells = cells_of(row, size, samples)
            if cells is None:
                missing.append(f"{row.name} {size}")
            else:
                lines.append(line_of(row, size, cells, bytes_of))
    return lines, missing


def print_columns(lines):
    widths = [max(map(len, column)) for column in zip(*lines)]
    for line in lines:
        print("  ".join(cell.ljust(width) for cell, width in zip(line, widths)).rstrip())


def print_table(lines, figures):
    print_columns([["row", "settings", "ours", "+-", "limit", "x limit", "best peer", "peer/ours",
                    "demanded", "reached"], *lines])
    present = {participant for _, _, participant in figures.samples} - {OWN, LIMIT, BEFORE}
    print("\nMedians; +- is the median absolute deviation of ours. Rows of one thread are in processor "
          "time,\nthe others in elapsed time. Measured beside: "
          + (", ".join(sorted(present)) or "no other store") + ".")
    for note in figures.notes:
        print(note)
