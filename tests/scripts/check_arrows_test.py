#!/usr/bin/env python3
"""One forbidden include for each rule of scripts/check-arrows, and the allowed ones beside it."""

import unittest

from script_run import SCRIPTS, run_on_tree

# The table of this repository.
ARCHITECTURE = (SCRIPTS.parent / "docs" / "architecture.md").read_text(encoding="utf-8")

# (file, include) that must be refused.
FORBIDDEN = [
    # Logic sees nothing of the platform that was built for it.
    ("pkgcore/core/A.cpp", "<pkgcore/portable/i18n/Utf8.hpp>"),
    ("pkgcore/filesystem/A.cpp", "<pkgcore/portable/filesystem/Errors.hpp>"),
    ("pkgcore/streams/A.cpp", "<pkgcore/portable/com/A.hpp>"),
    ("pkgcore/util/A.cpp", "<pkgcore/portable/filesystem/Errors.hpp>"),
    # Nor of third parties and hosts.
    ("pkgcore/core/A.cpp", "<unicode/ustring.h>"),
    ("pkgcore/filesystem/A.cpp", "<sqlite3.h>"),
    ("pkgcore/filesystem/A.cpp", "<curl/curl.h>"),
    ("pkgcore/filesystem/A.hpp", "<unistd.h>"),
    ("pkgcore/filesystem/A.cpp", "<sys/stat.h>"),
    ("pkgcore/streams/A.cpp", "<fcntl.h>"),
    ("pkgcore/util/A.cpp", "<dirent.h>"),
    ("pkgcore/util/A.cpp", "<linux/fs.h>"),
    ("pkgcore/core/A.cpp", "<windows.h>"),
    ("pkgcore/streams/A.hpp", "<objidl.h>"),
    # Nor of the disk by another way.
    ("pkgcore/filesystem/A.cpp", "<filesystem>"),
    ("pkgcore/util/A.cpp", "<fstream>"),
    ("pkgcore/core/A.cpp", "<boost/filesystem.hpp>"),
    ("pkgcore/filesystem/A.cpp", "<boost/filesystem/operations.hpp>"),
    # The order of the logic's folders.
    ("pkgcore/core/A.cpp", "<pkgcore/filesystem/PathHelpers.hpp>"),
    ("pkgcore/core/A.cpp", "<pkgcore/streams/InputStream.hpp>"),
    ("pkgcore/core/A.cpp", "<pkgcore/util/TempNames.hpp>"),
    ("pkgcore/streams/A.cpp", "<pkgcore/filesystem/FileSystemOps.hpp>"),
    ("pkgcore/streams/A.cpp", "<pkgcore/util/TempNames.hpp>"),
    ("pkgcore/filesystem/A.cpp", "<pkgcore/streams/InputStream.hpp>"),
    ("pkgcore/util/A.cpp", "<pkgcore/filesystem/FileSystemOps.hpp>"),
    ("pkgcore/util/A.cpp", "<pkgcore/streams/InputStream.hpp>"),
    # The platform's declarations stand alone.
    ("pkgcore/platform/path/A.hpp", "<pkgcore/core/Ustring.hpp>"),
    ("pkgcore/platform/path/A.hpp", "<pkgcore/portable/path/PosixSyntax.hpp>"),
    ("pkgcore/platform/path/A.hpp", "<unicode/utypes.h>"),
    ("pkgcore/platform/com/A.hpp", "<objidl.h>"),
    # Its implementation knows nothing of the logic.
    ("pkgcore/portable/path/A.cpp", "<pkgcore/core/Exception.hpp>"),
    ("pkgcore/portable/filesystem/A.cpp", "<pkgcore/filesystem/FileSystemOps.hpp>"),
    ("pkgcore/portable/com/A.cpp", "<pkgcore/streams/InputStream.hpp>"),
    ("pkgcore/portable/storage/A.cpp", "<pkgcore/util/TempNames.hpp>"),
    ("pkgcore/portable/path/A.cpp", "<pkgcore/pkgcore.hpp>"),
    # Third parties with a home.
    ("pkgcore/portable/storage/A.cpp", "<sqlite3.h>"),
    ("pkgcore/portable/filesystem/A.cpp", "<curl/curl.h>"),
    ("pkgcore/portable/storage/A.cpp", "<xxhash.h>"),
    # A store with a library of its own has what is installed.
    ("pkgcore/portable/storage/providers/sqlite/A.cpp", "<pkgcore/portable/filesystem/Errors.hpp>"),
    ("pkgcore/portable/storage/providers/sqlite/A.cpp", "<pkgcore/portable/storage/iri/IRIText.hpp>"),
    # Nothing looks outside.
    ("pkgcore/core/A.cpp", "<tests/support/TempTree.hpp>"),
    ("pkgcore/portable/path/A.cpp", "<tests/support/TempTree.hpp>"),
    ("pkgcore/portable/path/A.cpp", "<bench/support/Suite.hpp>"),
    ("pkgcore/portable/path/A.cpp", "<examples/tour/Tour.hpp>"),
    ("pkgcore/testing/A.cpp", "<tests/support/TempTree.hpp>"),
    ("pkgcore/testing/A.cpp", "<pkgcore/filesystem/FileSystemOps.hpp>"),
    ("pkgcore/pkgcore.hpp", "<pkgcore/portable/path/PosixSyntax.hpp>"),
    ("pkgcore/Other.hpp", "<string>"),
    # Tests of users bring GoogleTest alone.
    ("pkgcore/testing/A.hpp", "<unistd.h>"),
    ("pkgcore/testing/A.hpp", "<unicode/ustring.h>"),
    ("pkgcore/testing/A.hpp", "<sqlite3.h>"),
    ("pkgcore/testing/A.hpp", "<fstream>"),
    ("pkgcore/core/A.cpp", "<gtest/gtest.h>"),
    # Ways round the check.
    ("pkgcore/core/A.cpp", '"pkgcore/core/Exception.hpp"'),
    ("pkgcore/core/A.cpp", '"../portable/path/PosixSyntax.hpp"'),
    ("pkgcore/core/A.cpp", "HEADER_NAME"),
]

