"""What a scan looks at."""

import json
import os
import shutil
import signal
import subprocess
import time
import unittest
from pathlib import Path

from scan_host import FACE, MADE, QORFACES, ScanTest

PICTURES = ("--crop", "1:1", "--report")
TWELVE_SCRIPTS = ["Latin", "Ελλάδα", "Москва", "שלום", "سلام", "नमस्ते", "ไทย", "한국", "日本語", "汉字", "ქართული", "አማርኛ"]


class Inputs(ScanTest):
    def test_goes_through_folders(self) -> None:
        self.add("a.png")
        self.add("below/b.png")
        self.expect_code(self.scan(), 0)
        self.assertEqual(self.names(), ["a.png", "below/b.png"])

    def test_leaves_out_what_is_no_photograph(self) -> None:
        self.add("a.PNG")
        self.add("notes.txt")
        self.add(".hidden.png")
        self.add(".hidden/b.png")
        self.expect_code(self.scan(), 0)
        self.assertEqual(self.names(), ["a.PNG"])

    def test_takes_other_extensions(self) -> None:
        self.add("a.png")
        self.add("b.picture")
        self.expect_code(self.scan("--extensions", "picture,tif", self.photos), 0)
        self.assertEqual(self.names(), ["b.picture"])

    def test_goes_in_no_circles(self) -> None:
        self.add("below/a.png")
        (self.photos / "below" / "circle").symlink_to(self.photos)
        self.expect_code(self.scan(), 0)
        self.assertEqual(self.names(), ["below/a.png"])

    def test_waits_for_no_pipe(self) -> None:
        self.add("a.png")
        os.mkfifo(self.photos / "pipe.png")
        (self.photos / "gone.png").symlink_to("nowhere.png")
        self.expect_code(self.scan(), 1)
        self.assertEqual({line["name"]: line["status"] for line in self.lines()}, {"a.png": "ok", "gone.png": "failed"})

    def test_fails_a_link_that_leads_to_itself(self) -> None:
        (self.photos / "loop.png").symlink_to("loop.png")
        self.expect_code(self.scan(), 1)
        (line,) = self.lines()
        self.assertRegex(line["error"], "^cannot be reached: .")

    @unittest.skipIf(os.geteuid() == 0, "nothing is unreadable for root")
    def test_fails_photographs_of_a_folder_that_may_only_be_listed(self) -> None:
        folder = self.add("below/a.png").parent
        folder.chmod(0o400)
        done = self.scan()
        folder.chmod(0o700)
        self.expect_code(done, 1)
        self.assertEqual([line["status"] for line in self.lines()], ["failed"])

    def test_takes_names_in_brackets(self) -> None:
        self.photos = self.place / "[Anna,Best]"
        self.add("a.png")
        (self.place / "[face]").write_bytes(FACE)
        self.run_folder = self.place / "[run]"
        self.expect_code(self.scan("[Anna,Best]", "[face]", directory=self.place), 0)
        self.assertEqual(self.names(), ["a.png", "[face]"])

        def here(*words: str) -> subprocess.CompletedProcess[str]:
            return subprocess.run([*QORFACES, *words], cwd=self.place, capture_output=True, text=True, check=False)

        self.expect_code(here("export", "[run]"), 0)
        self.expect_code(here("merge", "[run]", "--out", "[merged]"), 0)
        self.expect_code(here("report", "[merged]"), 0)
        self.assertEqual(len(self.lines(self.place / "[merged]")), 2)
        for command in ("", "find"):
            done = here(*command.split(), "--json", "--models", str(MADE), "[face]")
            self.expect_code(done, 0)
            self.assertEqual([photo["photo"] for photo in json.loads(done.stdout)], ["[face]"])

    def test_waits_for_no_pipe_that_is_named(self) -> None:
        pipes = [os.fsencode(self.photos / "pipe.png"), os.fsencode(self.photos) + b"/\xfc.png"]
        for pipe in pipes:
            os.mkfifo(pipe)
        self.expect_code(self.scan("-", given=b"\n".join(pipes)), 1)
        self.assertEqual([line["error"] for line in self.lines()], ["is a pipe or a device, and no file"] * 2)
        done = self.qorfaces("find", "--models", MADE, self.photos / "pipe.png")
        self.expect_code(done, 1)
        self.assertIn("is a pipe or a device, and no file", done.stderr)

    def test_takes_a_photograph_once(self) -> None:
        photo = self.add("below/a.png")
        self.expect_code(self.scan(self.photos, self.photos / "below", photo), 0)
        self.assertEqual(len(self.lines()), 1)

    def test_reads_a_list(self) -> None:
        wanted = self.place / "list"
        wanted.write_text(f"{self.add('a.png')}\n\n{self.add('b b.png')}\r\n")
        self.add("c.png")
        self.expect_code(self.scan("--from-file", wanted), 0)
        self.assertEqual([os.path.basename(line["path"]) for line in self.lines()], ["a.png", "b b.png"])

    def test_reads_a_list_from_a_pipe_to_its_end(self) -> None:
        self.add_many(20)
        pipe = self.place / "pipe"
        os.mkfifo(pipe)
        paths = sorted(str(path) for path in self.photos.rglob("*.png"))
        # Line by line, so that any second reader gets some of them.
        writer = 'for path; do echo "$path"; sleep 0.01; done > "$0"'
        with subprocess.Popen(["sh", "-c", writer, str(pipe), *paths]):
            self.expect_code(self.scan("--from-file", pipe), 0)
        self.assertEqual([line["path"] for line in self.lines()], paths)

    def test_reads_standard_input(self) -> None:
        paths = [self.add("a.png"), self.add("line\nend.png")]
        self.expect_code(self.scan("-", "-0", given=b"\0".join(os.fsencode(path) for path in paths)), 0)
        self.assertEqual(len(self.lines()), 2)

    def test_reads_a_list_that_begins_with_a_byte_order_mark(self) -> None:
        wanted = self.place / "list"
        wanted.write_text(f"{self.add('a.png')}\r\n{self.add('b.png')}\r\n", "utf-8-sig")
        self.expect_code(self.scan("--from-file", wanted), 0)
        self.expect_code(self.scan("-", given=wanted.read_bytes()), 0)
        self.assertEqual([line["status"] for line in self.lines()], ["ok", "ok"])

    def test_takes_no_part_of_a_list_for_the_whole(self) -> None:
        paths = "".join(f"{self.add(name)}\n" for name in ("a.png", "b.png"))
        for given in (paths.replace("\n", "\0").encode(), paths.encode("utf-16")):
            done = self.scan("-", given=given)
            self.expect_code(done, 1)
            self.assertIn("standard input is no text in UTF-8", done.stderr)
            self.assertEqual(self.lines(), [])

    def test_says_that_a_list_cannot_be_read(self) -> None:
        done = self.scan("--from-file", self.photos)
        self.expect_code(done, 1)
        self.assertIn(f"{self.photos} cannot be read to its end", done.stderr)
        done = self.scan("-", before=lambda: os.close(0))
        self.expect_code(done, 1)
        self.assertIn("standard input cannot be read to its end", done.stderr)

    def test_writes_down_what_is_done_while_a_list_stands_still(self) -> None:
        journal = self.run_folder / "faces.ndjson"
        with subprocess.Popen(self.command("-"), stdin=subprocess.PIPE, stderr=subprocess.DEVNULL) as process:
            assert process.stdin is not None
            process.stdin.write(f"{self.add('a.png')}\n".encode())
            process.stdin.flush()
            while not (journal.exists() and journal.read_bytes().endswith(b"}\n")):
                self.assertIsNone(process.poll())
                time.sleep(0.01)
            process.send_signal(signal.SIGTERM)
            self.assertEqual(process.wait(), 130)
        self.assertEqual(len(self.lines()), 1)

    def test_fails_photographs_of_a_list_that_are_not_there(self) -> None:
        self.expect_code(self.scan("-", given=b"/nowhere/a.png\n"), 1)
        self.assertEqual(self.lines()[0]["error"], "there is no such file")

    def test_wants_folders_that_are_there(self) -> None:
        self.expect_code(self.scan("/nowhere"), 2)

    def add_folder_that_nobody_can_read(self) -> None:
        """Its path is longer than the system takes, also from root."""
        self.add("a.png")
        here = os.open(self.photos, os.O_DIRECTORY)
        for _ in range(20):
            os.mkdir("d" * 250, dir_fd=here)
            below = os.open("d" * 250, os.O_DIRECTORY, dir_fd=here)
            os.close(here)
            here = below
        os.close(here)

    def test_remembers_folders_that_cannot_be_read(self) -> None:
        self.add_folder_that_nobody_can_read()
        done = self.scan()
        self.expect_code(done, 1)
        self.assertIn("d cannot be read: File name too long", done.stderr)
        self.assertEqual(len(self.summary()["unread"]), 1)
        merged = self.place / "merged"
        done = self.qorfaces("merge", self.run_folder, "--out", merged)
        self.expect_code(done, 1)
        self.assertIn("d cannot be read: File name too long", done.stderr)
        self.assertEqual(json.loads((merged / "summary.json").read_text())["unread"], self.summary()["unread"])
        shutil.rmtree(self.photos / ("d" * 250))
        self.expect_code(self.scan(), 0)
        self.assertEqual(self.summary()["unread"], [])

    def test_takes_no_folder_for_both_photographs_and_run(self) -> None:
        self.add("a.png")
        for words in ((self.photos, "--out", f"{self.photos}/"), (self.photos / ".." / "photos", "--out", self.photos)):
            done = self.qorfaces("scan", *words, "--models", MADE)
            self.expect_code(done, 2)
            self.assertIn("--out: is a folder to look at; name another", done.stderr)
            self.assertEqual([path.name for path in self.photos.iterdir()], ["a.png"])

    def test_leaves_its_own_folder_out(self) -> None:
        self.add("a.png")
        self.run_folder = self.photos / "run"
        self.run_folder.mkdir()
        (self.run_folder / "b.png").write_bytes(FACE)
        self.expect_code(self.scan(), 0)
        self.assertEqual(self.names(), ["a.png"])

    def test_leaves_what_a_killed_merge_has_left_out(self) -> None:
        self.add("a.png")
        other = self.photos / "other"
        self.expect_code(self.qorfaces("scan", self.photos, "--out", other, "--models", MADE, "--report"), 0)
        (other / "run.json").unlink()
        self.expect_code(self.scan(), 0)
        self.assertEqual(self.names(), ["a.png"])

    def test_leaves_other_runs_out(self) -> None:
        self.add("a.png")
        other = self.photos / "other"
        self.expect_code(self.qorfaces("scan", self.photos, "--out", other, "--models", MADE, "--report"), 0)
        self.add("run.json/b.png")
        self.expect_code(self.scan(), 0)
        self.assertEqual(self.names(), ["a.png", "run.json/b.png"])

    def test_reads_names_in_twelve_scripts(self) -> None:
        count = 1200
        for i in range(count):
            name = f"{TWELVE_SCRIPTS[i % 12]}/{TWELVE_SCRIPTS[(i + 5) % 12]} {i}.bmp"
            self.add(name, TINY)
        for locale in ("C", "C.UTF-8"):
            with self.subTest(locale):
                self.run_folder = self.place / locale
                done = self.scan(self.photos, "--quiet", environment={"LC_ALL": locale})
                self.expect_code(done, 0)
                self.assertEqual(done.stderr, "")
                self.assertEqual(len(set(self.names())), count)

    def test_reads_names_that_are_no_text(self) -> None:
        name = os.fsencode(self.photos) + b"/M\xfcnchen.png"
        with open(name, "wb") as file:
            file.write(FACE)
        self.expect_code(self.scan(), 0)
        line = self.lines()[0]
        self.assertEqual(line["name"], "M\N{REPLACEMENT CHARACTER}nchen.png")
        self.assertEqual(bytes.fromhex(line["pathBytes"]), name)
        self.assertEqual(line["found"], 1)

    def test_takes_folders_whose_names_are_no_text(self) -> None:
        self.add("a.png")
        models = self.place / "mod\udce8les"
        models.symlink_to(MADE)
        self.run_folder = self.place / "r\udcfcn"
        words = [self.photos, "--models", models, "--out", self.run_folder, *PICTURES]
        command: list[str | Path] = [*QORFACES, "scan", *words]
        done = subprocess.run(list(map(os.fsencode, command)), capture_output=True, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        (line,) = self.lines()
        self.assertTrue((self.run_folder / line["faces"][0]["portrait"]).exists())
        self.assertTrue((self.run_folder / line["thumbnail"]).exists())


def tiny_picture() -> bytes:
    """A picture of 16 x 16 pixels, as bitmaps have it."""
    pixels = bytes(range(256)) * 3
    header = b"BM" + (54 + len(pixels)).to_bytes(4, "little") + bytes(4) + (54).to_bytes(4, "little")
    size = (40).to_bytes(4, "little") + (16).to_bytes(4, "little") * 2
    return header + size + b"\1\0\x18\0" + bytes(4) + len(pixels).to_bytes(4, "little") + bytes(16) + pixels


TINY = tiny_picture()

if __name__ == "__main__":
    unittest.main()
