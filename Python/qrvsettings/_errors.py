# SPDX-License-Identifier: MIT
from __future__ import annotations

from typing import Optional, Sequence


class Error(Exception):
    """What went wrong. Its text is the key path, if there is one, and the reason."""

    def __init__(self, reason: str, key_path: Optional[str] = None) -> None:
        super().__init__(reason if key_path is None else f"{key_path}: {reason}")
        self.reason = reason
        self.key_path = key_path

    def _name(self, key_path: Optional[str]) -> None:
        """Tells what it is about, once that is known."""
        if key_path is not None:
            self.key_path = key_path
            self.args = (f"{key_path}: {self.reason}",)


class LibraryError(Error, OSError):
    """The library cannot be loaded, or another one is loaded already."""


class InvalidArgumentError(Error, ValueError):
    """The store refuses a key path or a value."""


class LockedError(Error):
    """The administrator of this machine has locked the setting, by a file that the reason names."""


class WrongKindError(Error, TypeError):
    """A value is of a kind that was not asked for, or that no setting can have."""


class WrongThreadError(Error, RuntimeError):
    """The call belongs to the thread that opened the store."""


class SaveError(Error):
    """Something that was written is not in the file. The next save retries it."""

    def __init__(self, reason: str, key_paths: Sequence[str]) -> None:
        super().__init__(reason, ", ".join(key_paths) or None)
        self.key_paths = list(key_paths)


class SaveTimeoutError(SaveError, TimeoutError):
    """A save had not ended in time; it goes on."""
