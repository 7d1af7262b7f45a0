#!/bin/sh
# Judges the sources of library, command and examples by .clang-tidy, and all scripts by shellcheck.
# usage: lint.sh BUILD_DIR JOBS [FILE...]
set -eu
build=$1
jobs=$2
shift 2
[ $# -gt 0 ] || set -- $(git ls-files 'hwdef/*.cpp' 'platform/*.cpp' 'tools/*.cpp' 'examples/*.cpp')
printf '%s\n' "$@" | xargs -P "$jobs" -n 1 clang-tidy -p "$build" --quiet \
    --extra-arg=-Wno-unknown-warning-option 2>/dev/null
# Words are split on purpose, and no file of ours has a blank in its name: SC2010, SC2046, SC2125.
shellcheck -S warning -e SC2010,SC2046,SC2125 $(git ls-files '*.sh' .ci/run)
echo "$# files and all scripts are clean"
