#!/usr/bin/env python3
"""What scripts/mutants.py takes for a condition or a constant."""

from __future__ import annotations

import pathlib
import re
import sys
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[3] / "scripts"))
sys.dont_write_bytecode = True
import mutants  # noqa: E402


def changes(source: str) -> list[str]:
    return [f"{m.old} -> {m.new}" for m in mutants.mutants_of(pathlib.Path("a.cpp"), source)]


class Mutants(unittest.TestCase):
    def test_turn_conditions_round(self) -> None:
        self.assertEqual(changes("if (a == b && !c) {"), ["== -> !=", "&& -> ||", "! -> "])

    def test_raise_constants_by_one(self) -> None:
        self.assertEqual(changes("constexpr float kHalf = 0.5F;\nint n = 30;"), ["0.5 -> 1.5", "30 -> 31"])

    def test_turn_orders_round_and_leave_casts_out(self) -> None:
        self.assertEqual(changes("f(a, b);"), ["a, b -> b, a"])
        self.assertEqual(changes("static_cast<std::size_t>(a)"), ["static_cast<std::size_t> -> "])
        self.assertEqual(changes("cvRound(a)"), ["cvRound -> cvFloor"])

    def test_leave_comments_texts_and_includes(self) -> None:
        self.assertEqual(changes('#include "a < b"\n// 1 == 2\nf("3 && 4"); /* 5 > 6 */'), [])

    def test_leave_templates_streams_and_names(self) -> None:
        self.assertEqual(changes("std::vector<int> model06; a << b; const T& c = *d;"), [])

    def test_know_their_line(self) -> None:
        (mutant,) = mutants.mutants_of(pathlib.Path("a.cpp"), "\n\nreturn true;\n")
        self.assertEqual(str(mutant), "a.cpp:3: true -> false")

    def test_stand_where_they_say_in_every_source_file(self) -> None:
        found = mutants.all_mutants(re.compile("."))
        self.assertGreater(len(found), 100)
        for mutant in found:
            self.assertNotEqual(mutants.mutated(mutant), (mutants.ROOT / mutant.path).read_text())


if __name__ == "__main__":
    unittest.main()
