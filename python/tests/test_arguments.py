"""What is of a wrong type, impossible or out of range is told, with its name and the reason, and changes nothing."""

import math
from pathlib import Path
from typing import Any, Callable, Dict, List, Tuple, Union

import pytest

import yax

Call = Callable[[Any], object]  # of a registry, with what is no argument

WRONG_TYPES: List[Tuple[Any, str]] = [(5, "int"), (None, "NoneType"), (b"a", "bytes"), (["a"], "list")]


def setting(name: Any) -> Call:
    return lambda registry: registry["k"].__setitem__(name, 1)


def removing(name: Any) -> Call:
    return lambda registry: registry["k"].__delitem__(name)


def naming_a_value(name: Any) -> Dict[str, Call]:
    return {
        "get": lambda registry: registry["k"][name],
        "get with another": lambda registry: registry["k"].get(name, 1),
        "in": lambda registry: name in registry["k"],
        "set": setting(name),
        "del": removing(name),
        "pop": lambda registry: registry["k"].pop(name, 1),
        "update": lambda registry: registry["k"].update({name: 1}),
        "read": lambda registry: registry["k"].read(name, int),
        "get_unsigned": lambda registry: registry["k"].get_unsigned(name),
        "set_unsigned": lambda registry: registry["k"].set_unsigned(name, 1),
    }


def naming_a_key(path: Any) -> Dict[str, Call]:
    return {
        "registry[]": lambda registry: registry[path],
        "in": lambda registry: path in registry,
        "get": lambda registry: registry.get(path, 1),
        "del": lambda registry: registry.__delitem__(path),
        "at": lambda registry: registry["k"].at(path),
        "copy_to": lambda registry: registry["k"].copy_to(path),
        "move_to": lambda registry: registry["k"].move_to(path),
        "watch": lambda registry: registry.watch(path),
        "migrate": lambda registry: registry.migrate(path, []),
        "Key": lambda registry: yax.Key(registry, path),
    }


def naming_a_file(file: Any) -> Dict[str, Call]:
    return {
        "backup": lambda registry: registry["k"].backup(file),
        "restore": lambda registry: registry["k"].restore(file),
        "restore a new key": lambda registry: registry["new"].restore(file),
        "open": lambda registry: yax.open(file),
        "side_folder": lambda registry: yax.open("other.rce", side_folder=file),
    }


def naming_a_user(user: Any) -> Dict[str, Call]:
    return {
        "open": lambda registry: yax.open("other.rce", user=user),
        "set_user": lambda registry: registry.set_user(user),
    }


@pytest.fixture
def kept(registry: yax.Registry, tmp_path: Path, monkeypatch: pytest.MonkeyPatch) -> yax.Registry:
    monkeypatch.chdir(tmp_path)
    registry["k"]["v"] = 1
    return registry


def refuses(registry: yax.Registry, calls: Dict[str, Call], error: Any, words: str) -> None:
    """Each of the calls raises the error with these words in it; neither registry nor folder are changed."""
    files = sorted(Path().iterdir())
    for name, call in calls.items():
        with pytest.raises(error) as raised:
            call(registry)
        assert words in str(raised.value), name
        assert dict(registry["k"]) == {"v": 1} and list(registry) == ["k"], name
        assert sorted(Path().iterdir()) == files, name


@pytest.mark.parametrize("name, kind", WRONG_TYPES)
def test_names_that_are_no_texts_are_told(kept: yax.Registry, name: Any, kind: str) -> None:
    calls = naming_a_value(name)
    if isinstance(name, list):
        del calls["update"]  # no dict has it either
    refuses(kept, calls, TypeError, f"value {name!r} of key 'k': {kind} is no name")
    refuses(kept, naming_a_key(name), TypeError, f"key {name!r}: {kind} is no path")


@pytest.mark.parametrize("name, kind", WRONG_TYPES)
def test_files_and_users_of_other_types_are_told(kept: yax.Registry, name: Any, kind: str) -> None:
    calls = naming_a_file(name)
    if name is None:
        del calls["side_folder"]
    refuses(kept, calls, TypeError, f" {name!r}: {kind} is no file name")
    if name != 5:
        refuses(kept, naming_a_user(name), TypeError, f"user {name!r}: {kind} is no integer")


@pytest.mark.parametrize("text, reason", [("a\0b", "a zero byte is in the "), ("a\ud800", r"'\ud800' is no character")])
def test_impossible_texts_are_told(kept: yax.Registry, text: str, reason: str) -> None:
    refuses(kept, naming_a_value(text), yax.BadArgumentError, f"value {text!r} of key 'k': {reason}")
    refuses(kept, naming_a_key(text), yax.BadArgumentError, f"key {text!r}: {reason}")
    refuses(kept, naming_a_file(text), yax.BadArgumentError, f" {text!r}: {reason}")
    refuses(kept, naming_a_file(Path(text)), yax.BadArgumentError, f" {text!r}: {reason}")
    refuses(kept, naming_a_user(text), yax.BadArgumentError, f"user {text!r}: {reason}")
    refuses(kept, {"set": lambda registry: registry["k"].update(v=text)}, ValueError, f"value 'v' of key 'k': {reason}")


def test_the_argument_that_names_a_file_is_told(kept: yax.Registry) -> None:
    for call, argument in zip(naming_a_file("a\0b").values(), ["backup of key 'k': file", "restoring of key 'k': file",
                              "restoring of key 'new': file", "path", "side_folder"]):
        refuses(kept, {argument: call}, yax.BadArgumentError, rf"{argument} 'a\x00b': a zero byte is in the file name")


