#!/bin/sh
# Usage: valgrind.sh DIR JOBS: runs the test programs of the build directory DIR under valgrind, JOBS at
# a time.
set -eu
dir=$1 jobs=$2
# Not run, because valgrind changes what they look at: memory and time of their own process, and threads side by
# side.
left_out='Bomb LongNames DriverSources BomSizeOf Soak Allocations Limits Threads'
tests_left_out='*.*AllocationFailed*'
# Because they take hours: thousands of processes or repetitions of what other tests do once,
left_out="$left_out KilledProcess FailedCalls Damage Collision Differential"
# or tens of thousands of members, and gigabytes.
left_out="$left_out MemberCount MemberOffset MemberSize StoredSize"
filter=-$tests_left_out:
for suite in $left_out; do
    filter=$filter*$suite*.*:  # the name of an instantiation may stand in front
done

if [ $# -gt 2 ]; then
    exec valgrind --quiet --error-exitcode=9 --leak-check=full --errors-for-leak-kinds=definite,possible \
        --child-silent-after-fork=yes "$3" --gtest_brief=1 --gtest_filter="$filter"
fi
ls "$dir"/tests_* | grep -v '\.cmake$' | xargs -P "$jobs" -n 1 sh "$0" "$dir" "$jobs"
