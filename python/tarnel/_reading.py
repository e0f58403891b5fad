"""Makes records from the library's structures: by the native module where it was built, else through ctypes."""

from __future__ import annotations

import ctypes
import struct
import sys
from collections.abc import Callable
from importlib import import_module
from itertools import count
from typing import Any, NamedTuple

from tarnel._record import Member, members, once

_native: Any
try:
    _native = import_module("tarnel._native")
except ImportError:
    _native = None

ENCODING = "utf-16-le" if sys.byteorder == "little" else "utf-16-be"
NUMBERS: dict[str, Any] = {"?": ctypes.c_bool, "B": ctypes.c_ubyte, "i": ctypes.c_int, "I": ctypes.c_uint,
                           "Q": ctypes.c_ulonglong, "d": ctypes.c_double}


class Layout(NamedTuple):
    """Where a compiler of C puts the members of a structure."""
    size: int
    offsets: list[int]


@once
def layout(kind: Any) -> Layout:
    """Behind the pointer of a list there is its count."""
    before, offsets = "@", []
    for member in members(kind):
        codes = {"value": member.kind, "list": "PI"}.get(member.form, "P")
        offsets.append(struct.calcsize(f"{before}0{codes[0]}"))
        before += codes
    return Layout(struct.calcsize(f"{before}0P"), offsets)


@once
def native_plan(kind: Any) -> Any:
    """What the native module needs to know of a kind."""
    fields = []
    for (name, value, _, form), offset in zip(members(kind), layout(kind).offsets):
        nested = None if value == "text" or value in NUMBERS else native_plan(value)
        form = "pointer" if form == "reference" else form
        fields.append((name, offset, form[0], "r" if nested else value[0], nested))
    return _native.plan(kind, layout(kind).size, fields)


def records_at(kind: Any, address: int, number: int) -> list[Any]:
    """The records of a block."""
    if _native:
        return _native.read(native_plan(kind), address, number)  # type: ignore[no-any-return]
    return list(map(reader(kind), range(address, address + number * layout(kind).size, layout(kind).size)))


@once
def reader(kind: Any) -> Callable[[int], Any]:
    """What reads a value at an address."""
    if kind == "text":
        return text_at
    if kind in NUMBERS:
        at = NUMBERS[kind].from_address
        return lambda address: at(address).value
    parts = [(offset, member_reader(member)) for member, offset in zip(members(kind), layout(kind).offsets)]
    return lambda address: kind(*[read(address + offset) for offset, read in parts])


def member_reader(member: Member) -> Callable[[int], Any]:
    """What reads a member of a structure at its address."""
    read, pointer, number = reader(member.kind), ctypes.c_void_p.from_address, ctypes.c_uint.from_address
    if member.form == "value":
        return read
    if member.form == "list":
        size = ctypes.sizeof(NUMBERS[member.kind]) if member.kind in NUMBERS else layout(member.kind).size
        return lambda address: [read((pointer(address).value or 0) + i * size)
                                for i in range(number(address + ctypes.sizeof(ctypes.c_void_p)).value)]
    return lambda address: None if (target := pointer(address).value) is None else read(target)


def text_at(address: int) -> str:
    units = ctypes.POINTER(ctypes.c_ushort).from_buffer(ctypes.c_void_p(address))
    length = next(i for i in count() if units[i] == 0)
    return ctypes.string_at(address, 2 * length).decode(ENCODING, "surrogatepass")
