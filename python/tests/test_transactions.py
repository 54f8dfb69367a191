import threading
import time
from typing import List

import pytest

import yax


def test_an_exception_takes_everything_back(registry: yax.Registry) -> None:
    registry["k"]["v"] = 1
    with pytest.raises(ZeroDivisionError):
        with registry.transaction():
            registry["k"]["v"] = 2
            registry["other"]["v"] = 1 // 0
    assert dict(registry["k"]) == {"v": 1}
    assert list(registry) == ["k"]


def test_others_see_it_when_it_is_over(registry: yax.Registry) -> None:
    seen: List[object] = []

    def look() -> None:
        seen.append(registry["k"].get("v"))

    def look_apart() -> None:
        thread = threading.Thread(target=look)
        thread.start()
        thread.join()

    with registry.transaction():
        registry["k"]["v"] = 1
        look_apart()
    look_apart()
    assert seen == [None, 1]


def test_each_step_of_a_migration_is_done_once(registry: yax.Registry) -> None:
    def first(key: yax.Key) -> None:
        key["speed"] = 100

    def second(key: yax.Key) -> None:
        key["rate"] = key.read("speed", int) * 1000
        del key["speed"]

    def fails(key: yax.Key) -> None:
        key["half"] = 1
        raise RuntimeError

    registry.migrate("net", [first])
    registry.migrate("net", [first, second])
    with pytest.raises(RuntimeError):
        registry.migrate("net", [first, second, fails])
    assert dict(registry["net"]) == {".version": 2, "rate": 100000}
    with pytest.raises(yax.RangeError):
        registry.migrate("net", [first])


def test_a_step_that_another_does_meanwhile_is_not_done_again(registry: yax.Registry) -> None:
    done: List[str] = []

    def again(key: yax.Key) -> None:
        done.append("again")

    def second(key: yax.Key) -> None:
        done.append("second")

    other = threading.Thread(target=registry.migrate, args=["net", [again, second]])

    def first(key: yax.Key) -> None:
        done.append("first")
        other.start()
        time.sleep(0.05)  # it has looked, and waits

    registry.migrate("net", [first, second])
    other.join()
    assert done == ["first", "second"]
    assert registry["net"][".version"] == 2