ALLOWED = [
    ("pkgcore/core/A.cpp", "<pkgcore/core/Exception.hpp>"),
    ("pkgcore/core/A.cpp", "<pkgcore/platform/i18n/Conversion.hpp>"),
    ("pkgcore/core/A.cpp", "<string_view>"),
    ("pkgcore/core/A.cpp", "<boost/system/error_code.hpp>"),
    ("pkgcore/filesystem/A.cpp", "<boost/filesystem/exception.hpp>"),
    ("pkgcore/filesystem/A.cpp", "<pkgcore/util/TempNames.hpp>"),
    ("pkgcore/util/A.cpp", "<pkgcore/filesystem/PathHelpers.hpp>"),
    ("pkgcore/streams/A.cpp", "<pkgcore/core/Export.hpp>"),
    ("pkgcore/platform/filesystem/A.hpp", "<boost/shared_ptr.hpp>"),
    ("pkgcore/platform/com/IStream.hpp", "<objidl.h>"),
    ("pkgcore/portable/filesystem/A.cpp", "<sys/stat.h>"),
    ("pkgcore/portable/i18n/A.cpp", "<unicode/ustring.h>"),
    ("pkgcore/portable/storage/providers/sqlite/A.cpp", "<sqlite3.h>"),
    ("pkgcore/portable/storage/providers/sqlite/A.cpp", "<pkgcore/portable/storage/Provider.hpp>"),
    ("pkgcore/pkgcore.hpp", "<pkgcore/filesystem/FileSystemOps.hpp>"),
    ("pkgcore/testing/A.hpp", "<gtest/gtest.h>"),
    ("pkgcore/testing/A.hpp", "<pkgcore/portable/storage/Provider.hpp>"),
    ("pkgcore/portable/filesystem/A.cpp", "<fstream>"),
    ("tests/unit/core/A.cpp", "<pkgcore/portable/path/PosixSyntax.hpp>"),
]


def tree_with(file, include):
    """The include stands on the third line, behind one in a comment that does not count."""
    return {"docs/architecture.md": ARCHITECTURE,
            "pkgcore/core/Other.hpp": "#pragma once\n",
            file: f"// #include <pkgcore/portable/A.hpp>\n\n# include {include}  // why\n"}


class CheckArrows(unittest.TestCase):
    def test_refuses_each_forbidden_include_with_file_and_line(self):
        for file, include in FORBIDDEN:
            with self.subTest(file=file, include=include):
                status, output = run_on_tree("check-arrows", tree_with(file, include))
                self.assertEqual(status, 1, output)
                self.assertIn(f"{file}:3: ", output)
                self.assertIn(" 1 forbidden include", output)

    def test_lets_the_allowed_ones_pass(self):
        for file, include in ALLOWED:
            with self.subTest(file=file, include=include):
                status, output = run_on_tree("check-arrows", tree_with(file, include))
                self.assertEqual(status, 0, output)

    def test_the_table_of_the_document_is_what_holds(self):
        tree = tree_with("pkgcore/core/A.cpp", "<pkgcore/streams/InputStream.hpp>")
        tree["docs/architecture.md"] = ARCHITECTURE.replace("| `core` | `platform` |", "| `core` | `platform`, `streams` |")
        status, output = run_on_tree("check-arrows", tree)
        self.assertEqual(status, 0, output)

    def test_refuses_a_tree_without_sources(self):
        status, output = run_on_tree("check-arrows", {"docs/architecture.md": ARCHITECTURE})
        self.assertEqual(status, 1, output)

    def test_refuses_a_tree_without_the_table(self):
        tree = tree_with("pkgcore/core/A.cpp", "<string>")
        tree["docs/architecture.md"] = "# Architecture\n"
        status, output = run_on_tree("check-arrows", tree)
        self.assertEqual(status, 1, output)
        self.assertIn("no table of the layers", output)


if __name__ == "__main__":
    unittest.main()
