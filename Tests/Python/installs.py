# SPDX-License-Identifier: MIT
"""`pip install .` installs the package, which then works from there, without a network.

    python3 installs.py SOURCE FOLDER VERSION

Skipped (exit code 77) where neither this Python nor the system's can build packages.
"""

import os
import shutil
import subprocess
import sys
from pathlib import Path

SKIPPED = 77
PROGRAM = """
import sys, qrvsettings
assert qrvsettings.__file__.startswith(sys.argv[1]), qrvsettings.__file__
with qrvsettings.open() as settings:
    settings.set("Test.A", 1)
assert settings.stored("Test.A") == 1
"""


def python_that_builds():
    for python in (sys.executable, "/usr/bin/python3"):
        found = subprocess.run([python, "-c", "import setuptools, wheel, pip"], stderr=subprocess.DEVNULL, check=False)
        if found.returncode == 0:
            return python
    return None


def main():
    python = python_that_builds()
    if python is None:
        print("pip, setuptools and wheel are not all installed")
        return SKIPPED
    source, folder, version = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3]
    shutil.rmtree(folder, ignore_errors=True)
    shutil.copytree(source, folder / "source")  # where it also builds
    target = folder / "installed"
    environment = {name: value for name, value in os.environ.items() if name != "PYTHONPATH"}
    environment.update(XDG_CONFIG_HOME=str(folder / "config"), XDG_CONFIG_DIRS=str(folder / "site"), HOME=str(folder))
    subprocess.run([python, "-m", "pip", "install", "--no-build-isolation", "--no-index", "--no-deps", "--quiet",
                    "--disable-pip-version-check", "--target", target, "."], cwd=folder / "source", env=environment,
                   check=True)
    for name in ("qrvsettings/py.typed", f"qrvsettings-{version}.dist-info/METADATA"):
        if not (target / name).is_file():
            print(f"not installed: {name}")
            return 1
    environment["PYTHONPATH"] = str(target)
    return subprocess.run([python, "-c", PROGRAM, str(target)], env=environment, check=False).returncode


sys.exit(main())
