#!/usr/bin/env python3
"""blocks.py: what becomes of the blocks, and which documents are refused."""

import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parent / "blocks.py"
SOURCE = '#include "page/{0}.includes.inc"\n#include "page/{0}.inc"'
BLOCK = "text\n\n```cpp {}\n#include <vector>\nint a;\n```\n"


class Blocks(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)

    def run_on(self, document, source):
        (self.root / "page.md").write_text(document, encoding="utf-8")
        (self.root / "Test.cpp").write_text(source, encoding="utf-8")
        done = subprocess.run([sys.executable, "-B", str(SCRIPT), "out", ".", "page.md"], cwd=self.root, check=False,
                              text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        return done.returncode, done.stdout

    def expect_refused(self, complaint, document, source=SOURCE.format("one")):
        status, output = self.run_on(document, source)
        self.assertEqual(status, 1)
        self.assertIn(complaint, output)

    def test_a_block_becomes_a_file_and_its_includes_another(self):
        status, output = self.run_on(BLOCK.format("one"), SOURCE.format("one"))
        self.assertEqual((status, output), (0, ""))
        out = self.root / "out" / "page"
        self.assertEqual((out / "one.inc").read_text(), '#line 4 "page.md"\n\nint a;\n')
        self.assertEqual((out / "one.includes.inc").read_text(), "#include <vector>\n")

    def test_what_is_no_block_any_more_goes(self):
        self.run_on(BLOCK.format("one"), SOURCE.format("one"))
        self.run_on(BLOCK.format("two"), SOURCE.format("two"))
        self.assertEqual(sorted(file.name for file in (self.root / "out" / "page").iterdir()), ["two.inc", "two.includes.inc"])

    def test_a_block_of_another_language_is_left_alone(self):
        status, _ = self.run_on("```\nls\n```\n" + BLOCK.format("one"), SOURCE.format("one"))
        self.assertEqual(status, 0)

    def test_commands_need_a_name_and_no_source(self):
        for language in ("sh", "cmake", "sql"):
            with self.subTest(language=language):
                opening = f"```{language}"
                text = BLOCK.format("one")
                self.expect_refused("page.md:1: a block without a name", f"{opening}\nls\n```\n{text}")
                self.expect_refused("page.md:3: a block without a name", f"- a\n\n  {opening}\n  ls\n  ```\n{text}")
                self.expect_refused("a second block of the name one", f"{opening} one\nls\n```\n{text}")
                self.assertEqual(self.run_on(f"{opening} two\nls\n```\n{text}", SOURCE.format("one")), (0, ""))
                self.assertFalse((self.root / "out" / "page" / "two.inc").exists())

    def test_documents_with_commands_alone_are_refused(self):
        status, _ = self.run_on("```sh one\nls\n```\n", "")
        self.assertEqual(status, 1)

    def test_a_block_that_nobody_includes_is_refused(self):
        self.expect_refused("page.md:3: no test includes", BLOCK.format("two"))

    def test_includes_that_nobody_includes_are_refused(self):
        self.expect_refused('no test includes "page/one.includes.inc"', BLOCK.format("one"), '#include "page/one.inc"')

    def test_a_block_without_a_name_is_refused(self):
        self.expect_refused("page.md:3: a block without a name", BLOCK.replace(" {}", ""))

    def test_a_name_given_twice_is_refused(self):
        self.expect_refused("a second block of the name one", BLOCK.format("one") * 2)

    def test_documents_without_blocks_are_refused(self):
        status, _ = self.run_on("text\n", "")
        self.assertEqual(status, 1)


if __name__ == "__main__":
    unittest.main()
