# SPDX-License-Identifier: MIT
"""The store beside itself in another commit: what has become worse, and what better."""

import statistics

import table

# A difference counts when it is larger than this, and is there in each part of the run.
NOISE = 0.05
PARTS = 5


def parts_of(samples):
    """The samples in the order of time, in equal parts."""
    ends = [len(samples) * number // PARTS for number in range(PARTS + 1)]
    return [samples[start:end] for start, end in zip(ends, ends[1:])]


def ratio_of(own, before, percent):
    return table.percentile(own, percent) / table.percentile(before, percent)


def change(row, own, before):
    """worse, better, same, or "?" when the samples are too few to know."""
    if row.unit == "count":
        difference = statistics.median(own) - statistics.median(before)
        return "worse" if difference > 0 else "better" if difference < 0 else "same"
    if min(len(own), len(before)) < PARTS:
        return "?"
    whole = ratio_of(own, before, row.percentile)
    parts = [ratio_of(*pair, row.percentile) for pair in zip(parts_of(own), parts_of(before))]
    if whole > 1 + NOISE and min(parts) > 1:
        return "worse"
    return "better" if whole < 1 / (1 + NOISE) and max(parts) < 1 else "same"


def line_of(row, size, samples, bytes_of):
    own = samples[row.name, size, table.OWN]
    before = samples.get((row.name, size, table.BEFORE))
    size_in_bytes = bytes_of(row.name, size) if row.unit == "speed" else None
    cells = []
    for values in (before, own):
        value = table.percentile(values, row.percentile) if values else None
        cells += [table.shown(value, row.unit, size_in_bytes),
                  f"{table.deviation(values) / value:.0%}" if value else "-"]
    is_comparable = before and table.percentile(before, row.percentile)
    return [row.title, f"{size:,}", *cells,
            f"{ratio_of(own, before, row.percentile):.2f}" if is_comparable else "-",
            change(row, own, before) if before else "-"]


def lines(rows, samples, bytes_of, sizes):
    return [line_of(row, size, samples, bytes_of)
            for row in rows for size in row.sizes
            if size in sizes and samples.get((row.name, size, table.OWN))]


def print_table(compared):
    print()
    table.print_columns([["row", "settings", "before", "+-", "ours", "+-", "ratio", "change"], *compared])
    worse = [f"{line[0].strip()} ({line[1]})" for line in compared if line[-1] == "worse"]
    print("\nratio: time, bytes or count of ours by that of the other commit; below 1 is better.\n"
          f"worse: {', '.join(worse) or 'no row'}")
