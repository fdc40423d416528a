# SPDX-License-Identifier: MIT
"""The store of this process."""

from __future__ import annotations

import asyncio
import atexit
import sys
import threading
from contextlib import contextmanager
from ctypes import byref, c_bool, c_int32, c_size_t, c_void_p
from types import TracebackType
from typing import Any, Dict, Iterator, List, Optional, Type, TypeVar, Union, overload

from ._errors import Error, LibraryError, LockedError, SaveError, SaveTimeoutError, WrongKindError, WrongThreadError
from ._library import ChangeHandler, Library
from ._values import Color, Settable, Value, Values, c_text
from ._watch import Handler, Subscription, Watch

T = TypeVar("T")

_SAVE_TIMEOUT = 5.0
_SAVE_STATE_FAILED = 1
_SAVE_STATE_PENDING = 2


class _Reader:
    """Reads and writes that exist for plain key paths and for those of a profile."""

    def _read(self, key_path: str) -> Optional[Value]:
        raise NotImplementedError

    @overload
    def get(self, key_path: str) -> Optional[Value]: ...

    @overload
    def get(self, key_path: str, kind: Type[T]) -> Optional[T]: ...

    def get(self, key_path: str, kind: Optional[Type[T]] = None) -> Union[Value, T, None]:
        """The effective value: what is stored, else the default, else None.

        With a type, a value of another type raises WrongKindError; a bool is no int then.
        """
        value = self._read(key_path)
        if kind is None or value is None:
            return value
        if type(value) is kind:
            return value
        raise WrongKindError(f"is of type {type(value).__name__}, not {kind.__name__}", key_path)


