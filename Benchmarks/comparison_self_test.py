# SPDX-License-Identifier: MIT
"""The comparison with another commit sees what has become worse or better, and not what is noise."""

import sys

import comparison
import table

TIME = table.Row("a time", "Time")
COUNT = table.Row("a number", "Count", unit="count")
STEADY = [100, 101, 99, 100, 102, 98, 100, 101, 99, 100]
# Row, samples of ours, samples of the other commit, what has changed.
CASES = (
    (TIME, [sample * 1.2 for sample in STEADY], STEADY, "worse"),
    (TIME, [sample * 0.8 for sample in STEADY], STEADY, "better"),
    (TIME, STEADY, STEADY, "same"),
    (TIME, [sample * 1.03 for sample in STEADY], STEADY, "same"),
    # The machine was slow during most of the run, but not always for ours.
    (TIME, [150] * 8 + [100] * 2, [100] * 8 + [150] * 2, "same"),
    (TIME, STEADY[:4], STEADY[:4], "?"),
    (COUNT, [1], [0], "worse"),
    (COUNT, [0], [1], "better"),
    (COUNT, [3], [3], "same"),
)


def main():
    problems = []
    for row, own, before, expected in CASES:
        found = comparison.change(row, own, before)
        if found != expected:
            problems.append(f"{row.title}: {own} after {before} is {found}, and should be {expected}")
    line = comparison.line_of(TIME, 100, {("Time", 100, table.OWN): STEADY}, None)
    if line[-2:] != ["-", "-"]:
        problems.append(f"a row that the other commit lacks is {line}")
    print("\n".join(problems) or f"{len(CASES) + 1} comparisons")
    return 1 if problems else 0


sys.exit(main())
