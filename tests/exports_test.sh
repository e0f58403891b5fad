#!/bin/sh
# The library shows exactly the functions that the headers declare, and has a SONAME.
set -eu
library=$1
headers=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

grep -ohE '^TARNEL_EXPORT (void |unsigned int |const char \*)\w+' "$headers"/*.h | grep -oE '\w+$' | sort >"$work/declared"
nm -D --defined-only "$library" | awk '{print $3}' | sort >"$work/exported"
test -s "$work/declared"
diff "$work/declared" "$work/exported"
readelf -d "$library" | grep -F 'soname: [libTarnelLib.so.0]'
