#!/bin/sh
# The binary interface is the one that is described, and any change to it is found: abi_test.sh <source>
set -eu
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$source/scripts/abi"
while IFS='|' read -r found change; do
    rm -rf "$work/include"
    cp -r "$source/include" "$work/include"
    sed -i -zE "$change" "$work/include/tarnel/tarnel.h"
    ! "$source/scripts/abi" "$work/include" >"$work/log" 2>&1 || { echo "nothing is found: $change"; exit 1; }
    grep -F "$found" "$work/log" || { cat "$work/log"; exit 1; }
done <<'CHANGES'
'bool* isNew'|s/(typedef struct Locale \{\n)/\1    bool *isNew;\n/
type of 'unsigned short int* iso' changed|s/unsigned short \*iso;/unsigned char *iso;/
[D] 'function unsigned int freeUser(User*)'|s/TARNEL_EXPORT unsigned int freeUser\([^;]*;//
parameter 1 of type 'int' was added|s/(getState\()void/\1int first/
'TarnelResult::TARNEL_NOT_FOUND'|s/TARNEL_NOT_FOUND = 8/TARNEL_NOT_FOUND = 12/
CHANGES
