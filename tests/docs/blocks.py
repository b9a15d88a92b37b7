#!/usr/bin/env python3
"""Takes the C++ blocks out of documents, so that tests include them as they stand there.

A block is opened by ```cpp and a name, and becomes <output>/<document>/<name>.inc; its #include lines, if there are any,
become <output>/<document>/<name>.includes.inc. Fails for a block without a name of its own, and for one that no source
includes: nobody would compile it. Blocks of commands and of CMake and SQL need a name of their own as well: by that,
scripts/check-consumers runs them and commands.py looks through them.
Usage: blocks.py OUTPUT_FOLDER SOURCE_FOLDER DOCUMENT...
"""

import pathlib
import re
import sys

OPENING = re.compile(r"(?P<indent> *)```(?P<language>cpp|sh|cmake|sql)(?:\s+(?P<name>\S+))?\s*")
INCLUDED = re.compile(r'#include "(?P<name>[^"]+\.inc)"')


class Block:
    def __init__(self, document, line, opening):
        self.document = document
        self.line = line
        self.language = opening["language"]
        self.name = opening["name"]
        self.indent = opening["indent"]
        self.lines = []

    def place(self):
        return f"{self.document}:{self.line}"

    def contents(self):
        """What becomes of it, by the names of files. A blank takes the place of an #include, so that line numbers are right."""
        if self.language != "cpp":
            return {}
        key = f"{self.document.stem}/{self.name}"
        includes = [line for line in self.lines if is_include(line)]
        body = ["" if is_include(line) else line for line in self.lines]
        opening = f'#line {self.line + 1} "{self.document}"'
        contents = {f"{key}.inc": "\n".join([opening, *body, ""])}
        if includes:
            contents[f"{key}.includes.inc"] = "\n".join([*includes, ""])
        return contents


def is_include(line):
    return line.startswith("#include")


def blocks_of(document):
    block = None
    for number, line in enumerate(document.read_text(encoding="utf-8").splitlines(), start=1):
        opening = OPENING.fullmatch(line)
        if block is not None and line == block.indent + "```":
            yield block
            block = None
        elif block is not None:
            block.lines.append(line.removeprefix(block.indent))
        elif opening:
            block = Block(document, number, opening)


def complaints_about(blocks, included):
    seen = set()
    for block in blocks:
        key = (block.document.stem, block.name)
        if block.name is None:
            yield f"{block.place()}: a block without a name"
        elif key in seen:
            yield f"{block.place()}: a second block of the name {block.name}"
        else:
            yield from (f'{block.place()}: no test includes "{name}"' for name in block.contents() if name not in included)
        seen.add(key)


def write(output, contents):
    """Leaves alone what is up to date already, and nothing that is not wanted any more."""
    for path, content in contents.items():
        file = output / path
        file.parent.mkdir(parents=True, exist_ok=True)
        if not file.exists() or file.read_text(encoding="utf-8") != content:
            file.write_text(content, encoding="utf-8")
    for file in output.rglob("*.inc"):
        if file.relative_to(output).as_posix() not in contents:
            file.unlink()


def main(arguments):
    output, sources, *documents = map(pathlib.Path, arguments)
    blocks = [block for document in documents for block in blocks_of(document)]
    included = {match["name"] for source in sources.glob("*.cpp")
                for match in INCLUDED.finditer(source.read_text(encoding="utf-8"))}
    complaints = list(complaints_about(blocks, included))
    for complaint in complaints:
        print(complaint, file=sys.stderr)
    if complaints or not any(block.language == "cpp" for block in blocks):
        return 1
    write(output, {name: text for block in blocks for name, text in block.contents().items()})
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
