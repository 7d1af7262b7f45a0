#!/bin/sh
# Builds the Debian packages and leaves them in BUILD_DIR/debs: usage: make-debs.sh BUILD_DIR [CMAKE_ARGUMENT...]
set -eu
source=$(cd "$(dirname "$0")/.." && pwd)
mkdir -p "$1"
build=$(cd "$1" && pwd)
shift
cmake -S "$source" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
    -DCMAKE_INSTALL_LIBDIR="lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)" -DCMAKE_INSTALL_SO_NO_EXE=1 \
    -DHWDEF_BUILD_TESTS=OFF -DHWDEF_BUILD_EXAMPLES=OFF "$@" >"$build/configure.log"
cmake --build "$build" >"$build/build.log" || { cat "$build/build.log"; exit 1; }
rm -rf "$build/debs"
cpack --config "$build/CPackConfig.cmake" -B "$build/debs" >"$build/pack.log" 2>&1 || { cat "$build/pack.log"; exit 1; }
rm -rf "$build/debs/_CPack_Packages"

# CPack adds scripts that call ldconfig; the trigger, which is there, too, does so.
tree=$build/debs/tree
for package in "$build"/debs/*.deb; do
    dpkg-deb -R "$package" "$tree"
    rm -f "$tree/DEBIAN/postinst" "$tree/DEBIAN/postrm"
    dpkg-deb --root-owner-group -b "$tree" "$package" >/dev/null
    rm -rf "$tree"
    echo "$package"
done
