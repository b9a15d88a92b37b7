#!/usr/bin/env python3
"""scripts/check-messages: which texts must stand in a page, and beside what."""

import unittest

from script_run import run_on_tree

CODES = "enum class ErrorCode {\n    NoSpace = 8,\n    IOError = 9,  ///< why = 7\n};\n"
STORE = "pkgcore/portable/storage/layer/A.cpp"
SQLITE = "pkgcore/portable/storage/providers/sqlite/A.cpp"


class CheckMessages(unittest.TestCase):
    def check(self, expected_status, source, errors="", sqlite="", file=STORE):
        status, output = run_on_tree("check-messages", {
            "pkgcore/platform/storage/ErrorCode.hpp": CODES, file: source,
            "docs/errors.md": errors, "docs/providers/sqlite.md": sqlite})
        self.assertEqual(status, expected_status, output)
        return output

    def test_a_text_that_the_page_has_is_right(self):
        self.check(0, 'throw Failure("The disk is gone");', "| The disk is gone | 9 |")

    def test_a_text_that_no_page_has_is_found(self):
        output = self.check(1, 'throw Failure("The disk is gone");', "The disk")
        self.assertIn(f'{STORE}: "The disk is gone" is not in docs/errors.md', output)

    def test_a_text_stands_beside_the_value_of_its_code(self):
        source = 'fail(ErrorCode::IOError, std::string("The disk is gone: ") + why);'
        self.check(0, source, "| The disk is gone | 9 |")
        self.assertIn("beside 9", self.check(1, source, "| The disk is gone | 8 |\n| 9 |"))

    def test_a_number_in_the_text_is_not_its_value(self):
        self.check(1, 'fail(ErrorCode::IOError, "All 9 disks are gone");', "| All 9 disks are gone | 8 |")

    def test_literals_that_follow_each_other_are_one_text(self):
        source = 'fail("The disk"\n     " is gone");'
        self.check(0, source, "The disk is gone")
        self.check(1, source, "The disk; is gone")

    def test_each_part_of_a_text_that_is_put_together_is_looked_for(self):
        source = 'fail("The end" + at(offset) + " is not allowed " + where);'
        self.check(0, source, "The end at offset 3 is not allowed here")
        self.assertIn('"is not allowed"', self.check(1, source, "The end at offset 3"))

    def test_quotes_within_a_text_are_kept(self):
        self.check(0, r'fail("No \"://\" is there");', 'No "://" is there')

    def test_the_store_in_sqlite_has_its_own_page(self):
        source = 'fail("The disk is gone");'
        self.check(0, source, sqlite="The disk is gone", file=SQLITE)
        self.check(1, source, errors="The disk is gone", file=SQLITE)

    def test_statements_words_comments_and_operations_are_no_texts(self):
        source = ('fail("Two words"); run("SELECT a" " FROM b"); open("name"); check("copy failed: ");\n'
                  '// "not this"\n/* "nor this" */ static_assert(true, "nor that");')
        self.assertIn("1 texts", self.check(0, source, "Two words"))

    def test_what_looks_like_a_comment_in_a_text_is_none(self):
        self.check(1, 'open("a // b"); fail("The disk is gone");', "a // b")

    def test_other_folders_are_not_looked_at_and_none_at_all_is_refused(self):
        self.assertIn("0 texts", self.check(1, 'fail("The disk is gone");', file="pkgcore/streams/A.cpp"))


if __name__ == "__main__":
    unittest.main()
