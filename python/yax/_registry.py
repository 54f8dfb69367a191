"""Registries and keys."""

from __future__ import annotations

import contextlib
import ctypes
import enum
import os
import threading
from types import TracebackType
from typing import (
    Any,
    Callable,
    Dict,
    Iterable,
    Iterator,
    List,
    Mapping,
    MutableMapping,
    NamedTuple,
    Optional,
    Sequence,
    Tuple,
    Type,
    TypeVar,
    Union,
    cast,
    overload,
)

from ._arguments import (
    BYTES,
    U32,
    U64,
    file_of,
    integer_of,
    list_of,
    no_value,
    seconds_of,
    shown,
    signed_of,
    text_of,
    truth_of,
)
from ._errors import NotFoundError, NotSetError, Status, YaxError, error_of, raise_unfit
from ._library import DATA_MAX, Options, Room, check, lib
from ._schema import Report, Setting, Value, check_range, check_setting, kind_of
from ._watch import Watch

_Kind = TypeVar("_Kind", bound=Union[int, bool, float, str, bytes])
_Other = TypeVar("_Other")
_Rows = Dict[Tuple[str, str], Setting]

ADMINISTRATOR = 65535
"""The user who has the owner's rights everywhere."""

_INTEGER, _TEXT, _REAL = 0, 1, 3
_KIND_NAMES = {_INTEGER: "a number", _TEXT: "a text", 2: "bytes", _REAL: "a real number"}


class Condition(enum.IntEnum):
    """What condition a file is in."""

    SOUND = 0
    WORN = 1
    """Sound, but space is taken up by nothing: ``compact`` wins it back."""
    DAMAGED = 2
    """What meets the damage raises ``InvalidFileError``; ``yaxreg repair`` saves the rest."""
    LOST = 3
    """Not even the root key can be read."""


class RoomOf(NamedTuple):
    """Records of a kind, and how many more there can be."""

    used: int
    left: int


class Durability(enum.IntEnum):
    """What a change survives once it was made."""

    USUAL = 0
    NONE = 1
    PROCESS = 2
    POWER = 3


def version() -> str:
    """The version of the library.

    >>> version().count(".")
    2
    """
    return str(lib.yax_version().decode())


def _path(path: str) -> bytes:
    return text_of(path, f"key {shown(path)}", "path")


def _user(user: Union[int, str]) -> Tuple[int, Optional[bytes]]:
    """The number and the name, of which the name counts."""
    what = f"user {shown(user)}"
    if isinstance(user, str):
        return ADMINISTRATOR, text_of(user, what, "name")
    return integer_of(user, what, U32), None


def _durability(durability: int) -> int:
    what = f"durability {shown(durability)}"
    return integer_of(durability, what, int(max(Durability)))


def _shape(setting: Setting) -> Tuple[object, ...]:
    """What two settings of one name have in common; 1, 1.0 and True are not the same."""
    return kind_of(setting.value, setting.name), setting.value, setting.least, setting.most


def _text(data: bytes) -> str:
    return data.decode("utf-8", "surrogateescape")


def _real(data: bytes, what: str) -> float:
    try:
        return float(data[:-1]) if data.endswith(b"\0") else float(data)
    except ValueError:
        raise error_of(Status.WRONG_TYPE, what, f"{data!r} is no real number") from None


