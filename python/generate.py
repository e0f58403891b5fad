"""Writes what the public headers declare as a module of Python: codes, exceptions, records, functions and the version.

generate.py tarnel.h diagnostics.h SONAME OUTPUT
"""

import re
import sys
from collections.abc import Iterator
from pathlib import Path

HEAD = '''"""The records, codes and functions of the library, made from its headers when it is built."""

from dataclasses import dataclass, field
from enum import IntEnum

from tarnel._record import Error, Function, Record, stored
'''
# The types of C: as `struct` names them, and as they are in Python.
TYPES = {"unsigned short": ("text", "str"), "bool": ("?", "bool"), "double": ("d", "float"),
         "int": ("i", "int"), "unsigned char": ("B", "int"), "unsigned int": ("I", "int"),
         "unsigned long long": ("Q", "int")}


def snake_case(name: str) -> str:
    return re.sub(r"(?<!^)(?=[A-Z])", "_", name).lower()


def sentence(comment: str) -> str:
    """A comment on one line, with the names of members as they are in Python."""
    text = " ".join(line.strip(" *") for line in comment.splitlines()).strip()
    return re.sub(r"`(\w+Id)`", lambda name: f"`{snake_case(name[1])}`", text)


def codes(header: str) -> Iterator[str]:
    """The enumerations, and an exception for each code that says why a call has done nothing."""
    exceptions = []
    for comment, name, body in re.findall(r"/\*\* ([^/]*?) \*/\ntypedef enum (\w+) \{(.*?)^\}", header, re.M | re.S):
        yield f'\n\nclass {name.removeprefix("Tarnel")}(IntEnum):\n    """{comment}"""\n'
        for constant, number, meaning in re.findall(r"TARNEL_(\w+) = (\d+),? +/\*\*< (.*?) \*/", body):
            yield f"    {constant.removeprefix('STATE_')} = {number}  # {meaning}"
            if name == "TarnelResult" and number not in ("0", "100"):
                title = constant.title().replace("_", "")
                exceptions.append(f'\n\nclass {title}(Error):\n    """{meaning}"""\n\n    code = Result.{constant}')
    yield from exceptions


def records(header: str) -> Iterator[str]:
    pattern = r"/\*\* ([^/]*?) \*/\ntypedef struct (\w+) \{\n(.*?)^\}"
    for comment, structure, body in re.findall(pattern, header, re.M | re.S):
        yield f'\n\n@dataclass(slots=True)\nclass {structure}(Record):\n    """{sentence(comment)}"""\n'
        for base, star, name, said in re.findall(r"^ *([\w ]+) (\*?)(\w+);(?: */\*\*< (.*?) \*/)?$", body, re.M):
            if name.endswith("Count"):
                continue
            code, type_name = TYPES.get(base, (base, base))
            code = f'"{code}"' if base in TYPES else code
            key = re.match(r'"(\w+)": (\w+)', said) or ["", "", ""]
            if f" {name}Count;" in body:
                annotation, default, form = f"list[{type_name}]", "default_factory=list", ', "list"'
            elif not star:
                annotation, default, form = type_name, "default=0", ', "value"'
            else:
                annotation, default, form = f"{type_name} | None", "default=None", ""
                if base not in TYPES and key[2] == "number":
                    form = ', "reference"'
            yield f"    #: {sentence(said)}"
            yield (f"    {snake_case(name)}: {annotation} = "
                   f'field({default}, metadata=stored({code}, "{key[1]}"{form}))')


def functions(header: str) -> Iterator[str]:
    """Each with its result and, for each parameter, what it is; a number is there by its name.

    The functions that delete have the keys of their requests as well, which only their comments tell.
    """
    yield "\n\n#: What the library exports.\nFUNCTIONS = {"
    pattern = r"/\*\*((?:(?!\*/).)*)\*/\nTARNEL_EXPORT (\w[\w ]*?) ?\*?(\w+)\(([^;]*)\);"
    for comment, result, name, parameters in re.findall(pattern, header, re.S):
        roles, kind = [], "None"
        for parameter in parameters.split(",") if parameters != "void" else []:
            base, stars, own = re.fullmatch(r"\s*(?:const )?([\w ()]+?) ?(\**)(\w+)", parameter).groups()
            base = re.sub(r"TARNEL_STRUCT\((\w+)\)", r"\1", base)
            kind = base if base not in TYPES else kind
            if stars:
                roles.append({"unsigned short*": "text", "unsigned int*": "count"}.get(
                    base + stars, "out" if stars == "**" else "block"))
            else:
                roles.append("length" if roles[-1:] == ["text"] else "number" if own == "count" else snake_case(own))
        named = re.findall(r'"(\w+)"', comment.partition(" under ")[2]) if name.startswith("delete") else []
        keys = list(dict.fromkeys(named))
        result = {"void": "None", "const char": "str"}.get(result, "int")
        yield f'    "{name}": Function({result}, {kind}, {roles}{f", {keys}" if keys else ""}),'.replace("'", '"')
    yield "}"


def version(header: str) -> Iterator[str]:
    major, minor, patch = re.findall(r"#define TARNEL_VERSION_\w+ (\d+)", header)
    number = int(major) * 10000 + int(minor) * 100 + int(patch)
    yield f"\n#: The version of the headers.\nVERSION = {number}"
    weights = re.findall(r"TARNEL_SIZE\((\w+)\) \* (\d+)u", header)
    yield "#: What the size of each structure counts in the number that stands for all of them."
    yield "LAYOUT_WEIGHTS: dict[type[Record], int] = {"
    yield from (f"    {name}: {weight}," for name, weight in weights)
    yield "}"


main, diagnostics = (Path(path).read_text(encoding="utf-8") for path in sys.argv[1:3])
soname, output = sys.argv[3:]
lines = [HEAD.rstrip("\n"), *codes(main), *records(main), *functions(main + diagnostics), *version(diagnostics),
         f'#: The library whose structures these are.\nLIBRARY = "{soname}"']
names = re.findall(r"^class (\w+)", "\n".join(lines), re.M)
lines += ["\n__all__ = [", *(f'    "{name}",' for name in names), "]"]
Path(output).write_text("\n".join(lines) + "\n", encoding="utf-8")
