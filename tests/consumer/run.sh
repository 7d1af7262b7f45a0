#!/bin/sh
# Installs a built library into a fresh directory and builds strangers' projects against it, then runs them.
# usage: run.sh KIND BUILD_DIR   (KIND: find_package, add_subdirectory, pkg_config, relocated or headers)
set -eu
kind=$1
build=$(cd "$2" && pwd)
here=$(cd "$(dirname "$0")" && pwd)
source=$(cd "$here/../.." && pwd)
work=$(mktemp -d "${TMPDIR:-/tmp}/hwdef-consumer.XXXXXX")
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix
[ "$kind" = add_subdirectory ] || cmake --install "$build" --prefix "$prefix" >"$work/installed"

# run PROGRAM VERSION
run() {
    mkdir "$work/data"
    "$1" "$work/data" "$2"
    echo "$kind: a consumer of hwdef $2 was built and run"
}

# with_cmake PROJECT ARGUMENT...
with_cmake() {
    project=$1
    shift
    cmake -S "$here/$project" -B "$work/build" -G Ninja "$@" >"$work/configured"
    cmake --build "$work/build" -j 2 --target consumer >"$work/built" || { cat "$work/built"; exit 1; }
    run "$work/build/consumer" "$(cat "$work/build/version")"
}

# cached NAME: as the library was built, so that a compiler cache knows its objects
cached() { sed -n "s/^$1:[A-Z]*=//p" "$build/CMakeCache.txt"; }

# with_pkg_config PREFIX: plain g++, one line
with_pkg_config() {
    PKG_CONFIG_PATH=$(dirname "$(find "$1" -name hwdef.pc)")
    export PKG_CONFIG_PATH
    version=$(pkg-config --modversion hwdef)
    # shellcheck disable=SC2046
    g++ "$here/main.cpp" -o "$work/consumer" $(pkg-config --cflags --libs hwdef)
    LD_LIBRARY_PATH=$(pkg-config --variable=libdir hwdef) run "$work/consumer" "$version"
}

case $kind in
find_package) with_cmake find_package -DCMAKE_PREFIX_PATH="$prefix" ;;
add_subdirectory) with_cmake add_subdirectory -DHWDEF_SOURCE="$source" \
    -DCMAKE_BUILD_TYPE="$(cached CMAKE_BUILD_TYPE)" -DHWDEF_WERROR="$(cached HWDEF_WERROR)" ;;
pkg_config) with_pkg_config "$prefix" ;;
relocated) mv "$prefix" "$work/moved" && with_pkg_config "$work/moved" ;;
headers) python3 -B "$here/headers.py" "$prefix"/include/hwdef-* ;;
*) echo "run.sh: unknown kind $kind" >&2 && exit 2 ;;
esac
