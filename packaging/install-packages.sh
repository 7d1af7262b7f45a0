#!/bin/sh
# Installs the packages of the given lists (debian-packages.txt) that are missing; silent when none is.
set -eu
[ $# -gt 0 ] || set -- "$(dirname "$0")/debian-packages.txt"
missing=
for package in $(cat "$@" | sed -e 's/#.*//'); do
    status=$(dpkg-query -W -f='${Status}' "$package" 2>/dev/null || true)
    [ "$status" = "install ok installed" ] || missing="$missing $package"
done
[ -n "$missing" ] || exit 0

as_root=
if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || { echo "hwdef needs these packages:$missing (install them as root)" >&2; exit 1; }
    as_root=sudo
fi
echo "installing:$missing"
$as_root apt-get update -qq
$as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends $missing >/dev/null
