#!/bin/sh
# Judges all sources of the library and the command by .clang-tidy: usage: lint.sh BUILD_DIR JOBS [FILE...]
set -eu
build=$1
jobs=$2
shift 2
[ $# -gt 0 ] || set -- $(git ls-files 'hwdef/*.cpp' 'platform/*.cpp' 'tools/*.cpp' 'examples/*.cpp')
printf '%s\n' "$@" | xargs -P "$jobs" -n 1 clang-tidy -p "$build" --quiet \
    --extra-arg=-Wno-unknown-warning-option 2>/dev/null
echo "$# files are clean"
