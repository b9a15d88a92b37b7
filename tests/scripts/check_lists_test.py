#!/usr/bin/env python3
"""scripts/check-lists: which files must be named, and where."""

import unittest

from script_run import run_on_tree


class CheckLists(unittest.TestCase):
    def check(self, expected_status, files):
        status, output = run_on_tree("check-lists", files)
        self.assertEqual(status, expected_status, output)
        return output

    def test_a_file_is_named_in_its_own_folder(self):
        self.check(0, {"pkgcore/core/A.cpp": "", "pkgcore/core/CMakeLists.txt": "target_sources(x PRIVATE A.cpp)"})

    def test_a_file_is_named_in_a_folder_above(self):
        self.check(0, {"tests/unit/core/A.cpp": "", "tests/unit/CMakeLists.txt": "add(core/A.cpp)"})

    def test_a_source_that_is_named_nowhere_is_found(self):
        output = self.check(1, {"tests/A.cpp": "", "tests/CMakeLists.txt": "add(B.cpp)"})
        self.assertIn("tests/A.cpp", output)

    def test_a_header_of_the_library_that_is_named_nowhere_is_found(self):
        output = self.check(1, {"pkgcore/core/A.hpp": "", "pkgcore/core/CMakeLists.txt": "add(A.cpp)"})
        self.assertIn("pkgcore/core/A.hpp", output)

    def test_a_header_of_a_test_need_not_be_named(self):
        self.check(0, {"tests/A.hpp": "", "tests/A.cpp": "", "tests/CMakeLists.txt": "add(A.cpp)"})

    def test_a_name_in_a_comment_does_not_count(self):
        self.check(1, {"tests/A.cpp": "", "tests/CMakeLists.txt": "# add(A.cpp)"})

    def test_a_longer_name_does_not_count(self):
        self.check(1, {"tests/A.cpp": "", "tests/CMakeLists.txt": "add(AA.cpp A.cpp.in)"})

    def test_a_tree_without_sources_is_refused(self):
        self.check(1, {"README.md": ""})


if __name__ == "__main__":
    unittest.main()
