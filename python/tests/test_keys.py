import threading
from pathlib import Path
from typing import List

import pytest

import yax


def test_a_key_is_a_mapping(registry: yax.Registry) -> None:
    key = registry["network/eth0"]
    assert not key.exists() and len(key) == 0 and list(key) == []
    key["mtu"] = 1500
    key.update({"name": "uplink", "mac": b"\0\x1b\xff"}, load=0.5)
    assert dict(key) == {"load": 0.5, "mac": b"\0\x1b\xff", "mtu": 1500, "name": "uplink"}
    assert list(key) == sorted(key)
    assert "mtu" in key and "speed" not in key
    assert key.get("speed", 100) == 100
    assert key.setdefault("speed", 10) == 10 and key["speed"] == 10
    assert key.pop("speed") == 10
    assert key == {"load": 0.5, "mac": b"\0\x1b\xff", "mtu": 1500, "name": "uplink"}
    del key["load"]
    with pytest.raises(KeyError):
        key["load"]
    with pytest.raises(yax.NotFoundError, match="value 'load' of key 'network/eth0'"):
        del key["load"]
    key.clear()
    assert len(key) == 0 and key.exists()


def test_names_that_begin_alike_make_exactly_their_keys(registry: yax.Registry) -> None:
    names = ["main", "max", "temperature", "tempo", "network", "net"]
    for name in names:
        registry[name].make()
        registry[name].make()
    assert registry.root.children() == sorted(names)


def test_keys_are_reached_walked_and_removed(registry: yax.Registry) -> None:
    registry["a/b/c"]["v"] = 1
    registry["a"].at("d").make()
    assert [key.path for key in registry["a"].walk()] == ["a", "a/b", "a/b/c", "a/d"]
    assert list(registry) == ["a", "a/b", "a/b/c", "a/d"]
    assert registry["a"].at("/b/c") == registry["/a/b/c"]
    assert registry["a"].at("").path == "a"
    assert "a/b" in registry and "b" not in registry
    del registry["a/b"]
    assert list(registry) == ["a", "a/d"]
    with pytest.raises(KeyError):
        del registry["a/b"]
    with pytest.raises(yax.BadArgumentError):
        registry["a//b"]
    with pytest.raises(yax.BadArgumentError):
        registry.root.remove()


def test_branches_are_copied_and_moved(registry: yax.Registry) -> None:
    registry["defaults/net"]["mtu"] = 1500
    copy = registry["defaults"].copy_to("now")
    assert copy.at("net")["mtu"] == 1500
    assert copy.move_to("old").path == "old"
    assert "now" not in registry
    with pytest.raises(yax.ExistsError):
        registry["old"].copy_to("defaults")


def test_a_backup_brings_a_branch_back(registry: yax.Registry, tmp_path: Path) -> None:
    registry["k"]["v"] = 1
    registry["k"].backup(tmp_path / "backup")
    del registry["k"]
    registry["k"].restore(tmp_path / "backup")
    assert registry["k"]["v"] == 1
    with pytest.raises(OSError):
        registry["k"].restore(tmp_path / "missing")


@pytest.mark.parametrize("durability", [yax.Durability.NONE, yax.Durability.USUAL])
def test_a_restoring_that_fails_makes_nothing(file: Path, durability: yax.Durability) -> None:
    bad = file.with_name("bad")
    bad.write_text("something else")
    with yax.open(file, durability=durability) as registry:
        registry["k"]["v"] = 1
        registry["k"].backup(file.with_name("backup"))
        for name in ("bad", "missing"):
            with pytest.raises(yax.YaxError, match=f"key 'm/n' from file '.*/{name}'"):
                registry["m/n"].restore(file.with_name(name))
            assert list(registry) == ["k"]
        with registry.transaction():
            registry["other"].make()
            with pytest.raises(OSError):
                registry["m/n"].restore(bad)
            registry["m/n"].restore(file.with_name("backup"))
        assert registry["m/n"]["v"] == 1
        assert list(registry) == ["k", "m", "m/n", "other"]
        with pytest.raises(OSError):
            registry["k"].restore(bad)
        assert registry["k"]["v"] == 1


def test_a_key_has_a_default_number_of_its_own(registry: yax.Registry) -> None:
    key = registry["k"]
    with pytest.raises(yax.NotFoundError, match="default of key 'k'"):
        key.default
    with pytest.raises(yax.NotFoundError, match="default of key 'k'"):
        key.default = 1
    key["v"] = 1
    with pytest.raises(yax.NotSetError, match="default of key 'k'"):
        key.default
    for number in (0, 7, 2**64 - 1):
        key.default = number
        assert key.default == number
    assert dict(key) == {"v": 1}


def test_rights_count(registry: yax.Registry) -> None:
    registry["k"]["v"] = 1
    registry.set_user("guest")
    with pytest.raises(PermissionError, match="value 'v' of key 'k'"):
        registry["k"]["v"]
    with pytest.raises(yax.NoRightError):
        registry["k"].rights = 0xFF
    registry.set_user(yax.ADMINISTRATOR)
    registry["k"].rights = 0x1F
    assert registry["k"].rights == 0x1F
    registry.set_user("guest")
    assert registry["k"]["v"] == 1
    with pytest.raises(yax.RangeError):
        registry["k"].rights = 256


def test_threads_use_it_at_once(registry: yax.Registry) -> None:
    failures: List[object] = []

    def work(name: str) -> None:
        try:
            for i in range(60):
                key = registry[name].at(f"k{i % 12}")
                key["n"] = i
                if key["n"] != i:
                    failures.append((name, i))
        except yax.YaxError as error:
            failures.append(error)

    threads = [threading.Thread(target=work, args=(name,)) for name in ("net", "network", "ne")]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert failures == []
    assert registry.root.children() == ["ne", "net", "network"]
