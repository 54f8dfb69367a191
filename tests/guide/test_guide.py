"""Compiles and runs every block of code in docs/guide, and compares what it prints with the block "output" behind it.

The blocks of a page run one after another in one folder. YAX_LIBRARY names the library, YAXREG the tool.
"""

import os
import re
import subprocess
from pathlib import Path
from typing import Iterator, List, Tuple

import pytest

ROOT = Path(__file__).resolve().parents[2]
LIBRARY = Path(os.environ["YAX_LIBRARY"])
TOOL = Path(os.environ["YAXREG"])
BLOCK = re.compile(r"^```(\w+)\n(.*?)^```$", re.MULTILINE | re.DOTALL)
PAGES = sorted((ROOT / "docs" / "guide").glob("*.md"))
LINK = [f"-I{ROOT}", f"-L{LIBRARY.parent}", "-lYAX", f"-Wl,-rpath,{LIBRARY.parent}", "-pthread"]
COMMANDS = {
    "cpp": [os.environ.get("CXX", "c++"), "-std=c++17", "-Wall", "-Wextra", "-Werror"],
    "c": [os.environ.get("CC", "cc"), "-std=c99", "-pedantic-errors", "-Wall", "-Wextra", "-Werror"],
}
INTERPRETERS = {"python": ["/usr/bin/python3", "-B"], "sh": ["sh", "-eu"]}


def pairs(page: Path) -> Iterator[Tuple[str, str, str]]:
    """Language, code and what it prints."""
    blocks: List[Tuple[str, str]] = BLOCK.findall(page.read_text())
    for i, (language, code) in enumerate(blocks):
        if language == "output":
            continue
        assert i + 1 < len(blocks) and blocks[i + 1][0] == "output", f"{page.name}: what does block {i + 1} print?"
        yield language, code, blocks[i + 1][1]


def run(folder: Path, index: int, language: str, code: str) -> str:
    source = folder / f"block{index}.{language}"
    source.write_text(code)
    command = [*INTERPRETERS.get(language, []), str(source)]
    if language in COMMANDS:
        program = folder / f"block{index}"
        subprocess.run([*COMMANDS[language], str(source), "-o", str(program), *LINK], check=True)
        command = [str(program)]
    environment = {
        **os.environ,
        "PATH": f"{TOOL.parent}:{os.environ['PATH']}",
        "PYTHONPATH": str(ROOT / "python"),
    }
    done = subprocess.run(command, cwd=folder, env=environment, stdout=subprocess.PIPE, text=True, check=True)
    return done.stdout


@pytest.mark.parametrize("page", PAGES, ids=[page.stem for page in PAGES])
def test_every_block_prints_what_stands_below_it(page: Path, tmp_path: Path) -> None:
    for index, (language, code, output) in enumerate(pairs(page)):
        assert language in COMMANDS or language in INTERPRETERS, f"{page.name}: what is {language}?"
        assert run(tmp_path, index, language, code) == output


def test_the_index_leads_to_every_page() -> None:
    index = (ROOT / "docs" / "guide" / "README.md").read_text()
    for page in PAGES:
        if page.name != "README.md":
            assert f"({page.name})" in index


@pytest.mark.parametrize("language, limit", [("cpp", 60), ("python", 40), ("c", 120)])
def test_the_settings_program_stays_short(language: str, limit: int) -> None:
    page = ROOT / "docs" / "guide" / "settings-program.md"
    programs = [code for written, code, _ in pairs(page) if written == language]
    assert [code.count("\n") < limit for code in programs] == [True]
