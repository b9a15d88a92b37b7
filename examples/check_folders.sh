#!/usr/bin/env bash
# Copies a small folder and lists it:
#
#     check_folders.sh LIST_FOLDER_PROGRAM COPY_FOLDER_PROGRAM WORK_FOLDER
#
# WORK_FOLDER is emptied first.
set -euo pipefail
umask 022

list=$(realpath "$1")
copy=$(realpath "$2")
rm -rf "$3"
mkdir -p "$3/from/sub"
cd "$3"
printf 'one' > from/one.txt
printf 'two' > from/sub/two.txt
ln -s one.txt from/link
chmod 640 from/one.txt

# expect_status STATUS COMMAND...: the output goes to the file "output".
expect_status() {
    local expected=$1 status=0
    shift
    "$@" > output 2>&1 || status=$?
    if [[ $status != "$expected" ]]; then
        echo "check_folders: status $status instead of $expected: $*" >&2
        cat output >&2
        exit 1
    fi
}

expect_output() {
    diff <(printf '%s\n' "$@") output
}

expect_status 0 "$copy" from to
diff --recursive --no-dereference from to

expect_status 1 "$copy" from to
expect_output 'copy_folder: copy failed: Destination exists: to'

printf 'old' > to/old.txt
expect_status 0 "$copy" from to --replace
diff --recursive --no-dereference from to

expect_status 1 "$copy" missing to
expect_output 'copy_folder: copy failed: Source does not exist: missing'

expect_status 0 "$list" to
cut -c 1-3 < output > permissions
sed 's/.*  //' < output > paths
diff <(printf '%s\n' to/link to/one.txt to/sub/two.txt) paths
diff <(printf '%s\n' 777 640 644) permissions

expect_status 1 "$list" missing
expect_output 'list_folder: the listing is not complete: No such file or directory'

# Names are bytes, which need not be UTF-8.
odd=$'odd \xff'
expect_status 0 "$copy" from "$odd"
diff --recursive --no-dereference from "$odd"
expect_status 0 "$list" "$odd"

expect_status 2 "$list"
expect_status 2 "$copy" from
