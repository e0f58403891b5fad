#!/bin/sh
# The installed examples are built, with CMake and with pkg-config, and run, from a folder that was copied:
# clients_test.sh [prefix]; without one they are looked for where the system has such things.
set -eu
here=$(realpath "$(dirname "$0")")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
if [ $# -gt 0 ]; then
    library=$(dirname "$(find "$1" -name libTarnelLib.so)")
    export PKG_CONFIG_PATH="$library/pkgconfig" LD_LIBRARY_PATH="$library" CMAKE_PREFIX_PATH="$1"
    PYTHONPATH=$(find "$1" -name dist-packages)
    export PYTHONPATH
fi
docs=${1:-/usr}/share/doc
cp -r "$docs/libtarnel-dev/examples" "$work/clients"

# They say at their end whether all that they were handed out has been released.
flags="-Wall -Wextra -Wpedantic -Wconversion -Werror -fsanitize=address"
CFLAGS=$flags CXXFLAGS=$flags cmake -G Ninja -DCMAKE_PROJECT_INCLUDE="$here/versions.cmake" \
    -S "$work/clients" -B "$work/build" >/dev/null
cmake --build "$work/build" >/dev/null
tarnel=$(pkg-config --cflags --libs tarnel)
gcc -std=c11 "$work/clients/client.c" -o "$work/build/pkgclient" $tarnel -pthread

# Each does the same, and says the same.
# Qt keeps the data of a thread that it did not start, and the screen of windows that are not shown.
printf 'leak:libQt5Core.so\nleak:libqoffscreen.so\n' >"$work/suppressions"
export LSAN_OPTIONS="suppressions=$work/suppressions:print_suppressions=0" QT_QPA_PLATFORM=offscreen
{
    seq -f '%g events' 10000 10000 50000
    seq -f 'event %g: Vault' 49901 50000
    printf 'Südtor, delegated\nSüdtor\n'
} >"$work/expected"
{
    printf '100 rows\nevent 50000: Site 1, Vault\n'
    seq -f '%g' 49999 -1 49901 | awk '{ print "event " $1 ": Site " $1 % 5000 + 1 ", Vault" }'
    printf '1 rows\nevent 49901: Südtor, Vault\n%.0s' 1 2
} >"$work/shown"
mkdir "$work/run"
cd "$work/run"
for client in "$work/build/client" "$work/build/wrapper" "$work/build/pkgclient" \
    "python3 -B $docs/python3-tarnel/examples/client.py" "$work/build/widgets --try"; do
    case $client in
    *--try) wanted=$work/shown again=4 ;;
    *) wanted=$work/expected again=102 ;;
    esac
    timeout 60 $client >"$work/said" || { echo "$client has failed"; exit 1; }
    diff "$work/said" "$wanted"
    # What the first run has left is whole.
    test "$(ls)" = CacheDb
    timeout 60 $client | tail -n $again >"$work/said"
    tail -n $again "$wanted" | diff "$work/said" -
    rm CacheDb
done

# One that was compiled with other structures does not start.
cp -r "$(pkg-config --variable=includedir tarnel)/tarnel" "$work/tarnel"
sed -i 's/^} Locale;/    bool *isNew;\n&/' "$work/tarnel/tarnel.h"
gcc -std=c11 -pthread -I"$work" "$work/clients/client.c" -o "$work/client" $tarnel
g++ -std=c++17 -pthread -I"$work" "$work/clients/wrapper.cpp" -o "$work/wrapper" $tarnel
for client in client wrapper; do
    ! timeout 60 "$work/$client" 2>"$work/said" || { echo "$client starts with other structures"; exit 1; }
    grep -F "compiled with structures of layout" "$work/said"
    test -z "$(ls)"
done
