"""The library for Python, through ctypes and what its header declares."""

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
UNTOUCHED = 4711

libc = ctypes.CDLL(None)
libc.calloc.restype = ctypes.c_void_p
libc.free.argtypes, libc.free.restype = [ctypes.c_void_p], None


class Member(NamedTuple):
    """A member of a structure. The count of a list is no member of its own."""
    name: str
    key: str  # As in requests; empty if it is never part of one.
    type: Any  # Its own, or that of what it points to.
    is_pointer: bool
    is_list: bool


class Function(NamedTuple):
    """A function that has to do with what is stored."""
    name: str
    family: str  # What functions of several kinds have alike; for others the name.
    kind: str
    roles: list[str]  # What the parameters are: "text" and its "length", "number", "count", "out".


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

    def functions(self) -> list[Function]:
        """All of these functions; the relaunch counts as one."""
        result = [Function("relaunch", "relaunch", "Event", [])]
        for name, roles in self.roles.items():
            alike = re.fullmatch(r"(add|get|update|delete)(\w+?)(s?)(?:Fw|ForSection)?(WithParams)?", name)
            if alike and alike[2] in self.members and name != "getEvents":
                result.append(Function(name, "filter" if alike[4] else alike[1] + alike[3], alike[2], roles))
            elif not re.match("free|launch|exit|getState|getLaunch", name):
                result.append(Function(name, name, "Site" if "Site" in name else "Event", roles))
        return result

    def launch(self) -> None:
        """Starts the cache on a thread of its own."""
        self.thread = threading.Thread(target=self.launchCache, daemon=True)
        self.thread.start()
        while self.getState() != 2:
            time.sleep(0.0002)

    def exit(self) -> None:
        self.exitCache()
        self.thread.join()

    def relaunch(self) -> tuple[int, list]:
        """Exits the cache, looks at what a client sees then, and launches it anew on its file."""
        self.exit()
        seen = [self.getState(), self.getLaunchCacheResult(), self.clearAll()]
        self.launch()
        return self.getLaunchCacheResult(), seen

    def call(self, name: str, *given: Any, occupied: int | None = None) -> tuple[int, list]:
        """Calls a function, or `relaunch`, with its texts and numbers; returns its code and what it handed out.

        For each output pointer that is a record, a list of them, a text or nothing, and it is released. One of the
        pointers can be occupied: by a block of its own, which the library may release.
        """
        if name == "relaunch":
            return self.relaunch()
        rest = iter(given)
        arguments, outs, number = [], [], ctypes.c_uint(UNTOUCHED)
        for role, kind in zip(self.roles[name], getattr(self, name).argtypes):
            if role == "text":
                arguments.extend(to_text(next(rest)))
            elif role == "number":
                arguments.append(next(rest))
            elif role == "count":
                arguments.append(ctypes.byref(number))
            elif role == "out":
                outs.append(ctypes.cast(libc.calloc(1, 256) if len(outs) == occupied else None, kind._type_))
                arguments.append(ctypes.byref(outs[-1]))
        before = [ctypes.cast(out, ctypes.c_void_p).value for out in outs]
        code = getattr(self, name)(*arguments)
        if code == 0:
            return code, [self.taken(out, number.value if "count" in self.roles[name] else None) for out in outs]
        if [ctypes.cast(out, ctypes.c_void_p).value for out in outs] != before or number.value != UNTOUCHED:
            return code, ["handed out in spite of the code"]
        for block in before:
            libc.free(block)
        return code, []

    def taken(self, out: Any, number: int | None) -> Any:
        """What was handed out, after its release."""
        if not out:
            return None
        kind = out._type_.__name__
        if kind not in self.members:
            content, code = from_text(out), libc.free(out) or 0
        elif number is None:
            content, code = self.content(out[0]), getattr(self, f"free{kind}")(out)
        else:
            content = [self.content(out[i]) for i in range(number)]
            code = getattr(self, f"free{kind}sArray")(out, number)
        return content if code == 0 else f"not released: {code}"

    def content(self, value: Any) -> Any:
        """A structure as a dictionary by the names of its members; any other value as it is."""
        if not isinstance(value, ctypes.Structure):
            return value
        record = {}
        for member in self.members[type(value).__name__]:
            item = getattr(value, member.name)
            if member.is_list and bool(item) != bool(getattr(value, f"{member.name}Count")):
                record[member.name] = "a count that does not fit"
            elif member.is_pointer and not item:
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
