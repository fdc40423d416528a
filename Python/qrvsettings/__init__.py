# SPDX-License-Identifier: MIT
"""The settings store for programs in Python.

    import qrvsettings

    with qrvsettings.open() as settings:
        width = settings.get("CPU.Menubar.Mode.HistoryGraph.Width", int)
        settings.set("CPU.Menubar.Mode.HistoryGraph.Width", 60)

The end of the block waits until the file holds what was written. Changes by other processes come as
they happen:

    async with settings.watch("CPU.") as changes:
        async for change in changes:
            print(change.key_path, change.value)

A process has one store. All of it belongs to the thread that opened it; calls on other threads raise
WrongThreadError.

Kinds are exact: bool, int (from -2**63 to 2**64-1), float, str, bytes, datetime (with a time zone;
UTC when read), list and dict with str as keys. None is no value.
"""

from ._errors import (Error, InvalidArgumentError, LibraryError, LockedError, SaveError, SaveTimeoutError,
                      WrongKindError, WrongThreadError)
from ._settings import Profile, Settings, open
from ._values import Color, Settable, Value
from ._watch import Change, Subscription, Watch

__all__ = ["Change", "Color", "Error", "InvalidArgumentError", "LibraryError", "LockedError", "Profile",
           "SaveError", "SaveTimeoutError", "Settable", "Settings", "Subscription", "Value", "Watch", "WrongKindError",
           "WrongThreadError", "open"]
