#!/usr/bin/env bash
# Runs the README's example twice, since its second run finds what the first one left:
#
#     check_readme_example.sh PROGRAM WORK_FOLDER
#
# WORK_FOLDER is emptied first.
set -euo pipefail

program=$(realpath "$1")
rm -rf "$2"
mkdir -p "$2"
cd "$2"

for _ in 1 2; do
    "$program" > output
    diff <(printf '%s\n' 'backup/2026/tea.txt: 10 bytes') output
    diff <(printf '%s\n' 'Earl Grey') backup/2026/tea.txt
done