class Key(MutableMapping[str, Value]):
    """A place in the registry, where a key may be: a mapping from names to values.

    It stays good whatever others make and remove. Setting a value makes the key, and those above it, when
    they are missing; a key that is not there is an empty mapping.

    >>> eth0 = registry["network/eth0"]
    >>> eth0["mtu"] = 1500
    >>> eth0.update(name="uplink", mac=bytes.fromhex("001bff"), load=0.25)
    >>> sorted(eth0)
    ['load', 'mac', 'mtu', 'name']
    >>> eth0["mtu"], eth0["load"], eth0.get("speed", 100)
    (1500, 0.25, 100)
    >>> del eth0["load"]
    >>> "load" in eth0
    False
    """

    def __init__(self, registry: "Registry", path: str) -> None:
        handle = ctypes.c_void_p()
        if not isinstance(registry, Registry):
            raise TypeError(f"key {shown(path)}: {type(registry).__name__} is no registry")
        data = _path(path)
        check(lib.yax_key_at(registry._open_handle(), data, ctypes.byref(handle)), f"key {path!r}")
        self._key = handle
        self._registry = registry
        self._path = _text(lib.yax_key_path(handle))

    def __del__(self) -> None:
        if hasattr(self, "_key"):
            lib.yax_key_free(self._key)

    @property
    def path(self) -> str:
        """From the root, without a slash at the beginning."""
        return self._path

    def __repr__(self) -> str:
        return f"<yax.Key {self._path!r}>"

    def __eq__(self, other: object) -> bool:
        if isinstance(other, Key):
            return self._registry is other._registry and self._path == other._path
        return super().__eq__(other)

    # ---- values

    def __getitem__(self, name: str) -> Value:
        what, raw_name = self._named(name)
        data = ctypes.create_string_buffer(DATA_MAX)
        kind = ctypes.c_uint()
        size = ctypes.c_size_t()
        check(
            lib.yax_get_data(
                self._key, raw_name, ctypes.byref(kind), data, DATA_MAX, ctypes.byref(size)
            ),
            what,
        )
        raw = data.raw[: size.value]
        if kind.value == _INTEGER:
            return int.from_bytes(raw, "little", signed=True)
        if kind.value == _TEXT:
            return _text(raw[:-1] if raw.endswith(b"\0") else raw)
        if kind.value == _REAL:
            return _real(raw, what)
        return raw

    def __setitem__(self, name: str, value: Value) -> None:
        what, raw_name = self._named(name)
        if isinstance(value, int):
            status = lib.yax_set_int(self._key, raw_name, signed_of(value, what))
        elif isinstance(value, float):
            status = lib.yax_set_real(self._key, raw_name, value)
        elif isinstance(value, str):
            data = text_of(value, what)
            status = lib.yax_set_text(self._key, raw_name, data, len(data))
        elif isinstance(value, BYTES):
            data = bytes(value)
            status = lib.yax_set_bytes(self._key, raw_name, data, len(data))
        else:
            raise no_value(value, what)
        check(status, what)

    def __delitem__(self, name: str) -> None:
        what, raw_name = self._named(name)
        check(lib.yax_remove_value(self._key, raw_name), what)

    def __contains__(self, name: object) -> bool:
        what, raw_name = self._named(cast(str, name))
        status = lib.yax_value_exists(self._key, raw_name, None)
        if status in (Status.OK, Status.NO_DATA):
            return True
        if status != Status.NOT_FOUND:
            check(status, what)
        return False

    def __iter__(self) -> Iterator[str]:
        return iter(self._names(lib.yax_key_values))

    def __len__(self) -> int:
        return len(self._names(lib.yax_key_values))

    def __bool__(self) -> bool:
        return True  # a key without values is a key, too

    def read(self, name: str, kind: Type[_Kind]) -> _Kind:
        """A value of just this type; ``WrongTypeError`` tells another one.

        >>> key = registry["read"]
        >>> key["on"] = True
        >>> key.read("on", bool)
        True
        >>> key.read("on", str)
        Traceback (most recent call last):
        ...
        yax._errors.WrongTypeError: value 'on' of key 'read': it is a number, not str (status 79)
        """
        return cast(_Kind, self._read(name, kind))

    def _read(self, name: str, kind: type) -> Value:
        if not isinstance(kind, type):
            raise TypeError(f"{self._what(name)}: {shown(kind)} is no type")
        value = self[name]
        if kind is bool and isinstance(value, int):
            if value not in (0, 1):
                raise error_of(Status.RANGE, self._what(name), f"{value} is no truth value")
            value = bool(value)
        if isinstance(value, kind):
            return value
        words = f"it is {self._kind_name(name)}, not {kind.__name__}"
        raise error_of(Status.WRONG_TYPE, self._what(name), words)

    def get_unsigned(self, name: str) -> int:
        """A number that was set as one without a sign, up to 2**64 - 1."""
        what, raw_name = self._named(name)
        number = ctypes.c_uint64()
        check(lib.yax_get_uint(self._key, raw_name, ctypes.byref(number)), what)
        return number.value

    def set_unsigned(self, name: str, value: int) -> None:
        """A number up to 2**64 - 1. From 2**63 on, ``key[name]`` reads it as a negative one.

        >>> registry["big"].set_unsigned("n", 2**64 - 1)
        >>> registry["big"].get_unsigned("n") == 2**64 - 1
        True
        """
        what, raw_name = self._named(name)
        check(lib.yax_set_uint(self._key, raw_name, integer_of(value, what, U64)), what)

    # ---- keys

    def at(self, path: str) -> "Key":
        """The key of a path from this one on; nothing is looked up.

        >>> registry["network"].at("eth0/ip").path
        'network/eth0/ip'
        """
        _path(path)
        path = path[1:] if path.startswith("/") else path
        return Key(self._registry, f"{self._path}/{path}" if self._path and path else self._path or path)

    def exists(self) -> bool:
        """Whether the key is there."""
        status = lib.yax_key_exists(self._key)
        if status not in (Status.OK, Status.NOT_FOUND):
            check(status, self._what())
        return bool(status == Status.OK)

    def make(self) -> "Key":
        """Makes the key, and those above it; one that is there is fine, too."""
        status = lib.yax_key_make(self._key)
        if status != Status.EXISTS:
            check(status, self._what())
        return self

    def remove(self) -> None:
        """Removes the key with its values and all keys below it."""
        check(lib.yax_key_remove(self._key), self._what())

    def copy_to(self, path: str) -> "Key":
        """Copies the key and all below it to another path, from the root; answers the new key."""
        check(lib.yax_key_copy(self._key, _path(path)), f"{self._what()} to {path!r}")
        return Key(self._registry, path)

    def move_to(self, path: str) -> "Key":
        """Gives the key, with all below it, another path; answers the key of that."""
        check(lib.yax_key_move(self._key, _path(path)), f"{self._what()} to {path!r}")
        return Key(self._registry, path)

    def children(self) -> List[str]:
        """The names of the keys right below, sorted.

        >>> registry["house/kitchen"]["light"] = 1
        >>> registry["house/cellar"]["light"] = 0
        >>> registry["house"].children()
        ['cellar', 'kitchen']
        """
        return self._names(lib.yax_key_children)

    def walk(self) -> Iterator["Key"]:
        """This key, if it is there, and all below it, each before those below it."""
        if self.exists():
            yield self
        for name in self._names(lib.yax_key_branch):
            yield self.at(name)

    def watch(self) -> Watch:
        """The changes of this key and of all below it, by this program or another, from now on."""
        return Watch(self)

    def backup(self, file: Union[str, "os.PathLike[str]"]) -> None:
        """Writes the key and all below it to a file."""
        name, data = file_of(file, f"backup of {self._what()}: file")
        check(lib.yax_key_backup(self._key, data), f"{self._what()} to file {name!r}")

    def restore(self, file: Union[str, "os.PathLike[str]"]) -> None:
        """Replaces the key and all below it by what a file holds; makes it, and those above it, when it is missing."""
        name, data = file_of(file, f"restoring of {self._what()}: file")
        what = f"{self._what()} from file {name!r}"
        if self.exists():
            check(lib.yax_key_restore(self._key, data), what)
            return
        with self._registry.transaction():
            self.make()
            check(lib.yax_key_restore(self._key, data), what)

    @property
    def default(self) -> int:
        """A number from 0 to 2**64 - 1 that belongs to the key itself; ``NotSetError`` when none was set.

        >>> registry["network"].make().default = 7
        >>> registry["network"].default
        7
        """
        number = ctypes.c_uint64()
        check(lib.yax_key_get_default(self._key, ctypes.byref(number)), f"default of {self._what()}")
        return number.value

    @default.setter
    def default(self, number: int) -> None:
        what = f"default of {self._what()}"
        check(lib.yax_key_set_default(self._key, integer_of(number, what, U64)), what)

    @property
    def rights(self) -> int:
        """The owner's in the low four bits, everybody else's above: 1 read, 2 modify, 4 create, 8 delete."""
        rights = ctypes.c_ubyte()
        check(lib.yax_key_get_rights(self._key, ctypes.byref(rights)), self._what())
        return rights.value

    @rights.setter
    def rights(self, rights: int) -> None:
        number = integer_of(rights, f"rights of {self._what()}", 255)
        check(lib.yax_key_set_rights(self._key, number), self._what())

    # ---- parts

    def _what(self, *name: object) -> str:
        key = f"key {self._path!r}"
        return f"value {shown(name[0])} of {key}" if name else key

    def _named(self, name: str) -> Tuple[str, bytes]:
        """A value of the key in words, and the bytes of its name."""
        what = self._what(name)
        return what, text_of(name, what, "name")

    def _kind_name(self, name: str) -> str:
        kind = ctypes.c_uint()
        what, raw_name = self._named(name)
        check(lib.yax_value_exists(self._key, raw_name, ctypes.byref(kind)), what)
        return _KIND_NAMES.get(kind.value, f"of type {kind.value}")

    def _names(self, function: Callable[..., int]) -> List[str]:
        names = ctypes.c_void_p()
        try:
            check(function(self._key, ctypes.byref(names)), self._what())
        except NotFoundError:
            return []
        try:
            count = lib.yax_names_count(names)
            return [_text(lib.yax_names_at(names, i, None)) for i in range(count)]
        finally:
            lib.yax_names_free(names)


