#!/bin/sh
# Usage: valgrind.sh DIR JOBS: runs the test programs of the build directory DIR under valgrind, JOBS at
# a time. What counts its own memory, races against a clock or makes many processes is left out: valgrind
# changes what these tests look at.
set -eu
dir=$1 jobs=$2
left_out='-*Bomb.*:Soak.*:Allocations*.*:Threads.*:KilledProcess*.*:FailedCalls.*:MemberCount.*:MemberOffset.*:MemberSize.*:Differential.*:Damage.*'
left_out=$left_out':Collision.*:Limits.*:FullDisk*.*'

if [ $# -gt 2 ]; then
    exec valgrind --quiet --error-exitcode=9 --leak-check=full --errors-for-leak-kinds=definite,possible \
        --child-silent-after-fork=yes "$3" --gtest_brief=1 --gtest_filter="$left_out"
fi
ls "$dir"/tests_* | grep -v '\.cmake$' | xargs -P "$jobs" -n 1 sh "$0" "$dir" "$jobs"
