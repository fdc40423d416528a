# SPDX-License-Identifier: MIT
"""Another process of the tests: runs the statements it is given, with the store as `settings`."""

import subprocess
import sys

import qrvsettings

DEADLINE = 60


def run(statements):
    """In another process; returns what it prints."""
    return subprocess.run([sys.executable, __file__, statements], check=True, text=True, stdout=subprocess.PIPE,
                          timeout=DEADLINE).stdout


if __name__ == "__main__":
    with qrvsettings.open() as settings:
        exec(sys.argv[1])
        settings.wait_for_saves(DEADLINE)
