"""The statuses of the library, as exceptions."""

from __future__ import annotations

import enum
from typing import Any, Dict, List, Sequence, Tuple, Type


class Status(enum.IntEnum):
    """What an operation answers."""

    OK = 0
    NO_RIGHT = 1
    NOT_FOUND = 2
    INPUT_OUTPUT = 5
    CANNOT_OPEN = 9
    NO_MEMORY = 12
    BUSY = 16
    EXISTS = 17
    BAD_ARGUMENT = 22
    NO_SPACE = 28
    RANGE = 34
    NOT_SUPPORTED = 37
    NO_DATA = 53
    INVALID_FILE = 59
    LIMIT = 75
    WRONG_TYPE = 79


class YaxError(Exception):
    """An operation has failed. ``status`` is its number, the message names key, value and reason.

    ``unfit`` is of ``Registry.apply`` and ``reset``: a message for each setting that does not fit. The status and the
    class of the exception are those of the first.
    """

    def __init__(self, status: int, what: str, words: str) -> None:
        super().__init__(f"{what}: {words} (status {status})")
        self.status = status
        self.what = what
        self.words = words
        self.unfit: List[str] = []

    def __str__(self) -> str:  # KeyError would show the message in quotation marks
        return "; ".join(self.unfit or [str(self.args[0])])

    def __reduce__(self) -> Tuple[Any, ...]:  # goes from process to process
        return type(self), (self.status, self.what, self.words), {"unfit": self.unfit}


class NoRightError(YaxError, PermissionError):
    """The user lacks the right, or the registry was closed."""


class NotFoundError(YaxError, KeyError):
    """There is no such key or value."""


class NotSetError(YaxError, KeyError):
    """The value is there, but it is not set."""


class BusyError(YaxError):
    """This process has a registry open already."""


class ExistsError(YaxError):
    """The key is there already."""


class InvalidFileError(YaxError):
    """The file is no registry, or damaged."""


class LimitError(YaxError, ValueError):
    """More than 1024 bytes, or the file is full for good."""


class RangeError(YaxError, OverflowError):
    """The number does not fit."""


class WrongTypeError(YaxError, TypeError):
    """The value has another type than was asked for."""


class BadArgumentError(YaxError, ValueError):
    """An impossible name, path or text."""


class FileError(YaxError, OSError):
    """The file cannot be opened, read or written."""


_CLASSES: Dict[int, Type[YaxError]] = {
    Status.NO_RIGHT: NoRightError,
    Status.NOT_FOUND: NotFoundError,
    Status.INPUT_OUTPUT: FileError,
    Status.CANNOT_OPEN: FileError,
    Status.NO_MEMORY: FileError,
    Status.BUSY: BusyError,
    Status.EXISTS: ExistsError,
    Status.BAD_ARGUMENT: BadArgumentError,
    Status.NO_SPACE: FileError,
    Status.RANGE: RangeError,
    Status.NO_DATA: NotSetError,
    Status.INVALID_FILE: InvalidFileError,
    Status.LIMIT: LimitError,
    Status.WRONG_TYPE: WrongTypeError,
}


def error_of(status: int, what: str, words: str) -> YaxError:
    """The exception that stands for a status."""
    return _CLASSES.get(status, YaxError)(status, what, words)


def raise_unfit(errors: Sequence[YaxError]) -> None:
    """Raises the first, which then tells of all; nothing when there are none."""
    if errors:
        errors[0].unfit = [str(error) for error in errors]
        raise errors[0]
