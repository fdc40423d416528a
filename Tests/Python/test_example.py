# SPDX-License-Identifier: MIT
"""The example host does what the README says of it."""

import signal
import subprocess
import sys
import unittest
from pathlib import Path

import other
import qrvsettings

PROGRAM = Path(__file__).parents[2] / "Examples/python-host/main.py"


class Example(unittest.TestCase):
    def test_sets_a_width_prints_changes_and_ends_when_it_is_asked_to(self):
        with subprocess.Popen([sys.executable, PROGRAM], text=True, stdout=subprocess.PIPE) as host:
            self.assertEqual(host.stdout.readline(), "width: 40\n")
            self.assertTrue(host.stdout.readline().startswith("watching /"))
            other.run("settings.set('UpdateFrequency', 5)")
            self.assertEqual(host.stdout.readline(), "UpdateFrequency: 5\n")
            host.send_signal(signal.SIGTERM)
            self.assertEqual(host.wait(other.DEADLINE), 0)
        self.assertEqual(qrvsettings.open().get("CPU.Menubar.Mode.HistoryGraph.Width"), 60)
