#!/usr/bin/env python3
"""scripts/check-links: which links lead somewhere."""

import unittest

from script_run import run_on_tree

PAGE = "# The page\n\n## Where to go, then\n\n```\n## No heading\n```\n"


class CheckLinks(unittest.TestCase):
    def check(self, expected_status, text):
        status, output = run_on_tree("check-links", {"README.md": text, "docs/page.md": PAGE, "code/A.hpp": ""})
        self.assertEqual(status, expected_status, output)
        return output

    def test_files_folders_and_headings_are_found(self):
        self.check(0, "# Top\n[a](docs/page.md) [b](docs/page.md#where-to-go-then) [c](code) [d](code/A.hpp) [e](#top)\n")

    def test_a_file_that_is_not_there_is_found(self):
        self.assertIn("README.md: no file docs/gone.md", self.check(1, "[a](docs/gone.md)"))

    def test_a_heading_that_is_not_there_is_found(self):
        self.assertIn("no heading #gone in page.md", self.check(1, "[a](docs/page.md#gone)"))

    def test_a_heading_in_code_is_none(self):
        self.check(1, "[a](docs/page.md#no-heading)")

    def test_other_hosts_are_not_asked(self):
        self.check(0, "[a](https://example.org/gone) [b](docs/page.md)")

    def test_brackets_in_code_are_no_links(self):
        self.check(0, "[b](docs/page.md) `[](int)`\n\n```cpp\nauto f = [](Gone) {};\n```\n")

    def test_a_repository_without_links_is_refused(self):
        self.check(1, "text\n")


if __name__ == "__main__":
    unittest.main()
