import enum
import math
import threading
import time
from pathlib import Path
from typing import Any, List, Type

import pytest

import yax

SCHEMA = [
    yax.Setting("net/eth0", "mtu", 1500, least=576, most=9000),
    yax.Setting("net/eth0", "name", "uplink"),
    yax.Setting("net/eth0", "mac", b"\0\x1b"),
    yax.Setting("net", "up", True),
    yax.Setting("net", "load", 0.5, most=1.0),
]


def test_everything_is_made_once_and_what_is_there_stays(registry: yax.Registry) -> None:
    registry["net/eth0"]["mtu"] = 1400
    assert len(registry.apply(SCHEMA).made) == 4
    assert registry.apply(SCHEMA) == yax.Report(made=[], extra=[])
    assert dict(registry["net/eth0"]) == {"mac": b"\0\x1b", "mtu": 1400, "name": "uplink"}
    assert dict(registry["net"]) == {"load": 0.5, "up": 1}


def test_what_does_not_fit_is_told_and_nothing_is_made(registry: yax.Registry) -> None:
    registry["net"]["load"] = 1.5
    with pytest.raises(yax.RangeError, match="value 'load' of key 'net': 1.5 is not from None to 1.0"):
        registry.apply(SCHEMA)
    registry["net"]["load"] = "much"
    with pytest.raises(yax.WrongTypeError, match="value 'load' of key 'net': it is a text, not float"):
        registry.apply(SCHEMA)
    assert list(registry) == ["net"]


def test_all_that_does_not_fit_is_told(registry: yax.Registry) -> None:
    registry["net/eth0"].update(mtu=70000, name=5)
    registry["net"]["load"] = math.nan
    with pytest.raises(yax.RangeError) as error:
        registry.apply(SCHEMA)
    assert error.value.unfit == [
        "value 'mtu' of key 'net/eth0': 70000 is not from 576 to 9000 (status 34)",
        "value 'name' of key 'net/eth0': it is a number, not str (status 79)",
        "value 'load' of key 'net': nan is not from None to 1.0 (status 34)",
    ]
    assert str(error.value) == "; ".join(error.value.unfit)
    assert dict(registry["net/eth0"]) == {"mtu": 70000, "name": 5} and "up" not in registry["net"]


ROW_ERRORS = [
    (yax.RangeError, yax.Setting("k", "n", 5, least=6), "value 'n' of key 'k': 5 is not from 6 to None"),
    (yax.RangeError, yax.Setting("k", "n", 5, least=9, most=1), "value 'n' of key 'k': 5 is not from 9 to 1"),
    (yax.RangeError, yax.Setting("k", "n", 5, least=10**5000), "value 'n' of key 'k': 5 is not from a number of too"),
    (yax.RangeError, yax.Setting("k", "n", math.nan, most=1), "value 'n' of key 'k': nan is not from None to 1"),
    (yax.RangeError, yax.Setting("k", "n", 2**63), "value 'n' of key 'k': 9223372036854775808 does not fit into 64"),
    (yax.LimitError, yax.Setting("k", "n", "x" * 1024), "value 'n' of key 'k': it is longer than 1024 bytes"),
    (yax.LimitError, yax.Setting("k", "n", b"x" * 1025), "value 'n' of key 'k': it is longer than 1024 bytes"),
    (yax.BadArgumentError, yax.Setting("k", "n", "a\0b"), "value 'n' of key 'k': a zero byte is in the text"),
    (yax.BadArgumentError, yax.Setting("k", "n", "a", most=1), "value 'n' of key 'k': str has no range"),
    (yax.BadArgumentError, yax.Setting("k//k", "n", 1), "value 'n' of key 'k//k': "),
    (yax.BadArgumentError, yax.Setting("k", "n" * 32, 1), f"value '{'n' * 32}' of key 'k': "),
    (yax.BadArgumentError, yax.Setting("k", "", 1), "value '' of key 'k': "),
    (yax.BadArgumentError, yax.Setting("k", "a\0b", 1), r"value 'a\x00b' of key 'k': a zero byte is in the name"),
]


@pytest.mark.parametrize("kind, row, words", ROW_ERRORS)
def test_what_cannot_be_a_setting_is_told(
    registry: yax.Registry, kind: Type[yax.YaxError], row: yax.Setting, words: str
) -> None:
    with pytest.raises(kind) as error:
        registry.apply([yax.Setting("first", "v", 1), row])
    assert str(error.value).startswith(words)
    assert list(registry) == []
    with pytest.raises(kind):
        registry.reset([yax.Setting("first", "v", 1), row])
    assert list(registry) == []


