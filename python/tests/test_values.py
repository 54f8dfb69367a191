import math

import pytest

import yax


@pytest.mark.parametrize(
    "value",
    [0, 1, -1, 1500, 2**63 - 1, -(2**63), 0.0, 21.5, 0.1, 1e300, 5e-324, -math.inf,
     "", "uplink", "é\n", "x" * 1023, b"", b"\0\1\xff", b"\xaa" * 1024],
)
def test_a_value_comes_back_as_it_was(registry: yax.Registry, value: yax.Value) -> None:
    key = registry["k"]
    key["v"] = value
    assert key["v"] == value
    assert type(key["v"]) is type(value)


def test_not_a_number_is_one(registry: yax.Registry) -> None:
    registry["k"]["v"] = math.nan
    value = registry["k"]["v"]
    assert isinstance(value, float) and math.isnan(value)


def test_truth_values_are_numbers(registry: yax.Registry) -> None:
    key = registry["k"]
    key["on"] = True
    assert key["on"] == 1 and key["on"] is not True
    assert key.read("on", bool) is True
    key["on"] = 2
    with pytest.raises(yax.RangeError):
        key.read("on", bool)


def test_bytes_of_every_kind_are_bytes(registry: yax.Registry) -> None:
    key = registry["k"]
    key["v"] = bytearray(b"abc")
    assert key["v"] == b"abc"
    key["v"] = memoryview(b"abcd")[1:3]
    assert key["v"] == b"bc"


@pytest.mark.parametrize("number", [2**63, 2**64, -(2**63) - 1])
def test_a_number_that_does_not_fit_is_refused(registry: yax.Registry, number: int) -> None:
    with pytest.raises(yax.RangeError, match="value 'v' of key 'k'"):
        registry["k"]["v"] = number
    with pytest.raises(OverflowError):
        registry["k"]["v"] = number
    assert "k" not in registry


def test_a_value_without_a_sign_has_all_64_bits(registry: yax.Registry) -> None:
    key = registry["k"]
    key.set_unsigned("v", 2**64 - 1)
    assert key.get_unsigned("v") == 2**64 - 1
    assert key["v"] == -1
    for number in (-1, 2**64):
        with pytest.raises(yax.RangeError):
            key.set_unsigned("v", number)


@pytest.mark.parametrize("value", [None, [1], {"a": 1}, 1j, object()])
def test_other_types_are_refused(registry: yax.Registry, value: object) -> None:
    with pytest.raises(TypeError, match="value 'v' of key 'k'"):
        registry["k"]["v"] = value  # type: ignore[assignment]


@pytest.mark.parametrize("value", ["x" * 1024, b"x" * 1025, "é" * 512])
def test_what_is_too_long_is_refused(registry: yax.Registry, value: yax.Value) -> None:
    registry["k"]["v"] = 1
    with pytest.raises(yax.LimitError) as error:
        registry["k"]["v"] = value
    assert error.value.status == yax.Status.LIMIT
    assert isinstance(error.value, ValueError)
    assert registry["k"]["v"] == 1


def test_zero_bytes_in_texts_and_names_are_refused(registry: yax.Registry) -> None:
    key = registry["k"]
    for name, value in (("v", "a\0b"), ("n\0m", "a")):
        with pytest.raises(yax.BadArgumentError):
            key[name] = value
    with pytest.raises(yax.BadArgumentError):
        registry["a\0b"]
    assert not key.exists()


@pytest.mark.parametrize("name", ["", "n" * 32])
def test_impossible_names_are_refused(registry: yax.Registry, name: str) -> None:
    with pytest.raises(yax.BadArgumentError):
        registry["k"][name] = 1


def test_a_wrong_type_is_told_with_key_value_and_reason(registry: yax.Registry) -> None:
    key = registry["network/eth0"]
    key["mtu"] = "large"
    with pytest.raises(yax.WrongTypeError) as error:
        key.read("mtu", int)
    assert str(error.value) == "value 'mtu' of key 'network/eth0': it is a text, not int (status 79)"
    assert key.read("mtu", str) == "large"


def test_texts_that_are_not_utf_8_come_back(registry: yax.Registry) -> None:
    name = b"\xff\xfe".decode("utf-8", "surrogateescape")
    registry["k"][name] = name
    assert registry["k"][name] == name
    assert list(registry["k"]) == [name]
