#!/bin/sh
# Each public header compiles alone, as C and as C++, with every compiler that is here.
set -eu
include=$1
flags="-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only -I$include"
for compiler in gcc clang clang-14; do
    command -v $compiler >/dev/null || continue
    for language in c:c11 c:c17 c++:c++17 c++:c++20; do
        for header in tarnel diagnostics; do
            printf '#include <tarnel/%s.h>\n#include <tarnel/%s.h>\nunsigned int n(void);\n%s\n' $header $header \
                "$(test $header = tarnel || echo 'unsigned int n(void) { return TARNEL_LAYOUT + TARNEL_VERSION; }')" |
                $compiler $flags -x "${language%%:*}" -std="${language##*:}" - 2>&1 ||
                { echo "$compiler refuses $header.h as $language"; exit 1; }
        done
    done
done
