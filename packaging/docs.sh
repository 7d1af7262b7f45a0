#!/bin/sh
# Makes the HTML manual of the public headers: usage: docs.sh VERSION OUTPUT_DIR. A warning is a failure.
set -eu
cd "$(dirname "$0")/.."
mkdir -p "$2"
rm -f "$2"/xml/*.xml
# As cmake/PublicHeaders.cmake has them: what declares something exported, what gathers, and what is gathered.
gathering="hwdef/hwdef.h platform/platform.h"
headers=$({
    grep -rl HWDEF_API --include='*.h' hwdef platform
    printf '%s\n' $gathering
    sed -n 's/^#include "\(.*\)"$/\1/p' $gathering
} | sort -u | tr '\n' ' ')
sed -e "s|@VERSION@|$1|" -e "s|@OUTPUT@|$2|" -e "s|@HEADERS@|$headers|" Doxyfile.in |
    doxygen -
python3 -B packaging/undocumented.py "$2/xml"
echo "$2/html/index.html"
