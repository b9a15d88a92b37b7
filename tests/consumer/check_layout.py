#!/usr/bin/env python3
"""Compares a description of tables, indexes and views with an SQLite database that has them, column by column.

Usage: check_layout.py DATABASE < DESCRIPTION; a line of it is a name, the columns of a table behind it, and a comment.
"""

import re
import sqlite3
import sys


def described_in(text):
    """The columns of each table by its name; None for what has none in the text."""
    plain = re.sub(r"--.*", "", text)
    items = re.split(r"\n(?=\w)", plain.strip())
    described = {}
    for item in items:
        name, _, columns = item.partition("(")
        columns = re.sub(r"PRIMARY KEY\(.*?\)", "", columns.rstrip(" )\n") + ")")
        words = [column.split()[0] for column in columns.strip(" )").split(",") if column.strip(" )\n")]
        described[name.strip()] = words or None
    return described


def differences(database, described):
    there = {name for (name,) in database.execute("SELECT name FROM sqlite_schema WHERE name NOT LIKE 'sqlite_%'")}
    for name in sorted(there ^ set(described)):
        yield f"{name}: {'not described' if name in there else 'not in the database'}"
    for name in sorted(there & set(described)):
        columns = [row[1] for row in database.execute(f"PRAGMA table_info({name})")]
        if described[name] is not None and described[name] != columns:
            yield f"{name}: has {columns}, described are {described[name]}"


def main(path):
    described = described_in(sys.stdin.read())
    found = list(differences(sqlite3.connect(f"file:{path}?mode=ro", uri=True), described))
    for difference in found:
        print(difference, file=sys.stderr)
    print(f"{len(described)} parts of the layout, {len(found)} differences")
    return 1 if found or not described else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
