#!/usr/bin/env python3
"""scripts/check-plan: what counts as named in the floor plan."""

import unittest

from script_run import run_on_tree

PLAN = """# Architecture

```
pkgcore/       what is compiled into the library
  core/        the base (<pkgcore/...>)
  platform/    declarations: text/ store/
  portable/    implementation of platform/, folder for folder
    store/     what it holds: stores/memory/
tests/ bench/  clients
```

core/ of another block: ```odd/```
"""

FOLDERS = ["core", "platform/text", "platform/store", "portable/text", "portable/store/stores/memory"]


class CheckPlan(unittest.TestCase):
    def check(self, expected_status, folders, plan=PLAN):
        files = {f"pkgcore/{folder}/A.hpp": "" for folder in folders}
        files.update({"tests/A.cpp": "", "bench/A.cpp": "", "docs/architecture.md": plan})
        status, output = run_on_tree("check-plan", files)
        self.assertEqual(status, expected_status, output)
        return output

    def test_a_plan_that_names_every_folder_is_right(self):
        self.check(0, FOLDERS)

    def test_a_folder_that_is_not_named_is_found(self):
        self.assertIn("pkgcore/odd/: not in", self.check(1, FOLDERS + ["odd"]))

    def test_a_folder_is_not_named_by_one_of_the_same_name_elsewhere(self):
        self.assertIn("pkgcore/core/text/: not in", self.check(1, FOLDERS + ["core/text"]))

    def test_a_folder_in_the_mirror_that_the_original_lacks_is_found(self):
        self.assertIn("pkgcore/portable/odd/: not in", self.check(1, FOLDERS + ["portable/odd"]))

    def test_a_line_without_a_folder_is_found(self):
        self.assertIn("no folder pkgcore/core/", self.check(1, FOLDERS[1:]))

    def test_every_folder_of_a_line_must_be_there(self):
        self.assertIn("no folder gone/", self.check(1, FOLDERS, PLAN.replace("tests/ bench/", "tests/ gone/")))


if __name__ == "__main__":
    unittest.main()
