#!/bin/sh
# The library shows exactly the functions that the header declares, and has a SONAME.
set -eu
library=$1
header=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

grep -oE '^TARNEL_EXPORT (void|unsigned int) \w+' "$header" | awk '{print $NF}' | sort >"$work/declared"
nm -D --defined-only "$library" | awk '{print $3}' | sort >"$work/exported"
test -s "$work/declared"
diff "$work/declared" "$work/exported"
readelf -d "$library" | grep -F 'soname: [libTarnelLib.so.0]'
