#!/bin/sh
# Makes the HTML manual of the public headers: usage: docs.sh VERSION OUTPUT_DIR. A warning is a failure.
set -eu
cd "$(dirname "$0")/.."
mkdir -p "$2"
headers=$(grep -rl HWDEF_API --include='*.h' hwdef platform | sort | tr '\n' ' ')
sed -e "s|@VERSION@|$1|" -e "s|@OUTPUT@|$2|" -e "s|@HEADERS@|hwdef/hwdef.h platform/platform.h $headers|" Doxyfile.in |
    doxygen -
echo "$2/html/index.html"
