"""faces.ndjson as a journal: what a scan that starts again does with it."""

import fcntl
import json
import os
import resource
import signal
import subprocess
import unittest

from scan_host import QORFACES, ScanTest


def limit_files() -> None:
    """To a few lines of a journal."""
    resource.setrlimit(resource.RLIMIT_FSIZE, (2000, resource.RLIM_INFINITY))


class Journal(ScanTest):
    def test_skips_what_is_done(self) -> None:
        self.add_many(3)
        self.expect_code(self.scan(), 0)
        before = (self.run_folder / "faces.ndjson").stat()
        self.expect_code(self.scan(), 0)
        self.assertEqual((self.run_folder / "faces.ndjson").stat().st_mtime_ns, before.st_mtime_ns)

    def test_looks_again_at_what_has_changed(self) -> None:
        self.add_many(3)
        self.expect_code(self.scan(), 0)
        self.add("0/photo0.png", b"no picture any more")
        self.expect_code(self.scan(), 1)
        failed = {line["name"]: line["status"] for line in self.lines()}
        self.assertEqual(failed, {"0/photo0.png": "failed", "1/photo1.png": "ok", "2/photo2.png": "ok"})

    def test_drops_a_torn_last_line(self) -> None:
        self.add_many(3)
        self.expect_code(self.scan(), 0)
        journal = self.run_folder / "faces.ndjson"
        whole = journal.read_bytes()
        journal.write_bytes(whole[:-20])
        self.expect_code(self.scan(), 0)
        self.assertEqual(journal.read_bytes(), whole)

    def test_leaves_damaged_lines_out(self) -> None:
        self.add_many(3)
        self.expect_code(self.scan(), 0)
        journal = self.run_folder / "faces.ndjson"
        whole = journal.read_bytes()
        first, rest = whole.split(b"\n", 1)
        journal.write_bytes(b"\0" * len(first) + b"\n" + rest)
        done = self.scan()
        self.expect_code(done, 0)
        self.assertIn("1 damaged lines", done.stderr)
        self.assertEqual(journal.read_bytes(), whole)

    def test_begins_again_where_a_power_cut_has_left_nothing(self) -> None:
        self.add_many(3)
        self.run_folder.mkdir()
        (self.run_folder / "run.json").touch()
        (self.run_folder / "faces.ndjson").touch()
        self.expect_code(self.scan(), 0)
        self.assertEqual(len(self.lines()), 3)
        self.assertEqual(json.loads((self.run_folder / "run.json").read_text())["version"], 1)

    def test_does_not_go_on_where_nothing_says_how_the_lines_came_about(self) -> None:
        self.add_many(3)
        self.expect_code(self.scan(), 0)
        (self.run_folder / "run.json").write_bytes(b"")
        journal = self.run_folder / "faces.ndjson"
        lines = journal.read_bytes()
        for words in ((self.photos,), (self.photos, "--max-side", "500")):
            done = self.scan(*words)
            self.expect_code(done, 2)
            self.assertIn("run.json is none that this program has written", done.stderr)
        self.assertEqual(journal.read_bytes(), lines)

    def test_looks_again_where_a_line_is_damaged_in_its_middle(self) -> None:
        self.add_many(3)
        self.expect_code(self.scan(), 0)
        journal = self.run_folder / "faces.ndjson"
        whole = journal.read_bytes()
        path = str(self.photos).encode()
        damages = [
            (b'"found":1', b"\0" * 9),
            (b'"found":1', b'"found":1e300'),
            (b'"box"', b'"bux"'),
            (b'"damaged":false', b'"damaged":"no"'),
            (b'"ok"', b'"no"'),
            (b'"path":"/', b'"path":"\\u002f'),
            (b'"ok"', b'"ok","path":"' + path + b'/another.png"'),
            (b'"ok"', b'"ok","size":1'),
            (b'"size"', b'"pathBytes":"2f61","size"'),
            (b'"size"', b'"pathBytes":"zz","size"'),
            (b'"size"', b'"pathBytes":null,"size"'),
            (b'"chin"', b'"landmarks":[{"x":0,"y":0}],"chin"'),
        ]
        for good, bad in damages:
            with self.subTest(bad):
                journal.write_bytes(whole.replace(good, bad, 1))
                self.expect_code(self.qorfaces("merge", self.run_folder, "--out", self.place / "merged"), 1)
                done = self.scan()
                self.expect_code(done, 0)
                self.assertIn("1 damaged lines", done.stderr)
                self.assertEqual(journal.read_bytes(), whole)
                journal.write_bytes(whole.replace(good, bad, 1))
                self.expect_code(self.qorfaces("export", self.run_folder), 0)
                self.assertEqual(len(self.lines()), 2)

    def test_keeps_its_words_out_of_its_files(self) -> None:
        self.add_many(1)
        self.expect_code(self.scan(before=lambda: os.close(2)), 0)
        self.assertEqual((self.run_folder / "lock").read_bytes(), b"")

    def test_reports_what_is_not_damaged(self) -> None:
        self.add_many(2)
        self.expect_code(self.scan(), 0)
        journal = self.run_folder / "faces.ndjson"
        whole = journal.read_bytes()
        nested = b"[" * 1000000 + b"]" * 1000000
        for good, bad in (
            (b'"size"', b'"pathBytes":"zz","size"'),
            (b'"found":1', b'"found":"1"'),
            (b'"chin"', b'"lookAt":' + nested + b',"chin"'),
        ):
            with self.subTest(bad[:20]):
                journal.write_bytes(whole.replace(good, bad, 1))
                self.expect_code(self.qorfaces("report", self.run_folder), 0)
                index = (self.run_folder / "report" / "data" / "index-0.js").read_text()
                self.assertIn('["1/photo1.png"]', index)

    def test_leaves_nothing_of_a_report_that_cannot_be_written(self) -> None:
        def take_little() -> None:
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (100, 100))

        self.add_many(1)
        self.expect_code(self.scan(), 0)
        command = [*QORFACES, "report", str(self.run_folder)]
        done = subprocess.run(command, preexec_fn=take_little, capture_output=True, text=True, check=False)
        self.expect_code(done, 1)
        self.assertIn("cannot write", done.stderr)
        self.assertFalse((self.run_folder / ".report-new").exists())

    def test_refuses_other_settings(self) -> None:
        self.add_many(1)
        self.expect_code(self.scan(), 0)
        before = (self.run_folder / "faces.ndjson").read_bytes()
        done = self.scan(self.photos, "--max-side", "500")
        self.expect_code(done, 2)
        self.assertIn("other settings", done.stderr)
        self.assertEqual((self.run_folder / "faces.ndjson").read_bytes(), before)

    def test_refuses_other_versions(self) -> None:
        self.add_many(1)
        self.expect_code(self.scan(), 0)
        described = self.run_folder / "run.json"
        whole = described.read_text()
        run = json.loads(whole)
        for member in ("library", "opencv"):
            with self.subTest(member):
                described.write_text(whole.replace(f'"{run[member]}"', '"3.2.1"'))
                done = self.scan()
                self.expect_code(done, 2)
                self.assertIn("3.2.1", done.stderr)
                self.expect_code(self.qorfaces("export", self.run_folder), 0)
                self.assertEqual(self.summary()[member], "3.2.1")

    def test_refuses_a_folder_in_which_another_is_at_work(self) -> None:
        self.add_many(1)
        self.expect_code(self.scan(), 0)
        with open(self.run_folder / "lock", "w", encoding="utf-8") as lock:
            fcntl.lockf(lock, fcntl.LOCK_EX)
            done = self.scan()
        self.expect_code(done, 2)
        self.assertIn("another qorfaces is at work", done.stderr)

    def test_keeps_whole_lines_where_the_disk_is_full(self) -> None:
        self.add_many(20)
        done = self.scan(before=limit_files)
        self.expect_code(done, 1)
        self.assertIn("faces.ndjson cannot be written", done.stderr)
        kept = (self.run_folder / "faces.ndjson").read_bytes()
        self.assertTrue(kept.endswith(b"}\n"))
        self.assertGreater(len(self.lines()), 0)
        self.expect_code(self.scan(), 0)
        self.assertEqual(len(self.lines()), 20)

    def test_says_why_pictures_cannot_be_written(self) -> None:
        self.add_many(1)
        done = self.scan(self.photos, "--crop", "4:5", before=limit_files)
        self.expect_code(done, 1)
        self.assertIn("-1.jpg cannot be written: File too large", done.stderr)

    def test_says_that_a_folder_cannot_be_written(self) -> None:
        self.add_many(1)
        self.run_folder.write_text("a file, and no folder")
        done = self.scan()
        self.expect_code(done, 2)
        self.assertIn(str(self.run_folder), done.stderr)

    @unittest.skipIf(os.geteuid() == 0, "nothing is read-only for root")
    def test_says_that_a_folder_is_read_only(self) -> None:
        self.add_many(1)
        self.run_folder.mkdir(mode=0o555)
        done = self.scan()
        self.expect_code(done, 2)
        self.assertIn("cannot be written to", done.stderr)

    @unittest.skipIf(os.geteuid() == 0, "nothing is unreadable for root")
    def test_writes_over_no_journal_that_it_cannot_read(self) -> None:
        self.add_many(3)
        self.expect_code(self.scan(), 0)
        journal = self.run_folder / "faces.ndjson"
        whole = journal.read_bytes()
        journal.chmod(0o200)
        done = self.scan()
        journal.chmod(0o600)
        self.expect_code(done, 1)
        self.assertIn("faces.ndjson cannot be read", done.stderr)
        self.assertEqual(journal.read_bytes(), whole)

    def test_sorts_by_path_when_it_ends(self) -> None:
        self.add_many(20)
        self.expect_code(self.scan(self.photos, "--jobs", "3"), 0)
        paths = [line["path"] for line in self.lines()]
        self.assertEqual(paths, sorted(paths))

    def test_goes_on_after_an_interruption(self) -> None:
        self.add_many(400)
        process = subprocess.Popen(self.command(self.photos), stderr=subprocess.PIPE)
        journal = self.run_folder / "faces.ndjson"
        while not journal.exists() or journal.stat().st_size == 0:
            self.assertIsNone(process.poll())
        process.send_signal(signal.SIGTERM)
        process.communicate()
        self.assertEqual(process.returncode, 130)
        done_before = len(self.lines())
        self.assertGreater(done_before, 0)
        self.assertLess(done_before, 400)
        self.expect_code(self.scan(), 0)
        self.assertEqual(sorted(set(self.names())), sorted(self.names()))
        self.assertEqual(len(self.names()), 400)


if __name__ == "__main__":
    unittest.main()
