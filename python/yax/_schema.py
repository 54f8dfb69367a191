"""The settings of a program as a table."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, List, Optional, Union

from ._arguments import BYTES, no_value, shown, signed_of, text_of
from ._errors import Status, error_of
from ._library import DATA_MAX

Value = Union[int, float, str, bytes]
"""What a value may be."""


@dataclass(frozen=True)
class Setting:
    """A value that there shall be: its type and what it is at first, of a number also its range."""

    key: str
    name: str
    value: Value
    least: Optional[float] = None
    most: Optional[float] = None


@dataclass(frozen=True)
class Report:
    """What ``Registry.apply`` has made, and values of the schema's keys that it does not know."""

    made: List[str]
    extra: List[str]


def kind_of(value: object, what: str) -> type:
    """The type that a value is read as."""
    for kind in (bool, int, float, str):
        if isinstance(value, kind):  # or an enumeration of it
            return kind
    if isinstance(value, BYTES):
        return bytes
    raise no_value(value, what)


def check_range(setting: Setting, value: Any, what: str) -> None:
    """Raises ``RangeError`` for a number that does not lie in the range."""
    too_small = setting.least is not None and not value >= setting.least
    too_large = setting.most is not None and not value <= setting.most
    if too_small or too_large:
        words = f"{shown(value)} is not from {shown(setting.least)} to {shown(setting.most)}"
        raise error_of(Status.RANGE, what, words)


def check_bounds(setting: Setting, kind: type, what: str) -> None:
    """Raises what says that the range is none."""
    for bound in (setting.least, setting.most):
        if bound is None:
            continue
        if kind not in (int, float, bool):
            raise error_of(Status.BAD_ARGUMENT, what, f"{kind.__name__} has no range")
        if not isinstance(bound, (int, float)):
            raise TypeError(f"{what}: {type(bound).__name__} is no end of a range")


def check_value(value: Any, kind: type, what: str) -> None:
    """Raises what says that a value cannot be stored."""
    if kind in (bool, int):
        signed_of(value, what)
    if kind is str and len(text_of(value, what)) >= DATA_MAX or kind is bytes and len(bytes(value)) > DATA_MAX:
        raise error_of(Status.LIMIT, what, f"it is longer than {DATA_MAX} bytes")


def check_setting(setting: Setting, what: str) -> None:
    """Raises what says that the setting itself is none."""
    kind = kind_of(setting.value, what)
    check_value(setting.value, kind, what)
    check_bounds(setting, kind, what)
    check_range(setting, setting.value, what)