def test_a_first_value_out_of_range_is_told_where_another_is_there(registry: yax.Registry) -> None:
    registry["k"]["n"] = 7
    with pytest.raises(yax.RangeError, match="value 'n' of key 'k': 5 is not from 6 to None"):
        registry.apply([yax.Setting("k", "n", 5, least=6)])


@pytest.mark.parametrize(
    "rows, words",
    [
        (["row"], "setting 1 of the schema: str is no setting"),
        ([yax.Setting("k", "n", 1), None], "setting 2 of the schema: NoneType is no setting"),
        (5, "schema: int is no list"),
        ([yax.Setting("k", "n", None)], "value 'n' of key 'k': NoneType is no number, text or bytes"),
        ([yax.Setting("k", "n", 1, least="1")], "value 'n' of key 'k': str is no end of a range"),
        ([yax.Setting("k", 5, 1)], "value 5 of key 'k': int is no name"),
        ([yax.Setting(b"k", "n", 1)], "key b'k': bytes is no path"),
    ],
)
def test_what_is_no_setting_is_told(registry: yax.Registry, rows: Any, words: str) -> None:
    for call in (registry.apply, registry.reset):
        with pytest.raises(TypeError) as error:
            call(rows)
        assert str(error.value) == words
    assert list(registry) == []


@pytest.mark.parametrize(
    "other, values",
    [
        (yax.Setting("k", "n", "a"), "1 and 'a'"),
        (yax.Setting("/k", "n", 2), "1 and 2"),
        (yax.Setting("k", "n", 1.0), "1 and 1.0"),
        (yax.Setting("k", "n", True), "1 and True"),
        (yax.Setting("k", "n", 1, most=5), "1 and 1"),
    ],
)
def test_settings_of_one_name_that_differ_are_told(registry: yax.Registry, other: yax.Setting, values: str) -> None:
    words = f"value 'n' of key '/?k': it stands in the schema twice, as {values}"
    with pytest.raises(yax.BadArgumentError, match=words):
        registry.apply([yax.Setting("k", "n", 1), other])
    assert list(registry) == []


def test_equal_settings_of_one_name_are_one(registry: yax.Registry) -> None:
    rows: List[yax.Setting] = [yax.Setting("k", "n", 1), yax.Setting("/k", "n", 1)]
    assert registry.apply(rows) == yax.Report(made=["k n"], extra=[])


def test_all_wrong_settings_are_told(registry: yax.Registry) -> None:
    with pytest.raises(yax.LimitError) as error:
        rows = [yax.Setting("k", "a", b"x" * 1025), yax.Setting("k", "b", 1), yax.Setting("k", "c", 1, least=2)]
        registry.apply(rows)
    assert [line[:9] for line in error.value.unfit] == ["value 'a'", "value 'c'"]


def test_enumerations_and_other_bytes_are_first_values(registry: yax.Registry) -> None:
    class Mode(enum.IntEnum):
        AUTOMATIC = 3

    rows = [yax.Setting("k", "mode", Mode.AUTOMATIC), yax.Setting("k", "mac", bytearray(b"ab"))]
    assert len(registry.apply(rows).made) == 2
    assert registry.apply(rows).made == []
    assert dict(registry["k"]) == {"mac": b"ab", "mode": 3}


def test_what_another_makes_meanwhile_stays(registry: yax.Registry) -> None:
    other = threading.Thread(target=registry.apply, args=[SCHEMA])
    with registry.transaction():
        registry["net/eth0"]["mtu"] = 1400
        other.start()
        time.sleep(0.05)  # it has looked, and waits
    other.join()
    assert registry["net/eth0"]["mtu"] == 1400 and registry["net"]["up"] == 1


def test_nothing_is_changed_where_nothing_is_missing(registry: yax.Registry, file: Path) -> None:
    registry.apply(SCHEMA)
    registry.close()
    with yax.open(file, read_only=True) as read:
        assert read.apply(SCHEMA).made == []


def test_what_is_too_much_is_told(registry: yax.Registry) -> None:
    registry["net/eth0"]["speed"] = 100
    assert registry.apply(SCHEMA).extra == ["net/eth0 speed"]


def test_a_reset_brings_all_first_values_back(registry: yax.Registry) -> None:
    registry.apply(SCHEMA)
    registry["net/eth0"].update(mtu=1400, name=5)
    registry.reset(SCHEMA)
    assert registry["net/eth0"]["mtu"] == 1500 and registry["net/eth0"]["name"] == "uplink"
