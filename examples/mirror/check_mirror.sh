#!/usr/bin/env bash
# Mirrors made-up folders between the disk and memory:
#
#     check_mirror.sh MIRROR_PROGRAM WORK_FOLDER
#
# WORK_FOLDER is emptied first.
set -euo pipefail
umask 022

mirror=$(realpath "$1")
rm -rf "$2"
mkdir -p "$2"
cd "$2"

fail() {
    echo "check_mirror: $*" >&2
    cat output >&2
    exit 1
}

# expect_status STATUS COMMAND...: the output goes to the file "output".
expect_status() {
    local expected=$1 status=0
    shift
    "$@" > output 2>&1 || status=$?
    [[ $status == "$expected" ]] || fail "status $status instead of $expected: $*"
}

expect_line() {
    grep --quiet --text --line-regexp --extended-regexp "$1" output || fail "no line like: $1"
}

# expect_same FOLDER FOLDER [OPTION...]
expect_same() {
    diff --recursive --no-dereference "$@" > differences || fail "$(cat differences)"
}

times_of() {
    (cd "$1" && find . -type f -printf '%T@ %p\n' | sed -E 's,^([0-9]+[.][0-9]{6})[0-9]*,\1,' | sort)
}

deep=$(printf 'level/%.0s' {1..40})
mkdir -p "from/$deep" 'from/100% done?' from/日本
printf 'percent' > 'from/100% done?/%41#b c.txt'
printf 'query' > 'from/what?#fragment'
printf 'blanks' > 'from/ a  b '
printf 'letters' > from/日本/straße
printf 'emoji' > 'from/日本/😀.txt'
printf 'colon' > 'from/mem:x'
printf 'slash' > 'from/back\slash'
printf 'dots' > from/...
printf 'deep' > "from/$deep/file"
: > from/empty
head -c 300000 /dev/urandom > from/noise
touch -d '2001-02-03 04:05:06.123456789' from/noise

# To memory and back; then again, when nothing is new on the disk.
expect_status 0 "$mirror" from mem://store/a/b to
expect_line 'from -> mem://store/a/b: 11 files, [0-9]+ bytes; 11 copied, 0 unchanged, 0 removed, 0 skipped, 0 failures'
expect_line 'mem://store/a/b -> to: 11 files, [0-9]+ bytes; 11 copied, 0 unchanged, 0 removed, 0 skipped, 0 failures'
expect_same from to
diff <(times_of from) <(times_of to) || fail 'times differ'
expect_status 0 "$mirror" from mem://store/a/b to
expect_line 'mem://store/a/b -> to: 11 files, [0-9]+ bytes; 0 copied, 11 unchanged, 0 removed, 0 skipped, 0 failures'

# Only what differs is copied: by length, by content behind another time; a new time alone is no difference.
printf 'longer' > from/empty
printf 'blankz' > 'from/ a  b '
touch from/noise
expect_status 0 "$mirror" from "file://$PWD/to"
expect_line 'from -> file://.*/to: 11 files, .*; 2 copied, 9 unchanged, 0 removed, 0 skipped, 0 failures'
expect_same from to
diff <(times_of from) <(times_of to) || fail 'times differ'

# What is at the destination alone stays, unless it is told to go: also a folder in a file's place.
mkdir -p to/other/folder
printf 'other' > to/other/folder/file
expect_status 0 "$mirror" from to
expect_line '.* 0 removed, .*'
[[ -e to/other/folder/file ]] || fail 'removed without --delete'
rm from/empty
printf 'a file now' > from/other
expect_status 1 "$mirror" from to
expect_line 'mirror: rename failed: .*'
expect_status 0 "$mirror" --delete from to
expect_line 'from -> to: 11 files, .*; 1 copied, 10 unchanged, 2 removed, 0 skipped, 0 failures'
expect_same from to

# Links are left out, and never written through.
ln -s noise from/link
printf 'outside' > outside
rm to/noise
ln -s ../outside to/noise
expect_status 0 "$mirror" from to
expect_line 'skipped, a link: from/link'
expect_line '.*; 1 copied, 10 unchanged, 0 removed, 1 skipped, 0 failures'
[[ $(< outside) == outside ]] || fail 'written through a link'
rm from/link
expect_same from to

# Names that are not UTF-8 go where such names can be.
mkdir odd
printf 'odd' > odd/$'name \xff'
expect_status 0 "$mirror" odd "file://$PWD/odd2" odd3
expect_same odd odd3
expect_status 1 "$mirror" odd mem:///odd
expect_line 'mirror: appendPath failed: .*'

# A file that cannot be read is one failure, and nothing is removed after one: neither here nor further on.
unprivileged=()
if [[ $(id -u) == 0 ]]; then
    unprivileged=(setpriv --inh-caps=-all --bounding-set=-all)
fi
mkdir partly partly/locked
printf 'secret' > partly/secret
printf 'open' > partly/open
printf 'locked' > partly/locked/file
expect_status 0 "$mirror" partly backup
chmod 000 partly/secret
expect_status 1 "${unprivileged[@]}" "$mirror" --delete partly mem:///p backup
expect_line 'mirror: cannot be opened for reading: partly/secret'
expect_line 'partly -> mem:///p: 2 files, 10 bytes; 2 copied, 0 unchanged, 0 removed, 0 skipped, 1 failures'
expect_line 'mem:///p -> backup: 2 files, 10 bytes; 0 copied, 2 unchanged, 0 removed, 0 skipped, 0 failures'
chmod 000 partly/locked
expect_status 1 "${unprivileged[@]}" "$mirror" --delete partly backup
expect_line 'mirror: getFiles failed: Access denied: partly/locked'
[[ $(< backup/secret) == secret && $(< backup/locked/file) == locked ]] || fail 'removed after a failure'
chmod 755 partly/locked partly/secret

expect_status 1 "$mirror" --delete missing to
expect_line 'mirror: getFiles failed: Path not found: missing'
expect_same from to
expect_status 1 "$mirror" mem://store/missing to
expect_line 'mirror: getFiles failed: .*: mem://store/missing'
expect_status 1 "$mirror" from/noise to
expect_status 1 "$mirror" from to/noise

# An empty folder is mirrored like any other.
mkdir empty
expect_status 0 "$mirror" --delete empty mem://x to
[[ -z $(ls -A to) ]] || fail 'not emptied'

# Places that hold one another, however they are named.
ln -s from alias
expect_apart() {
    expect_status 2 "$mirror" --delete "$@"
    expect_line 'mirror: places that are the same or hold one another'
}
expect_apart from from
expect_apart from from/sub
expect_apart from/sub .
expect_apart . new
expect_apart from "file://$PWD/from"
expect_apart alias/sub from
expect_apart mem://a MEM://A/b
expect_apart from mem://a from
expect_status 0 "$mirror" from from-here

expect_status 2 "$mirror" from
expect_line 'usage: .*'
expect_status 2 "$mirror" from to --unknown
expect_status 2 "$mirror" from to odd
expect_line 'mirror: a place on the way that is no IRI'
expect_status 2 "$mirror" from ''
expect_status 2 "$mirror" from 'mem://store/%zz'
expect_line 'mirror: appendPath failed: .*'
expect_status 1 "$mirror" from zip:///not/mounted
[[ -z $(find . -name '*.tmp') ]] || fail "left behind: $(find . -name '*.tmp')"
