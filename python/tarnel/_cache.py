"""The cache, as clients use it."""

from __future__ import annotations

import contextlib
import json
import os
import threading
import time
from collections.abc import Callable, Iterable, Iterator, Sized
from importlib import import_module
from itertools import islice
from typing import Any

from tarnel._library import Library
from tarnel._record import R, Record, members
from tarnel.records import FUNCTIONS, LIBRARY, Device, Event, NotFound, Result, State


class Cache:
    """The cache of this process, which runs from the beginning of a `with` to its end. There is one at a time.

    It works in the current directory, or in `directory`. A process has one current directory: for the moment of the
    launch the whole process stands in `directory`, so no other thread may need a relative path meanwhile. From then on
    it may stand anywhere.
    A launch that takes longer than `timeout` seconds, or that ends without tables, is undone and is an exception, whose
    advice says what to do. Otherwise `launch_result` is SUCCESS, or DATABASE_CREATED: then ask the server for all.
    """

    def __init__(self, directory: str | os.PathLike[str] | None = None, timeout: float = 30,
                 library: str = LIBRARY):
        self.library = Library(library)
        self.directory = directory
        self.timeout = timeout
        self.launch_result = Result.NOT_AVAILABLE
        self._thread = threading.Thread()

    def __enter__(self) -> Cache:
        self.launch()
        return self

    def __exit__(self, *_: object) -> None:
        self.exit()

    def launch(self) -> None:
        """Launches the cache on a thread of its own, and waits until it runs."""
        if self.library.getState() != State.NONE:
            raise RuntimeError("a cache runs in this process already")
        with contextlib.chdir(self.directory) if self.directory else contextlib.nullcontext():
            self._thread = threading.Thread(target=self.library.launchCache, daemon=True, name="TarnelLib")
            self._thread.start()
            end = time.monotonic() + self.timeout
            while self.library.getState() != State.RUNNING and time.monotonic() < end:
                time.sleep(0.0002)
        is_running = self.library.getState() == State.RUNNING
        result = self.library.getLaunchCacheResult()
        if not is_running or result not in (Result.SUCCESS, Result.DATABASE_CREATED):
            self.exit()
            if not is_running:
                raise TimeoutError(f"the cache did not run after {self.timeout} seconds")
            # Of the other results there is no reason, but perhaps still one of an earlier call.
            is_reason_known = result == Result.DATABASE_UNAVAILABLE
            raise self.library.error(result, self.library.tarnelReason().decode() if is_reason_known else "")
        self.launch_result = Result(result)

    def exit(self) -> None:
        """Ends the cache, and waits for the calls in progress and for its thread."""
        self.library.exitCache()
        if self._thread.ident is not None:
            self._thread.join()
        self.launch_result = Result.NOT_AVAILABLE

    # ---- Reading ---------------------------------------------------------------------------------------------------

    def get(self, kind: type[R], *numbers: int) -> R:
        """The record of an identifier. That of a section is its device and its own, of a zone device, section, own."""
        return self._one(kind, f"get{kind.__name__}", *numbers)

    def all(self, kind: type[R], *numbers: int) -> list[R]:
        """All records: of events those from one time to another, of sections those of a device, of zones those of a
        device or of a device and a section."""
        return self._list(kind, _name_for(f"get{kind.__name__}s", "", numbers), *numbers)

    def iterate(self, kind: type[R], *numbers: int, slice_size: int = 1000) -> Iterator[R]:
        """As `all`, without holding more than a slice of them as objects of Python.

        The library hands all of them out at once; they are released when the generator ends or is closed.
        """
        with self.library.handed_out(_name_for(f"get{kind.__name__}s", "", numbers), *numbers) as (code, blocks):
            if code != Result.NOT_FOUND:
                self.library.require(code)
            for block in blocks:
                for first in range(0, block.number or 0, slice_size):
                    yield from block.slice(first, first + slice_size)

    def find(self, kind: type[R], *parents: int, **field: Any) -> list[R]:
        """The records of which one field, named as in Python, equals a value: `find(User, domain_id=7)`."""
        [(name, value)] = field.items()
        keys = {member.name: member.key for member in members(kind)}
        text = value if isinstance(value, str) else json.dumps(int(value) if isinstance(value, bool) else value)
        return self._list(kind, _name_for(f"get{kind.__name__}s", "WithParams", parents), keys[name], text, *parents)

    def affect_events(self) -> list[Event]:
        """The events whose affect flag is set."""
        return self._list(Event, "getAffectEvents")

    def site_name_and_address(self, site: int) -> tuple[str | None, str | None]:
        name, address = self._call("getSiteNameAndAddress", site)
        return name, address

    # ---- Writing ---------------------------------------------------------------------------------------------------

    def add(self, records: Iterable[R]) -> list[R]:
        """Stores records of one kind, all or none. Of events it returns those whose device is in the cache."""
        records = list(records)
        if not records:
            return []
        name = f"add{type(records[0]).__name__}s"
        if any(type(each) is not type(records[0]) for each in records):
            raise TypeError(f"{name} stores records of one kind")
        # "Not found" is said of events that are stored and do not come back.
        return self._list(type(records[0]), name, _request({"items": [each.to_dict() for each in records]}))

    def add_in_slices(self, records: Iterable[Record], slice_size: int = 5000, progress: bool = False,
                      is_cancelled: Callable[[], bool] = lambda: False) -> int:
        """Stores many records, each slice all or none, and returns how many; it asks before each whether to go on.

        With `progress` it shows a bar, if the package tqdm is installed.
        """
        count, rest = 0, iter(records)
        with _bar(records) if progress else contextlib.nullcontext() as bar:
            while not is_cancelled() and (part := list(islice(rest, slice_size))):
                self.add(part)
                count += len(part)
                if bar is not None:
                    bar.update(len(part))
        return count

    def add_one(self, record: R) -> R:
        """Stores a device or an event, and returns it as it is stored now."""
        if type(record) not in (Device, Event):
            raise TypeError("only devices and events are added one by one")
        return self._one(type(record), f"add{type(record).__name__}", _request(record.to_dict()))

    def update(self, record: R, **parents: int) -> R:
        """Stores the fields that are not None, and returns the record as it is stored now.

        A section needs its `device`, and a zone its `device` and `section`. Of a device only the version is changed.
        """
        name = f"update{type(record).__name__}{'Fw' if isinstance(record, Device) else ''}"
        needed = FUNCTIONS[f"delete{type(record).__name__}"].keys[:-1] if name in FUNCTIONS else ["another function"]
        if sorted(parents) != sorted(needed):
            raise TypeError(f"the update of a {type(record).__name__} needs {needed}, not {list(parents)}")
        return self._one(type(record), name, _request(record.to_dict() | parents))

    def delete(self, kind: type[Record], *numbers: int) -> None:
        """Deletes the record that `get` reads with these numbers."""
        name = f"delete{kind.__name__}"
        self._call(name, _request(dict(zip(FUNCTIONS[name].keys, numbers, strict=True))))

    def remove_affect_flag(self, event: int) -> Event:
        """Takes the affect flag from an event, and returns it as it is stored now."""
        return self._one(Event, "removeAffectFlag", _request({"id": event}))

    def clear(self) -> None:
        self._call("clearAll")

    def clear_except_events(self) -> None:
        self._call("clearAllExceptEvents")

    def clear_events_before(self, date: int) -> None:
        """Deletes the events of this time or before whose affect flag is stored and not set."""
        self._call("clearEventsBeforeDateExceptAffects", date)

    @property
    def server_ip(self) -> str | None:
        address: str | None = self._call("getServerIp")[0]
        return address

    @server_ip.setter
    def server_ip(self, address: str) -> None:
        self._call("setServerIp", address)

    @property
    def suspicions(self) -> int:
        """How many values that look like mistakes were stored since the launch."""
        return int(self.library.tarnelSuspicions())

    def _call(self, name: str, *given: Any) -> list[Any]:
        code, contents = self.library.call(name, *given)
        self.library.require(code)
        return contents

    def _one(self, _: type[R], name: str, *given: Any) -> R:
        record: R = self._call(name, *given)[0]
        return record

    def _list(self, _: type[R], name: str, *given: Any) -> list[R]:
        """What a function hands out as a list, of which the library says "not found" if it is empty."""
        records: list[R] = []
        with contextlib.suppress(NotFound):
            for records in self._call(name, *given):
                pass
        return records


def _request(content: dict[str, Any]) -> str:
    return json.dumps({"D": content}, ensure_ascii=False, allow_nan=False)


def _name_for(start: str, end: str, numbers: tuple[int, ...]) -> str:
    """The function for so many numbers: those of a device, or those of a section of it."""
    for name in (start + end, f"{start}ForSection{end}"):
        if name in FUNCTIONS and len(FUNCTIONS[name].numbers) == len(numbers):
            return name
    raise TypeError(f"{start}{end} does not take {len(numbers)} numbers")


def _bar(records: Iterable[Record]) -> Any:
    try:
        tqdm = import_module("tqdm").tqdm
    except ImportError:
        return contextlib.nullcontext()
    return tqdm(total=len(records) if isinstance(records, Sized) else None, unit=" records")
