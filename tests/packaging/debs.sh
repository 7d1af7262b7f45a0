#!/bin/sh
# Installs the Debian packages into a root of their own, upgrades and removes them; nothing may be left. The
# packages themselves are held against Debian's policy.
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
dpkg_in_root() { $as_root dpkg --root="$root" --log="$work/log" --no-triggers "$@" >"$work/said" 2>&1; }
dpkg_here() { dpkg_in_root "$@" || { cat "$work/said"; fail "dpkg $1"; }; }
# repacked PACKAGE SCRIPT TO: the package as a script makes it that runs in its tree
repacked() {
    dpkg-deb -R "$1" "$work/tree"
    (cd "$work/tree" && eval "$2" && find usr -type f -exec md5sum {} + >DEBIAN/md5sums)
    dpkg-deb --root-owner-group -b "$work/tree" "$3" >/dev/null
    rm -rf "$work/tree"
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

# An upgrade to a version that lacks a file: the file goes, too, and nothing else changes.
mkdir "$work/newer"
for package in $packages; do
    repacked "$package" "rm -f usr/include/hwdef-1/platform/platform.h
        sed -i -e 's/^\(Version: .*\)-1\$/\1-2/' -e 's/\((= [0-9.]*\)-1)/\1-2)/' DEBIAN/control" "$work/newer"
done
files | grep -v '/platform/platform\.h$' >"$work/expected"
dpkg_here --install "$work"/newer/*.deb
files | diff "$work/expected" - || fail "the upgrade left something behind or took too much"
$as_root dpkg-query --admindir="$admin" -W -f='${Version}\n' $names | grep -qv -- '-2$' && fail "the upgrade was not done"

# The library of the next major version comes beside this one, and goes without it.
repacked "$(echo "$work"/newer/libhwdef1_*.deb)" "cd usr/lib/*/ && mv libhwdef.so.1.0.0 libhwdef.so.2.0.0 &&
    rm libhwdef.so.1 && ln -s libhwdef.so.2.0.0 libhwdef.so.2 && cd - >/dev/null &&
    mv usr/share/doc/libhwdef1 usr/share/doc/libhwdef2 && sed -i 's/libhwdef1/libhwdef2/' DEBIAN/[cs]*" "$work/libhwdef2.deb"
dpkg_here --install "$work/libhwdef2.deb"
dpkg_here --verify $names libhwdef2
dpkg_here --purge libhwdef2
files | diff "$work/expected" - || fail "the other version's removal left something behind or took too much"

# The library stays as long as another package needs it. There is nothing that only a purge would remove.
! dpkg_in_root --remove libhwdef1 || fail "the library was removed from under the command"
dpkg_here --remove $names
files | diff "$work/before" - || fail "removal left something behind"
[ -z "$($as_root dpkg-query --admindir="$admin" -W -f='${Package}\n' $names 2>/dev/null)" ] || fail "dpkg still knows the packages"

${PYTHON:-python3} -B "$here/policy.py" $packages
if command -v lintian >/dev/null; then
    lintian --fail-on error $packages
else
    echo "lintian is not installed; packages are not judged by it"
fi
echo "$(echo "$names" | wc -l) packages: installed, upgraded, removed, nothing left"
