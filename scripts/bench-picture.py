#!/usr/bin/env python3
"""bench-picture.py TABLES/engines.md OUT.svg: draws how long the cascade, OpenCV's and dlib's detector take."""

from __future__ import annotations

import dataclasses
import pathlib
import re
import sys

import matplotlib

matplotlib.use("svg")
from matplotlib import pyplot, ticker  # noqa: E402

ROW = re.compile(r"^\| (\S+\.jpg) \| (\d+) \| ([\d.]+) \| ([\d.]+) \| [\d.]+ \| [\d.]+ \| [\d.]+ \| ([\d.]+) \|")

# Told apart by their lightness, too.
COLOURS = {"OpenCV's cascade": "#9aa5b1", "dlib's HOG detector": "#d9a441", "QOROCV460": "#1b5e9b"}


@dataclasses.dataclass(frozen=True)
class Row:
    photo: str
    max_side: int
    milliseconds: dict[str, float]

    @property
    def label(self) -> str:
        return f"{self.photo}, {f'{self.max_side} pixels' if self.max_side else 'full size'}"


def rows_of(table: str) -> list[Row]:
    found = []
    for line in table.splitlines():
        if match := ROW.match(line):
            photo, max_side, opencv, ours, dlib = match.groups()
            times = (float(opencv), float(dlib), float(ours))
            found.append(Row(photo, int(max_side), dict(zip(COLOURS, times))))
    return found


def draw(rows: list[Row], path: pathlib.Path) -> None:
    matplotlib.rcParams["svg.hashsalt"] = "qorocv460"  # the same names in every run
    figure, axes = pyplot.subplots(figsize=(8, 0.62 * len(rows) + 1.2))
    height = 0.26
    for place, (name, colour) in enumerate(COLOURS.items()):
        offsets = [index + (place - 1) * height for index in range(len(rows))]
        times = [row.milliseconds[name] for row in rows]
        bars = axes.barh(offsets, times, height * 0.9, label=name, color=colour)
        axes.bar_label(bars, [f"{time:.0f}" if time >= 10 else f"{time:.1f}" for time in times], padding=3, fontsize=8)
    axes.set_yticks(range(len(rows)), [row.label for row in rows])
    axes.invert_yaxis()
    axes.set_xscale("log")
    axes.xaxis.set_major_formatter(ticker.StrMethodFormatter("{x:.0f}"))
    axes.set_xlim(1, max(max(row.milliseconds.values()) for row in rows) * 2)
    axes.set_xlabel("milliseconds for a photograph on one thread; every number on the scale is ten times the one before")
    axes.spines[["top", "right"]].set_visible(False)
    axes.legend(loc="lower center", bbox_to_anchor=(0.5, 1), ncols=3, frameon=False)
    figure.savefig(path, bbox_inches="tight", metadata={"Date": None})


def main() -> int:
    if len(sys.argv) != 3:
        print(__doc__, file=sys.stderr)
        return 2
    rows = rows_of(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"))
    if not rows:
        print(f"bench-picture: {sys.argv[1]} has no times", file=sys.stderr)
        return 1
    draw(rows, pathlib.Path(sys.argv[2]))
    return 0


if __name__ == "__main__":
    sys.exit(main())
