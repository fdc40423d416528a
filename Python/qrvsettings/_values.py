# SPDX-License-Identifier: MIT
"""Values of Python from and to values of the library."""

from __future__ import annotations

import ctypes
from contextlib import contextmanager
from ctypes import byref, c_bool, c_char_p, c_double, c_int64, c_size_t, c_uint64, c_void_p
from dataclasses import dataclass
from datetime import datetime, timedelta, timezone
from typing import Any, Callable, Dict, Iterator, List, Mapping, Optional, Sequence, Tuple, Union

from ._errors import Error, InvalidArgumentError, WrongKindError
from ._library import CColor, Library


@dataclass(frozen=True)
class Color:
    """A colour in the sRGB space; components from 0 to 1."""

    red: float
    green: float
    blue: float
    alpha: float = 1.0


Value = Union[bool, int, float, str, bytes, datetime, Color, List["Value"], Dict[str, "Value"]]
"""What a setting can be when it is read."""

Settable = Union[bool, int, float, str, bytes, bytearray, datetime, Color, Sequence["Settable"],
                 Mapping[str, "Settable"]]
"""What a setting can be set to."""

_EPOCH = datetime(1970, 1, 1, tzinfo=timezone.utc)
_SMALLEST_INTEGER = -2**63
_SMALLEST_UNSIGNED = 2**63
_LARGEST_INTEGER = 2**64 - 1


