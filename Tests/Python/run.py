# SPDX-License-Identifier: MIT
"""Runs the tests of one file, each in a process and with settings of its own: a process has one store.

    python3 run.py FILE
"""

import os
import subprocess
import sys
import tempfile
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

DEADLINE = 120


def names_of(suite):
    for test in suite:
        if isinstance(test, unittest.TestSuite):
            yield from names_of(test)
        else:
            yield test.id()


def run(name):
    with tempfile.TemporaryDirectory() as folder:
        environment = {**os.environ, "HOME": folder, "XDG_CONFIG_HOME": f"{folder}/config",
                       "XDG_CONFIG_DIRS": f"{folder}/site"}
        result = subprocess.run([sys.executable, "-m", "unittest", name], env=environment, text=True,
                                cwd=Path(__file__).parent, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                                timeout=DEADLINE, check=False)
    return name, result


def main():
    file = Path(sys.argv[1])
    sys.path.insert(0, str(file.parent))
    names = list(names_of(unittest.defaultTestLoader.loadTestsFromName(file.stem)))
    failed = 0
    with ThreadPoolExecutor(max_workers=2) as pool:
        for name, result in pool.map(run, names):
            if result.returncode != 0:
                failed += 1
                print(f"{name}\n{result.stdout}")
    print(f"{len(names) - failed} of {len(names)} tests passed")
    return 1 if failed or not names else 0


if __name__ == "__main__":
    sys.exit(main())
