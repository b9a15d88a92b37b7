#!/usr/bin/env python3
"""commands.py: one command of each kind that names what is not there, and the right ones beside it."""

import json
import pathlib
import subprocess
import sys
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parent / "commands.py"

# (commands, complaint)
WRONG = [
    ("scripts/gone", "no script scripts/gone"),
    ("true && scripts/gone", "no script scripts/gone"),
    ("(cd a && scripts/gone)", "no script scripts/gone"),
    ("scripts/plain", "no script scripts/plain"),
    (".ci/gone", "no script .ci/gone"),
    ("scripts/run --gone", "scripts/run has no option --gone"),
    ("scripts/run --gone=1 a", "scripts/run has no option --gone"),
    ("cmake --preset gone", "no configure preset gone"),
    ("cmake --preset base", "no configure preset base"),
    ("ctest --preset one", "no test preset one"),
    ("cmake --build --preset two", "no build preset two"),
    ("cmake --build build/gone", "build/gone is the folder of no preset"),
    ("cmake --install build/gone", "build/gone is the folder of no preset"),
    ("cmake --build build/one --target thing gone", "no target gone"),
    ("cmake -DPKGCORE_GONE=ON", "nothing reads PKGCORE_GONE"),
    ("PKGCORE_GONE=1 scripts/run", "nothing reads PKGCORE_GONE"),
    ("PKGCORE_SIZE=1 build/one/tests/unit/gone", "no program build/one/tests/unit/gone"),
    ("build/one/tests/other/a_test", "no program build/one/tests/other/a_test"),
    ("build/one/tests/unit/a_test --gtest_filter='Gone.*'", "no tests Gone.*"),
    ("elsewhere/program", "no check knows elsewhere/program"),
    ("for a in", "bash does not understand it"),
]

RIGHT = [
    "scripts/run --known=1 a   # a comment with (a scripts/gone",
    "cmake --preset one && cmake --build build/one --target thing other_thing",
    "cmake --preset one \\\n  --fresh\nctest --preset two -R 'Suite'",
    "PKGCORE_SIZE=1 build/one/tests/unit/a_test --gtest_filter='Suite.*'",
    "cmake -DPKGCORE_OPTION=ON",
    "g++ program.cpp -o program\n./program",
]

TREE = {
    "CMakePresets.json": json.dumps({"configurePresets": [{"name": "one"}, {"name": "base", "hidden": True}],
                                     "buildPresets": [{"name": "one"}], "testPresets": [{"name": "two"}]}),
    "CMakeLists.txt": "option(PKGCORE_OPTION)\nadd_library(thing SHARED)\nadd_custom_target(other_thing)\n",
    "tests/unit/CMakeLists.txt": "pkgcore_add_test(\n  NAME\n  a_test SOURCES ATest.cpp)\n",
    "tests/unit/ATest.cpp": 'TEST(Suite, Works) { std::getenv("PKGCORE_SIZE"); }\n',
    "scripts/run": "# --known\n",
    "scripts/plain": "",
    "scripts/nightly": "#!/bin/sh\necho 'long  PKGCORE_SIZE=2 build/one/tests/unit/a_test --gtest_filter=*ork*'\n",
    "scripts/check-consumers": "run docs/page.md used\n",
}


class Commands(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name)
        for path, content in TREE.items():
            self.write(path, content)
        for script in ("run", "nightly"):
            (self.root / "scripts" / script).chmod(0o755)

    def write(self, path, content):
        file = self.root / path
        file.parent.mkdir(parents=True, exist_ok=True)
        file.write_text(content, encoding="utf-8")

    def run_on(self, document):
        self.write("docs/page.md", document)
        done = subprocess.run([sys.executable, "-B", str(SCRIPT), str(self.root)], check=False, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        return done.returncode, done.stdout

    def test_commands_that_name_what_is_not_there_are_refused(self):
        """Each in a block of three lines, in one document: starting a program for each of them takes long."""
        status, output = self.run_on("".join(f"```sh name\n{commands}\n```\n" for commands, _ in WRONG))
        self.assertEqual(status, 1, output)
        for place, (commands, complaint) in enumerate(WRONG):
            with self.subTest(commands=commands):
                self.assertIn(f"docs/page.md:{3 * place + 1}: {complaint}", output)
        self.assertIn(f"{len(WRONG)} blocks of commands, {len(WRONG)} complaints\n", output)

    def test_commands_that_name_what_is_there_pass(self):
        document = "".join(f"```sh name\n{commands}\n```\n" for commands in RIGHT)
        self.assertEqual(self.run_on(document), (0, f"{len(RIGHT)} blocks of commands, 0 complaints\n"))

    def test_blocks_of_cmake_and_sql_must_be_run(self):
        for language in ("cmake", "sql"):
            with self.subTest(language=language):
                self.assertIn("check-consumers does not run it", self.run_on(f"```{language} other\na\n```\n")[1])
                self.assertEqual(self.run_on(f"```{language} used\na\n```\n")[0], 0)

    def test_a_block_needs_a_name(self):
        self.assertIn("docs/page.md:1: a block without a name", self.run_on("```sh\nls\n```\n")[1])

    def test_the_nightly_commands_must_name_what_is_there(self):
        with open(self.root / "scripts" / "nightly", "a", encoding="utf-8") as script:
            script.write("echo 'longer  PKGCORE_SIZE=2 build/one/tests/unit/gone'\n")
        status, output = self.run_on("```sh name\nls\n```\n")
        self.assertEqual(status, 1)
        self.assertIn("scripts/nightly: no program build/one/tests/unit/gone", output)

    def test_documents_without_blocks_are_refused(self):
        self.assertEqual(self.run_on("text\n")[0], 1)


if __name__ == "__main__":
    unittest.main()