class Values:
    """Handles of the library live no longer than a call here."""

    def __init__(self, library: Library) -> None:
        self._library = library
        # By the numbers of the kinds; a null marker is no value either.
        self._readers: Dict[int, Callable[[c_void_p], Optional[Value]]] = {
            0: lambda _: None, 1: self._boolean, 2: self._integer, 3: self._real, 4: self._date,
            5: lambda _: None, 6: self._string, 7: self._data, 8: self._color, 9: self._array,
            10: self._dictionary}

    def read(self, function: str, *arguments: Any, key_path: Optional[str] = None) -> Optional[Value]:
        """The value that a function of the library gives as its last parameter."""
        handle = c_void_p()
        self._library.call(function, *arguments, byref(handle), key_path=key_path)
        try:
            return self.value_of(handle)
        except Error as error:
            error._name(key_path)
            raise
        finally:
            self._library.release(handle)

    def value_of(self, handle: c_void_p) -> Optional[Value]:
        kind = self._library.kind(handle)
        reader = self._readers.get(kind)
        if reader is None:
            raise WrongKindError(f"a value of kind {kind}, which is newer than this package")
        return reader(handle)

    @contextmanager
    def handle_of(self, value: Optional[Settable], key_path: Optional[str] = None) -> Iterator[c_void_p]:
        """A handle of the value, until the end of the block."""
        try:
            handle = self._create(value)
        except Error as error:
            error._name(key_path)
            raise
        try:
            yield handle
        finally:
            self._library.release(handle)

    # Reading: the library checks the kind once more, and so a mistake here is an error and no garbage.

    def _get(self, function: str, handle: c_void_p, result: Any) -> Any:
        self._library.call(function, handle, byref(result))
        return result.value

    def _boolean(self, handle: c_void_p) -> bool:
        return bool(self._get("value_get_boolean", handle, c_bool()))

    def _integer(self, handle: c_void_p) -> int:
        try:
            return int(self._get("value_get_integer", handle, c_int64()))
        except InvalidArgumentError:  # above 2**63-1
            return int(self._get("value_get_unsigned", handle, c_uint64()))

    def _real(self, handle: c_void_p) -> float:
        return float(self._get("value_get_real", handle, c_double()))

    def _date(self, handle: c_void_p) -> datetime:
        seconds = float(self._get("value_get_date", handle, c_double()))
        try:
            return _EPOCH + timedelta(seconds=seconds)
        except (OverflowError, ValueError) as error:
            raise InvalidArgumentError(f"a date {seconds} seconds from 1970, which no datetime can be") from error

    def _bytes(self, function: str, handle: c_void_p) -> bytes:
        place, length = c_void_p(), c_size_t()
        self._library.call(function, handle, byref(place), byref(length))
        return ctypes.string_at(place, length.value) if length.value else b""

    def _string(self, handle: c_void_p) -> str:
        return self._bytes("value_get_string", handle).decode("utf-8", "surrogateescape")

    def _data(self, handle: c_void_p) -> bytes:
        return self._bytes("value_get_data", handle)

    def _color(self, handle: c_void_p) -> Color:
        color = CColor()
        self._library.call("value_get_color", handle, byref(color))
        return Color(color.red, color.green, color.blue, color.alpha)

    def _array(self, handle: c_void_p) -> List[Value]:
        elements: List[Value] = []
        for index in range(self._get("value_get_count", handle, c_size_t())):
            element = self.read("value_get_element", handle, index)
            if element is not None:
                elements.append(element)
        return elements

    def _dictionary(self, handle: c_void_p) -> Dict[str, Value]:
        keys, elements = c_void_p(), c_void_p()
        self._library.call("value_get_entries", handle, byref(keys), byref(elements))
        try:
            return dict(zip(map(str, self._array(keys)), self._array(elements)))
        finally:
            self._library.release(keys)
            self._library.release(elements)

    # Writing

    def _made(self, function: str, *arguments: Any) -> c_void_p:
        handle = c_void_p()
        self._library.call(function, *arguments, byref(handle))
        return handle

    def _create(self, value: Optional[Settable]) -> c_void_p:
        if value is None:
            return self._made("value_create_null")
        if isinstance(value, bool):
            return self._made("value_create_boolean", value)
        if isinstance(value, int):
            return self._create_integer(value)
        if isinstance(value, float):
            return self._made("value_create_real", value)
        if isinstance(value, str):
            text = utf8(value)
            return self._made("value_create_string", text, len(text))
        if isinstance(value, (bytes, bytearray)):
            return self._made("value_create_data", bytes(value), len(value))
        if isinstance(value, datetime):
            return self._create_date(value)
        if isinstance(value, Color):
            return self._made("value_create_color", CColor(value.red, value.green, value.blue, value.alpha))
        if isinstance(value, Mapping):
            return self._create_dictionary(value)
        if isinstance(value, Sequence):
            return self._create_array(value)
        raise WrongKindError(f"no setting can be of type {type(value).__name__}")

    def _create_integer(self, value: int) -> c_void_p:
        if not _SMALLEST_INTEGER <= value <= _LARGEST_INTEGER:
            raise InvalidArgumentError(f"{value} is not from -2**63 to 2**64-1")
        if value >= _SMALLEST_UNSIGNED:
            return self._made("value_create_unsigned", value)
        return self._made("value_create_integer", value)

    def _create_date(self, value: datetime) -> c_void_p:
        if value.utcoffset() is None:
            raise InvalidArgumentError(f"{value} has no time zone")
        return self._made("value_create_date", (value - _EPOCH).total_seconds())

    def _create_array(self, values: Sequence[Settable]) -> c_void_p:
        with self._handles_of(values) as handles:
            return self._made("value_create_array", (c_void_p * len(handles))(*handles), len(handles))

    def _create_dictionary(self, entries: Mapping[str, Settable]) -> c_void_p:
        keys = []
        for key in entries:
            keys.append(c_text(key))
        with self._handles_of(list(entries.values())) as handles:
            count = len(handles)
            return self._made("value_create_dictionary", (c_char_p * count)(*keys), (c_void_p * count)(*handles),
                              count)

    @contextmanager
    def _handles_of(self, values: Sequence[Settable]) -> Iterator[Tuple[c_void_p, ...]]:
        handles: List[c_void_p] = []
        try:
            for value in values:
                if value is None:
                    raise WrongKindError("None can be no element")
                handles.append(self._create(value))
            yield tuple(handles)
        finally:
            for handle in handles:
                self._library.release(handle)


def utf8(text: str) -> bytes:
    try:
        return text.encode()
    except UnicodeEncodeError as error:
        raise InvalidArgumentError(f"{text!r} is not UTF-8") from error


def c_text(text: str) -> bytes:
    """For parameters that end at a zero byte: key paths, keys, and names of profiles."""
    if not isinstance(text, str):
        raise WrongKindError(f"{text!r} is no str")
    if "\0" in text:
        raise InvalidArgumentError(f"{text!r} contains a zero byte")
    return utf8(text)
