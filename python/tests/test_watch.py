import asyncio
import subprocess
import sys
import threading
import time
from pathlib import Path
from typing import List, Optional

import pytest

import yax
from yax import ChangeKind


def test_tells_what_was_changed_since_it_began(registry: yax.Registry) -> None:
    registry["a"]["before"] = 1
    watch = registry["a"].watch()
    assert watch.next(timeout=0) is None
    registry["a"]["n"] = 1
    registry["ab"]["n"] = 1
    registry["a/b"]["t"] = "text"
    registry["a"]["n"] = 2
    del registry["a"]["n"]
    del registry["a"]
    found = [watch.next(timeout=0) for _ in range(7)]
    assert found == [
        (ChangeKind.VALUE_CREATED, "a", "n"),
        (ChangeKind.KEY_CREATED, "a/b", ""),
        (ChangeKind.VALUE_CREATED, "a/b", "t"),
        (ChangeKind.VALUE_SET, "a", "n"),
        (ChangeKind.VALUE_DELETED, "a", "n"),
        (ChangeKind.KEY_DELETED, "a", ""),
        None,
    ]


def test_waits_for_another_program(registry: yax.Registry, file: Path) -> None:
    watch = registry["a"].watch()
    program = "import sys, yax; yax.open(sys.argv[1])['a']['n'] = 1"
    with subprocess.Popen([sys.executable, "-c", program, str(file)]) as other:
        assert next(watch) == (ChangeKind.KEY_CREATED, "a", "")
        assert next(watch) == (ChangeKind.VALUE_CREATED, "a", "n")
    assert other.returncode == 0


def test_waits_no_longer_than_told(registry: yax.Registry) -> None:
    watch = registry["a"].watch()
    begin = time.monotonic()
    assert watch.next(timeout=0.3) is None
    assert time.monotonic() - begin >= 0.29


def test_too_much_is_told_once(registry: yax.Registry) -> None:
    registry["a"]["n"] = 0
    watch = registry["a"].watch()
    for i in range(20000):
        registry["a"]["n"] = i
    with pytest.raises(yax.LimitError):
        watch.next(timeout=0)
    assert watch.next(timeout=0) is None
    registry["a"]["n"] = 1
    assert watch.next(timeout=0) == (ChangeKind.VALUE_SET, "a", "n")


def test_others_run_while_it_waits(registry: yax.Registry) -> None:
    watch = registry["a"].watch()

    async def first() -> Optional[yax.Change]:
        async for change in watch:
            return change
        return None

    async def work() -> List[Optional[yax.Change]]:
        given_up = asyncio.ensure_future(first())
        await asyncio.sleep(0.05)
        given_up.cancel()
        waiting = asyncio.ensure_future(first())
        await asyncio.sleep(0.05)
        registry["a"]["n"] = 1
        return [await waiting, await first()]

    assert asyncio.run(work()) == [(ChangeKind.KEY_CREATED, "a", ""), (ChangeKind.VALUE_CREATED, "a", "n")]
    registry["a"]["n"] = 2
    assert asyncio.run(first()) == (ChangeKind.VALUE_SET, "a", "n")


def test_closing_ends_it(registry: yax.Registry) -> None:
    watch = registry.root.watch()
    errors: List[BaseException] = []

    def wait() -> None:
        try:
            next(watch)
        except yax.NoRightError as error:
            errors.append(error)

    thread = threading.Thread(target=wait)
    thread.start()
    time.sleep(0.05)
    registry.close()
    thread.join()
    assert len(errors) == 1
    with pytest.raises(yax.NoRightError):
        watch.next(timeout=0)


def test_does_not_wait_in_a_transaction(registry: yax.Registry) -> None:
    watch = registry.root.watch()
    with pytest.raises(yax.BusyError):
        with registry.transaction():
            watch.next(timeout=1)
