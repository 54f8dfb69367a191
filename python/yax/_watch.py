"""What is changed, by whomever."""

from __future__ import annotations

import asyncio
import ctypes
import enum
import math
import time
from concurrent.futures import Future, ThreadPoolExecutor
from typing import TYPE_CHECKING, AsyncIterator, Iterator, NamedTuple, Optional

from ._arguments import seconds_of, shown
from ._errors import Status
from ._library import ChangeRecord, check, lib

if TYPE_CHECKING:
    from ._registry import Key


class ChangeKind(enum.IntEnum):
    """What a change is."""

    KEY_CREATED = 0
    KEY_DELETED = 1
    KEY_RESTORED = 2
    VALUE_CREATED = 3
    VALUE_SET = 4
    VALUE_DELETED = 5
    DEFAULT_CHANGED = 6
    RIGHTS_CHANGED = 7
    WATCH_BITS_CHANGED = 8
    COMPACTED = 9


class Change(NamedTuple):
    """One change: of the key at ``path``, and of its value ``name``, which is "" where none is concerned."""

    kind: ChangeKind
    path: str
    name: str


class Watch(Iterator[Change], AsyncIterator[Change]):
    """The changes of a key and of all below it, by this program or another, since the watch was made.

    ``for change in key.watch()`` waits for each, ``async for`` lets others run meanwhile. ``LimitError`` says that
    so much was changed that some of it is not known: look at everything that matters, and go on.

    >>> watch = registry["network"].watch()
    >>> registry["network/eth0"]["mtu"] = 1500
    >>> for change in watch:
    ...     print(change.kind.name, change.path)
    ...     if change.name:
    ...         break
    KEY_CREATED network/eth0
    VALUE_CREATED network/eth0
    >>> watch.next(timeout=0) is None
    True
    """

    _SLICE = 0.2  # seconds that a call waits at most: signals are handled, and close goes on, between two

    def __init__(self, key: "Key") -> None:
        from ._registry import Key  # which knows this class

        if not isinstance(key, Key):
            raise TypeError(f"watching {shown(key)}: {type(key).__name__} is no key")
        handle = ctypes.c_void_p()
        self._what = f"watching key {key.path!r}"
        check(lib.yax_watch_key(key._key, ctypes.byref(handle)), self._what)
        self._watch = handle
        self._registry = key._registry
        self._pool = ThreadPoolExecutor(1)  # starts its thread when that is needed
        self._pending: Optional[Future[Optional[Change]]] = None

    def __del__(self) -> None:
        if hasattr(self, "_watch"):
            lib.yax_watch_free(self._watch)

    def next(self, timeout: Optional[float] = None) -> Optional[Change]:
        """The next change; None when there was none within the seconds. Waits for ever when none are told."""
        end = None
        if timeout is not None:
            end = time.monotonic() + seconds_of(timeout, f"timeout of {self._what}", math.inf)
        while True:
            left = self._SLICE if end is None else min(self._SLICE, max(0.0, end - time.monotonic()))
            change = self._look(left)
            if change is not None or (end is not None and time.monotonic() >= end):
                return change

    def _look(self, seconds: float) -> Optional[Change]:
        record = ChangeRecord()
        with self._registry._kept_open():
            status = lib.yax_watch_next(self._watch, int(seconds * 1000), ctypes.byref(record))
            if status == Status.NO_DATA:
                return None
            check(status, self._what)
            path = record.path.decode("utf-8", "surrogateescape")
            name = record.name.decode("utf-8", "surrogateescape")
        return Change(ChangeKind(record.kind), path, name)

    def __iter__(self) -> "Watch":
        return self

    def __next__(self) -> Change:
        change = self.next()
        assert change is not None
        return change

    def __aiter__(self) -> "Watch":
        return self

    async def __anext__(self) -> Change:
        while True:
            # Who is cancelled leaves his look to the next one, with what it finds.
            if self._pending is None:
                self._pending = self._pool.submit(self._look, self._SLICE)
            await asyncio.wait([asyncio.wrap_future(self._pending)])
            look, self._pending = self._pending, None
            change = look.result()
            if change is not None:
                return change
