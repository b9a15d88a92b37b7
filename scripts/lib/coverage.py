#!/usr/bin/env python3
"""Says what no test has reached, from what `llvm-cov export` tells.

Prints the share of lines and branches of each folder, each file that has less than all, and the lines that were not reached, with
their function; for the folders of the logic the branches as well. Each such function must stand in the list of the page with the
reason: a table whose rows begin with the file, below pkgcore/, and the functions in backticks.
What is made of one line by several instantiations of a template counts as one.
Usage: scripts/lib/coverage.py EXPORT PAGE ROOT
"""

import bisect
import collections
import json
import os
import pathlib
import re
import subprocess
import sys

LOGIC = ("core", "filesystem", "streams", "util")
ROW = re.compile(r"\| `([\w/]+\.[ch]pp)` \| (`[^|]*) \|")


def in_plain_words(names):
    """The names as people write them, without the source that precedes one with internal linkage."""
    mangled = "\n".join(name.rpartition(":")[2] for name in names)
    return subprocess.run(["c++filt"], input=mangled, check=True, text=True,
                          stdout=subprocess.PIPE).stdout.splitlines()


def short_name(name):
    """The last name alone, or that of the function in which a lambda stands."""
    name = name.replace("(anonymous namespace)::", "").replace("operator()", "operator call")
    name = re.sub(r"operator(->|<<?=?|>>?=?)", lambda found: found[0].replace("<", "\1").replace(">", "\2"), name)
    inner = None
    while inner != name:
        inner, name = name, re.sub(r"<[^<>()]*>|\([^<>()]*\)|\{[^{}]*\}|\[[^\[\]]*\]", "", name)
    parts = [part.strip() for part in re.sub(r" (const|noexcept|&+)(?= |$)", "", name).split("::")]
    parts = parts[:next((i for i, part in enumerate(parts) if i and (not part or part.startswith("$_"))), len(parts))]
    return re.sub(r"^.* (?!call)", "", parts[-1]).replace("\1", "<").replace("\2", ">").replace("operator call", "operator()")


class File:
    """What was counted in one file: the counts of its lines and branches, and where its functions stand."""

    def __init__(self, exported):
        self.functions = []
        self.lines = {}
        self.branches = {}
        segments = exported["segments"]
        self.starts = [(segment[0], segment[1]) for segment in segments]
        self.counts = [segment[2] for segment in segments]
        self._read_lines(segments)
        self._read_branches(exported["branches"])

    def _read_lines(self, segments):
        """A line counts as often as what begins in it, or as what goes on from the line before, whichever is more."""
        by_line = collections.defaultdict(list)
        for segment in segments:
            by_line[segment[0]].append(segment)
        before = None
        for line in range(segments[0][0], segments[-1][0] + 1) if segments else ():
            here = by_line[line]
            begun = [segment for segment in here if segment[3] and segment[4] and not segment[5]]
            skipped = bool(here) and not here[0][3] and here[0][4]
            goes_on = before is not None and before[3]
            if not skipped and (begun or goes_on):
                self.lines[line] = max([segment[2] for segment in begun] + ([before[2]] if goes_on else []))
            before = here[-1] if here else before

    def _read_branches(self, branches):
        sums = collections.defaultdict(lambda: [0, 0])
        for line, column, end, end_column, taken, passed, *_ in branches:
            sums[line, column, end, end_column][0] += taken
            sums[line, column, end, end_column][1] += passed
        for (line, column, *_), counts in sums.items():
            # The compiler decides a condition that was run and went nowhere.
            if any(counts) or not self._count_at(line, column):
                self.branches.setdefault((line, column), counts)

    def _count_at(self, line, column):
        place = bisect.bisect_right(self.starts, (line, column)) - 1
        return self.counts[place] if place >= 0 else 0

    def function_at(self, line):
        """The smallest function around the line."""
        around = [(last - first, name) for first, last, name in self.functions if first <= line <= last]
        return min(around)[1] if around else "?"

    def missed_lines(self):
        return sorted(line for line, count in self.lines.items() if count == 0)

    def missed_branches(self):
        """Places, and which way was never taken."""
        return sorted((place, way) for place, counts in self.branches.items()
                      for way, count in zip(("true", "false"), counts) if count == 0)


def files_of(export, folder):
    """The files of pkgcore/ by their paths below it."""
    data = export["data"][0]
    files = {path: File(each) for each in data["files"]
             if (path := os.path.normpath(each["filename"])).startswith(f"{folder}/")}
    names = in_plain_words(function["name"] for function in data["functions"])
    for function, name in zip(data["functions"], names):
        first, _, last, _, _, file, *_ = function["regions"][0]
        file = os.path.normpath(function["filenames"][file])
        if file in files:
            files[file].functions.append((first, last, short_name(name)))
    return {file[len(folder) + 1:]: found for file, found in sorted(files.items())}


def share(missed, total):
    return f"{missed} of {total}" if total else "none"


def print_folders(files):
    sums = collections.defaultdict(lambda: [0, 0, 0, 0])
    for path, file in files.items():
        counts = (len(file.missed_lines()), len(file.lines), len(file.missed_branches()), 2 * len(file.branches))
        for i, count in enumerate(counts):
            sums[path.split("/")[0]][i] += count
    print("| folder | lines | not reached | branches | not taken |\n|---|---|---|---|---|")
    for folder, (lines_missed, lines, missed, branches) in sorted(sums.items()):
        of_lines = 100 - 100 * lines_missed / max(1, lines)
        of_branches = 100 - 100 * missed / max(1, branches)
        print(f"| `{folder}` | {of_lines:.2f} % | {share(lines_missed, lines)} | {of_branches:.2f} % | "
              f"{share(missed, branches)} |")


def print_files(files):
    print("\nFiles with less than all:")
    for path, file in files.items():
        lines, branches = file.missed_lines(), file.missed_branches()
        if lines or branches:
            print(f"pkgcore/{path}: lines {share(len(lines), len(file.lines))}, "
                  f"branches {share(len(branches), 2 * len(file.branches))}")


def spans(lines):
    """Runs of lines that follow each other."""
    runs = []
    for line in lines:
        if runs and runs[-1][1] == line - 1:
            runs[-1][1] = line
        else:
            runs.append([line, line])
    return runs


def not_reached(files):
    """Tuples of path, function, and the place to print."""
    for path, file in files.items():
        for first, last in spans(file.missed_lines()):
            place = f"{first}" if first == last else f"{first}-{last}"
            yield path, file.function_at(first), place
        if path.split("/")[0] in LOGIC:
            for (line, column), way in file.missed_branches():
                yield path, file.function_at(line), f"{line}:{column}, never {way}"


def listed(page):
    return {(path, name) for path, names in ROW.findall(page) for name in re.findall(r"`([^`]+)`", names)}


def main(arguments):
    export, page, root = (pathlib.Path(argument) for argument in arguments)
    files = files_of(json.loads(export.read_text(encoding="utf-8")), f"{root.resolve()}/pkgcore")
    print_folders(files)
    print_files(files)
    print("\nNot reached:")
    found = list(not_reached(files))
    for path, function, place in found:
        print(f"pkgcore/{path}:{place} {function}")
    missed = {(path, function) for path, function, _ in found}
    reasons = listed(page.read_text(encoding="utf-8"))
    for path, function in sorted(missed - reasons):
        print(f"not reached, and {page} has no reason: pkgcore/{path}: {function}", file=sys.stderr)
    for path, function in sorted(reasons - missed):
        print(f"reached, though {page} has a reason: pkgcore/{path}: {function}", file=sys.stderr)
    return 1 if missed - reasons or not files else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
