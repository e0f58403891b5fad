#!/bin/sh
# The library shows exactly the functions that the headers declare, with the SONAME and the version that its description
# names: exports_test.sh <library> <source>
set -eu
library=$1
source=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

soname=$(sed -nE "s/^<abi-corpus .* soname='([^']*)'.*/\1/p" "$source/api/libTarnelLib.abi")
version=TARNEL_${soname##*.}
{
    grep -ohE '^TARNEL_EXPORT (void |unsigned int |const char \*)\w+' "$source/include/tarnel"/*.h | grep -oE '\w+$' |
        sed "s/$/@@$version/"
    echo "$version"
} | sort >"$work/declared"
nm -D --defined-only "$library" | awk '{print $3}' | sort >"$work/exported"
diff "$work/declared" "$work/exported"
readelf -d "$library" | grep -F "soname: [$soname]"
