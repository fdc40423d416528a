# SPDX-License-Identifier: MIT
"""A test program that is started as it is, without CTest, gives each test a process and a folder of its own.

    python3 started_whole.py PROGRAM
"""

import re
import subprocess
import sys

PASSING = ["Sample.Passes", "Sample.PassesToo", "Some/SampleOfTexts.Passes/0", "Some/SampleOfTexts.Passes/1"]


class Run:
    """The program with arguments: its exit status, its output, and the tests by their results."""

    def __init__(self, program, *arguments):
        done = subprocess.run([program, *arguments], stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              text=True, timeout=60, check=False)
        self.status, self.output = done.returncode, done.stdout
        self.said = sorted(set(re.findall(r"^\[ *(OK|FAILED|SKIPPED) *\] (\S+) \(", self.output, re.MULTILINE)))

    def tests(self, result):
        return [test for kind, test in self.said if kind == result]


def check(run, what, holds):
    if not holds:
        sys.exit(f"{what} does not hold; status {run.status}, output:\n{run.output}")


def main():
    program = sys.argv[1]

    whole = Run(program)
    check(whole, "the passing tests pass", whole.tests("OK") == PASSING)
    check(whole, "the others fail", whole.tests("FAILED") == ["Sample.Crashes", "Sample.Exits", "Sample.Fails"])
    check(whole, "one is skipped", whole.tests("SKIPPED") == ["Sample.IsSkipped"])
    check(whole, "a crash is reported with its signal", "Sample.Crashes (its process died of Aborted)" in whole.output)
    check(whole, "a failure is reported", "which is what it is for" in whole.output)
    check(whole, "no other tests run", "DISABLED" not in whole.output)
    check(whole, "the summary counts",
          all(line in whole.output.splitlines() for line in
              ("[  PASSED  ] 4 tests.", "[  SKIPPED ] 1 test, listed below:", "[  FAILED  ] 3 tests, listed below:")))
    check(whole, "the exit status is 1 after failures", whole.status == 1)

    good = Run(program, "--gtest_filter=*Passes*", "--gtest_repeat=2")
    check(good, "a filter chooses, twice", good.tests("OK") == PASSING and good.status == 0)
    check(good, "each repetition has its summary", good.output.count("[  PASSED  ] 4 tests.") == 2)

    one = Run(program, "--gtest_filter=Sample.Crashes")
    check(one, "a single test runs in the program itself", one.status == -6)
    by_pattern = Run(program, "--gtest_filter=*Crash*")
    check(by_pattern, "so does one that a pattern chooses", by_pattern.status == -6)
    stopping = Run(program, "--gtest_filter=Sample.*ails:*Passes", "--gtest_break_on_failure")
    check(stopping, "a break is reported", "Sample.Fails (its process died of" in stopping.output)

    disabled = Run(program, "--gtest_filter=*Disabled:*Skipped", "--gtest_also_run_disabled_tests")
    check(disabled, "disabled tests run on request", disabled.tests("FAILED") == ["Sample.DISABLED_IsDisabled"])

    unsupported = Run(program, "--gtest_output=xml:results.xml")
    check(unsupported, "what is not supported is said", unsupported.status == 1 and "one chosen test" in unsupported.output)
    listed = Run(program, "--gtest_list_tests")
    check(listed, "tests can be listed", listed.status == 0 and "  IsSkipped\n" in listed.output)


main()
