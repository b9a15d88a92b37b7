#!/usr/bin/env bash
# Mirrors made-up folders between the disk, memory and a database:
#
#     check_mirror.sh MIRROR_PROGRAM WORK_FOLDER
#
# WORK_FOLDER is emptied first.
set -euo pipefail
umask 022

mirror=$(realpath "$1")
if [[ -d $2 ]]; then
    chmod -R u+rwx "$2"
    rm -rf "$2"
fi
mkdir -p "$2"
cd "$2"

# Root may read and write everything.
unprivileged=()
if [[ $(id -u) == 0 ]]; then
    unprivileged=(setpriv --inh-caps=-all --bounding-set=-all)
fi

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

# To the microsecond.
times_of() {
    (cd "$1" && find . "${@:2}" -printf '%T@ %p\n' | sed -E 's,^([0-9]+[.][0-9]{6})[0-9]*,\1,' | sort)
}

permissions_of() {
    (cd "$1" && find . -not -type l -printf '%m %p\n' | sort)
}

deep=$(printf 'level/%.0s' {1..40})
mkdir -p "from/$deep" 'from/100% done?' from/日本 from/void/void
printf 'percent' > 'from/100% done?/%41#b c.txt'
printf 'query' > 'from/what?#fragment'
printf 'blanks' > 'from/ a  b '
printf 'letters' > from/日本/straße
printf 'emoji' > 'from/日本/😀.txt'
printf 'colon' > 'from/mem:x'
printf 'slash' > 'from/back\slash'
printf 'dots' > from/...
printf 'deep' > "from/$deep/file"
printf 'lines' > $'from/two\nlines'
: > from/empty
head -c 300000 /dev/urandom > from/noise
touch -d '2001-02-03 04:05:06.123456789' from/noise
touch -d '2002-03-04 05:06:07' from/void/void from/日本

# To memory and back; then again, when nothing is new on the disk. Empty folders are carried, their times as far as
# memory keeps them.
expect_status 0 "$mirror" from mem://store/a/b to
expect_line 'from -> mem://store/a/b: 12 files, 0 links, 44 folders, [0-9]+ bytes; 12 copied, 0 unchanged, 0 removed, 0 skipped, 0 failures'
expect_line 'mem://store/a/b -> to: 12 files, 0 links, 44 folders, [0-9]+ bytes; 12 copied, 0 unchanged, 0 removed, 0 skipped, 0 failures'
expect_same from to
diff <(times_of from -type f) <(times_of to -type f) || fail 'times differ'
expect_status 0 "$mirror" from mem://store/a/b to
expect_line 'mem://store/a/b -> to: 12 files, .*; 0 copied, 12 unchanged, 0 removed, 0 skipped, 0 failures'

# Into a store in one database and back, by two processes: what comes back was in the file.
expect_status 0 "$mirror" from sqlite://kept/a/b
[[ -s kept.db ]] || fail "no store in the working directory"
expect_status 0 "$mirror" sqlite://kept/a/b from-kept
expect_line 'sqlite://kept/a/b -> from-kept: 12 files, 0 links, 44 folders, [0-9]+ bytes; 12 copied, .* 0 failures'
expect_same from from-kept
expect_status 0 "$mirror" from sqlite://kept/a/b
expect_line 'from -> sqlite://kept/a/b: 12 files, .*; 0 copied, 12 unchanged, 0 removed, 0 skipped, 0 failures'

# From the disk to the disk, by path and by IRI: all permissions and the times of folders too.
chmod 640 from/noise
chmod 755 'from/ a  b '
chmod 400 from/empty
chmod 4711 'from/what?#fragment'
chmod 700 from/void
chmod 555 'from/100% done?'
for place in native "file://$PWD/encoded"; do
    expect_status 0 "${unprivileged[@]}" "$mirror" from "$place"
done
chmod 711 'from/what?#fragment'
for copy in native encoded; do
    expect_same from $copy
    diff <(permissions_of from) <(permissions_of $copy) || fail "permissions differ: $copy"
    diff <(times_of from) <(times_of $copy) || fail "times differ: $copy"
done
# A folder that its owner may not write is filled all the same; new permissions alone are carried.
in_read_only() {
    chmod 755 'from/100% done?'
    "$@"
    chmod 555 'from/100% done?'
}
in_read_only touch 'from/100% done?/new'
chmod 600 'from/ a  b '
expect_status 0 "${unprivileged[@]}" "$mirror" from native
expect_line '.*; 1 copied, 12 unchanged, 0 removed, 0 skipped, 0 failures'
in_read_only rm 'from/100% done?/new'
expect_status 0 "${unprivileged[@]}" "$mirror" --delete from native
expect_line '.*; 0 copied, 12 unchanged, 1 removed, 0 skipped, 0 failures'
diff <(permissions_of from) <(permissions_of native) || fail 'permissions differ'
# Through another store goes whether a file may be written, and nothing that the umask takes.
expect_status 0 "${unprivileged[@]}" "$mirror" from mem://p through
[[ $(stat -c %a through/empty through/noise) == $'444\n644' ]] || fail "permissions: $(stat -c %a through/empty through/noise)"
chmod -R u+w from through native encoded
rm -rf through native encoded

# Only what differs is copied: by length, by content behind another time; a new time alone is no difference.
printf 'longer' > from/empty
printf 'blankz' > 'from/ a  b '
touch from/noise
expect_status 0 "$mirror" from "file://$PWD/to"
expect_line 'from -> file://.*/to: 12 files, .*; 2 copied, 10 unchanged, 0 removed, 0 skipped, 0 failures'
expect_same from to
diff <(times_of from) <(times_of to) || fail 'times differ'

