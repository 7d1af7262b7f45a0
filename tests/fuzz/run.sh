#!/bin/sh
# Usage: run.sh DIR SECONDS JOBS [TARGET]: runs each fuzz target of the build directory DIR, or one of them, for
# so many seconds, JOBS at a time. What is found is kept in DIR/corpus for the next run, what fails in DIR/failed.
set -eu
dir=$1 seconds=$2 jobs=$3
here=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$dir/failed" "$dir/logs"

run_one() {
    target=$1
    case $target in
        Archive) dictionary=archive ;;
        Parameters | Settings) dictionary=parameters ;;
        *) dictionary=bom ;;
    esac
    mkdir -p "$dir/corpus/$target"
    if "$dir/fuzz_$target" -max_total_time="$seconds" -timeout=60 -rss_limit_mb=2048 -max_len=16384 \
        -dict="$here/$dictionary.dict" -artifact_prefix="$dir/failed/$target-" \
        "$dir/corpus/$target" "$dir/seeds/$target" >"$dir/logs/$target" 2>&1; then
        echo "$target: $(tail -n 1 "$dir/logs/$target"), $(grep -a -o 'cov: [0-9]*' "$dir/logs/$target" | tail -n 1)"
    else
        tail -n 40 "$dir/logs/$target"
        echo "$target: failed, see $dir/failed"
        return 1
    fi
}

if [ $# -gt 3 ]; then
    run_one "$4"
    exit
fi
printf '%s\n' Archive Opening Bom Parameters Settings RoundTrip |
    xargs -P "$jobs" -L 1 sh "$0" "$dir" "$seconds" "$jobs"
