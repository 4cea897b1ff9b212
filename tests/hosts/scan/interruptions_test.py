"""Processes that are killed at any moment: nothing is lost, and nothing done twice."""

import csv
import os
import random
import shutil
import signal
import subprocess
import time
import unittest

from scan_host import ScanTest, children_of

KILLS = 50
PHOTOGRAPHS = 150


def can_trace() -> bool:
    """Not where processes may not watch others."""
    if shutil.which("strace") is None:
        return False
    return subprocess.run(("strace", "-o", "/dev/null", "true"), check=False, capture_output=True).returncode == 0


class Interruptions(ScanTest):
    def kill_somewhere(self, chance: random.Random) -> None:
        """Starts the scan, and kills it, its workers or both after a while."""
        with subprocess.Popen(self.command(self.photos, "--quiet"), stderr=subprocess.DEVNULL) as process:
            time.sleep(chance.uniform(0.0, 0.5))
            workers = children_of(process.pid)
            whom = chance.choice(["supervisor", "workers", "both"])
            victims = {"supervisor": [process.pid], "workers": workers, "both": [process.pid, *workers]}[whom]
            for victim in victims:
                try:
                    os.kill(victim, signal.SIGKILL)
                except ProcessLookupError:
                    pass
            if whom == "workers":
                time.sleep(chance.uniform(0.0, 0.2))
                process.send_signal(signal.SIGTERM)

    @unittest.skipUnless(can_trace(), "strace shows what is brought to the disk")
    def test_what_replaces_a_file_is_on_the_disk(self) -> None:
        self.add_many(1)
        trace = self.place / "trace"
        command = ["strace", "-y", "-e", "trace=fsync,rename,renameat,renameat2", "-o", str(trace)]
        subprocess.run([*command, *self.command(self.photos)], check=True, capture_output=True)
        calls = [line.partition("(") for line in trace.read_text().splitlines() if "(" in line]
        renames = [i for i, (name, _, _) in enumerate(calls) if name.startswith("rename")]
        self.assertGreater(len(renames), 3)
        for i in renames:
            new = calls[i][2].split('"')[1]
            self.assertEqual((calls[i - 1][0], calls[i + 1][0]), ("fsync", "fsync"), calls[i])
            self.assertIn(f"<{new}>", calls[i - 1][2])
            self.assertIn(f"<{self.run_folder}>", calls[i + 1][2])
        synced = "".join(words for name, _, words in calls if name == "fsync")
        self.assertIn(f"<{self.run_folder / 'faces.ndjson'}>", synced)

    def test_every_photograph_stands_once_after_fifty_kills(self) -> None:
        self.add_many(PHOTOGRAPHS)
        chance = random.Random(460)
        for _ in range(KILLS):
            self.kill_somewhere(chance)
        done = self.scan()
        self.expect_code(done, 0)
        names = self.names()
        self.assertEqual(len(names), PHOTOGRAPHS)
        self.assertEqual(len(set(names)), PHOTOGRAPHS)
        for table in ("photos.csv", "faces.csv"):
            with open(self.run_folder / table, encoding="utf-8", newline="") as file:
                rows = [row["name"] for row in csv.DictReader(file)]
            self.assertEqual(sorted(rows), sorted(names), table)


if __name__ == "__main__":
    unittest.main()
