#!/bin/sh
# Installs the Debian packages into a root of their own, upgrades and removes them; nothing may be left.
# usage: debs.sh BUILD_DIR [CMAKE_ARGUMENT...]
set -eu
here=$(cd "$(dirname "$0")" && pwd)
packages=$(sh "$here/../../packaging/make-debs.sh" "$@")
work=$(mktemp -d "${TMPDIR:-/tmp}/hwdef-debs.XXXXXX")
trap 'rm -rf "$work"' EXIT
root=$work/root
fail() { echo "failed: $1" >&2; exit 1; }

as_root=
[ "$(id -u)" -eq 0 ] || as_root="fakeroot --"

# A root without a file, whose dpkg knows the packages of this machine: their versions must satisfy ours.
admin=$root/var/lib/dpkg
mkdir -p "$admin/info" "$admin/updates" "$admin/triggers"
dpkg-query -W -f='Package: ${Package}\nStatus: install ok installed\nVersion: ${Version}\nArchitecture: ${Architecture}\nMulti-Arch: ${Multi-Arch}\nProvides: ${Provides}\nMaintainer: nobody\nDescription: nothing\n\n' |
    sed -e '/^Multi-Arch: $/d' -e '/^Provides: $/d' >"$admin/status"
for name in $(dpkg-query -W -f='${binary:Package}\n'); do
    : >"$admin/info/$name.list"
done
dpkg_here() {
    $as_root dpkg --root="$root" --log="$work/log" --no-triggers "$@" >"$work/said" 2>&1 || { cat "$work/said"; fail "dpkg $1"; }
}
files() { (cd "$root" && find . -path ./var/lib/dpkg -prune -o -print | sort); }
names=$(for package in $packages; do dpkg-deb -f "$package" Package; done)

files >"$work/before"
dpkg_here --install $packages
[ -f "$(echo "$root"/usr/lib/*/libhwdef.so.1)" ] || fail "there is no library"
[ -f "$root/usr/include/hwdef-1/hwdef/hwdef.h" ] || fail "there are no headers"
dpkg_here --verify $names
[ ! -s "$work/said" ] || { cat "$work/said"; fail "an installed file differs from its package's"; }

# What is installed in the root can be built against and run.
library=$(dirname "$root"/usr/lib/*/libhwdef.so)
export PKG_CONFIG_PATH="$library/pkgconfig"
${CXX:-g++} "$here/../consumer/main.cpp" -o "$work/consumer" $(pkg-config --cflags --libs hwdef)
mkdir "$work/data"
LD_LIBRARY_PATH=$library "$work/consumer" "$work/data" "$(pkg-config --modversion hwdef)"
if [ -x "$root/usr/bin/hwdef" ]; then
    LD_LIBRARY_PATH=$library "$root/usr/bin/hwdef" --version
    for file in share/man/man1/hwdef.1.gz share/bash-completion/completions/hwdef \
        share/zsh/vendor-completions/_hwdef; do
        [ -f "$root/usr/$file" ] || fail "there is no $file"
    done
fi

# An upgrade to a version that lacks a file: the file goes, too.
for package in $packages; do
    dpkg-deb -R "$package" "$work/tree"
    sed -i -e 's/^\(Version: .*\)-1$/\1-2/' -e 's/\((= [0-9.]*\)-1)/\1-2)/' "$work/tree/DEBIAN/control"
    rm -f "$work"/tree/usr/include/hwdef-1/platform/platform.h
    dpkg-deb --root-owner-group -b "$work/tree" "$work/$(basename "$package")" >/dev/null
    rm -rf "$work/tree"
done
dpkg_here --install "$work"/*.deb
[ ! -e "$root/usr/include/hwdef-1/platform/platform.h" ] || fail "the upgrade left a file behind"
$as_root dpkg-query --admindir="$admin" -W -f='${Version}\n' $names | grep -qv -- '-2$' && fail "the upgrade was not done"

dpkg_here --purge $names
files >"$work/after"
diff "$work/before" "$work/after" || fail "removal left something behind"

if command -v lintian >/dev/null; then
    lintian --fail-on error $packages
else
    echo "lintian is not installed; packages are not judged by it"
fi
echo "$(echo "$names" | wc -l) packages: installed, upgraded, removed, nothing left"
