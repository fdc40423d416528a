# SPDX-License-Identifier: MIT
"""Changes that other processes make, for handlers and for asyncio."""

from __future__ import annotations

import asyncio
from dataclasses import dataclass
from types import TracebackType
from typing import TYPE_CHECKING, AsyncIterator, Callable, Dict, List, Optional, Type

from ._values import Value

if TYPE_CHECKING:
    from ._settings import Settings

Handler = Callable[[List[str]], None]


@dataclass(frozen=True)
class Change:
    """A setting that another process has changed, and its effective value when this was handed out."""

    key_path: str
    value: Optional[Value]


class Subscription:
    """A handler that is called until `close`, or until the end of the block."""

    def __init__(self, settings: Settings, handler: Handler) -> None:
        self._settings = settings
        self.handler = handler

    def close(self) -> None:
        self._settings._unsubscribe(self)

    def __enter__(self) -> Subscription:
        return self

    def __exit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                 trace: Optional[TracebackType]) -> None:
        self.close()


class Watch(AsyncIterator[Change]):
    """Iterates over the changes since it was made, for as long as it is not closed.

    A key path that changes several times before it is handed out is handed out once.
    """

    def __init__(self, settings: Settings, prefix: str) -> None:
        self._settings = settings
        self._prefix = prefix
        self._waiting: Dict[str, None] = {}  # key paths, in the order of their arrival
        self._news = asyncio.Event()
        self._is_closed = False
        self._subscription = settings.subscribe(self._receive)

    def _receive(self, key_paths: List[str]) -> None:
        self._waiting.update(dict.fromkeys(path for path in key_paths if path.startswith(self._prefix)))
        self._news.set()

    def close(self) -> None:
        """Ends the iteration, in another task too, after what has been received."""
        self._is_closed = True
        self._subscription.close()
        self._news.set()

    async def __anext__(self) -> Change:
        while not self._waiting:
            if self._is_closed:
                raise StopAsyncIteration
            self._news.clear()
            await self._news.wait()
        key_path = next(iter(self._waiting))
        del self._waiting[key_path]
        return Change(key_path, self._settings.get(key_path))

    async def __aenter__(self) -> Watch:
        return self

    async def __aexit__(self, kind: Optional[Type[BaseException]], error: Optional[BaseException],
                        trace: Optional[TracebackType]) -> None:
        self.close()
