"""Processes that are killed at any moment: nothing is lost, and nothing done twice."""

import csv
import os
import random
import signal
import subprocess
import time
import unittest

from scan_host import ScanTest, children_of

KILLS = 50
PHOTOGRAPHS = 150


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
