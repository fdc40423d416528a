# SPDX-License-Identifier: MIT
"""Reading, writing, batches, profiles and saves."""

import os
import plistlib
import subprocess
import sys
import textwrap
import threading
import unittest
from pathlib import Path

import other
import qrvsettings

WIDTH = "CPU.Menubar.Mode.HistoryGraph.Width"


class Settings(unittest.TestCase):
    def test_a_process_has_one_store(self):
        settings = qrvsettings.open()
        self.assertIs(qrvsettings.open(), settings)
        with self.assertRaisesRegex(qrvsettings.LibraryError, "loaded already"):
            qrvsettings.open("another.so")

    def test_a_setting_has_its_default_until_it_is_set(self):
        settings = qrvsettings.open()
        self.assertEqual((settings.get(WIDTH), settings.stored(WIDTH), settings.default(WIDTH)), (40, None, 40))
        settings.set(WIDTH, 60)
        self.assertEqual((settings.get(WIDTH), settings.stored(WIDTH), settings.default(WIDTH)), (60, 60, 40))
        settings.unset(WIDTH)
        self.assertEqual((settings.get(WIDTH), settings.stored(WIDTH)), (40, None))

    def test_unset_leaves_no_empty_levels(self):
        settings = qrvsettings.open()
        settings.set("Test.Only.One", 1)
        self.assertIn("Test", settings.stored_values())
        settings.unset("Test.Only.One")
        self.assertNotIn("Test", settings.stored_values())
        self.assertIsNone(settings.get("Test.Only"))

    def test_trees(self):
        settings = qrvsettings.open()
        settings.set("Test.A.B", [1])
        self.assertEqual(settings.stored_values()["Test"], {"A": {"B": [1]}})
        self.assertEqual(settings.get("Test"), {"A": {"B": [1]}})
        self.assertEqual(settings.defaults()["CPU"]["Menubar"]["Mode"]["HistoryGraph"]["Width"], 40)

    def test_a_block_saves_what_it_wrote(self):
        with qrvsettings.open() as settings:
            settings.set(WIDTH, 60)
        self.assertIn("<integer>60</integer>", Path(settings.location).read_text())
        self.assertEqual(other.run(f"print(settings.get('{WIDTH}'))"), "60\n")

    def test_the_end_of_a_process_waits_for_its_saves(self):
        subprocess.run([sys.executable, "-c",
                        f"import qrvsettings; qrvsettings.open().set('{WIDTH}', 61)"], check=True)
        self.assertEqual(qrvsettings.open().get(WIDTH), 61)

    def test_the_end_of_a_process_waits_for_saves_of_another_thread(self):
        subprocess.run([sys.executable, "-c", textwrap.dedent(f"""
            import qrvsettings, threading
            thread = threading.Thread(target=lambda: qrvsettings.open().set('{WIDTH}', 62))
            thread.start(); thread.join()""")], check=True)
        self.assertEqual(qrvsettings.open().get(WIDTH), 62)

    def test_a_batch_is_one_save(self):
        settings = qrvsettings.open()
        settings.wait_for_saves(other.DEADLINE)
        with settings.batch():
            settings.set("Test.A", 1)
            settings.set("Test.B", 2)
            self.assertEqual(settings.get("Test.A"), 1)
            with self.assertRaises(qrvsettings.SaveTimeoutError):
                settings.wait_for_saves(0)
            self.assertNotIn("Test", Path(settings.location).read_text())
        settings.wait_for_saves(other.DEADLINE)
        self.assertEqual(settings.stored_values()["Test"], {"A": 1, "B": 2})
        self.assertIn("Test", Path(settings.location).read_text())

    def test_what_a_failed_batch_wrote_is_saved(self):
        settings = qrvsettings.open()
        with self.assertRaises(ZeroDivisionError), settings.batch():
            settings.set("Test.A", 1)
            raise ZeroDivisionError
        settings.wait_for_saves(other.DEADLINE)
        self.assertEqual(other.run("print(settings.get('Test.A'))"), "1\n")

    def test_writers_lose_nothing_of_each_other(self):
        settings = qrvsettings.open()
        settings.set("Test.Mine", 1)
        settings.wait_for_saves(other.DEADLINE)
        other.run("settings.set('Test.Theirs', 2)")
        settings.set("Test.Later", 3)
        settings.wait_for_saves(other.DEADLINE)
        self.assertEqual(other.run("print(sorted(settings.get('Test').items()))"),
                         "[('Later', 3), ('Mine', 1), ('Theirs', 2)]\n")

    def test_a_refused_key_path_is_named(self):
        settings = qrvsettings.open()
        settings.set("Test.Text", "leaf")
        with self.assertRaises(qrvsettings.InvalidArgumentError) as raised:
            settings.set("Test.Text.Deeper", 1)
        self.assertEqual(raised.exception.key_path, "Test.Text.Deeper")
        self.assertTrue(str(raised.exception).startswith("Test.Text.Deeper: "), raised.exception)
        self.assertGreater(len(raised.exception.reason), 10)
        self.assertEqual(settings.get("Test.Text"), "leaf")

    def test_a_save_that_fails_is_told_with_its_key_paths(self):
        settings = qrvsettings.open()
        settings.wait_for_saves(other.DEADLINE)
        file = Path(settings.location)
        file.unlink()
        file.mkdir()  # which no save replaces
        settings.set("Test.A", 1)
        with self.assertRaises(qrvsettings.SaveError) as raised:
            settings.wait_for_saves(other.DEADLINE)
        self.assertNotIsInstance(raised.exception, qrvsettings.SaveTimeoutError)
        self.assertIn("Test.A", raised.exception.key_paths)
        self.assertIn("Test.A", str(raised.exception))
        self.assertTrue(raised.exception.reason)
        file.rmdir()
        settings.set("Test.B", 2)
        settings.wait_for_saves(other.DEADLINE)

    def test_the_end_of_a_process_tells_what_is_not_saved(self):
        settings = qrvsettings.open()
        settings.wait_for_saves(other.DEADLINE)
        result = subprocess.run([sys.executable, "-c", textwrap.dedent("""
            import pathlib, qrvsettings
            settings = qrvsettings.open()
            settings.wait_for_saves(60)
            pathlib.Path(settings.location).unlink()
            pathlib.Path(settings.location).mkdir()
            settings.set('Test.A', 1)""")], check=True, stderr=subprocess.PIPE, text=True)
        self.assertRegex(result.stderr, "(?m)^qrvsettings: not saved: Test.A: ")

    def test_another_thread_is_refused(self):
        settings = qrvsettings.open()
        raised = []

        def use():
            for call in (lambda: settings.get(WIDTH), lambda: settings.set(WIDTH, 1), settings.drain,
                         lambda: settings.subscribe(print), settings.stored_values,
                         lambda: settings.profile().get(WIDTH)):
                try:
                    call()
                except qrvsettings.WrongThreadError:
                    raised.append(True)

        thread = threading.Thread(target=use)
        thread.start()
        thread.join()
        self.assertEqual(len(raised), 6)
        self.assertEqual(settings.get(WIDTH), 40)


