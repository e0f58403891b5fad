#!/bin/sh
# Each public header compiles alone, as C and as C++, with every compiler that is here; those for C++ without Qt's headers
# and with them: header_test.sh <headers> <made headers> <Qt's flags>...
set -eu
include=$1
made=$2
shift 2
flags="-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only -I$include -I$made"
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
    for qt in "" "$*"; do
        printf '#include <tarnel/tarnel.hpp>\n#include "%s/../examples/clients/wrapper.cpp"\n' "$include" |
            $compiler $flags $qt -x c++ -std=c++17 - 2>&1 ||
            { echo "$compiler refuses tarnel.hpp with Qt's flags '$qt'"; exit 1; }
    done
done
for header in "$include"/tarnel/*.hpp; do
    g++ $flags -x c++ -std=c++17 -include "$header" /dev/null || { echo "${header##*/} does not compile alone"; exit 1; }
done
