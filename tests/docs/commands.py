#!/usr/bin/env python3
"""Looks through the blocks of commands, CMake and SQL in the documents, without running them.

Commands, and those of scripts/nightly, must be correct for bash and name what is there: scripts and their options, presets,
targets, programs and suites of tests, variables. Blocks of CMake and SQL must be run by scripts/check-consumers, or be named
below with the reason.
Usage: commands.py [ROOT]; ROOT is the root of the repository unless given.
"""

import json
import pathlib
import re
import shlex
import subprocess
import sys

from blocks import blocks_of

CHECK = "scripts/check-consumers"
NIGHTLY = "scripts/nightly"
# Parts of a larger file.
NOT_RUN = {("docs/testing.md", "new-test")}
VARIABLE = re.compile(r"PKGCORE_[A-Z_]+")
READ = re.compile(r'(?:"|\$\{)(PKGCORE_[A-Z_]+)')
SCRIPT = re.compile(r"(?:scripts|\.ci)/[\w-]+")
PROGRAM = re.compile(r"build/(?P<preset>[\w-]+)/(?P<folder>tests(?:/\w+)+)/(?P<target>\w+)")
CMAKE_NAME = re.compile(r"(?:\bNAME\s+|add_\w+\(\s*(?!NAME\b))(?P<name>\w+)")
SEPARATORS = {"&&", "||", ";", "|", "(", ")"}


def text_of(files):
    return "\n".join(file.read_text(encoding="utf-8") for file in files if file.is_file())


class Repository:
    """What commands can name."""

    def __init__(self, root):
        self.root = root
        presets = json.loads((root / "CMakePresets.json").read_text(encoding="utf-8"))
        self.presets = {kind: {entry["name"] for entry in presets.get(f"{kind}Presets", []) if not entry.get("hidden")}
                        for kind in ("configure", "build", "test")}
        cmake = text_of([root / "CMakeLists.txt", *root.glob("cmake/*.cmake"),
                         *(file for top in ("pkgcore", "tests", "examples", "bench")
                           for file in (root / top).rglob("CMakeLists.txt"))])
        self.targets = {match["name"] for match in CMAKE_NAME.finditer(cmake)}
        sources = [file for top in ("tests", "bench") for file in (root / top).rglob("*.[ch]pp")]
        scripts = [file for file in (root / "scripts").rglob("*") if file.is_file()]
        self.sources = text_of(sources)
        self.variables = set(VARIABLE.findall(cmake)) | set(READ.findall(self.sources + text_of(scripts)))

    def targets_of(self, folder):
        return {match["name"] for match in CMAKE_NAME.finditer(text_of([self.root / folder / "CMakeLists.txt"]))}

    def script(self, name):
        file = self.root / name
        return file.read_text(encoding="utf-8") if file.is_file() and file.stat().st_mode & 0o100 else None


def commands_in(text):
    """Each command of a text as a list of its words; assignments in front of it are left out."""
    lexer = shlex.shlex(text.replace("\\\n", " ").replace("\n", " ; "), posix=True, punctuation_chars="();|&")
    lexer.whitespace_split = True
    command = []
    for word in [*lexer, ";"]:
        if word not in SEPARATORS:
            command.append(word)
            continue
        while command and re.match(r"\w+=", command[0]):
            command.pop(0)
        if command:
            yield command
        command = []


def plain(text):
    """Without comments, which shlex would end at the end of the text alone."""
    return re.sub(r"(?m)(^|\s)#.*$", "", text)


def values_of(command, option):
    """Of `--option value`, `--option=value`, and of a list of values."""
    for place, word in enumerate(command):
        if word.startswith(option + "="):
            yield word[len(option) + 1:]
        elif word == option:
            for value in command[place + 1:]:
                if value.startswith("-"):
                    break
                yield value


def complaints_about_script(command, repository):
    text = repository.script(command[0])
    if text is None:
        yield f"no script {command[0]}"
        return
    # The benchmarks have options of their own.
    known = text + (repository.sources if command[0] == "scripts/bench" else "")
    for word in command[1:]:
        option = word.partition("=")[0]
        if option.startswith("--") and option not in known:
            yield f"{command[0]} has no option {option}"


def complaints_about_cmake(command, repository):
    kind = "test" if command[0] == "ctest" else "build" if "--build" in command else "configure"
    for preset in values_of(command, "--preset"):
        if preset not in repository.presets[kind]:
            yield f"no {kind} preset {preset}"
    for target in values_of(command, "--target"):
        if target not in repository.targets:
            yield f"no target {target}"
    for folder in [*values_of(command, "--build"), *values_of(command, "--install")]:
        if folder.removeprefix("build/") not in repository.presets["configure"]:
            yield f"{folder} is the folder of no preset"


def complaints_about_program(command, repository):
    match = PROGRAM.fullmatch(command[0])
    is_known = match and match["preset"] in repository.presets["configure"]
    if not is_known or match["target"] not in repository.targets_of(match["folder"]):
        yield f"no program {command[0]}"
    for suite in values_of(command, "--gtest_filter"):
        if suite.strip("*").partition(".")[0] not in repository.sources:
            yield f"no tests {suite}"


def complaints_about_commands(text, repository):
    done = subprocess.run(["bash", "-n"], input=text, check=False, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if done.returncode != 0:
        yield f"bash does not understand it: {done.stdout.strip()}"
        return
    for variable in VARIABLE.findall(plain(text)):
        if variable not in repository.variables:
            yield f"nothing reads {variable}"
    for command in commands_in(plain(text)):
        if SCRIPT.fullmatch(command[0]):
            yield from complaints_about_script(command, repository)
        elif command[0] in ("cmake", "ctest"):
            yield from complaints_about_cmake(command, repository)
        elif command[0].startswith("build/"):
            yield from complaints_about_program(command, repository)
        elif "/" in command[0] and f"-o {command[0].removeprefix('./')}" not in text:
            yield f"no check knows {command[0]}"


def nightly_commands(root):
    """What scripts/nightly would run: it is behind a name in each line."""
    done = subprocess.run([root / NIGHTLY, "--list"], check=True, text=True, stdout=subprocess.PIPE)
    return re.sub(r"(?m)^\w+\s+", "", done.stdout)


def documents_of(root):
    return [root / "README.md", root / "CONTRIBUTING.md", *sorted((root / "docs").rglob("*.md"))]


def complaints_about(block, document, repository, check):
    if block.name is None and block.language != "cpp":
        yield "a block without a name"
    if block.language == "sh":
        yield from complaints_about_commands("\n".join(block.lines), repository)
    elif block.language != "cpp" and f"{document} {block.name}" not in check and (document, block.name) not in NOT_RUN:
        yield f"{CHECK} does not run it"


def main(arguments):
    root = pathlib.Path(arguments[0] if arguments else pathlib.Path(__file__).parents[2]).resolve()
    repository = Repository(root)
    check = text_of([root / CHECK])
    count, bad = 0, 0
    for file in filter(pathlib.Path.is_file, documents_of(root)):
        document = file.relative_to(root).as_posix()
        for block in blocks_of(file):
            count += block.language != "cpp"
            for complaint in complaints_about(block, document, repository, check):
                print(f"{document}:{block.line}: {complaint}", file=sys.stderr)
                bad += 1
    for complaint in complaints_about_commands(nightly_commands(root), repository):
        print(f"{NIGHTLY}: {complaint}", file=sys.stderr)
        bad += 1
    print(f"{count} blocks of commands, {bad} complaints")
    return 1 if bad or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
