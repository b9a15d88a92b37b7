#!/usr/bin/env python3
"""tests/mutants: every planted defect can be planted, and names programs that there are."""

import os
import pathlib
import re
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PATCHES = sorted((ROOT / "tests/mutants").glob("*.patch"))
# Without this, git would look at the repository, which need not be there.
ENVIRONMENT = {**os.environ, "GIT_DIR": "/nonexistent"}


def test_programs():
    lists = (path.read_text(encoding="utf-8") for path in (ROOT / "tests").rglob("CMakeLists.txt"))
    return {name for text in lists for name in re.findall(r"pkgcore_add_test\(\s*NAME\s+(\w+)", text)}


class Mutants(unittest.TestCase):
    def for_each(self, check):
        for patch in PATCHES:
            with self.subTest(patch.name):
                check(patch)

    def test_there_are_some(self):
        self.assertGreaterEqual(len(PATCHES), 60)

    def test_each_applies_to_the_sources(self):
        def check(patch):
            done = subprocess.run(["git", "apply", "--check", str(patch)], cwd=ROOT, env=ENVIRONMENT, check=False,
                                  text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
            self.assertEqual(done.returncode, 0, done.stdout)
        self.for_each(check)

    def test_each_changes_the_library_alone(self):
        def check(patch):
            paths = re.findall(r"^(?:---|\+\+\+) [ab]/(.*)", patch.read_text(encoding="utf-8"), re.MULTILINE)
            self.assertEqual([path for path in paths if not path.startswith("pkgcore/")], [])
        self.for_each(check)

    def test_each_says_what_is_wrong_and_who_must_see_it(self):
        programs = test_programs()

        def check(patch):
            head = re.match(r"[A-Z].*\.\nTests: (.+)\n\n--- a/", patch.read_text(encoding="utf-8"))
            self.assertIsNotNone(head)
            self.assertEqual(set(head[1].split()) - programs, set())
        self.for_each(check)


if __name__ == "__main__":
    unittest.main()
