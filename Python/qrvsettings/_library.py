# SPDX-License-Identifier: MIT
"""The C interface of the library, as functions that raise what it reports."""

from __future__ import annotations

import ctypes
import os
from ctypes import (POINTER, c_bool, c_char_p, c_double, c_int32, c_int64, c_size_t, c_uint64, c_void_p)
from typing import Any, Dict, Optional

from ._errors import Error, InvalidArgumentError, LibraryError, WrongKindError

SONAME = "libQRVSettings.so.7"
VARIABLE = "QRVSETTINGS_LIBRARY"

_RESULT_WRONG_KIND = 2
_RESULTS_OF_ARGUMENTS = (3, 4, 5)  # out of range, not UTF-8, refused by the store

ChangeHandler = ctypes.CFUNCTYPE(None, c_void_p, c_void_p)


class CColor(ctypes.Structure):
    _fields_ = [("red", c_double), ("green", c_double), ("blue", c_double), ("alpha", c_double)]


_VALUE_OUT = POINTER(c_void_p)
_FUNCTIONS: Dict[str, tuple[Any, ...]] = {
    "value_create_null": (_VALUE_OUT,),
    "value_create_boolean": (c_bool, _VALUE_OUT),
    "value_create_integer": (c_int64, _VALUE_OUT),
    "value_create_unsigned": (c_uint64, _VALUE_OUT),
    "value_create_real": (c_double, _VALUE_OUT),
    "value_create_date": (c_double, _VALUE_OUT),
    "value_create_string": (c_char_p, c_size_t, _VALUE_OUT),
    "value_create_data": (c_char_p, c_size_t, _VALUE_OUT),
    "value_create_color": (CColor, _VALUE_OUT),
    "value_create_array": (POINTER(c_void_p), c_size_t, _VALUE_OUT),
    "value_create_dictionary": (POINTER(c_char_p), POINTER(c_void_p), c_size_t, _VALUE_OUT),
    "value_get_boolean": (c_void_p, POINTER(c_bool)),
    "value_get_integer": (c_void_p, POINTER(c_int64)),
    "value_get_unsigned": (c_void_p, POINTER(c_uint64)),
    "value_get_real": (c_void_p, POINTER(c_double)),
    "value_get_date": (c_void_p, POINTER(c_double)),
    "value_get_string": (c_void_p, POINTER(c_void_p), POINTER(c_size_t)),
    "value_get_data": (c_void_p, POINTER(c_void_p), POINTER(c_size_t)),
    "value_get_color": (c_void_p, POINTER(CColor)),
    "value_get_count": (c_void_p, POINTER(c_size_t)),
    "value_get_element": (c_void_p, c_size_t, _VALUE_OUT),
    "value_get_entries": (c_void_p, _VALUE_OUT, _VALUE_OUT),
    "store_load_defaults": (),
    "store_prepare": (),
    "store_set_merges_saves": (c_bool,),
    "store_set_uses_site_defaults": (c_bool,),
    "store_set_monitor_file_changes": (c_bool,),
    "store_set_on_change": (ChangeHandler, c_void_p, c_void_p),
    "store_active_profile": (_VALUE_OUT,),
    "store_set_active_profile": (c_char_p,),
    "store_wait_for_saves": (),
    "store_location": (_VALUE_OUT,),
    "store_defaults": (_VALUE_OUT,),
    "settings_stored_values": (_VALUE_OUT,),
    "settings_stored_object": (c_char_p, _VALUE_OUT),
    "settings_object": (c_char_p, _VALUE_OUT),
    "settings_default": (c_char_p, _VALUE_OUT),
    "settings_set_object": (c_void_p, c_char_p),
    "settings_remove_empty_levels_above": (c_char_p,),
    "settings_is_locked": (c_char_p, POINTER(c_bool)),
    "settings_lock_file": (c_char_p, _VALUE_OUT),
    "settings_clear_cache": (c_char_p,),
    "settings_wait_for_saves": (c_int64, POINTER(c_int32), _VALUE_OUT, _VALUE_OUT),
    "settings_prepare_batch_save": (),
    "settings_commit_batch_save": (),
    "settings_profile_key": (c_char_p, _VALUE_OUT),
    "settings_profile_object": (c_char_p, _VALUE_OUT),
    "settings_profile_set_object": (c_void_p, c_char_p),
    "settings_profile_clear_cache": (c_char_p,),
    "settings_color": (c_char_p, _VALUE_OUT),
    "settings_set_color": (c_void_p, c_char_p),
    "main_queue_fd": (POINTER(c_int32),),
    "main_queue_drain": (POINTER(c_size_t),),
    "main_queue_wait": (c_int64, POINTER(c_bool)),
}


class Library:
    def __init__(self, path: Optional[str]) -> None:
        self.path = path or os.environ.get(VARIABLE) or SONAME
        try:
            self._functions = ctypes.CDLL(self.path)
            for name, arguments in _FUNCTIONS.items():
                self._declare(name, c_int32, arguments)
            self._declare("last_error", c_char_p, ())
            self._declare("value_kind", c_int32, (c_void_p,))
            self._declare("value_release", None, (c_void_p,))
        except (OSError, AttributeError) as error:
            raise LibraryError(str(error)) from error

    def _declare(self, name: str, result: Any, arguments: tuple[Any, ...]) -> None:
        function = getattr(self._functions, "qrv_" + name)
        function.restype = result
        function.argtypes = arguments

    def call(self, name: str, *arguments: Any, key_path: Optional[str] = None) -> None:
        """Calls a function that returns a result; raises an error, with the key path."""
        result = getattr(self._functions, "qrv_" + name)(*arguments)
        if result == 0:
            return
        reason = self._functions.qrv_last_error().decode("utf-8", "replace")
        if result == _RESULT_WRONG_KIND:
            raise WrongKindError(reason, key_path)
        if result in _RESULTS_OF_ARGUMENTS:
            raise InvalidArgumentError(reason, key_path)
        raise Error(reason, key_path)

    def kind(self, handle: c_void_p) -> int:
        return int(self._functions.qrv_value_kind(handle))

    def release(self, handle: c_void_p) -> None:
        self._functions.qrv_value_release(handle)
