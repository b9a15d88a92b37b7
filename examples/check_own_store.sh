#!/usr/bin/env bash
# Reads the environment as a store:
#
#     check_own_store.sh OWN_STORE_PROGRAM WORK_FOLDER
set -euo pipefail

program=$(realpath "$1")

expect() {
    diff <(printf '%s\n' "$@") <(env -i "B c?=two" A=one EMPTY= "$program" "${arguments[@]}" 2>&1)
}

arguments=()
expect 'env:///A' 'env:///B%20c%3F' 'env:///EMPTY'
arguments=('ENV:///x/../B%20c%3F')
expect 'two'
arguments=('env:///EMPTY')
expect ''
arguments=('env:///MISSING')
expect "own_store: createInputStream failed: "