class Settings(_Reader):
    """The store of this process. `open` makes it."""

    def __init__(self, library: Library, merges_saves: bool, uses_site_defaults: bool) -> None:
        self._library = library
        self._values = Values(library)
        self._thread = threading.get_ident()
        self._subscriptions: List[Subscription] = []
        self._is_monitoring = False
        self._loop: Optional[asyncio.AbstractEventLoop] = None
        self._handler_error: Optional[BaseException] = None
        self._on_change = ChangeHandler(self._changed)
        library.call("store_set_merges_saves", merges_saves)
        library.call("store_set_uses_site_defaults", uses_site_defaults)
        library.call("store_set_on_change", self._on_change, None, None)
        library.call("store_load_defaults")
        library.call("store_prepare")

    # What is stored

    @property
    def location(self) -> str:
        """The path of the settings file."""
        return str(self._value("store_location"))

    def stored(self, key_path: str) -> Optional[Value]:
        """The stored value, without the default."""
        return self._value_at("settings_stored_object", key_path)

    def default(self, key_path: str) -> Optional[Value]:
        """The default: that of the machine's administrator, else the built-in one."""
        return self._value_at("settings_default", key_path)

    def is_locked(self, key_path: str) -> bool:
        """Whether the administrator of this machine has locked the setting: then the default is its value."""
        is_locked = c_bool()
        self._call("settings_is_locked", c_text(key_path), byref(is_locked), key_path=key_path)
        return is_locked.value

    def stored_values(self) -> Dict[str, Value]:
        """All that is stored, as a tree of dictionaries."""
        return _tree(self._value("settings_stored_values"))

    def defaults(self) -> Dict[str, Value]:
        """All defaults, as a tree of dictionaries."""
        return _tree(self._value("store_defaults"))

    def set(self, key_path: str, value: Settable) -> None:
        """Writes a setting and queues a save. A value that equals its default is not stored.

        Raises LockedError for a locked setting. In a dictionary, settings that are locked stay as they are.
        """
        _refuse_none(key_path, value)
        self._write("settings_set_object", key_path, value)

    def unset(self, key_path: str) -> None:
        """Removes the stored value, and levels above it that are empty then."""
        self._write("settings_set_object", key_path, None)
        self._call_at("settings_remove_empty_levels_above", key_path)
        self._call_at("settings_clear_cache", key_path)  # it says that there is no value, not even a default

    def color(self, key_path: str) -> Optional[Color]:
        """The colour that the stored text is, else that of the default; None without either."""
        self._call_at("settings_clear_cache", key_path)  # which may hold the text
        value = self._value_at("settings_color", key_path)
        self._call_at("settings_clear_cache", key_path)
        return value if isinstance(value, Color) else None

    def set_color(self, key_path: str, color: Color) -> None:
        """Writes a colour as text, as the store keeps colours."""
        _refuse_none(key_path, color)
        self._write("settings_set_color", key_path, color)
        self._call_at("settings_clear_cache", key_path)

    @contextmanager
    def batch(self) -> Iterator[None]:
        """Makes the writes of the block one save. Reads see each write at once.

        Also when the block raises, what it has written until then is saved.
        """
        self._call("settings_prepare_batch_save")
        try:
            yield
        finally:
            self._call("settings_commit_batch_save")

    def _end(self) -> None:
        """The end of the process, which may come on another thread."""
        if threading.get_ident() != self._thread:
            self._library.call("store_wait_for_saves")
            return
        try:
            self.wait_for_saves()
        except Error as error:
            print(f"qrvsettings: not saved: {error}", file=sys.stderr)

    def wait_for_saves(self, timeout: float = _SAVE_TIMEOUT) -> None:
        """Waits, in seconds, until the file holds what this process has written.

        Raises SaveError when it does not, and SaveTimeoutError when a save has not ended in time.
        """
        state, key_paths, reason = c_int32(), c_void_p(), c_void_p()
        self._call("settings_wait_for_saves", int(timeout * 1000), byref(state), byref(key_paths), byref(reason))
        try:
            unsaved = self._texts(key_paths)
            text = str(self._values.value_of(reason))
        finally:
            self._library.release(key_paths)
            self._library.release(reason)
        if state.value == _SAVE_STATE_PENDING:
            raise SaveTimeoutError(f"not saved within {timeout} seconds", unsaved)
        if state.value == _SAVE_STATE_FAILED:
            raise SaveError(text, unsaved)

    def __enter__(self) -> Settings:
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.wait_for_saves()

    # Profiles

    @property
    def active_profile(self) -> str:
        """The profile that `profile` works in without a name; "default" at the start."""
        return str(self._value("store_active_profile"))

    @active_profile.setter
    def active_profile(self, name: str) -> None:
        self._call("store_set_active_profile", c_text(name))

    def profile(self, name: Optional[str] = None) -> Profile:
        """The settings of a profile, or of the one that is active at each call."""
        return Profile(self, name)

    # Changes by other processes

    def subscribe(self, handler: Handler) -> Subscription:
        """Calls the handler with the key paths that another process has changed.

        It is called on this thread: by the loop of asyncio when one runs now, else by `drain`. An exception
        of it comes out there.
        """
        self._check_thread()
        self._attach()
        self._monitor()
        subscription = Subscription(self, handler)
        self._subscriptions.append(subscription)
        return subscription

    def watch(self, prefix: str = "") -> Watch:
        """Iterates over the changes of other processes below a prefix, in the running loop of asyncio."""
        asyncio.get_running_loop()
        return Watch(self, prefix)

    def fileno(self) -> int:
        """For loops of other kinds: readable when there is something to `drain`. Not to be read or closed."""
        descriptor = c_int32()
        self._call("main_queue_fd", byref(descriptor))
        if descriptor.value < 0:
            raise Error("the system has no descriptor left")
        return descriptor.value

    def wait(self, timeout: float) -> bool:
        """Waits, in seconds, until there is something to `drain`; False when there is nothing in time."""
        has_work = c_bool()
        self._call("main_queue_wait", int(timeout * 1e9), byref(has_work))
        return has_work.value

    def drain(self) -> None:
        """Takes over what other processes have changed, and calls the handlers. Never waits."""
        self._call("main_queue_drain", byref(c_size_t()))
        error, self._handler_error = self._handler_error, None
        if error is not None:
            raise error

    def _unsubscribe(self, subscription: Subscription) -> None:
        if subscription in self._subscriptions:
            self._subscriptions.remove(subscription)
        if not self._subscriptions:
            self._detach()

    def _monitor(self) -> None:
        if self._is_monitoring:
            return
        profile = self.active_profile
        self._call("store_set_monitor_file_changes", True)
        self._call("store_prepare")
        self.active_profile = profile  # which that has set to "default"
        self._is_monitoring = True

    def _attach(self) -> None:
        try:
            loop = asyncio.get_running_loop()
        except RuntimeError:
            return
        if self._loop is not loop:
            self._detach()
            loop.add_reader(self.fileno(), self.drain)
            self._loop = loop

    def _detach(self) -> None:
        if self._loop is not None and not self._loop.is_closed():
            self._loop.remove_reader(self.fileno())
        self._loop = None

    def _changed(self, key_paths: int, _: Any) -> None:
        """Called by the library, which an exception must not reach."""
        try:
            changed = self._texts(c_void_p(key_paths))
            for subscription in list(self._subscriptions):
                if subscription in self._subscriptions:  # none before it has closed it
                    subscription.handler(list(changed))
        except BaseException as error:
            self._handler_error = error

    # Calls

    def _check_thread(self) -> None:
        if threading.get_ident() != self._thread:
            raise WrongThreadError("the settings belong to the thread that opened them")

    def _call(self, function: str, *arguments: Any, key_path: Optional[str] = None) -> None:
        self._check_thread()
        self._library.call(function, *arguments, key_path=key_path)

    def _call_at(self, function: str, key_path: str) -> None:
        self._call(function, c_text(key_path), key_path=key_path)

    def _value(self, function: str, *arguments: Any, key_path: Optional[str] = None) -> Optional[Value]:
        self._check_thread()
        return self._values.read(function, *arguments, key_path=key_path)

    def _value_at(self, function: str, key_path: str) -> Optional[Value]:
        return self._value(function, c_text(key_path), key_path=key_path)

    def _read(self, key_path: str) -> Optional[Value]:
        return self._value_at("settings_object", key_path)

    def _write(self, function: str, key_path: str, value: Optional[Settable]) -> None:
        if self.is_locked(key_path):
            raise LockedError(f"locked by {str(self._value_at('settings_lock_file', key_path))}", key_path)
        text = c_text(key_path)
        with self._values.handle_of(value, key_path) as handle:
            self._library.call(function, handle, text, key_path=key_path)

    def _texts(self, array: c_void_p) -> List[str]:
        value = self._values.value_of(array)
        return [str(text) for text in value] if isinstance(value, list) else []


