"""The two programs of README.md that share a registry, its commands of the tool, and who runs the other blocks."""

import os
import re
import shutil
import subprocess
import time
from pathlib import Path
from typing import Dict, List, Tuple

from test_guide import BLOCK, COMMANDS, LINK, ROOT, TOOL

ANY_BLOCK = re.compile(r"^```([\w-]*)\n(.*?)^```$", re.MULTILINE | re.DOTALL)

# Commands that are run as another one, and why.
INSTEAD: Dict[str, str] = {
    "yaxreg shell device.rce": "echo tree | yaxreg shell device.rce",  # a user types there
    "yaxreg edit device.rce network": "EDITOR=true yaxreg edit device.rce network",  # and here
    # It ends when it is told to.
    "yaxreg monitor device.rce network": "timeout -s INT 0.3 yaxreg monitor device.rce network || [ $? = 124 ]",
    # A minute, in a folder that is not there.
    "yaxreg selftest /var/lib/app --time 60": "yaxreg selftest . --time 1",
    # It wants a component; ProgramWorks registers some.
    "yaxreg comp add device.rce ID /usr/lib/libclock.so --root image/": "yaxreg comp add --help",
}

# The blocks of a page that are no part of the guide, in their order: what is begun by which words, and who sees to it.
BLOCKS: Dict[str, List[Tuple[str, str, str]]] = {
    "README.md": [
        ("", "  your program", "a picture"),
        ("", "make demo", "CheckCommands.cmake"),
        ("cpp", "#include", "tests/build: the first program"),
        ("cpp", "// thermostat.cpp", "below"),
        ("cpp", "// display.cpp", "below"),
        ("", "yaxreg create", "below"),
        ("", "cmake -S . -B build/tool", "tests/build/Install.cmake does the same"),
        ("", "cmake -S . -B build/install", "tests/build/Install.cmake does the same"),
    ],
    "docs/architecture.md": [("", "", "a picture")],
    "docs/format.md": [
        ("", "", "a picture"),
        ("hex", "", "FormatExample"),
        ("hex-backup", "", "FormatExample"),
    ],
    "docs/json.md": [("json-export", "", "JsonPage"), ("json-import", "", "JsonPage")],
}


def build(name: str, folder: Path) -> str:
    blocks = [code for _, code in BLOCK.findall((ROOT / "README.md").read_text()) if code.startswith(f"// {name}.cpp")]
    assert len(blocks) == 1
    source = folder / f"{name}.cpp"
    source.write_text(blocks[0])
    program = folder / name
    subprocess.run([*COMMANDS["cpp"], str(source), "-o", str(program), *LINK], check=True)
    return str(program)


def test_what_one_program_sets_the_other_one_shows(tmp_path: Path) -> None:
    thermostat = build("thermostat", tmp_path)
    display = build("display", tmp_path)
    with subprocess.Popen([display], cwd=tmp_path, stdout=subprocess.PIPE, text=True) as shown:
        while not (tmp_path / "device.rce").exists():
            time.sleep(0.01)
        subprocess.run([thermostat], cwd=tmp_path, check=True)
        printed, _ = shown.communicate(timeout=60)
    assert shown.returncode == 0
    assert re.fullmatch(r"((19|20) degrees\n)*21 degrees\n", printed)


def test_every_block_has_somebody_who_runs_it() -> None:
    pages = ["README.md", *(f"docs/{page.name}" for page in sorted((ROOT / "docs").glob("*.md")))]
    for page in pages:
        if page == "docs/components.md":
            continue  # Tutorial.cmake runs all of it
        blocks = ANY_BLOCK.findall((ROOT / page).read_text())
        known = BLOCKS.get(page, [])
        assert [language for language, _ in blocks] == [language for language, _, _ in known], page
        for (_, code), (_, beginning, _) in zip(blocks, known):
            assert code.startswith(beginning), page


def test_every_command_of_the_tool_does_what_it_is_shown_for(tmp_path: Path) -> None:
    environment = {**os.environ, "PATH": f"{TOOL.parent}:{os.environ['PATH']}"}

    def run(command: str) -> int:
        done = subprocess.run(["sh", "-c", command], cwd=tmp_path, env=environment, stdout=subprocess.DEVNULL)
        return done.returncode

    text = (ROOT / "README.md").read_text()
    (block,) = [code for _, code in ANY_BLOCK.findall(text) if code.startswith("yaxreg create")]
    commands = [re.sub(r" +# .*", "", line).rstrip() for line in block.splitlines()]
    assert set(INSTEAD) <= set(commands)
    (tmp_path / "settings.txt").write_text("put network/eth0:address --string 192.168.0.1\n")
    assert run("yaxreg create copy.rce && mkdir image") == 0
    for command in commands:
        if command.startswith("yaxreg repair"):
            shutil.copy(tmp_path / "device.rce", tmp_path / "damaged.rce")
        if command.startswith("yaxreg view before.rce"):
            shutil.copy(tmp_path / "copy.rce", tmp_path / "before.rce")
            shutil.copy(tmp_path / "device.rce", tmp_path / "after.rce")
        # Nothing in the copy differs but who made it.
        expected = (0, 1) if command.startswith("yaxreg diff") else (0,)
        assert run(INSTEAD.get(command, command)) in expected, command
