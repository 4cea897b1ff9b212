"""Parts of a scan on many machines, and one run of them all."""

import json
import unittest
import zlib
from pathlib import Path

from scan_host import ScanTest

OUTPUTS = ("faces.ndjson", "photos.csv", "faces.csv", "failed.csv")


class Shards(ScanTest):
    def scan_shards(self, count: int) -> list[Path]:
        runs = []
        for index in range(1, count + 1):
            self.run_folder = self.place / f"shard{index}"
            self.scan(self.photos, "--shard", f"{index}/{count}")
            runs.append(self.run_folder)
        return runs

    def test_merge_to_what_one_run_gives(self) -> None:
        self.add_many(30)
        self.add("text.jpg", b"no picture")
        self.expect_code(self.scan(), 1)
        runs = self.scan_shards(3)
        merged = self.place / "merged"
        self.expect_code(self.qorfaces("merge", *runs, "--out", merged), 0)
        for name in OUTPUTS:
            self.assertEqual((merged / name).read_bytes(), (self.place / "run" / name).read_bytes(), name)
        summaries = [json.loads((run / "summary.json").read_text()) for run in (merged, self.place / "run")]
        for summary in summaries:
            del summary["times"]
        self.assertEqual(*summaries)

    def test_are_told_by_a_sum_that_others_can_take(self) -> None:
        self.add_many(30)
        for index, run in enumerate(self.scan_shards(2)):
            names = [line["name"] for line in self.lines(run)]
            self.assertGreater(len(names), 0)
            self.assertTrue(all(zlib.crc32(name.encode()) % 2 == index for name in names))

    def test_do_not_go_on_as_another(self) -> None:
        self.add_many(3)
        self.scan(self.photos, "--shard", "1/2")
        self.expect_code(self.scan(self.photos, "--shard", "2/2"), 2)

    def test_with_other_settings_do_not_merge(self) -> None:
        self.add_many(3)
        runs = self.scan_shards(2)
        self.run_folder = self.place / "other"
        self.expect_code(self.scan(self.photos, "--max-side", "500"), 0)
        done = self.qorfaces("merge", runs[0], self.run_folder, "--out", self.place / "merged")
        self.assertEqual(done.returncode, 2, done.stderr)
        self.assertIn("other settings", done.stderr)

    def expect_refusal(self, runs: list[Path], *words: str) -> None:
        done = self.qorfaces("merge", *runs, "--out", self.place / "merged")
        self.expect_code(done, 2)
        for word in words:
            self.assertIn(word, done.stderr)
        self.assertFalse((self.place / "merged").exists())

    def test_do_not_merge_before_all_are_finished(self) -> None:
        self.add_many(9)
        runs = self.scan_shards(2)
        self.add("another.png")  # in part 2
        without_models = ("--models", self.place, "--shard", "2/2")
        self.expect_code(self.qorfaces("scan", self.photos, *without_models, "--out", runs[1]), 3)
        self.expect_refusal(runs, str(runs[1]), "not finished")
        self.expect_code(self.qorfaces("export", runs[1]), 0)
        self.expect_refusal(runs, str(runs[1]), "not finished")
        self.expect_code(self.scan(self.photos, "--shard", "2/2"), 0)
        self.expect_code(self.qorfaces("merge", *runs, "--out", self.place / "merged"), 0)

    def test_of_other_versions_do_not_merge(self) -> None:
        self.add_many(3)
        runs = self.scan_shards(2)
        described = runs[1] / "run.json"
        described.write_text(described.read_text().replace('"library": "', '"library": "3.2.1'))
        self.expect_refusal(runs, f"{runs[1]} was made by qorfaces 3.2.1")

    def test_do_not_merge_where_one_is_missing(self) -> None:
        self.add_many(3)
        runs = self.scan_shards(3)
        self.expect_refusal([runs[0], runs[2]], "shard 2/3 is missing")
        self.expect_refusal([runs[2]], "shard 1/3 is missing, and 1 more")
        self.expect_refusal([runs[0], runs[0]], "is named twice")

    def test_do_not_merge_without_their_journal(self) -> None:
        self.add_many(3)
        runs = self.scan_shards(2)
        (runs[1] / "faces.ndjson").unlink()
        done = self.qorfaces("merge", *runs, "--out", self.place / "merged")
        self.expect_code(done, 1)
        self.assertIn(f"{runs[1] / 'faces.ndjson'} cannot be read", done.stderr)

    def test_says_once_who_complains(self) -> None:
        done = self.qorfaces("merge", "/nowhere", "--out", self.place / "merged")
        self.expect_code(done, 2)
        self.assertEqual(done.stderr, "qorfaces: /nowhere holds no scan\n")

    def test_refuses_what_is_none(self) -> None:
        self.add_many(1)
        for word in ("0/2", "3/2", "1", "a/b", "1/2x"):
            with self.subTest(word):
                self.expect_code(self.scan(self.photos, "--shard", word), 2)


if __name__ == "__main__":
    unittest.main()