class Site(unittest.TestCase):
    def setUp(self):
        """A default and a lock of the administrator, before this process opens the store."""
        name = Path(other.run("print(settings.location)").strip()).name
        folder = Path(os.environ["XDG_CONFIG_DIRS"]) / "Preferences"
        folder.mkdir(parents=True)
        values = {"CPU": {"Menubar": {"Mode": {"HistoryGraph": {"Width": 44}}}}, "UpdateFrequency": 9}
        (folder / name).write_bytes(plistlib.dumps(values))
        self.locks = folder / f"{name}.locks"
        self.locks.write_text("UpdateFrequency\n")

    def test_a_default_of_the_site_is_the_default(self):
        settings = qrvsettings.open()
        self.assertEqual((settings.get(WIDTH), settings.default(WIDTH)), (44, 44))
        settings.set(WIDTH, 40)
        self.assertEqual((settings.get(WIDTH), settings.is_locked(WIDTH)), (40, False))

    def test_a_locked_setting_cannot_be_written(self):
        settings = qrvsettings.open()
        self.assertTrue(settings.is_locked("UpdateFrequency"))
        for write in (lambda: settings.set("UpdateFrequency", 2), lambda: settings.unset("UpdateFrequency"),
                      lambda: settings.profile("Travel").set("UpdateFrequency", 2)):
            with self.assertRaises(qrvsettings.LockedError) as raised:
                write()
            self.assertEqual(str(raised.exception), f"UpdateFrequency: locked by {self.locks}")
        self.assertEqual(settings.get("UpdateFrequency"), 9)

    def test_a_program_can_do_without_it(self):
        settings = qrvsettings.open(uses_site_defaults=False)
        self.assertEqual(settings.get(WIDTH), 40)
        settings.set("UpdateFrequency", 2)
        self.assertEqual(settings.get("UpdateFrequency"), 2)


class Profiles(unittest.TestCase):
    def test_each_profile_has_its_own_settings(self):
        settings = qrvsettings.open()
        travel = settings.profile("Travel")
        travel.set(WIDTH, 28)
        self.assertEqual((travel.get(WIDTH), settings.profile().get(WIDTH), settings.get(WIDTH)), (28, 40, 40))
        self.assertEqual(travel.key_path(WIDTH), "Profiles.Settings.Travel." + WIDTH)
        self.assertEqual(settings.get("Profiles.Settings.Travel." + WIDTH), 28)
        travel.unset(WIDTH)
        self.assertEqual(travel.get(WIDTH), 40)
        with self.assertRaisesRegex(qrvsettings.WrongKindError, "unset"):
            travel.set(WIDTH, None)

    def test_the_active_profile_stays_active(self):
        settings = qrvsettings.open()
        self.assertEqual(settings.active_profile, "default")
        settings.active_profile = "Home"
        settings.profile("Travel").set(WIDTH, 28)
        self.assertEqual(settings.active_profile, "Home")
        settings.profile().set(WIDTH, 30)
        self.assertEqual(settings.profile("Home").get(WIDTH, int), 30)
