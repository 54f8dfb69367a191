from pathlib import Path
from typing import Any, Dict, Iterator

import pytest

import yax


@pytest.fixture
def file(tmp_path: Path) -> Path:
    return tmp_path / "settings.rce"


@pytest.fixture
def registry(file: Path) -> Iterator[yax.Registry]:
    with yax.open(file) as opened:
        yield opened


@pytest.fixture(autouse=True)
def examples(request: pytest.FixtureRequest, doctest_namespace: Dict[str, Any], tmp_path: Path) -> Iterator[None]:
    """What the examples in the documentation find: a path, and but for the module's own an open registry."""
    if not isinstance(request.node, pytest.DoctestItem):
        yield
        return
    doctest_namespace["yax"] = yax
    doctest_namespace["file"] = tmp_path / "settings.rce"
    if request.node.name == "yax":
        yield
        return
    with yax.open(tmp_path / "settings.rce") as opened:
        doctest_namespace["registry"] = opened
        yield
