"""The functions of the library, with Python's values and codes. `tarnel.Cache` is what clients use."""

from __future__ import annotations

import ctypes
from collections.abc import Iterable, Iterator
from contextlib import contextmanager
from typing import Any, NamedTuple

from tarnel._reading import ENCODING, layout, records_at, text_at
from tarnel._record import Error
from tarnel.records import FUNCTIONS, LAYOUT_WEIGHTS, LIBRARY, VERSION

LAYOUT = sum(layout(kind).size * weight for kind, weight in LAYOUT_WEIGHTS.items())
ROLES: dict[str, Any] = {"text": ctypes.POINTER(ctypes.c_ushort), "count": ctypes.POINTER(ctypes.c_uint),
                         "out": ctypes.POINTER(ctypes.c_void_p), "block": ctypes.c_void_p}
RESULTS = {int: ctypes.c_uint, str: ctypes.c_char_p, None: None}
EXCEPTIONS = {each.code: each for each in Error.__subclasses__()}

libc = ctypes.CDLL(None)
libc.free.argtypes, libc.free.restype = [ctypes.c_void_p], None


class Prepared(NamedTuple):
    """The arguments of a call, and those of them that it writes to."""
    arguments: list[Any]
    outs: list[ctypes.c_void_p]
    number: ctypes.c_uint


class Block(NamedTuple):
    """What the library has handed out for an output pointer: a record, a list of them, or a text."""
    kind: Any
    address: int | None
    number: int | None  # None for what is no list.

    def contents(self) -> Any:
        if self.address is None or self.kind is None:
            return text_at(self.address) if self.address else None
        return records_at(self.kind, self.address, 1)[0] if self.number is None else self.slice(0, self.number)

    def slice(self, first: int, end: int) -> list[Any]:
        start = (self.address or 0) + first * layout(self.kind).size
        return records_at(self.kind, start, min(end, self.number or 0) - first)


class Library(ctypes.CDLL):
    """The library. A function is called with Python's values by `call`, or else as it is declared."""

    def __init__(self, path: str = LIBRARY):
        super().__init__(path)
        for name, described in FUNCTIONS.items():
            function = getattr(self, name)
            function.argtypes = [ROLES.get(role, ctypes.c_uint) for role in described.parameters]
            function.restype = RESULTS[described.result]
        self.require(self.tarnelCheckVersion(VERSION, LAYOUT))

    def call(self, name: str, *given: Any) -> tuple[int, list[Any]]:
        """Calls a function with its texts and numbers; returns its code and, if that is 0, what it handed out.

        That is, for each output pointer, a record, a list of records, a text or None. It has been released already.
        """
        with self.handed_out(name, *given) as (code, blocks):
            return code, [block.contents() for block in blocks]

    @contextmanager
    def handed_out(self, name: str, *given: Any) -> Iterator[tuple[int, list[Block]]]:
        """Calls a function as `call` does. What it hands out stays as it is until the end, and is released then."""
        wanted = FUNCTIONS[name].texts + FUNCTIONS[name].numbers
        if len(given) != len(wanted):
            raise TypeError(f"{name} takes {wanted}, not {given}")
        prepared = self.prepare(name, given)
        code = getattr(self, name)(*prepared.arguments)
        kind = FUNCTIONS[name].kind
        number = prepared.number.value if "count" in FUNCTIONS[name].parameters else None
        blocks = [Block(kind, out.value, number) for out in prepared.outs] if code == 0 else []
        try:
            yield code, blocks
        finally:
            for block in blocks:
                if kind is None:
                    libc.free(block.address)
                elif block.number is None:
                    self.require(getattr(self, f"free{kind.__name__}")(block.address))
                else:
                    self.require(getattr(self, f"free{kind.__name__}sArray")(block.address, block.number))

    def prepare(self, name: str, given: Iterable[Any]) -> Prepared:
        """The arguments of a call from its texts and numbers."""
        rest = iter(given)
        prepared = Prepared([], [], ctypes.c_uint())
        for role in FUNCTIONS[name].parameters:
            if role == "text":
                units = next(rest).encode(ENCODING, "surrogatepass")
                text = (ctypes.c_ushort * (len(units) // 2)).from_buffer_copy(units)
                prepared.arguments.extend((text, len(units) // 2))
            elif role == "count":
                prepared.arguments.append(ctypes.byref(prepared.number))
            elif role == "out":
                prepared.outs.append(ctypes.c_void_p())
                prepared.arguments.append(ctypes.byref(prepared.outs[-1]))
            elif role != "length":
                prepared.arguments.append(next(rest))
                if not 0 <= prepared.arguments[-1] <= 0xFFFFFFFF:
                    raise OverflowError(f"the {role} of {name} is no number of 32 bits: {prepared.arguments[-1]}")
        return prepared

    def require(self, code: int) -> None:
        """Raises what a code other than 0 stands for; on the thread that made the call."""
        if code != 0:
            raise self.error(code, self.tarnelReason().decode())

    def error(self, code: int, reason: str) -> Error:
        name, advice = self.tarnelCodeName(code).decode(), self.tarnelCodeAdvice(code).decode()
        return EXCEPTIONS.get(code, Error)(code, name, reason, advice)
