#!/usr/bin/env bash
# Keeps notes in a store that is no part of the library:
#
#     check_own_store.sh OWN_STORE_PROGRAM WORK_FOLDER
set -euo pipefail

program=$(realpath "$1")

expect() {
    diff <(printf '%s\n' "$@") <("$program" "${arguments[@]}" 2>&1)
}

arguments=(b=two 'a?=one=1' b=three)
expect 'note:///a%3F one=1' 'note:///b three'
arguments=('/b=text')
expect 'note:///b text'
arguments=('b/c=text')
expect 'own_store: createOutputStream failed: '
arguments=(b)
expect 'own_store: usage: own_store NAME=TEXT ...'

# The documents say how little it takes.
lines=$(wc -l <"$(dirname "$0")/NoteStore.hpp")
if ((lines > 60)); then
    echo "NoteStore.hpp has $lines lines" >&2
    exit 1
fi
