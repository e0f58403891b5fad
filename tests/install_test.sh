#!/bin/sh
# An installed library serves clients outside the tree: in C and C++ through CMake and pkg-config, and in Python.
set -eu
cmake=$1
source=$2
build=$3
libdir=$4
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$cmake" --install "$build" --prefix "$work/prefix" >/dev/null
# Installed files know their place by themselves.
mv "$work/prefix" "$work/moved"
prefix=$work/moved
mkdir "$work/client"
cp "$source/examples/client.c" "$source/examples/wrapper.cpp" "$source/examples/python/"*.py "$source/tests/installed/"* "$work/client"

"$cmake" -G Ninja -S "$work/client" -B "$work/build" -DCMAKE_PREFIX_PATH="$prefix" >/dev/null
"$cmake" --build "$work/build" >/dev/null

# These say at their end whether all that they were handed out has been released.
export PKG_CONFIG_PATH="$prefix/$libdir/pkgconfig"
flags="-Wall -Wextra -Wpedantic -Wconversion -Werror -fsanitize=address -pthread"
tarnel=$(pkg-config --cflags --libs tarnel)
gcc -std=c11 $flags "$work/client/client.c" -o "$work/build/pkgcclient" $tarnel
g++ -std=c++17 $flags "$work/client/cxxclient.cpp" -o "$work/build/pkgcxxclient" $tarnel
g++ -std=c++17 $flags "$work/client/wrapper.cpp" -o "$work/build/wrapper" $tarnel

export LD_LIBRARY_PATH="$prefix/$libdir"
export LSAN_OPTIONS="suppressions=$source/tests/lsan.supp:print_suppressions=0"
PYTHONPATH=$(find "$prefix" -name dist-packages)
export PYTHONPATH
# It needs no headers.
rm -r "$prefix/include"
python="python3 -B $work/client/client.py"
mkdir "$work/run"
cd "$work/run"
for client in "$work/build/cclient" "$work/build/cxxclient" "$work/build/pkgcclient" "$work/build/pkgcxxclient" \
    "$work/build/wrapper" "$python"; do
    timeout 60 $client || { echo "$client has failed"; exit 1; }
    test "$(ls)" = CacheDb
    # The support tool is built unless it was left out.
    [ ! -x "$prefix/bin/tarnel" ] || "$prefix/bin/tarnel" info >info
    rm -f info
    rm CacheDb
done
