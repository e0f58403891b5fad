"""What the records and the exceptions have in common, and in which words `tarnel.records` describes them."""

from __future__ import annotations

from collections.abc import Callable, Mapping
from dataclasses import fields
from functools import cache
from typing import Any, NamedTuple, TypeVar

R = TypeVar("R", bound="Record")
T = TypeVar("T")


class Error(Exception):
    """A call that the library refused or could not carry out. Each code has an exception of its own.

    `name` is the code's, `reason` says what was wrong with this call, and `advice` what to do about the code.
    """

    code: int

    def __init__(self, code: int, name: str, reason: str, advice: str):
        super().__init__(": ".join(filter(None, (f"{name or 'code'} ({int(code)})", reason or advice))))
        self.code, self.name, self.reason, self.advice = code, name, reason, advice


class Member(NamedTuple):
    """How a field is stored: in a structure of C, and in a request."""
    name: str
    kind: Any  # "text", the class of a record, or what `struct` calls the number.
    key: str  # In requests; empty if it is never part of one.
    form: str  # "value", "pointer", "list", or "reference" to a record that requests name by its identifier.


class Function(NamedTuple):
    """A function of the library."""
    result: type[int] | type[str] | None
    kind: type[Record] | None
    parameters: list[str]  # "text", "length", "count", "out", "block"; a number has its own name.
    keys: list[str] = []  # Of its request, if the function deletes.

    @property
    def texts(self) -> list[str]:
        return [each for each in self.parameters if each == "text"]

    @property
    def numbers(self) -> list[str]:
        return [each for each in self.parameters if each not in ("text", "length", "count", "out", "block")]


def stored(kind: Any, key: str, form: str = "pointer") -> dict[str, Any]:
    """The metadata of a record's field."""
    return {"kind": kind, "key": key, "form": form}


def once(function: Callable[[Any], T]) -> Callable[[Any], T]:
    """Remembers what a function has said of a kind of record."""
    return cache(function)


@once
def members(kind: Any) -> list[Member]:
    return [Member(each.name, **each.metadata) for each in fields(kind)]


class Record:
    """What every record can do."""

    __slots__ = ()

    def to_dict(self) -> dict[str, Any]:
        """The record as requests have it: under their keys, without what is None or empty or never part of one."""
        content = {}
        for name, kind, key, form in members(type(self)):
            value = getattr(self, name)
            if key and value is not None and value != []:
                content[key] = [to_json(kind, form, each) for each in value] if form == "list" else (
                    to_json(kind, form, value))
        return content

    @classmethod
    def from_dict(cls: type[R], content: Mapping[str, Any]) -> R:
        """A record from what a request or a server has of it; what is not known here is passed over."""
        values = {}
        for name, kind, key, form in members(cls):
            if key and content.get(key) is not None:
                value = content[key]
                values[name] = [from_json(kind, form, each) for each in value] if form == "list" else (
                    from_json(kind, form, value))
        return cls(**values)


def to_json(kind: Any, form: str, value: Any) -> Any:
    if isinstance(value, Record):
        return value.id if form == "reference" else value.to_dict()  # type: ignore[attr-defined]
    return int(bool(value)) if kind == "?" else value


def from_json(kind: Any, form: str, value: Any) -> Any:
    if isinstance(kind, type) and issubclass(kind, Record):
        return kind(id=value) if form == "reference" else kind.from_dict(value)  # type: ignore[call-arg]
    return bool(value) if kind == "?" else value
