"""The two programs of README.md that share a registry."""

import re
import subprocess
import time
from pathlib import Path

from test_guide import BLOCK, COMMANDS, LINK, ROOT


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
