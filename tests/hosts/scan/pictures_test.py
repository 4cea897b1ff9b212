"""The pictures that a scan writes: portraits, small copies, and the page to look through them."""

import csv
import os
import shutil
import struct
import subprocess
import unittest
from pathlib import Path

from scan_host import FACE, QORFACES, ScanTest

CROP = ("--crop", "4:5", "--crop-height", "100")
ASSETS = Path(__file__).parents[3] / "assets" / "photos"
LARGE = next(ASSETS.glob("*.jpg")).read_bytes()


def jpeg_size(path: Path) -> tuple[int, int]:
    """Width and height, as the frame's header says."""
    data = path.read_bytes()
    at = 2
    while True:
        marker, length = struct.unpack(">HH", data[at : at + 4])
        if 0xFFC0 <= marker <= 0xFFC2:
            height, width = struct.unpack(">HH", data[at + 5 : at + 9])
            return width, height
        at += 2 + length


class Pictures(ScanTest):
    def pictures(self, run: Path) -> dict[str, bytes]:
        """All of a run's, by their names."""
        files = [file for kind in ("portraits", "thumbnails") for file in (run / kind).rglob("*") if file.is_file()]
        return {str(file.relative_to(run)): file.read_bytes() for file in files}

    def test_cuts_a_portrait_of_each_face(self) -> None:
        self.add("a/anna.png")
        self.expect_code(self.scan(self.photos, *CROP), 0)
        (face,) = self.lines()[0]["faces"]
        self.assertRegex(face["portrait"], r"^portraits/a/anna\.png-[0-9a-f]{8}-1\.jpg$")
        self.assertEqual(jpeg_size(self.run_folder / face["portrait"]), (80, 100))
        self.assertEqual(list(self.pictures(self.run_folder)), [face["portrait"]])

    def test_keeps_no_picture_of_a_photograph_that_was_replaced(self) -> None:
        replaced, changed = self.add("replaced.png"), self.add("changed.png")
        self.add("same.png")
        pictures = (self.photos, *CROP, "--report")
        self.expect_code(self.scan(*pictures), 0)
        before = self.pictures(self.run_folder)
        replaced.write_bytes(b"none")
        os.utime(changed, (1, 1))
        self.expect_code(self.scan(*pictures), 1)
        named = [(line["thumbnail"], line["faces"][0]["portrait"]) for line in self.lines() if line["status"] == "ok"]
        self.assertEqual(len(named), 2)
        left = self.pictures(self.run_folder)
        self.assertEqual(sorted(left), sorted(name for names in named for name in names))
        self.assertEqual(left, {name: before[name] for name in left})

    def test_lists_the_portraits_that_a_person_should_look_at(self) -> None:
        self.add("a.png")
        self.expect_code(self.scan(self.photos, *CROP, "--head", "0.05"), 0)  # leaves any photograph
        (face,) = self.lines()[0]["faces"]
        self.assertIn("leavesPhotograph", face["lookAt"])
        with open(self.run_folder / "look_at_these.csv", encoding="utf-8", newline="") as table:
            (row,) = csv.DictReader(table)
        self.assertEqual(row["portrait"], face["portrait"])
        self.assertEqual(row["reasons"].split(), face["lookAt"])

    def test_tells_the_same_name_in_two_folders_apart(self) -> None:
        roots = [self.add("one/a.png").parent, self.add("two/a.png").parent]
        self.expect_code(self.scan(*roots, *CROP, "--report"), 0)
        self.assertEqual(len(self.pictures(self.run_folder)), 4)

    def test_keeps_to_its_folder_and_to_names_that_are_short_enough(self) -> None:
        long = self.add("é" * 120 + ".png")
        (self.place / "inside").mkdir()
        given = f"../photos/{long.name}\n".encode()
        self.expect_code(self.scan("-", *CROP, given=given, directory=self.place / "inside"), 0)
        (portrait,) = self.pictures(self.run_folder)
        self.assertTrue(portrait.startswith("portraits/photos/éé"), portrait)

    def test_makes_small_copies_and_a_page(self) -> None:
        self.add("small.png")
        self.add("large.jpg", LARGE)
        self.add("text.jpg", b"no picture")
        self.expect_code(self.scan(self.photos, "--report"), 1)
        lines = {line["name"]: line for line in self.lines()}
        self.assertNotIn("thumbnail", lines["text.jpg"])
        for name in ("small.png", "large.jpg"):
            self.assertEqual(max(jpeg_size(self.run_folder / lines[name]["thumbnail"])), 320)
        self.assertTrue((self.run_folder / "report" / "index.html").is_file())
        self.assertIn(lines["large.jpg"]["thumbnail"], (self.run_folder / "report/data/photographs-0.js").read_text())

    def test_merges_pictures_too(self) -> None:
        self.add_many(9)
        options = (self.photos, "--report", *CROP)
        self.expect_code(self.scan(*options), 0)
        whole, self.run_folder = self.run_folder, self.place / "1"
        self.expect_code(self.scan(*options, "--shard", "1/2"), 0)
        self.run_folder = self.place / "2"
        self.expect_code(self.scan(*options, "--shard", "2/2"), 0)
        merged = self.place / "merged"
        self.expect_code(self.qorfaces("merge", self.place / "1", self.place / "2", "--out", merged), 0)
        self.assertEqual(len(self.pictures(whole)), 18)
        self.assertEqual(self.pictures(merged), self.pictures(whole))

    def test_merges_nothing_from_outside_of_a_run(self) -> None:
        self.add("a.png")
        self.expect_code(self.scan(self.photos, "--report"), 0)
        (self.place / "secret").write_bytes(b"not of this run")
        journal = self.run_folder / "faces.ndjson"
        (line,) = self.lines()
        for name in ("../secret", str(self.place / "secret"), "portraits/../../secret", "faces.ndjson", "portraits"):
            with self.subTest(name):
                journal.write_text(journal.read_text("utf-8").replace(line["thumbnail"], name), "utf-8")
                line["thumbnail"] = name
                done = self.qorfaces("merge", self.run_folder, "--out", self.place / "merged")
                self.expect_code(done, 2)
                self.assertIn("outside", done.stderr)

    def test_stands_in_nobodys_way(self) -> None:
        self.add("a.png")
        options = (self.photos, *CROP, "--report")
        self.expect_code(self.scan(*options), 0)
        pictures = self.pictures(self.run_folder)
        shutil.rmtree(self.run_folder)
        for name in pictures:  # as a worker that has outlived its scan might hold them
            (self.run_folder / f"{name}.new").mkdir(parents=True)
        for kind in ("portraits", "thumbnails"):
            (self.run_folder / kind / ".new").mkdir()
            (self.run_folder / kind / ".new" / "1.new").write_bytes(b"left by one that was killed")
        self.expect_code(self.scan(*options), 0)
        self.assertEqual(self.pictures(self.run_folder), pictures)
        self.assertFalse((self.run_folder / "portraits" / ".new").exists())

    def test_shows_nothing_from_outside_of_a_run(self) -> None:
        self.add("a.png")
        self.expect_code(self.scan(self.photos, *CROP, "--report"), 0)
        journal = self.run_folder / "faces.ndjson"
        good = journal.read_text("utf-8")
        (line,) = self.lines()
        paths = ("//host/share/x.jpg", "host/x.jpg", "/a//host/x.jpg", "/a/..//host/x.jpg", "/./x.jpg", "/a/../x.jpg")
        for what, name in (
            *(("thumbnail", name) for name in ("../../x.jpg", "/x.jpg", "//host/x.jpg")),
            *(("portrait", name) for name in ("../../x.jpg", "/x.jpg", "//host/x.jpg")),
            *(("path", name) for name in paths),
        ):
            with self.subTest(what=what, name=name):
                there = line["faces"][0][what] if what == "portrait" else line[what]
                journal.write_text(good.replace(f'"{what}":"{there}"', f'"{what}":"{name}"'), "utf-8")
                self.expect_code(self.qorfaces("report", self.run_folder), 0)
                page = (self.run_folder / "report" / "data" / "photographs-0.js").read_text()
                self.assertNotIn("x.jpg", page)
                self.assertEqual(sum(f'"{shown}"' in page for shown in ("thumbnail", "portrait", "original")), 2)

    def test_ends_where_pictures_cannot_be_written(self) -> None:
        self.add("a.png")
        self.run_folder.mkdir()
        (self.run_folder / "portraits").write_bytes(b"in the way")
        done = self.scan(self.photos, *CROP)
        self.expect_code(done, 1)
        self.assertIn("portraits cannot be made", done.stderr)
        self.assertEqual(self.lines(), [])
        (self.run_folder / "portraits").unlink()
        self.expect_code(self.scan(self.photos, *CROP), 0)
        self.assertEqual(len(self.lines()), 1)

    def test_cuts_portraits_of_photographs_whose_names_are_no_text(self) -> None:
        (self.photos / "caf\udce9.png").write_bytes(FACE)
        self.expect_code(self.scan(self.photos, *CROP, "--report"), 0)
        self.assertEqual(len(self.pictures(self.run_folder)), 2)

    def test_takes_names_in_any_language(self) -> None:
        names = ["Ελλάδα.png", "Москва.png", "שלום.png", "ไทย/한국.png", "日本語/汉字.png"]
        for name in names:
            self.add(name)
        self.expect_code(self.scan(self.photos, *CROP), 0)
        self.assertEqual(sorted(self.names()), sorted(names))
        self.assertEqual(len(self.pictures(self.run_folder)), len(names))

    def test_refuses_portraits_that_no_file_holds(self) -> None:
        self.add("a.png")
        done = self.scan(self.photos, "--crop", "10:1", "--crop-height", "6551")
        self.expect_code(done, 2)
        self.assertIn("65500 pixels", done.stderr)
        self.assertFalse(self.run_folder.exists())

    def test_goes_on_only_with_the_same_portraits(self) -> None:
        self.add("a.png")
        self.expect_code(self.scan(self.photos, *CROP), 0)
        self.expect_code(self.scan(self.photos, "--crop", "1:1"), 2)

    def test_reports_of_one_run_take_turns(self) -> None:
        self.add_many(20)
        self.expect_code(self.scan(self.photos, "--report"), 0)
        command = [*QORFACES, "report", str(self.run_folder)]
        for writer in [subprocess.Popen(command, stderr=subprocess.PIPE) for _ in range(6)]:
            self.assertEqual((writer.wait(), writer.communicate()[1]), (0, b""))
        self.assertTrue((self.run_folder / "report" / "index.html").is_file())
        self.assertFalse((self.run_folder / ".report-new").exists())


if __name__ == "__main__":
    unittest.main()
