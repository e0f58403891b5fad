"""Writes for C++ what the public header declares: of each structure the members, where a list and its count are a pair,
and how it is released; and the list of the functions that work on the records.

declarations.py HEADER OUTPUT
"""

import re
import sys
from pathlib import Path

header = re.sub(r"/\*.*?\*/", "", Path(sys.argv[1]).read_text(encoding="utf-8"), flags=re.S)
lines = ["#include <tarnel/tarnel.h>", "#include <tuple>", "#include <utility>", "using namespace tarnelLib;"]
for structure, body in re.findall(r"^typedef struct (\w+) \{(.*?)\}", header, re.M | re.S):
    members = ", ".join(f"it.{member}" for member in re.findall(r"(\w+);", body))
    members = re.sub(r"(it\.\w+), (\1Count)", r"std::pair{\1, \2}", members)
    lines.append(f"inline auto membersOf(const api::{structure} &it) {{ return std::tuple{{{members}}}; }}")
    if f"free{structure}(" in header:
        lines.append(f"inline unsigned int release(api::{structure} *it, bool isArray, unsigned int count) "
                     f"{{ return isArray ? free{structure}sArray(it, count) : free{structure}(it); }}")
names = re.findall(r"^TARNEL_EXPORT [\w ]+ (\w+)\(", header, re.M)
used = [f"USE({name})" for name in names if not re.match("free|launch|exit|getState|getLaunch", name)]
lines.append(f"#define TARNEL_FUNCTIONS(USE) {' '.join(used)}")
Path(sys.argv[2]).write_text("\n".join(lines) + "\n", encoding="utf-8")
