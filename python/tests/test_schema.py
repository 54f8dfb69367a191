import threading
import time
from pathlib import Path

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
