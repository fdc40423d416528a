# SPDX-License-Identifier: MIT
"""Values keep their kind and all of their digits, in this process and through the file."""

import math
import unittest
from datetime import date, datetime, timedelta, timezone

import other
import qrvsettings

EXACT = {
    "true": True, "false": False,
    "one": 1, "negative": -7, "smallest": -2**63, "large": 2**63 - 1, "larger": 2**63, "largest": 2**64 - 1,
    "real": 1.0, "tenth": 0.1, "huge": 1.7976931348623157e308, "tiny": 5e-324, "infinite": math.inf,
    "text": "Grüße, 世界 & <tag>", "empty text": "", "text of digits": "1",
    "bytes": bytes(range(256)), "no bytes": b"",
    "date": datetime(2026, 11, 22, 10, 30, 15, tzinfo=timezone.utc),
    "early date": datetime(1901, 1, 1, tzinfo=timezone.utc),
    "list": [1, "two", 3.0, b"4", [True], {}], "empty list": [],
    "dictionary": {"inner": {"deeper": [1, 2]}, "flag": False, "": "of an empty key"},
}


def exactly(value):
    """With the kinds, which Python's equality does not tell apart."""
    if isinstance(value, list):
        return [exactly(element) for element in value]
    if isinstance(value, dict):
        return {key: exactly(element) for key, element in value.items()}
    return type(value), value


class Values(unittest.TestCase):
    def test_a_value_is_read_as_it_was_written(self):
        settings = qrvsettings.open()
        for name, value in EXACT.items():
            settings.set(f"Test.{name}", value)
            self.assertEqual(exactly(settings.get(f"Test.{name}")), exactly(value), name)
            self.assertEqual(exactly(settings.stored(f"Test.{name}")), exactly(value), name)

    def test_a_value_is_read_by_another_process_as_it_was_written(self):
        with qrvsettings.open() as settings, settings.batch():
            settings.set("Test", EXACT)
        text = other.run("print(repr(settings.get('Test')))")
        read = eval(text, {"datetime": __import__("datetime"), "inf": math.inf})
        self.assertEqual(exactly(read), exactly(EXACT))

    def test_a_date_is_an_instant_whatever_its_time_zone(self):
        settings = qrvsettings.open()
        noon = datetime(2026, 7, 1, 12, tzinfo=timezone(timedelta(hours=2)))
        settings.set("Test.Date", noon)
        read = settings.get("Test.Date", datetime)
        self.assertEqual(read, noon)
        self.assertEqual(read.isoformat(), "2026-07-01T10:00:00+00:00")

    def test_a_date_without_a_time_zone_is_refused(self):
        settings = qrvsettings.open()
        with self.assertRaisesRegex(qrvsettings.InvalidArgumentError, "^Test.Date: .* has no time zone$"):
            settings.set("Test.Date", datetime(2026, 7, 1))

    def test_a_date_that_python_does_not_have_is_refused_with_its_key_path(self):
        settings = qrvsettings.open()
        library = settings._library
        from ctypes import byref, c_void_p
        handle = c_void_p()
        library.call("value_create_date", 1e15, byref(handle))
        library.call("settings_set_object", handle, b"Test.Date")
        library.release(handle)
        with self.assertRaisesRegex(qrvsettings.InvalidArgumentError, "^Test.Date: a date 1000000000000000.0 seconds"):
            settings.get("Test.Date")

    def test_an_integer_out_of_range_is_refused(self):
        settings = qrvsettings.open()
        for value in (2**64, -2**63 - 1):
            with self.assertRaisesRegex(qrvsettings.InvalidArgumentError, f"^Test.Integer: {value} is not from"):
                settings.set("Test.Integer", value)

    def test_what_is_no_value_is_refused_with_its_key_path(self):
        settings = qrvsettings.open()
        for value in (None, object(), 1j, date(2026, 1, 1), {1, 2}, [None], {"a": None}, {1: "one"}, [object()]):
            with self.assertRaisesRegex(qrvsettings.WrongKindError, "^Test.X: "):
                settings.set("Test.X", value)
        for value in ("\ud800", {"\ud800": 1}, {"a\0b": 1}):
            with self.assertRaisesRegex(qrvsettings.InvalidArgumentError, "^Test.X: "):
                settings.set("Test.X", value)
        self.assertIsNone(settings.get("Test.X"))

    def test_what_is_no_colour_and_no_key_path_is_refused(self):
        settings = qrvsettings.open()
        with self.assertRaisesRegex(qrvsettings.InvalidArgumentError, "^Test.X: .*colour"):
            settings.set_color("Test.X", "red")
        with self.assertRaisesRegex(qrvsettings.WrongKindError, "^Test.X: "):
            settings.set_color("Test.X", None)
        for call in (settings.get, settings.stored, settings.unset, settings.profile().get):
            for key_path in (None, 5, b"bytes"):
                with self.assertRaisesRegex(qrvsettings.WrongKindError, "is no str$"):
                    call(key_path)

    def test_text_may_contain_a_zero_byte_and_a_key_path_may_not(self):
        settings = qrvsettings.open()
        settings.set("Test.Text", "a\0b")
        self.assertEqual(settings.get("Test.Text"), "a\0b")
        with self.assertRaisesRegex(qrvsettings.InvalidArgumentError, "zero byte"):
            settings.get("Test\0.Text")

    def test_a_kind_can_be_asked_for(self):
        settings = qrvsettings.open()
        self.assertEqual(settings.get("CPU.Menubar.Mode.HistoryGraph.Width", int), 40)
        self.assertIsNone(settings.get("Not.There", int))
        settings.set("Test.Flag", True)
        with self.assertRaisesRegex(qrvsettings.WrongKindError, "^Test.Flag: is of type bool, not int$"):
            settings.get("Test.Flag", int)
        self.assertIs(settings.get("Test.Flag", bool), True)

    def test_colours(self):
        settings = qrvsettings.open()
        key_path = "Network.Menubar.Mode.Status.NoIP.Color"
        default = settings.color(key_path)
        self.assertIsInstance(default, qrvsettings.Color)
        settings.set_color(key_path, qrvsettings.Color(1, 0.5, 0))
        self.assertEqual(settings.color(key_path), qrvsettings.Color(1, 0.5, 0, 1))
        self.assertEqual(settings.get(key_path), "1 0.5 0 1")
        self.assertEqual(settings.color(key_path), qrvsettings.Color(1, 0.5, 0, 1))
        settings.unset(key_path)
        self.assertEqual(settings.color(key_path), default)
        settings.set(key_path, "no colour")
        self.assertEqual(settings.color("Not.There"), None)
