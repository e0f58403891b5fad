#!/bin/sh
# What is installed serves its clients wherever it is moved to, and an uninstallation leaves nothing:
# install_test.sh <cmake> <build>
set -eu
cmake=$1
build=$2
work=$(mktemp -d)
# What was really installed is still to be known afterwards.
kept=$(mktemp -d)
find "$build" -maxdepth 1 -name 'install_manifest*.txt' -exec mv {} "$kept" \;
trap 'find "$kept" -type f -exec mv {} "$build" \;; rm -rf "$work" "$kept"' EXIT

"$cmake" --install "$build" --prefix "$work/prefix" >/dev/null
cp -r "$work/prefix" "$work/moved"
mkdir "$(dirname "$(find "$work/prefix" -name py.typed)")/__pycache__"
"$cmake" --build "$build" --target uninstall >/dev/null
if find "$work/prefix" ! -type d -o -iname '*tarnel*' | grep .; then
    echo "is left after the uninstallation"
    exit 1
fi
"$(dirname "$0")/installed/clients_test.sh" "$work/moved"
library=$(find "$work/moved" -name 'libTarnelLib.so.?')
[ ! -e "$work/moved/bin/tarnel" ] || LD_LIBRARY_PATH=$(dirname "$library") "$work/moved/bin/tarnel" --help >/dev/null
