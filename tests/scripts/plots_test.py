#!/usr/bin/env python3
"""scripts/plots: what is drawn, and how long."""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest
from xml.etree import ElementTree

from script_run import SCRIPTS

SVG = "{http://www.w3.org/2000/svg}"


def row(name, median, goal=0.0):
    return {"name": name, "seconds": 1e-6, "median": median, "p25": median * 0.9, "p75": median * 1.1, "goal": goal}


def suite(title, *rows, program="bench_status"):
    return {"program": program, "suite": title, "clock": "wall", "rounds": 9, "rows": list(rows)}


def plot(suites):
    """The texts of each file, and the widths of its bars."""
    with tempfile.TemporaryDirectory() as root:
        results = pathlib.Path(root, "results.json")
        results.write_text("".join(json.dumps(each) + "\n" for each in suites), encoding="utf-8")
        subprocess.run([sys.executable, "-B", str(SCRIPTS / "plots"), str(results), root + "/plots"], check=True)
        plots = {}
        for file in pathlib.Path(root, "plots").iterdir():
            svg = ElementTree.parse(file).getroot()
            bars = [float(bar.get("width")) for bar in svg.iter(SVG + "rect") if bar.get("fill") != "white"]
            plots[file.name] = ([text.text for text in svg.iter(SVG + "text")], bars)
        return plots


class Plots(unittest.TestCase):
    def test_each_program_has_a_file(self):
        plots = plot([suite("a", row("limit: l", 1)), suite("b", row("limit: l", 1), program="bench_text")])
        self.assertEqual(sorted(plots), ["status.svg", "text.svg"])

    def test_each_row_is_named_and_longer_where_it_is_slower(self):
        texts, bars = plot([suite("s", row("limit: l", 1), row("pkgcore x", 1.5), row("std <y>", 4))])["status.svg"]
        for name in ("limit: l", "pkgcore x", "std <y>", "1.50", "4.00"):
            self.assertIn(name, texts)
        self.assertEqual(bars, sorted(bars))

    def test_the_noise_is_left_out(self):
        texts, bars = plot([suite("s", row("limit: l", 1), row("(limit again: noise)", 1.01))])["status.svg"]
        self.assertEqual(len(bars), 1)
        self.assertNotIn("(limit again: noise)", texts)

    def test_of_a_suite_that_was_measured_twice_the_later_one_is_drawn(self):
        texts, _ = plot([suite("s", row("limit: l", 1), row("pkgcore x", 3)),
                         suite("s", row("limit: l", 1), row("pkgcore x", 2))])["status.svg"]
        self.assertIn("2.00", texts)
        self.assertNotIn("3.00", texts)


if __name__ == "__main__":
    unittest.main()