# What is at the destination alone stays, unless it is told to go: also a folder in a file's place.
mkdir -p to/other/folder to/alone
printf 'other' > to/other/folder/file
expect_status 0 "$mirror" from to
expect_line '.* 0 removed, .*'
[[ -e to/other/folder/file && -e to/alone ]] || fail 'removed without --delete'
rm from/empty
printf 'a file now' > from/other
expect_status 1 "$mirror" from to
expect_line 'mirror: rename failed: .*'
expect_status 0 "$mirror" --delete from to
expect_line 'from -> to: 12 files, .*; 1 copied, 11 unchanged, 5 removed, 0 skipped, 0 failures'
expect_same from to
rm from/other
mkdir from/other
expect_status 1 "$mirror" from to
expect_line 'mirror: createFolder failed: .*'
expect_status 0 "$mirror" --delete from to
expect_same from to

# Links are carried as links on this machine, left out elsewhere, and never followed or written through.
ln -s noise from/link
ln -s ../outside/nothing from/dangling
ln -s . from/loop
printf 'outside' > outside
mkdir outer
rm -r to/noise to/void
ln -s ../outside to/noise
ln -s ../outer to/void
expect_status 0 "$mirror" from to
expect_line 'from -> to: 11 files, 3 links, .*; 4 copied, 10 unchanged, 0 removed, 0 skipped, 0 failures'
[[ $(< outside) == outside && -z $(ls -A outer) ]] || fail 'written through a link'
expect_same from to
ln -sf other to/link
rm to/noise
ln -s "$PWD/from/noise" to/noise
expect_status 0 "$mirror" "file://$PWD/from" "file://$PWD/to"
expect_line '.*: 11 files, 3 links, .*; 2 copied, 12 unchanged, 0 removed, 0 skipped, 0 failures'
expect_same from to
expect_status 0 "$mirror" from mem://links
expect_line 'skipped, a link: from/link'
expect_line '.*: 11 files, 0 links, .*; 11 copied, 0 unchanged, 0 removed, 3 skipped, 0 failures'
rm from/link from/dangling from/loop
expect_status 0 "$mirror" --delete from to
expect_line '.* 3 removed, .*'
expect_same from to

# A pipe has no content: no listing shows it, and nothing waits for somebody to write into it.
mkfifo from/pipe
for place in from "file://$PWD/from"; do
    expect_status 0 timeout 60 "$mirror" "$place" piped
    expect_line '.* -> piped: 11 files, .*; .* 0 skipped, 0 failures'
    [[ ! -e piped/pipe ]] || fail 'a pipe was mirrored'
done
rm from/pipe
expect_same from piped

# Names that are not UTF-8 go where such names can be.
mkdir -p odd/$'folder \xc3'
printf 'odd' > odd/$'name \xff'
expect_status 0 "$mirror" odd "file://$PWD/odd2" odd3
expect_same odd odd3
expect_status 1 "$mirror" odd mem:///odd
expect_line 'mirror: appendPath failed: .*'
expect_line '.* 0 copied, 0 unchanged, 0 removed, 0 skipped, 2 failures'

# A file that cannot be read is one failure, and nothing is removed after one: neither here nor further on.
mkdir partly partly/locked
printf 'secret' > partly/secret
printf 'open' > partly/open
printf 'locked' > partly/locked/file
expect_status 0 "$mirror" partly backup
chmod 000 partly/secret
expect_status 1 "${unprivileged[@]}" "$mirror" --delete partly mem:///p backup
expect_line 'mirror: cannot be opened for reading: partly/secret'
expect_line 'partly -> mem:///p: 2 files, 0 links, 1 folders, 10 bytes; 2 copied, 0 unchanged, 0 removed, 0 skipped, 1 failures'
expect_line 'mem:///p -> backup: 2 files, 0 links, 1 folders, 10 bytes; 0 copied, 2 unchanged, 0 removed, 0 skipped, 0 failures'
chmod 000 partly/locked
expect_status 1 "${unprivileged[@]}" "$mirror" --delete partly backup
expect_line 'mirror: cannot be listed: partly/locked: Access denied'
chmod 755 partly/locked partly/secret backup/locked
[[ $(< backup/secret) == secret && $(< backup/locked/file) == locked ]] || fail 'removed after a failure'

# A signal ends the run in the middle of a file that would take minutes: no half of it under its name, nothing
# temporary, and what was complete stays.
mkdir long
printf 'before' > long/before
truncate --size=1T long/file
send_signal_to_copy() {
    (ulimit -f 8000000 && exec "$mirror" long cut) & # in KiB: the disk is not filled whatever goes wrong
    until [[ -n $(find cut -name '.*' -size +0 2> find_errors) ]]; do
        kill -0 $! || return 1
    done
    kill -TERM $!
    wait $!
}
expect_status 1 send_signal_to_copy
expect_line 'mirror: interrupted'
[[ $(ls -A cut) == before ]] || fail "left behind after a signal: $(ls -A cut)"
rm -r long cut

expect_status 1 "$mirror" --delete missing to
expect_line 'mirror: cannot be listed: missing: File or folder not found'
expect_same from to
expect_status 1 "$mirror" mem://store/missing to
expect_line 'mirror: cannot be listed: mem://store/missing: .*'
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
expect_line 'mirror: The percent-encoding at offset 12 lacks its two hexadecimal digits: mem://store/%zz'
expect_status 1 "$mirror" from zip:///not/mounted
expect_status 1 "$mirror" zip:///not/mounted to
expect_line 'mirror: cannot be listed: zip:///not/mounted: The scheme is not mounted'
[[ -z $(find . -name '*.tmp') ]] || fail "left behind: $(find . -name '*.tmp')"
