# SPDX-License-Identifier: MIT
"""What a type checker knows of the package: this file is checked and never run."""

from datetime import datetime
from typing import Dict, List, Optional

import qrvsettings


def read(settings: qrvsettings.Settings) -> None:
    width: Optional[int] = settings.get("A", int)
    date: Optional[datetime] = settings.get("A", datetime)
    anything: Optional[qrvsettings.Value] = settings.get("A")
    tree: Dict[str, qrvsettings.Value] = settings.stored_values()
    color: Optional[qrvsettings.Color] = settings.color("A")
    text: Optional[str] = settings.profile("B").get("A", int)  # type: ignore[assignment]
    print(width, date, anything, tree, color, text)


def write(settings: qrvsettings.Settings) -> None:
    settings.set("A", True)
    settings.set("A", [1, "two", [3.5, b"4"]])
    settings.set("A", {"a": {"b": datetime.now()}, "c": qrvsettings.Color(1, 0, 0)})
    settings.set("A", None)  # type: ignore[arg-type]
    settings.set("A", object())  # type: ignore[arg-type]
    with settings.batch(), settings.subscribe(lambda key_paths: print(key_paths[0].upper())):
        settings.unset("A")


async def watch(settings: qrvsettings.Settings) -> List[str]:
    return [change.key_path async for change in settings.watch()]
