#!/bin/sh
# The public header compiles alone, as C and as C++, with every compiler that is here.
set -eu
include=$1
flags="-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only -I$include"
for compiler in gcc clang clang-14; do
    command -v $compiler >/dev/null || continue
    for language in c:c11 c:c17 c++:c++17 c++:c++20; do
        printf '#include <tarnel/tarnel.h>\n#include <tarnel/tarnel.h>\n' |
            $compiler $flags -x "${language%%:*}" -std="${language##*:}" - 2>&1 ||
            { echo "$compiler refuses the header as $language"; exit 1; }
    done
done
