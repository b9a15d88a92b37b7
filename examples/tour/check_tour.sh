#!/usr/bin/env bash
# Runs the tour on a small made-up folder, and on what is no folder:
#
#     check_tour.sh TOUR_PROGRAM WORK_FOLDER
#
# WORK_FOLDER is emptied first.
set -euo pipefail
umask 022

tour=$(realpath "$1")
rm -rf "$2"
mkdir -p "$2"
cd "$2"
export TMPDIR=$PWD/temp
mkdir temp

fail() {
    echo "check_tour: $*" >&2
    cat output >&2
    exit 1
}

# expect_status STATUS COMMAND...: the output goes to the file "output".
expect_status() {
    local expected=$1 status=0
    shift
    "$@" > output 2>&1 || status=$?
    [[ $status == "$expected" ]] || fail "status $status instead of $expected: $*"
    [[ -z $(ls -A temp) ]] || fail "left behind: $(ls -A temp)"
}

expect_line() {
    grep --quiet --text --extended-regexp "$1" output || fail "no line like: $1"
}

make_folder() {
    mkdir -p "$1/sub/deeper" "$1/without files"
    printf 'some text' > "$1/text.txt"
    : > "$1/empty"
    head -c 200000 /dev/zero > "$1/sub/zeros"
    printf 'odd' > "$1/sub/deeper/"$'name \xff with a line\nbreak'
    ln -s nowhere "$1/dangling"
    ln -s sub "$1/link to a folder"
    chmod 4751 "$1/text.txt"
}

make_folder made-up
expect_status 0 "$tour" made-up
expect_line '^  list the folder +6 +- .* ok$'
expect_line '^  copy a part of it +6 +200012 .* ok$'
expect_line '^  read back and compare +6 +200012 .* ok$'
expect_line '^  pass bytes on +1 +200000 .* ok$'
expect_line '^  copy between streams +4 +159000 .* ok$'
expect_line 'byte array -> std::stringstream -> byte array: 40000 bytes$'
expect_line 'into a sink with room for less: false after 20000 bytes$'
expect_line '^  tell the time +6 .* ok$'
expect_line '^  copy folders +18 .* ok$'
expect_line '^  guard temporary items +4 .* ok$'
expect_line 'in scope: draft-[a-z0-9]{20}\.txt and work-[a-z0-9]{20}\.tmp$'
expect_line 'released, and kept: result-[a-z0-9]{20}\.txt$'
expect_line '^  request files by IRI +2 +100000 .* ok$'
expect_line 'mem://notes/100%25%20done%3F.txt: 50000 bytes$'
expect_line 'file:///.*/100%25%20done%3F.txt: 50000 bytes$'
expect_line 'thrown: createInputStream failed: .*mem://notes/%zz$'
expect_line 'thrown: +remove failed: Path not found: .*/no such item$'
expect_line 'error code: generic:2 \('
expect_line '^[0-9]+ checks held, 0 did not\.$'

# The same without the rights of root, which reads everything.
unprivileged=()
if [[ $(id -u) == 0 ]]; then
    unprivileged=(setpriv --inh-caps=-all --bounding-set=-all)
fi
printf 'secret' > made-up/secret
mkdir made-up/locked
chmod 000 made-up/secret made-up/locked
expect_status 0 "${unprivileged[@]}" "$tour" made-up
expect_line 'not all of it: getFiles failed: Access denied: made-up/locked$'
expect_line 'left out, not readable: 1$'
expect_line '^ +made-up/secret$'

# A reader that goes away, and a signal, leave no scratch folder behind either.
mkdir many
touch many/{1..400}
{ "$tour" many || true; } | head -1 > output
[[ -z $(ls -A temp) ]] || fail "left behind by a closed pipe: $(ls -A temp)"
for delay in 0.0{05,10,15,20,25,30,40,60}; do  # whether it comes early, late or not at all; timeout sends it twice
    timeout --signal=TERM "$delay" "$tour" many > output || true
    [[ -z $(ls -A temp) ]] || fail "left behind by a signal after $delay s: $(ls -A temp)"
done

# The wall clock is that of the place that TZ names.
TZ=XYZ-09:30 expect_status 0 "$tour" made-up
expect_line '2024-07-01T12:00:00Z is 2024-07-01T21:30:00 on the wall clock here$'

# A folder may have any name, and so may those above it.
odd=$'odd \xff \xe4\xb8 \xe6\x97\xa5'
mkdir -p "$odd/in it"
printf 'text' > "$odd/in it/file"
expect_status 0 "$tour" "$odd"
expect_line '^A tour of odd .* with a scratch folder at '
expect_line '^  copy a part of it +1 +4 .* ok$'
expect_status 0 "$tour" "$PWD/$odd/in it"

mkdir nothing-in-it
expect_status 0 "$tour" nothing-in-it
expect_line '^  list the folder +- .* ok$'

expect_status 2 "$tour" missing
expect_line '^tour: getFiles failed: Path not found: missing$'

expect_status 2 "$tour" made-up/text.txt
expect_line '^tour: getFiles failed: Not a directory: made-up/text.txt$'

expect_status 2 "$tour"
expect_line '^usage: tour FOLDER$'

# A scratch folder that cannot be made is no reason to write elsewhere.
chmod 500 temp
expect_status 2 "${unprivileged[@]}" "$tour" made-up
expect_line '^tour: Temporary directory could not be created\. Access denied: '
chmod 700 temp
