"""The tool and Python read each other's values as the same thing."""

import os
import shlex
import subprocess
from pathlib import Path
from typing import List

import pytest

import yax

TOOL = shlex.split(os.environ.get("YAXREG", ""))
VALUES = [
    ("int", "1500", 1500),
    ("int", "-1", -1),
    ("int", "9223372036854775807", 2**63 - 1),
    ("string", "uplink", "uplink"),
    ("string", "é \"quoted\"", "é \"quoted\""),
    ("hex", "001bff", b"\0\x1b\xff"),
]


def run(*arguments: str) -> str:
    return subprocess.run([*TOOL, *arguments], check=True, capture_output=True, text=True).stdout


def add(file: Path, option: List[str], text: str) -> None:
    run("create", str(file))
    run("mkkey", str(file), "k")
    run("add", str(file), "k", "v", option[0], text, *option[1:])


@pytest.mark.skipif(not TOOL, reason="YAXREG names the tool; the build's test does")
@pytest.mark.parametrize("option, text, value", VALUES)
def test_what_the_tool_writes(file: Path, option: str, text: str, value: yax.Value) -> None:
    add(file, [f"--{option}"], text)
    with yax.open(file) as registry:
        assert registry["k"]["v"] == value
        before = file.read_bytes()
        registry["k"]["v"] = value  # the same: it is not written
        assert file.read_bytes() == before


@pytest.mark.skipif(not TOOL, reason="YAXREG names the tool; the build's test does")
def test_what_the_tool_writes_as_a_real_number(file: Path) -> None:
    add(file, ["--string", "--type", "3"], "21.5")
    with yax.open(file) as registry:
        assert registry["k"]["v"] == 21.5
        before = file.read_bytes()
        registry["k"]["v"] = 21.5
        assert file.read_bytes() == before


@pytest.mark.skipif(not TOOL, reason="YAXREG names the tool; the build's test does")
def test_what_the_tool_shows(file: Path) -> None:
    with yax.open(file) as registry:
        registry["k"].update(a=1500, b="uplink", c=b"\0\x1b\xff", d=21.5, e=True)
    shown = run("ls", "-l", str(file), "k")
    for text in ("1500", '"uplink"', "001bff", '"21.5"'):
        assert text in shown


@pytest.mark.skipif(not TOOL, reason="YAXREG names the tool; the build's test does")
def test_the_default_number_of_a_key(file: Path) -> None:
    with yax.open(file) as registry:
        registry["k"].make().default = 2**64 - 1
        assert run("default", str(file), "k") == f"{2**64 - 1}\n"
        run("default", str(file), "k", "7")
        assert registry["k"].default == 7
