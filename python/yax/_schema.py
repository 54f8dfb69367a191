"""The settings of a program as a table."""

from __future__ import annotations

from dataclasses import dataclass
from typing import List, Optional, Union

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
