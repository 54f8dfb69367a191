import pickle
from pathlib import Path
from typing import Callable, List

import pytest

import yax


def test_what_was_written_is_there_again(file: Path) -> None:
    with yax.open(file) as registry:
        registry["network/eth0"]["mtu"] = 1500
    with yax.Registry(str(file)) as registry:
        assert registry["network/eth0"]["mtu"] == 1500


def test_a_registry_is_a_mapping_of_all_its_keys(registry: yax.Registry) -> None:
    assert len(registry) == 0 and list(registry) == [] and bool(registry)
    assert registry.get("a") is None and registry.get("a", 5) == 5
    registry["b"]["n"] = 1
    registry["a/c"].make()
    assert list(registry) == list(registry.keys()) == ["a", "a/c", "b"] and len(registry) == 3
    assert list(registry.items()) == [(path, registry[path]) for path in ("a", "a/c", "b")]
    assert [dict(key) for key in registry.values()] == [{}, {}, {"n": 1}]
    assert registry.get("b") == registry["b"] and "b" in registry.keys() and "c" not in registry
    assert {path: dict(key) for path, key in dict(registry).items() if key} == {"a": {}, "a/c": {}, "b": {"n": 1}}
    assert registry == registry and registry != dict(registry) and hash(registry) == hash(registry)


def test_one_registry_is_open_at_a_time(registry: yax.Registry, file: Path) -> None:
    with pytest.raises(yax.BusyError):
        yax.open(file)
    registry["k"]["v"] = 1


def test_a_closed_registry_is_told(file: Path) -> None:
    registry = yax.open(file)
    key = registry["k"]
    registry.close()
    registry.close()
    with pytest.raises(yax.NoRightError):
        key["v"] = 1
    calls: List[Callable[[], object]] = [registry.sync, registry.room, registry.condition, registry.compact]
    calls += [lambda: len(registry), lambda: list(registry), lambda: registry.get("k")]
    calls += [lambda: registry["k"], lambda: key.at("below"), lambda: registry.durability]
    calls += [lambda: registry.set_user(1), registry.watch, lambda: registry.transaction().__enter__()]
    for call in calls:
        with pytest.raises(yax.NoRightError, match="the registry is closed"):
            call()
    assert "closed" in repr(registry)


def test_what_is_no_registry_is_left_alone(file: Path) -> None:
    file.write_text("something else")
    with pytest.raises(yax.InvalidFileError, match="settings.rce"):
        yax.open(file)
    assert file.read_text() == "something else"
    with pytest.raises(OSError):
        yax.open(file / "below")


def test_durability_is_had_as_asked_for(file: Path) -> None:
    for durability in (yax.Durability.NONE, yax.Durability.POWER):
        with yax.open(file, durability=durability) as registry:
            assert registry.durability == durability
            registry.sync()


def test_opening_looks_after_a_file(file: Path, tmp_path: Path) -> None:
    with yax.open(file) as registry:
        for name in ("gone", "kept"):
            registry[name]["text"] = "x" * 200
        del registry["gone"]
    before = file.read_bytes()
    with yax.open(file, check_at_opening=True, wait_at_most=0.5):
        pass
    assert file.read_bytes() == before
    for exact, used in ((False, 1), (True, 2)):
        with yax.open(tmp_path / f"{used}.rce", exact_space=exact) as registry:
            registry["k"].make().remove()
            assert registry.room()["strings"].used == used
    with yax.open(file, compact_below=20000) as registry:
        assert registry["kept"]["text"] == "x" * 200
    assert file.read_bytes() != before
    side = tmp_path / "side"
    side.mkdir()
    with yax.open(file, side_folder=side):
        assert [entry.name for entry in side.iterdir()]
    damaged = bytearray(file.read_bytes())
    damaged[10188 + 40 + 16 : 10188 + 40 + 20] = b"\0\x77\x77\0"
    file.write_bytes(damaged)
    with pytest.raises(yax.InvalidFileError):
        yax.open(file, check_at_opening=True)


def test_a_file_is_looked_after(file: Path) -> None:
    with yax.open(file) as registry:
        before = registry.room()
        registry["k"]["text"] = "x" * 100
        room = registry.room()
        assert room["keys"].used == before["keys"].used + 1
        assert room["blocks"] == yax.RoomOf(before["blocks"].used + 2, before["blocks"].left - 2)
        assert registry.condition() == yax.Condition.SOUND
        registry.compact()
        assert registry["k"]["text"] == "x" * 100
        with registry.transaction(), pytest.raises(yax.BusyError):
            registry.compact()
        registry.set_user("guest")
        with pytest.raises(yax.NoRightError):
            registry.compact()


def test_a_user_owns_what_he_makes(file: Path) -> None:
    with yax.open(file, user="installer") as registry:
        registry["mine"]["v"] = 1
        registry.set_user("guest")
        with pytest.raises(yax.NoRightError):
            registry["mine"]["v"]


def test_every_status_has_an_exception_with_its_words(registry: yax.Registry) -> None:
    with pytest.raises(yax.YaxError) as error:
        registry["k"]["v"]
    assert error.value.status == yax.Status.NOT_FOUND
    assert str(error.value) == "value 'v' of key 'k': key or value not found (status 2)"


def test_exceptions_go_from_process_to_process(registry: yax.Registry) -> None:
    kinds = [kind for kind in vars(yax).values() if isinstance(kind, type) and issubclass(kind, yax.YaxError)]
    assert len(kinds) == 12
    for kind in kinds:
        error = kind(5, "key 'k'", "it is so")
        error.unfit = ["a", "b"]
        again = pickle.loads(pickle.dumps(error))
        assert type(again) is kind and again.status == 5 and again.what == "key 'k'"
        assert again.args == error.args and str(again) == "a; b"


def test_the_library_tells_its_version() -> None:
    assert yax.version().count(".") == 2


def test_a_reader_changes_nothing_and_makes_nothing(file: Path) -> None:
    with yax.open(file, mode=0o600) as registry:
        registry["k"]["n"] = 1
    assert file.stat().st_mode & 0o777 == 0o600
    with yax.open(file, read_only=True) as registry:
        assert registry["k"]["n"] == 1
        with pytest.raises(yax.NoRightError):
            registry["k"]["n"] = 2
    with pytest.raises(yax.NotFoundError):
        yax.open(file.with_name("missing"), read_only=True)
