"""The C interface of libYAX."""

from __future__ import annotations

import ctypes
import os
from ctypes import POINTER, c_char_p, c_double, c_int64, c_size_t, c_ubyte, c_uint, c_uint64, c_void_p
from typing import Any, List, Tuple

from ._errors import error_of

DATA_MAX = 1024


class Options(ctypes.Structure):
    """yax_options."""

    _fields_ = [
        ("size", c_size_t),
        ("durability", c_uint),
        ("user", c_uint),
        ("user_name", c_char_p),
        ("read_only", c_uint),
        ("file_mode", c_uint),
        ("side_folder", c_char_p),
        ("compact_below", c_uint),
        ("check_at_opening", c_uint),
        ("wait_at_most", c_uint),
        ("exact_space", c_uint),
    ]


class RoomOf(ctypes.Structure):
    """yax_room_of."""

    _fields_ = [("used", c_uint), ("left", c_uint)]


class Room(ctypes.Structure):
    """yax_room."""

    _fields_ = [("size", c_size_t), ("strings", RoomOf), ("keys", RoomOf), ("values", RoomOf), ("blocks", RoomOf)]


class ChangeRecord(ctypes.Structure):
    """yax_change."""

    _fields_ = [("kind", c_uint), ("path", c_char_p), ("name", c_char_p)]


_OUT = POINTER(c_void_p)
_KEY: List[Any] = [c_void_p]
_VALUE: List[Any] = [c_void_p, c_char_p]

# Name, type of the result, types of the arguments.
_FUNCTIONS: List[Tuple[str, Any, List[Any]]] = [
    ("yax_status_text", c_char_p, [c_uint]),
    ("yax_version", c_char_p, []),
    ("yax_open", c_uint, [c_char_p, POINTER(Options), _OUT]),
    ("yax_close", None, [c_void_p]),
    ("yax_sync", c_uint, [c_void_p]),
    ("yax_get_room", c_uint, [c_void_p, POINTER(Room)]),
    ("yax_check", c_uint, [c_void_p, POINTER(c_uint)]),
    ("yax_compact", c_uint, [c_void_p]),
    ("yax_durability", c_uint, [c_void_p]),
    ("yax_set_user", c_uint, [c_void_p, c_char_p]),
    ("yax_set_user_number", c_uint, [c_void_p, c_uint]),
    ("yax_begin", c_uint, [c_void_p, _OUT]),
    ("yax_commit", c_uint, [c_void_p]),
    ("yax_cancel", None, [c_void_p]),
    ("yax_watch_key", c_uint, [c_void_p, _OUT]),
    ("yax_watch_next", c_uint, [c_void_p, c_uint, POINTER(ChangeRecord)]),
    ("yax_watch_free", None, [c_void_p]),
    ("yax_key_at", c_uint, [c_void_p, c_char_p, _OUT]),
    ("yax_key_below", c_uint, [c_void_p, c_char_p, _OUT]),
    ("yax_key_free", None, _KEY),
    ("yax_key_path", c_char_p, _KEY),
    ("yax_key_make", c_uint, _KEY),
    ("yax_key_exists", c_uint, _KEY),
    ("yax_key_remove", c_uint, _KEY),
    ("yax_key_move", c_uint, [c_void_p, c_char_p]),
    ("yax_key_copy", c_uint, [c_void_p, c_char_p]),
    ("yax_key_get_default", c_uint, [c_void_p, POINTER(c_uint64)]),
    ("yax_key_set_default", c_uint, [c_void_p, c_uint64]),
    ("yax_key_get_rights", c_uint, [c_void_p, POINTER(c_ubyte)]),
    ("yax_key_set_rights", c_uint, [c_void_p, c_ubyte]),
    ("yax_key_backup", c_uint, [c_void_p, c_char_p]),
    ("yax_key_restore", c_uint, [c_void_p, c_char_p]),
    ("yax_key_children", c_uint, [c_void_p, _OUT]),
    ("yax_key_branch", c_uint, [c_void_p, _OUT]),
    ("yax_key_values", c_uint, [c_void_p, _OUT]),
    ("yax_names_free", None, [c_void_p]),
    ("yax_names_count", c_size_t, [c_void_p]),
    ("yax_names_at", c_char_p, [c_void_p, c_size_t, POINTER(c_size_t)]),
    ("yax_set_int", c_uint, _VALUE + [c_int64]),
    ("yax_set_uint", c_uint, _VALUE + [c_uint64]),
    ("yax_set_real", c_uint, _VALUE + [c_double]),
    ("yax_set_text", c_uint, _VALUE + [c_char_p, c_size_t]),
    ("yax_set_bytes", c_uint, _VALUE + [c_char_p, c_size_t]),
    ("yax_get_uint", c_uint, _VALUE + [POINTER(c_uint64)]),
    ("yax_get_real", c_uint, _VALUE + [POINTER(c_double)]),
    (
        "yax_get_data",
        c_uint,
        _VALUE + [POINTER(c_uint), c_char_p, c_size_t, POINTER(c_size_t)],
    ),
    ("yax_value_exists", c_uint, _VALUE + [POINTER(c_uint)]),
    ("yax_remove_value", c_uint, _VALUE),
]


def _load() -> Any:
    # YAX_LIBRARY: a library that is not where the loader looks.
    library = ctypes.CDLL(os.environ.get("YAX_LIBRARY", "libYAX.so.0"))
    for name, result, arguments in _FUNCTIONS:
        function = getattr(library, name)
        function.restype = result
        function.argtypes = arguments
    return library


lib: Any = _load()


def check(status: int, what: str) -> None:
    """Raises what stands for a status that is no success."""
    if status != 0:
        raise error_of(status, what, lib.yax_status_text(status).decode())
