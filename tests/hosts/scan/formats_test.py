"""What a scan writes, as other programs read it."""

import csv
import json
import unittest
from pathlib import Path

import jsonschema
import pandas

from scan_host import ScanTest

SCHEMA = Path(__file__).parents[3] / "docs" / "reference" / "faces.schema.json"


class Formats(ScanTest):
    def validate(self) -> None:
        schema = json.loads(SCHEMA.read_text())
        jsonschema.Draft202012Validator.check_schema(schema)
        validator = jsonschema.Draft202012Validator(schema)
        for line in self.lines():
            validator.validate(line)

    def test_lines_follow_the_schema(self) -> None:
        self.add("face.png")
        self.add("text.jpg", b"no picture")
        self.expect_code(self.scan(), 1)
        self.validate()
        by_name = {line["name"]: line for line in self.lines()}
        self.assertEqual(by_name["face.png"]["width"], 640)
        self.assertEqual(by_name["face.png"]["found"], 1)
        self.assertIn("cannot be read as a picture", by_name["text.jpg"]["error"])

    def test_lines_with_head_centres_follow_the_schema(self) -> None:
        self.add("face.png")
        for how in ("colour", "mask"):
            with self.subTest(how):
                self.run_folder = self.place / how
                self.expect_code(self.scan(self.photos, "--head-centre", how), 0)
                self.validate()
                self.assertIn("headTopMeasured", self.lines()[0]["faces"][0])

    def test_lines_with_landmarks_follow_the_schema(self) -> None:
        self.add("face.png")
        self.expect_code(self.scan(self.photos, "--landmarks"), 0)
        self.validate()
        self.assertEqual(len(self.lines()[0]["faces"][0]["landmarks"]), 68)

    def test_lines_of_tiles_follow_the_schema(self) -> None:
        self.add("face.png")
        self.expect_code(self.scan(self.photos, "--tiles", "2x2"), 0)
        self.validate()
        self.assertGreater(self.lines()[0]["found"], 1)

    def test_takes_large_photographs_alone_for_groups(self) -> None:
        self.add("face.png")
        self.expect_code(self.scan(self.photos, "--tiles", "auto"), 0)
        self.assertEqual(self.lines()[0]["found"], 1)

    def test_tables_are_read_by_python(self) -> None:
        self.add("a, \"quoted\"\nname.png")
        self.add("=SUM(A1).png")
        self.add("text.jpg", b"no picture")
        self.expect_code(self.scan(), 1)
        with open(self.run_folder / "photos.csv", encoding="utf-8", newline="") as file:
            photos = list(csv.DictReader(file, strict=True))
        self.assertEqual({row["name"] for row in photos}, {"a, \"quoted\"\nname.png", "./=SUM(A1).png"})
        self.assertEqual({row["width"] for row in photos}, {"640"})
        with open(self.run_folder / "failed.csv", encoding="utf-8", newline="") as file:
            failed = list(csv.DictReader(file, strict=True))
        self.assertEqual([row["name"] for row in failed], ["text.jpg"])
        self.assertTrue(failed[0]["reason"])

    def test_tables_are_read_by_pandas(self) -> None:
        self.add("face.png")
        self.expect_code(self.scan(self.photos, "--head-centre", "colour"), 0)
        faces = pandas.read_csv(self.run_folder / "faces.csv")
        line = self.lines()[0]
        face = line["faces"][0]
        self.assertEqual(len(faces), 1)
        self.assertEqual(faces["left"][0], face["box"]["left"])
        self.assertEqual(faces["right_px"][0], face["box"]["right"] * 640)
        self.assertEqual(faces["chin_y_px"][0], face["chin"]["y"] * 480)
        self.assertEqual(faces["head_top_measured"][0], face["headTopMeasured"])

    def test_tables_end_lines_as_the_standard_says(self) -> None:
        self.add("face.png")
        self.expect_code(self.scan(), 0)
        for name in ("photos.csv", "faces.csv", "failed.csv"):
            content = (self.run_folder / name).read_bytes()
            self.assertEqual(content.count(b"\n"), content.count(b"\r\n"))

    def test_sums_up(self) -> None:
        self.add("face.png")
        self.add("text.jpg", b"no picture")
        self.expect_code(self.scan(), 1)
        summary = self.summary()
        self.assertEqual(summary["version"], 1)
        self.assertEqual(summary["settings"]["detector"], "ssd")
        counts = [summary[key] for key in ("photographs", "ok", "failed", "withFaces", "faces")]
        self.assertEqual(counts, [2, 1, 1, 1, 1])

    def test_exports_again_what_is_gone(self) -> None:
        self.add("face.png")
        self.expect_code(self.scan(), 0)
        files = [self.run_folder / name for name in ("photos.csv", "faces.csv", "failed.csv", "summary.json")]
        before = [file.read_bytes() for file in files]
        for file in files[:3]:
            file.unlink()
        self.expect_code(self.qorfaces("export", self.run_folder), 0)
        self.assertEqual([file.read_bytes() for file in files], before)


if __name__ == "__main__":
    unittest.main()
