"""What the tests of qorfaces scan have in common: folders of made photographs, and the command."""

import json
import os
import shlex
import shutil
import subprocess
import tempfile
import unittest
from pathlib import Path
from typing import Any, Mapping, Sequence

QORFACES = shlex.split(os.environ["QORFACES"])  # with what runs it before it
MADE = Path(os.environ["MADE"])
FACE = (MADE / "made_face.png").read_bytes()  # 640 x 480, one face

Line = dict[str, Any]


class ScanTest(unittest.TestCase):
    """A folder of photographs and a run folder beside it."""

    def setUp(self) -> None:
        self.place = Path(tempfile.mkdtemp(prefix="scan-test-"))
        self.addCleanup(shutil.rmtree, self.place, ignore_errors=True)
        self.photos = self.place / "photos"
        self.photos.mkdir()
        self.run_folder = self.place / "run"

    def add(self, name: str, content: bytes = FACE) -> Path:
        """Adds a photograph."""
        path = self.photos / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(content)
        return path

    def add_many(self, count: int) -> None:
        for i in range(count):
            self.add(f"{i % 7}/photo{i}.png")

    def command(self, *words: str | Path) -> list[str]:
        return [*QORFACES, "scan", "--models", str(MADE), "--out", str(self.run_folder), *map(str, words)]

    def scan(
        self,
        *words: str | Path,
        environment: Mapping[str, str] | None = None,
        before: Any = None,
        given: bytes = b"",
        directory: Path | None = None,
    ) -> subprocess.CompletedProcess[str]:
        """Scans what the words say; without any, the folder of photographs."""
        done = subprocess.run(
            self.command(*(words or (self.photos,))),
            input=given,
            capture_output=True,
            env={**os.environ, **(environment or {})},
            preexec_fn=before,
            cwd=directory,
            check=False,
        )
        return subprocess.CompletedProcess(done.args, done.returncode, done.stdout.decode(), done.stderr.decode())

    def qorfaces(self, *words: str | Path) -> subprocess.CompletedProcess[str]:
        return subprocess.run([*QORFACES, *map(str, words)], capture_output=True, text=True, check=False)

    def lines(self, run: Path | None = None) -> list[Line]:
        text = ((run or self.run_folder) / "faces.ndjson").read_text("utf-8")
        return [json.loads(line) for line in text.splitlines()]

    def names(self) -> list[str]:
        return [line["name"] for line in self.lines()]

    def summary(self) -> Line:
        summary: Line = json.loads((self.run_folder / "summary.json").read_text())
        return summary

    def expect_code(self, done: subprocess.CompletedProcess[str], code: int) -> None:
        self.assertEqual(done.returncode, code, done.stderr)


def children_of(process: int) -> Sequence[int]:
    """The processes that a process has started; none where it has ended."""
    try:
        return [int(child) for child in Path(f"/proc/{process}/task/{process}/children").read_text().split()]
    except (FileNotFoundError, ProcessLookupError):
        return []
