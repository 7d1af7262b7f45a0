#!/bin/sh
# Judges sources by .clang-tidy, and all scripts by shellcheck. What was found clean is judged again only when it,
# a header or the checks have changed; $HWDEF_LINT_CACHE remembers that, BUILD_DIR/lint when it isn't set.
# usage: lint.sh BUILD_DIR JOBS [PATH...]   (all sources that are compiled, or those below the paths)
set -eu
build=$1
jobs=$2
shift 2
[ $# -gt 0 ] || set -- hwdef platform tools examples tests benchmarks docs

clean=${HWDEF_LINT_CACHE:-$build/lint}
mkdir -p "$clean"
# Each source has to include what it uses, whatever was compiled for all beforehand.
commands=$build/lint/commands
mkdir -p "$commands"
sed 's/-Winvalid-pch//; s/-include [^ ]*cmake_pch\.hxx//' "$build/compile_commands.json" \
    >"$commands/compile_commands.json"
common=$({ clang-tidy --version; cat .clang-tidy tests/.clang-tidy $(git ls-files '*.h' | grep -v '^examples/drivers/tree/'); } | sha256sum)
# What this build doesn't compile (the fuzzer's, the benchmarks) has no command to be judged by.
sources=$(git ls-files -- "$@" | grep '\.cpp$' | while read -r file; do
    ! grep -q "\"file\": \".*/$file\"" "$build/compile_commands.json" || echo "$file"
done)

export commands clean common
# shellcheck disable=SC2016
printf '%s\n' $sources | xargs -P "$jobs" -I{} sh -c '
    stamp=$clean/$({ echo "$common"; cat "$1"; } | sha256sum | cut -c 1-64)
    [ ! -e "$stamp" ] || exit 0
    said=$(clang-tidy -p "$commands" --quiet --extra-arg=-Wno-unknown-warning-option "$1" 2>&1) &&
        touch "$stamp" || { echo "$said"; exit 1; }' judge {}
shellcheck -S warning -e SC2010,SC2046,SC2125 $(git ls-files '*.sh' .ci/run)
shellcheck -S warning -s bash tools/completions/hwdef.bash
echo "$(echo "$sources" | wc -l) files and all scripts are clean"