def opening(**options: Any) -> Call:
    return lambda registry: yax.open("other.rce", **options)


OUT_OF_RANGE: List[Tuple[Call, str]] = [
    (opening(user=-1), "user -1: -1 is not from 0 to 4294967295"),
    (opening(user=2**32), "user 4294967296: 4294967296 is not from 0 to 4294967295"),
    (lambda registry: registry.set_user(-1), "user -1: -1 is not from 0 to 4294967295"),
    (opening(compact_below=-1), "compact_below: -1 is not from 0 to 4294967295"),
    (opening(compact_below=2**40), "compact_below: 1099511627776 is not from 0 to 4294967295"),
    (opening(mode=0), "mode: 0 is not from 1 to 511"),
    (opening(mode=-1), "mode: -1 is not from 1 to 511"),
    (opening(mode=0o1000), "mode: 512 is not from 1 to 511"),
    (opening(durability=4), "durability 4: 4 is not from 0 to 3"),
    (opening(wait_at_most=-1), "wait_at_most: -1 is not from 0 to 4294967.295 seconds"),
    (opening(wait_at_most=math.inf), "wait_at_most: inf is not from 0 to 4294967.295 seconds"),
    (opening(wait_at_most=math.nan), "wait_at_most: nan is not from 0 to 4294967.295 seconds"),
    (opening(wait_at_most=10**400), "is not from 0 to 4294967.295 seconds"),
    (lambda registry: registry.watch("k").next(-1), "timeout of watching key 'k': -1 is not from 0 to inf seconds"),
    (lambda registry: registry.watch().next(math.nan), "timeout of watching key '': nan is not from 0 to inf seconds"),
    (lambda registry: setattr(registry["k"], "default", -1), "default of key 'k': -1 is not from 0 to 1844674407370"),
    (lambda registry: setattr(registry["k"], "default", 2**64), "default of key 'k': 18446744073709551616 is not from"),
    (lambda registry: setattr(registry["k"], "rights", 256), "rights of key 'k': 256 is not from 0 to 255"),
    (lambda registry: setattr(registry["k"], "rights", -1), "rights of key 'k': -1 is not from 0 to 255"),
    (lambda registry: registry["k"].set_unsigned("v", -1), "value 'v' of key 'k': -1 is not from 0 to 1844674407"),
    (lambda registry: registry["k"].set_unsigned("v", 10**5000), "value 'v' of key 'k': a number of too many digits"),
    (lambda registry: registry["k"].update(v=10**5000), "value 'v' of key 'k': a number of too many digits does"),
]


@pytest.mark.parametrize("call, words", OUT_OF_RANGE, ids=[words[:30] for _, words in OUT_OF_RANGE])
def test_numbers_out_of_range_are_told(kept: yax.Registry, call: Call, words: str) -> None:
    refuses(kept, {"call": call}, yax.RangeError, words)


OF_ANOTHER_TYPE: List[Tuple[Call, str]] = [
    (opening(durability="power"), "durability 'power': str is no integer"),
    (opening(read_only=1), "read_only: int is no truth value"),
    (opening(check_at_opening=None), "check_at_opening: NoneType is no truth value"),
    (opening(exact_space="no"), "exact_space: str is no truth value"),
    (opening(mode="0644"), "mode: str is no integer"),
    (opening(compact_below=0.5), "compact_below: float is no integer"),
    (opening(wait_at_most="1"), "wait_at_most: str is no number of seconds"),
    (opening(user=1.0), "user 1.0: float is no integer"),
    (lambda registry: registry.watch().next(timeout=b"1"), "timeout of watching key '': bytes is no number of seconds"),
    (lambda registry: setattr(registry["k"], "default", None), "default of key 'k': NoneType is no integer"),
    (lambda registry: setattr(registry["k"], "rights", "rw"), "rights of key 'k': str is no integer"),
    (lambda registry: registry["k"].set_unsigned("v", 1.5), "value 'v' of key 'k': float is no integer"),
    (lambda registry: registry["k"].read("v", "int"), "value 'v' of key 'k': 'int' is no type"),
    (lambda registry: registry.migrate("k", 5), "steps of key 'k': int is no list"),
    (lambda registry: registry.migrate("k", [print, 5]), "step 2 of key 'k': int is no function"),
    (lambda registry: type(registry.watch())("k"), "watching 'k': str is no key"),
    (lambda registry: type(registry["k"])("k", "k"), "key 'k': str is no registry"),
]


@pytest.mark.parametrize("call, words", OF_ANOTHER_TYPE, ids=[words[:30] for _, words in OF_ANOTHER_TYPE])
def test_arguments_of_other_types_are_told(kept: yax.Registry, call: Call, words: str) -> None:
    refuses(kept, {"call": call}, TypeError, words)


def test_the_ends_of_the_ranges_are_taken(kept: yax.Registry, file: Path) -> None:
    users: List[Union[int, str]] = [0, 2**32 - 1, "", yax.ADMINISTRATOR]
    for user in users:
        kept.set_user(user)
    kept.close()
    longest = (2**32 - 1) / 1000
    for i, wait in enumerate((0, longest)):
        made = file.with_name(f"{i}.rce")
        with yax.open(made, user=2**32 - 1, mode=0o600, wait_at_most=wait, compact_below=2**32 - 1) as registry:
            registry["k"].make().rights = 255
            assert registry.watch().next(timeout=0) is None
        assert made.stat().st_mode & 0o777 == 0o600
