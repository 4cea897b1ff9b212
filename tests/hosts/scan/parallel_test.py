"""The recipe for GNU parallel in docs/guides/folders.md, on one machine."""

import os
import re
import subprocess
import unittest
from pathlib import Path

from scan_host import MADE, QORFACES, ScanTest

GUIDE = Path(__file__).parents[3] / "docs" / "guides" / "folders.md"


class Parallel(ScanTest):
    def test_scans_shards_that_merge(self) -> None:
        self.add_many(12)
        recipe = re.search(r"^parallel .*$", GUIDE.read_text("utf-8"), re.MULTILINE)
        assert recipe is not None
        # Without the two machines; the folders' names and the program are ours.
        command = recipe[0].replace("--sshlogin one,two ", "").replace("Photographs", str(self.photos))
        command = command.replace("--out Run", f"--models {MADE} --out {self.place}/Run")
        environment = {**os.environ, "PATH": f"{Path(QORFACES[-1]).parent}:{os.environ['PATH']}", "HOME": str(self.place)}
        done = subprocess.run(command, shell=True, env=environment, capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        runs = [self.place / "Run1", self.place / "Run2"]
        self.expect_code(self.qorfaces("merge", *runs, "--out", self.run_folder), 0)
        self.assertEqual(len(self.lines()), 12)


if __name__ == "__main__":
    unittest.main()
