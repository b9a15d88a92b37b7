#!/usr/bin/env python3
"""Prints the block of a name that a document has, as it stands there.

Usage: show_block.py DOCUMENT NAME
"""

import pathlib
import sys

from blocks import blocks_of


def main(document, name):
    found = [block for block in blocks_of(pathlib.Path(document)) if block.name == name]
    if len(found) != 1:
        print(f"{document} has {len(found)} blocks of the name {name}", file=sys.stderr)
        return 1
    print("\n".join(found[0].lines))
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