class Registry(Mapping[str, Key]):
    """An open registry file. A process has one open at a time; any thread may use it. ``open`` tells of the options.

    It is a mapping from the paths of all keys that are there, sorted, to these keys. ``registry[path]`` answers
    one that is not there yet, too, and looks nothing up.

    >>> registry["network/eth0"]
    <yax.Key 'network/eth0'>
    >>> len(registry), "network" in registry, registry.get("network")
    (0, False, None)
    >>> registry["network/eth0"]["mtu"] = 1500
    >>> for path, key in registry.items():
    ...     print(path, dict(key))
    network {}
    network/eth0 {'mtu': 1500}
    """

    def __init__(
        self,
        path: Union[str, "os.PathLike[str]"],
        *,
        durability: Durability = Durability.USUAL,
        user: Union[int, str] = ADMINISTRATOR,
        read_only: bool = False,
        mode: int = 0o644,
        side_folder: Union[str, "os.PathLike[str]", None] = None,
        compact_below: int = 0,
        check_at_opening: bool = False,
        wait_at_most: float = 60,
        exact_space: bool = False,
    ) -> None:
        self._file, file = file_of(path, "path")
        number, name = _user(user)
        options = Options(
            size=ctypes.sizeof(Options),
            durability=_durability(durability),
            user=number,
            user_name=name,
            read_only=truth_of(read_only, "read_only"),
            file_mode=integer_of(mode, "mode", 0o777, least=1),
            side_folder=None if side_folder is None else file_of(side_folder, "side_folder")[1],
            compact_below=integer_of(compact_below, "compact_below", U32),
            check_at_opening=truth_of(check_at_opening, "check_at_opening"),
            wait_at_most=max(1, round(seconds_of(wait_at_most, "wait_at_most", U32 / 1000) * 1000)),
            exact_space=truth_of(exact_space, "exact_space"),
        )
        handle = ctypes.c_void_p()
        check(
            lib.yax_open(file, ctypes.byref(options), ctypes.byref(handle)),
            self._file,
        )
        self._handle: Optional[ctypes.c_void_p] = handle
        # A key keeps the memory behind the handle, for calls of other threads while one closes it.
        self._anchor = ctypes.c_void_p()
        self._waiters = 0  # threads that wait for changes
        self._quiet = threading.Condition()
        check(lib.yax_key_at(handle, b"", ctypes.byref(self._anchor)), self._file)

    def close(self) -> None:
        """Closes the file; keys that are left raise ``NoRightError``."""
        with self._quiet:
            handle, self._handle = self._handle, None
            while self._waiters > 0:
                self._quiet.wait()
        if handle is not None:
            lib.yax_close(handle)

    def _open_handle(self) -> ctypes.c_void_p:
        handle = self._handle
        if handle is None:
            raise error_of(Status.NO_RIGHT, self._file, "the registry is closed")
        return handle

    @contextlib.contextmanager
    def _kept_open(self) -> Iterator[None]:
        with self._quiet:
            self._open_handle()
            self._waiters += 1
        try:
            yield
        finally:
            with self._quiet:
                self._waiters -= 1
                self._quiet.notify_all()

    def __enter__(self) -> "Registry":
        return self

    def __exit__(
        self,
        kind: Optional[Type[BaseException]],
        error: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        self.close()

    def __del__(self) -> None:
        if hasattr(self, "_quiet"):
            self.close()
            lib.yax_key_free(self._anchor)

    def __repr__(self) -> str:
        return f"<yax.Registry {self._file!r}{'' if self._handle else ', closed'}>"

    def __getitem__(self, path: str) -> Key:
        """The key of a path, "" for the root; nothing is looked up."""
        return Key(self, path)

    def __contains__(self, path: object) -> bool:
        return self[cast(str, path)].exists()

    def __delitem__(self, path: str) -> None:
        self[path].remove()

    def __iter__(self) -> Iterator[str]:
        """The paths of all keys, sorted."""
        return iter(self.root._names(lib.yax_key_branch))

    def __len__(self) -> int:
        return len(self.root._names(lib.yax_key_branch))

    def __bool__(self) -> bool:
        return True  # an empty registry is one, too

    def __eq__(self, other: object) -> bool:
        return self is other

    def __hash__(self) -> int:
        return id(self)

    @overload
    def get(self, path: str) -> Optional[Key]: ...

    @overload
    def get(self, path: str, default: Union[Key, _Other]) -> Union[Key, _Other]: ...

    def get(self, path: str, default: object = None) -> object:
        """The key of a path if it is there."""
        key = self[path]
        return key if key.exists() else default

    @property
    def root(self) -> Key:
        """The key above all others."""
        return self[""]

    def watch(self, path: str = "") -> Watch:
        """The changes of the key of a path and of all below it, by this program or another, from now on.

        >>> watch = registry.watch("network")
        >>> registry["network"]["mtu"] = 1500
        >>> next(watch)
        Change(kind=<ChangeKind.KEY_CREATED: 0>, path='network', name='')
        """
        return self[path].watch()

    @contextlib.contextmanager
    def transaction(self) -> Iterator[None]:
        """What this thread changes inside happens whole or not at all: an exception takes it back.

        Until the end this thread alone sees it, and changes by others wait.

        >>> try:
        ...     with registry.transaction():
        ...         registry["a"]["n"] = 1
        ...         registry["b"]["n"] = "x" * 2000
        ... except yax.LimitError:
        ...     print(list(registry))
        []
        """
        handle = ctypes.c_void_p()
        check(lib.yax_begin(self._open_handle(), ctypes.byref(handle)), self._file)
        try:
            yield
        except BaseException:
            lib.yax_cancel(handle)
            raise
        check(lib.yax_commit(handle), self._file)

    def migrate(self, path: str, steps: Sequence[Callable[[Key], object]]) -> None:
        """Does those of the numbered steps that were not done yet, each once and as one transaction.

        The key keeps how many were done, in its value ``.version``; programs that migrate at once share the steps.
        ``RangeError``: it was written by a newer program.

        >>> def to_rate(key):
        ...     key["rate"] = key.pop("speed", 100) * 1000
        >>> registry.migrate("net", [to_rate])
        >>> registry.migrate("net", [to_rate])
        >>> registry["net"]["rate"], registry["net"][".version"]
        (100000, 1)
        """
        key = self[path]
        steps = list_of(steps, f"steps of {key._what()}")
        for i, step in enumerate(steps, 1):
            if not callable(step):
                raise TypeError(f"step {i} of {key._what()}: {type(step).__name__} is no function")
        while self._steps_done(key, len(steps)) < len(steps):
            with self.transaction():
                done = self._steps_done(key, len(steps))  # another program may have done some meanwhile
                if done < len(steps):
                    steps[done](key)
                    key[".version"] = done + 1

    def _steps_done(self, key: Key, known: int) -> int:
        done = 0
        with contextlib.suppress(NotFoundError):
            done = key.read(".version", int)
        if not 0 <= done <= known:
            raise error_of(Status.RANGE, key._what(".version"), f"there is no step {done}")
        return done

    def apply(self, schema: Iterable[Setting]) -> Report:
        """Makes the settings that are missing, unless something does not fit: then nothing is made.

        ``WrongTypeError`` and ``RangeError`` tell of all that is there and does not fit; also of first values outside
        their ranges, and ``BadArgumentError`` of what cannot be a setting or stands in the table twice and differs.

        >>> schema = [yax.Setting("net/eth0", "mtu", 1500, least=576, most=9000),
        ...           yax.Setting("net/eth0", "name", "uplink")]
        >>> registry["net/eth0"]["speed"] = 100
        >>> registry.apply(schema)
        Report(made=['net/eth0 mtu', 'net/eth0 name'], extra=['net/eth0 speed'])
        >>> registry["net/eth0"].update(mtu=9001, name=5)
        >>> try:
        ...     registry.apply(schema)
        ... except yax.RangeError as error:
        ...     for line in error.unfit:
        ...         print(line)
        value 'mtu' of key 'net/eth0': 9001 is not from 576 to 9000 (status 34)
        value 'name' of key 'net/eth0': it is a number, not str (status 79)
        """
        rows = self._rows(schema)
        missing = self._missing(rows)
        if missing:
            with self.transaction():
                missing = self._missing(missing)  # what another program has made meanwhile stays
                self._write(missing)
        extra = [
            f"{path} {name}"
            for path in dict.fromkeys(path for path, _ in rows)
            for name in self[path]
            if (path, name) not in rows
        ]
        return Report(made=[f"{path} {name}" for path, name in missing], extra=extra)

    def reset(self, schema: Iterable[Setting]) -> None:
        """Gives every setting its first value."""
        rows = self._rows(schema)
        with self.transaction():
            self._write(rows)

    def _rows(self, schema: Iterable[Setting]) -> "_Rows":
        """The settings by path and name, when each is one."""
        self._open_handle()
        rows: _Rows = {}
        unfit: List[YaxError] = []
        for i, setting in enumerate(list_of(schema, "schema"), 1):
            if not isinstance(setting, Setting):
                raise TypeError(f"setting {i} of the schema: {type(setting).__name__} is no setting")
            what = f"value {shown(setting.name)} of key {shown(setting.key)}"
            try:
                text_of(setting.name, what, "name")
                check_setting(setting, what)
                other = rows.setdefault((self[setting.key].path, setting.name), setting)
                if _shape(other) != _shape(setting):
                    words = f"it stands in the schema twice, as {shown(other.value)} and {shown(setting.value)}"
                    raise error_of(Status.BAD_ARGUMENT, what, words)
            except YaxError as error:
                unfit.append(error_of(error.status, what, error.words))  # a path that is none tells only of itself
        raise_unfit(unfit)
        return rows

    def _missing(self, rows: "_Rows") -> "_Rows":
        """Those that are not there, when all others fit."""
        missing: _Rows = {}
        unfit: List[YaxError] = []
        for (path, name), setting in rows.items():
            key = self[path]
            what = key._what(name)
            try:
                check_range(setting, key._read(name, kind_of(setting.value, what)), what)
            except (NotFoundError, NotSetError):
                missing[path, name] = setting
            except YaxError as error:
                unfit.append(error)
        raise_unfit(unfit)
        return missing

    def _write(self, rows: "_Rows") -> None:
        for (path, name), setting in rows.items():
            self[path][name] = setting.value

    @property
    def durability(self) -> Durability:
        """What changes survive; never ``USUAL``."""
        return Durability(lib.yax_durability(self._open_handle()))

    def sync(self) -> None:
        """Waits until everything that was changed is on the disk."""
        check(lib.yax_sync(self._open_handle()), self._file)

    def room(self) -> Dict[str, RoomOf]:
        """How much there is, and how much more there can be until the file is full, by kind of record:
        ``strings`` (parts of the names of keys), ``keys``, ``values`` and ``blocks`` (of 64 bytes of data)."""
        room = Room(ctypes.sizeof(Room))
        check(lib.yax_get_room(self._open_handle(), ctypes.byref(room)), self._file)
        kinds = {"strings": room.strings, "keys": room.keys, "values": room.values, "blocks": room.blocks}
        return {kind: RoomOf(of.used, of.left) for kind, of in kinds.items()}

    def condition(self) -> Condition:
        """What condition the file is in, after a look at all of it."""
        condition = ctypes.c_uint()
        check(lib.yax_check(self._open_handle(), ctypes.byref(condition)), self._file)
        return Condition(condition.value)

    def compact(self) -> None:
        """Gives the file the same content without unused space in between; others go on with it."""
        check(lib.yax_compact(self._open_handle()), self._file)

    def set_user(self, user: Union[int, str]) -> None:
        """Another user counts from now on, for all threads."""
        number, name = _user(user)
        if name is not None:
            check(lib.yax_set_user(self._open_handle(), name), f"user {user!r}")
        else:
            check(lib.yax_set_user_number(self._open_handle(), number), f"user {user!r}")


def open(
    path: Union[str, "os.PathLike[str]"],
    *,
    durability: Durability = Durability.USUAL,
    user: Union[int, str] = ADMINISTRATOR,
    read_only: bool = False,
    mode: int = 0o644,
    side_folder: Union[str, "os.PathLike[str]", None] = None,
    compact_below: int = 0,
    check_at_opening: bool = False,
    wait_at_most: float = 60,
    exact_space: bool = False,
) -> Registry:
    """Opens a registry file, which is made when nothing is at the path, with the rights ``mode`` less the umask.

    ``read_only`` is for a program that may not write the file: changes raise ``NoRightError``, and a file that is
    missing ``NotFoundError``. ``side_folder`` is a folder in memory for the file that the usual mode keeps beside
    the registry, the same for all programs. ``compact_below`` compacts when fewer slots of a kind are left, and
    ``check_at_opening`` refuses a damaged file at once. A change waits ``wait_at_most`` seconds for those of other
    processes. With ``exact_space`` space is not used again: the same operations make the same bytes.
    """
    return Registry(
        path,
        durability=durability,
        user=user,
        read_only=read_only,
        mode=mode,
        side_folder=side_folder,
        compact_below=compact_below,
        check_at_opening=check_at_opening,
        wait_at_most=wait_at_most,
        exact_space=exact_space,
    )
