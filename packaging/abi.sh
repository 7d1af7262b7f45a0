#!/bin/sh
# Holds the exported symbols of a built library against the recorded ones, or records new ones.
# usage: abi.sh VERSION LIBRARY [record]
#
# A symbol that is gone or has changed breaks programs that were linked before: the major version must
# rise. A new one is recorded with the version that brings it.
set -eu
version=$1
library=$2
recorded=$(dirname "$0")/libhwdef1.symbols
found=$(mktemp "${TMPDIR:-/tmp}/hwdef-symbols.XXXXXX")
trap 'rm -f "$found"' EXIT

# symbols LEVEL: 4 fails on every difference, 0 on none. A symbol is only missed in a version behind the one
# that brought it.
symbols() {
    set -- "-c$1" "-plibhwdef1" "-v$version+now" "-e$library" "-O$found"
    [ ! -f "$recorded" ] || set -- "$@" "-I$recorded"
    dpkg-gensymbols "$@"
}

if [ "${3:-}" = record ]; then
    symbols 0 >/dev/null 2>&1
    sed -e '/^#MISSING/d' -e "s/ $version+now\$/ $version/" "$found" >"$recorded"
    echo "recorded $(grep -c '^ ' "$recorded") symbols"
elif symbols 4 >"$found.differences" 2>&1; then
    rm -f "$found.differences"
    echo "the $(grep -c '^ ' "$recorded") recorded symbols are exported, and no others"
else
    c++filt <"$found.differences" >&2
    rm -f "$found.differences"
    echo "The exported interface has changed; if that is meant, make abi-record." >&2
    exit 1
fi