class Profile(_Reader):
    """The settings of one profile, by plain key paths."""

    def __init__(self, settings: Settings, name: Optional[str]) -> None:
        self._settings = settings
        self.name = name

    def key_path(self, key_path: str) -> str:
        """The plain key path of this profile's setting."""
        with self._active():
            return str(self._settings._value_at("settings_profile_key", key_path))

    def set(self, key_path: str, value: Settable) -> None:
        """Writes a setting of the profile and queues a save."""
        _refuse_none(key_path, value)
        with self._active():
            self._settings._write("settings_profile_set_object", key_path, value)

    def unset(self, key_path: str) -> None:
        """Removes the profile's stored value, so that the default applies."""
        with self._active():
            self._settings._write("settings_profile_set_object", key_path, None)
            self._settings._call_at("settings_profile_clear_cache", key_path)

    def _read(self, key_path: str) -> Optional[Value]:
        with self._active():
            return self._settings._value_at("settings_profile_object", key_path)

    @contextmanager
    def _active(self) -> Iterator[None]:
        before = self._settings.active_profile
        if self.name is not None:
            self._settings.active_profile = self.name
        try:
            yield
        finally:
            self._settings.active_profile = before


def _refuse_none(key_path: str, value: object) -> None:
    if value is None:
        raise WrongKindError("None is no value; unset removes a setting", key_path)


def _tree(value: Optional[Value]) -> Dict[str, Value]:
    return value if isinstance(value, dict) else {}


_opened: Optional[Settings] = None


def open(library: Optional[str] = None, *, merges_saves: bool = True, uses_site_defaults: bool = True) -> Settings:
    """The store of this process; the first call starts it, on this thread, and its arguments count.

    `library` is the path of the shared library; without it, the environment variable QRVSETTINGS_LIBRARY is, else
    the loader finds libQRVSettings.so.7.

    Without `merges_saves`, a save replaces the whole file, with all that other processes have written since this
    one read it. Without `uses_site_defaults`, the defaults and locks of the machine's administrator do not count.

    At the end of the process it waits up to 5 seconds for saves; what is not saved then is reported on standard
    error.
    """
    global _opened
    if _opened is None:
        _opened = Settings(Library(library), merges_saves, uses_site_defaults)
        atexit.register(_opened._end)
    elif library is not None and library != _opened._library.path:
        raise LibraryError(f"{_opened._library.path} is loaded already")
    return _opened
