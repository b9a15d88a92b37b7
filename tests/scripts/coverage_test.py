#!/usr/bin/env python3
"""scripts/lib/coverage.py: what counts as reached, and what needs a reason."""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

from script_run import SCRIPTS

# void f() { if (a) b(); }, from line 3 to line 7, with the condition in line 4 and its consequence in line 5.
MANGLED = "_ZN3opc12_GLOBAL__N_11fEv"


def export(root, path, calls, taken, more_branches=()):
    file = f"{root}/build/coverage/../../pkgcore/{path}"
    segments = [[3, 1, calls, True, True, False], [4, 9, calls, True, True, False], [4, 11, taken, True, True, True],
                [5, 5, taken, True, True, False], [5, 9, calls, True, False, False], [7, 2, 0, False, False, False]]
    branches = [[4, 9, 4, 10, taken, calls - taken, 0, 0, 4], *more_branches]
    function = {"name": f"A.cpp:{MANGLED}", "filenames": [file], "regions": [[3, 1, 7, 2, calls, 0, 0, 0]]}
    return {"data": [{"files": [{"filename": file, "segments": segments, "branches": branches}], "functions": [function]}]}


class Coverage(unittest.TestCase):
    def report(self, page="", path="core/A.cpp", **counts):
        with tempfile.TemporaryDirectory() as root:
            pathlib.Path(root, "export.json").write_text(json.dumps(export(root, path, **counts)), encoding="utf-8")
            pathlib.Path(root, "page.md").write_text(page, encoding="utf-8")
            done = subprocess.run([sys.executable, "-B", str(SCRIPTS / "lib/coverage.py"), "export.json", "page.md", "."],
                                  cwd=root, check=False, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        return done.returncode, done.stdout

    def test_what_is_reached_both_ways_needs_nothing(self):
        status, output = self.report(calls=2, taken=1)
        self.assertEqual(status, 0, output)
        self.assertIn("| `core` | 100.00 % | 0 of 5 | 100.00 % | 0 of 2 |", output)
        self.assertNotIn("pkgcore/core/A.cpp", output)

    def test_lines_and_ways_that_were_not_reached_are_named(self):
        status, output = self.report(calls=2, taken=0)
        self.assertEqual(status, 1)
        self.assertIn("| `core` | 80.00 % | 1 of 5 | 50.00 % | 1 of 2 |", output)
        self.assertIn("pkgcore/core/A.cpp:5 f\n", output)
        self.assertIn("pkgcore/core/A.cpp:4:9, never true f\n", output)
        self.assertIn("not reached, and page.md has no reason: pkgcore/core/A.cpp: f\n", output)

    def test_lines_that_follow_each_other_are_one_place(self):
        self.assertIn("pkgcore/core/A.cpp:3-7 f\n", self.report(calls=0, taken=0)[1])

    def test_a_reason_is_enough(self):
        self.assertEqual(self.report("| `core/A.cpp` | `e`, `f` | never |", calls=2, taken=0)[0], 0)

    def test_a_reason_for_another_function_or_file_is_not(self):
        self.assertEqual(self.report("| `core/A.cpp` | `e` | never |", calls=2, taken=0)[0], 1)
        self.assertEqual(self.report("| `core/B.cpp` | `f` | never |", calls=2, taken=0)[0], 1)

    def test_a_reason_for_what_was_reached_is_told(self):
        status, output = self.report("| `core/A.cpp` | `f` | never |", calls=2, taken=1)
        self.assertEqual(status, 0)
        self.assertIn("reached, though page.md has a reason: pkgcore/core/A.cpp: f\n", output)

    def test_a_way_alone_needs_a_reason_in_the_logic_only(self):
        self.assertEqual(self.report(calls=2, taken=2)[0], 1)
        status, output = self.report(path="portable/A.cpp", calls=2, taken=2)
        self.assertEqual(status, 0)
        self.assertIn("| `portable` | 100.00 % | 0 of 5 | 50.00 % | 1 of 2 |", output)

    def test_the_instantiations_of_a_template_count_together(self):
        other = [4, 9, 4, 10, 1, 0, 0, 0, 4]
        self.assertIn("100.00 % | 0 of 2 |", self.report(calls=2, taken=0, more_branches=[other])[1] + "\n")

    def test_what_the_compiler_decides_is_no_branch(self):
        decided = [4, 9, 4, 8, 0, 0, 0, 0, 4]
        self.assertIn("| 0 of 2 |", self.report(calls=2, taken=1, more_branches=[decided])[1])

    def test_nothing_counted_is_a_failure(self):
        self.assertEqual(self.report(path="../tests/A.cpp", calls=2, taken=1)[0], 1)


if __name__ == "__main__":
    unittest.main()
