"""The library for Python, through ctypes and what its header declares: needs nothing but both of them.

    from tarnel import Library

    tarnel = Library("libTarnelLib.so.0", "/usr/include/tarnel/tarnel.h")
    tarnel.launch()
    code, _ = tarnel.call("addUsers", '{"D": {"items": [{"id": 7, "name": "Ada"}]}}')
    code, [user] = tarnel.call("getUser", 7)  # {"id": 7, "name": "Ada", "login": None, ...}
    tarnel.exit()

The header says what each function does, takes and returns.
"""

import ctypes
import re
import threading
import time
from itertools import count
from pathlib import Path
from typing import Any, NamedTuple

TYPES = {"void": None, "bool": ctypes.c_bool, "double": ctypes.c_double, "int": ctypes.c_int,
         "unsigned char": ctypes.c_ubyte, "unsigned int": ctypes.c_uint, "unsigned long long": ctypes.c_ulonglong,
         "unsigned short": ctypes.c_ushort}

libc = ctypes.CDLL(None)
libc.free.argtypes, libc.free.restype = [ctypes.c_void_p], None


class Member(NamedTuple):
    """A member of a structure. The count of a list is no member of its own."""
    name: str
    key: str  # As in requests; empty if it is never part of one.
    type: Any  # Its own, or that of what it points to.
    is_pointer: bool
    is_list: bool


class Prepared(NamedTuple):
    """The arguments of a call, and those of them that it writes to."""
    arguments: list
    outs: list
    count: ctypes.c_uint


class Library(ctypes.CDLL):
    """The library. A function is called with Python's values by `call`, or else as it is declared."""

    def __init__(self, library_path: str, header_path: str):
        super().__init__(library_path)
        source = re.sub(r"TARNEL_STRUCT\((\w+)\)", r"\1", Path(header_path).read_text(encoding="utf-8"))
        types: dict[str, Any] = dict(TYPES)
        self.members: dict[str, list[Member]] = {}
        for structure, body in re.findall(r"^typedef struct (\w+) \{\n(.*?)^\}", source, re.M | re.S):
            fields, self.members[structure] = [], []
            for base, star, name, key in re.findall(r'^ *([\w ]+) (\*?)(\w+);(?: */\*\*< "(\w+)")?', body, re.M):
                fields.append((name, ctypes.POINTER(types[base]) if star else types[base]))
                if not name.endswith("Count"):
                    member = Member(name, key, types[base], star != "", f" {name}Count;" in body)
                    self.members[structure].append(member)
            types[structure] = type(structure, (ctypes.Structure,), {"_fields_": fields})
        self.roles: dict[str, list[str]] = {}
        for result, name, parameters in re.findall(r"^TARNEL_EXPORT ([\w ]+) (\w+)\(([^)]*)\);", source, re.M):
            prototype, self.roles[name] = [], []
            for parameter in parameters.split(",") if parameters != "void" else []:
                base, stars = re.fullmatch(r"\s*(?:const )?(\w[\w ]*?)\s*([* ]*)\b\w+", parameter).groups()
                kind = types[base]
                for _ in range(stars.count("*")):
                    kind = ctypes.POINTER(kind)
                prototype.append(kind)
                self.roles[name].append(self.role(kind, self.roles[name]))
            function = getattr(self, name)
            function.argtypes, function.restype = prototype, types[result]

    @staticmethod
    def role(kind: Any, former: list[str]) -> str:
        """What a parameter is, from its type and the parameters before it."""
        if kind is ctypes.c_uint:
            return "length" if former[-1:] == ["text"] else "number"
        return {ctypes.POINTER(ctypes.c_ushort): "text", ctypes.POINTER(ctypes.c_uint): "count"}.get(kind, "out")

    def launch(self) -> None:
        """Starts the cache on a thread of its own, and waits until it runs."""
        self.thread = threading.Thread(target=self.launchCache, daemon=True)
        self.thread.start()
        while self.getState() != 2:
            time.sleep(0.0002)

    def exit(self) -> None:
        """Exits the cache, and waits for the launch to end."""
        self.exitCache()
        self.thread.join()

    def call(self, name: str, *given: Any) -> tuple[int, list]:
        """Calls a function with its texts and numbers; returns its code and, if that is 0, what it handed out.

        That is, for each output pointer, a record, a list of records, a text or None. It has been released already.
        """
        prepared = self.prepare(name, given)
        code = getattr(self, name)(*prepared.arguments)
        return code, self.taken(name, prepared) if code == 0 else []

    def prepare(self, name: str, given: Any) -> Prepared:
        """The arguments of a call from its texts and numbers."""
        rest = iter(given)
        prepared = Prepared([], [], ctypes.c_uint())
        for role, kind in zip(self.roles[name], getattr(self, name).argtypes):
            if role == "text":
                prepared.arguments.extend(to_text(next(rest)))
            elif role == "number":
                prepared.arguments.append(next(rest))
            elif role == "count":
                prepared.arguments.append(ctypes.byref(prepared.count))
            elif role == "out":
                prepared.outs.append(kind._type_())
                prepared.arguments.append(ctypes.byref(prepared.outs[-1]))
        return prepared

    def taken(self, name: str, prepared: Prepared) -> list:
        """What a call has handed out, after its release."""
        contents = []
        for out in prepared.outs:
            kind, code = out._type_.__name__, 0
            if kind in self.members and "count" in self.roles[name]:
                contents.append([self.content(out[i]) for i in range(prepared.count.value)])
                code = getattr(self, f"free{kind}sArray")(out, prepared.count)
            elif kind in self.members:
                contents.append(self.content(out[0]))
                code = getattr(self, f"free{kind}")(out)
            else:
                contents.append(from_text(out) if out else None)
                libc.free(out)
            if code != 0:
                raise RuntimeError(f"what {name} has handed out is not released: {code}")
        return contents

    def content(self, value: Any) -> Any:
        """A structure as a dictionary by the names of its members; any other value as it is."""
        if not isinstance(value, ctypes.Structure):
            return value
        record = {}
        for member in self.members[type(value).__name__]:
            item = getattr(value, member.name)
            if member.is_pointer and not item:
                record[member.name] = None
            elif member.is_list:
                record[member.name] = [self.content(part) for part in item[:getattr(value, f"{member.name}Count")]]
            elif member.type is ctypes.c_ushort:
                record[member.name] = from_text(item)
            else:
                record[member.name] = self.content(item[0]) if member.is_pointer else item
        return record


def to_text(value: str) -> tuple[Any, int]:
    """A text as the functions take it: its code units and their number."""
    units = value.encode("utf-16-le")
    return (ctypes.c_ushort * (len(units) // 2)).from_buffer_copy(units), len(units) // 2


def from_text(pointer: Any) -> str:
    """A text that the library has handed out."""
    length = next(i for i in count() if pointer[i] == 0)
    return ctypes.string_at(pointer, 2 * length).decode("utf-16-le")
