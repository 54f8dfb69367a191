"""Settings that stay: a hierarchy of keys with typed values in one file.

>>> import yax
>>> with yax.open(file) as registry:
...     registry["network/eth0"]["mtu"] = 1500

Each key is a mapping from names to values, as a ``dict`` is; ``registry["a/b"]``
and ``key.at("a/b")`` lead to the keys below. Values are ``int`` (and ``bool``), ``float``, ``str`` and
``bytes``, and the tool ``yaxreg`` shows and takes them as the same.
"""

from ._errors import (
    BadArgumentError,
    BusyError,
    ExistsError,
    FileError,
    InvalidFileError,
    LimitError,
    NoRightError,
    NotFoundError,
    NotSetError,
    RangeError,
    Status,
    WrongTypeError,
    YaxError,
)
from ._registry import ADMINISTRATOR, Condition, Durability, Key, Registry, RoomOf, open, version
from ._schema import Report, Setting, Value
from ._watch import Change, ChangeKind, Watch

__all__ = [
    "ADMINISTRATOR",
    "BadArgumentError",
    "BusyError",
    "Change",
    "ChangeKind",
    "Condition",
    "Durability",
    "ExistsError",
    "FileError",
    "InvalidFileError",
    "Key",
    "LimitError",
    "NoRightError",
    "NotFoundError",
    "NotSetError",
    "RangeError",
    "Registry",
    "Report",
    "RoomOf",
    "Setting",
    "Status",
    "Value",
    "Watch",
    "WrongTypeError",
    "YaxError",
    "open",
    "version",
]
