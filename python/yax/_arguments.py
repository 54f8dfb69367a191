"""Looks at what the caller gives, so that an error names it: a wrong type is a ``TypeError``."""

from __future__ import annotations

import os
from typing import Any, Iterable, List, Tuple, TypeVar, Union

from ._errors import Status, error_of

U32 = 2**32 - 1
U64 = 2**64 - 1
BYTES = (bytes, bytearray, memoryview)

_Item = TypeVar("_Item")


def shown(value: object) -> str:
    """As ``repr``, which refuses numbers of thousands of digits."""
    try:
        return repr(value)
    except ValueError:
        return "a number of too many digits"


def text_of(text: str, what: str, noun: str = "text") -> bytes:
    """The bytes of a text, which stands in ``what``."""
    if not isinstance(text, str):
        raise TypeError(f"{what}: {type(text).__name__} is no {noun}")
    try:
        data = text.encode("utf-8", "surrogateescape")
    except UnicodeEncodeError as error:
        words = f"{text[error.start]!r} is no character"
        raise error_of(Status.BAD_ARGUMENT, what, words) from None
    if b"\0" in data:
        raise error_of(Status.BAD_ARGUMENT, what, f"a zero byte is in the {noun}")
    return data


def file_of(file: Union[str, "os.PathLike[str]"], argument: str) -> Tuple[str, bytes]:
    """The name of a file, and its bytes."""
    name: Any = file
    if isinstance(file, os.PathLike):
        name = os.fspath(file)
    return name, text_of(name, f"{argument} {shown(name)}", "file name")


def integer_of(value: int, what: str, most: int, least: int = 0) -> int:
    """An integer in its range."""
    if not isinstance(value, int):
        raise TypeError(f"{what}: {type(value).__name__} is no integer")
    if not least <= value <= most:
        raise error_of(Status.RANGE, what, f"{shown(value)} is not from {least} to {most}")
    return value


def signed_of(value: int, what: str) -> int:
    """An integer that can be stored."""
    if not -(2**63) <= value < 2**63:
        raise error_of(Status.RANGE, what, f"{shown(value)} does not fit into 64 bits with a sign")
    return value


def no_value(value: object, what: str) -> TypeError:
    """What is raised for what cannot be a value."""
    return TypeError(f"{what}: {type(value).__name__} is no number, text or bytes")


def seconds_of(value: float, what: str, most: float) -> float:
    """Seconds from 0 on."""
    if not isinstance(value, (int, float)):
        raise TypeError(f"{what}: {type(value).__name__} is no number of seconds")
    if not 0 <= value <= most:
        raise error_of(Status.RANGE, what, f"{shown(value)} is not from 0 to {most} seconds")
    return min(value, 1e9)  # a larger one is for ever, too, and may be too large for a float


def truth_of(value: bool, what: str) -> int:
    """A truth value."""
    if not isinstance(value, bool):
        raise TypeError(f"{what}: {type(value).__name__} is no truth value")
    return int(value)


def list_of(items: Iterable[_Item], what: str) -> List[_Item]:
    """What there is to go over."""
    if not isinstance(items, Iterable):
        raise TypeError(f"{what}: {type(items).__name__} is no list")
    return list(items)
