#!/bin/sh
# The main job on real input: hand a design over, take it in, and refuse a damaged container.
# usage: demo.sh DIRECTORY_OF_THE_EXAMPLE_PROGRAMS
set -eu
bin=$(cd "$1" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
built=$here/blinky/built
work=$(mktemp -d "${TMPDIR:-/tmp}/hwdef-demo.XXXXXX")
trap 'rm -rf "$work"' EXIT
cd "$work"

say() { printf '\n== %s\n' "$1"; }
fail() { echo "failed: $1" >&2; exit 1; }

say "The shortest producer and consumer"
"$bin/first_producer" first.hdf "$built/blinky.hwh" "$built/blinky.bit"
"$bin/first_consumer" first.hdf blinky.bit out-first.bit
cmp "$built/blinky.bit" out-first.bit || fail "the extracted bitstream differs"

say "A producer packs the blinky design"
"$bin/blinky_producer" "$built" one-call.hdf blinky.hdf

say "A consumer opens both, checks them and takes the bitstream out"
for container in one-call.hdf blinky.hdf; do
    "$bin/blinky_consumer" "$container" blinky.bit "out/$container.bit"
    cmp "$built/blinky.bit" "out/$container.bit" || fail "the extracted bitstream differs"
    echo "  the bitstream is the producer's, byte for byte"
done

say "Other zip tools read the containers too"
for container in one-call.hdf blinky.hdf; do
    unzip -tq "$container"
    python3 -m zipfile -t "$container" >/dev/null && echo "python3: no errors in $container"
    bsdtar -tf "$container" >/dev/null && echo "bsdtar: no errors in $container"
done

say "One flipped byte is noticed"
cp blinky.hdf damaged.hdf
position=$(($(wc -c <damaged.hdf) / 2))
byte=$(od -An -tu1 -j "$position" -N 1 damaged.hdf)
printf "$(printf '\\%03o' $((byte ^ 255)))" | dd of=damaged.hdf bs=1 seek="$position" conv=notrunc 2>/dev/null
status=0
"$bin/blinky_consumer" damaged.hdf blinky.bit out/damaged.bit 2>refusal || status=$?
cat refusal
[ "$status" -eq 2 ] || fail "the damaged container was opened"
grep -qF '@64-25@' refusal || fail "the refusal lacks its message"

say "A reconfigurable design"
"$bin/reconfigurable" reconfigurable.hdf

say "A tree of drivers"
"$bin/drivers" "$here/drivers/tree" drivers.hdf unpacked

say "Software parameters"
"$bin/parameters" parameters.hdf

say "Two definitions merged"
"$bin/merge" one-call.hdf drivers.hdf merged.hdf

printf '\nAll as it should be.\n'
