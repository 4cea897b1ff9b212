"""What the tests share: photographs, and processes in which nothing has been loaded yet."""

from __future__ import annotations

import os
import pathlib
import subprocess
import sys
from typing import Callable, List

import pytest

REPOSITORY = pathlib.Path(__file__).resolve().parents[3]
ASTRONAUT = REPOSITORY / "assets" / "photos" / "astronaut.jpg"

Run = Callable[..., "subprocess.CompletedProcess[str]"]


@pytest.fixture
def astronaut() -> str:
    return str(ASTRONAUT)


@pytest.fixture
def text_file(tmp_path: pathlib.Path) -> str:
    """A file that is no picture."""
    path = tmp_path / "text.jpg"
    path.write_text("no picture")
    return str(path)


@pytest.fixture
def fresh() -> Run:
    """Runs Python code in a process of its own: fresh(code, *arguments, NAME=value of the environment)."""

    def run(code: str, *arguments: str, **environment: str) -> "subprocess.CompletedProcess[str]":
        command: List[str] = [sys.executable, "-c", code, *arguments]
        return subprocess.run(command, env={**os.environ, **environment}, capture_output=True, text=True)

    return run
