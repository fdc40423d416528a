# SPDX-License-Identifier: MIT
"""How the library is found, and what the package says when it is not."""

import os
import re
import subprocess
import sys
import unittest
from pathlib import Path

import qrvsettings
from qrvsettings import _library

LIBRARY = os.environ["QRVSETTINGS_LIBRARY"]


def run(program, **environment):
    return subprocess.run([sys.executable, "-c", program], text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                          env={**os.environ, **environment}, check=False)


class Loading(unittest.TestCase):
    def test_the_argument_comes_before_the_environment(self):
        settings = qrvsettings.open(LIBRARY)
        self.assertEqual(settings._library.path, LIBRARY)
        result = run(f"import qrvsettings; print(qrvsettings.open({LIBRARY!r})._library.path)",
                     QRVSETTINGS_LIBRARY="missing.so")
        self.assertEqual(result.stdout, LIBRARY + "\n")

    def test_without_both_the_loader_finds_it_by_its_name(self):
        program = "import os; del os.environ['QRVSETTINGS_LIBRARY']\n" \
                  "import qrvsettings; print(qrvsettings.open()._library.path)"
        result = run(program, LD_LIBRARY_PATH=os.path.dirname(LIBRARY))
        self.assertEqual(result.stdout, _library.SONAME + "\n")

    def test_the_name_is_that_of_the_library(self):
        self.assertEqual(_library.SONAME, os.path.basename(LIBRARY))

    def test_the_version_is_that_of_the_library(self):
        project = (Path(__file__).parents[2] / "Python/pyproject.toml").read_text()
        version = re.search('(?m)^version = "(.*)"$', project).group(1)
        self.assertEqual(Path(LIBRARY).resolve().name, f"libQRVSettings.so.{version}")

    def test_a_missing_library_is_named(self):
        with self.assertRaisesRegex(qrvsettings.LibraryError, "missing.so"):
            qrvsettings.open("missing.so")

    def test_another_library_is_told_by_the_function_that_it_lacks(self):
        with self.assertRaisesRegex(qrvsettings.LibraryError, "qrv_"):
            qrvsettings.open("libc.so.6")

    def test_a_failed_attempt_can_be_repeated(self):
        with self.assertRaises(qrvsettings.LibraryError):
            qrvsettings.open("missing.so")
        self.assertEqual(qrvsettings.open(LIBRARY).get("CPU.Menubar.Mode.HistoryGraph.Width"), 40)


class Interface(unittest.TestCase):
    def test_every_public_name_is_there_and_described(self):
        for name in qrvsettings.__all__:
            self.assertTrue(hasattr(qrvsettings, name), name)
            if name not in ("Settable", "Value"):
                self.assertTrue(getattr(qrvsettings, name).__doc__, name)
