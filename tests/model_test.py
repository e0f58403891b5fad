"""Random programs of calls to the library, each call compared with a small model of what the library promises, and each
request with its schema.

model_test.py LIBRARY SCHEMAS; TARNEL_MODEL_PROGRAMS and TARNEL_MODEL_SEED may set how many, and the seed of the first.
"""

import json
import os
import random
import re
import sqlite3
import sys
import tempfile
from collections import defaultdict
from contextlib import closing
from dataclasses import asdict
from functools import cache as once
from pathlib import Path
from typing import Any, NamedTuple

from jsonschema import Draft202012Validator
from tarnel import Cache, Record
from tarnel._record import Member, members
from tarnel.records import FUNCTIONS, LAYOUT_WEIGHTS

MEMBERS = {kind.__name__: members(kind) for kind in LAYOUT_WEIGHTS}

PARENTS = {"Section": ["device"], "DeviceUser": ["device"], "Zone": ["device", "section"]}
ALTERNATIVE_ID = {"Section": "section", "Zone": "zone"}
DELETE_KEYS = {"Domain": ["domain_id"], "User": ["op_id"], "Organization": ["org_id"], "Site": ["site_id"],
               "Section": ["device", "section"], "Zone": ["device", "section", "zone"]}
# Nested records that a record names by another of its members.
NAMED_BY = {"domain": "domain", "contract": "contract_id", "location": "id"}
# Nested records that are objects in requests; the others are named by their identifiers.
OBJECTS = ("contact", "location")


class Function(NamedTuple):
    """A function that has to do with what is stored. What a program does beside calls counts as one."""
    name: str
    family: str  # What functions of several kinds have alike; for others the name.
    kind: str
    roles: list[str]


Call = tuple[Function, list]  # With its texts and numbers.


def numbers(function: Function) -> list[str]:
    return FUNCTIONS[function.name].numbers if function.name in FUNCTIONS else []


def name_of(member: Member) -> str:
    """The name of the kind of the records that a member holds; that of no kind if it holds none."""
    return getattr(member.kind, "__name__", member.kind)


def plain(content: Any) -> Any:
    """What a call hands out, with dictionaries for the records."""
    if isinstance(content, list):
        return [plain(item) for item in content]
    return asdict(content) if isinstance(content, Record) else content


def functions() -> list[Function]:
    """All functions that have to do with what is stored."""
    result = [Function(name, name, "Event", []) for name in BESIDE_CALLS]
    for name, (_, _, roles, _) in FUNCTIONS.items():
        alike = re.fullmatch(r"(add|get|update|delete)(\w+?)(s?)(?:Fw|ForSection)?(WithParams)?", name)
        if alike and alike[2] in MEMBERS and name != "getEvents":
            result.append(Function(name, "filter" if alike[4] else alike[1] + alike[3], alike[2], roles))
        elif not re.match("free|launch|exit|getState|getLaunch|tarnel", name):
            result.append(Function(name, name, "Site" if "Site" in name else "Event", roles))
    return result


def relaunch(cache: Cache) -> tuple[int, list]:
    """Exits the cache, and launches it anew on its file."""
    cache.exit()
    cache.launch()
    return cache.launch_result, []


def change_plans(_: Cache, analyze: str = "ANALYZE") -> tuple[int, list]:
    """Leaves other statistics in the file, as any tool may: SQLite then reads tables in another way and order."""
    with closing(sqlite3.connect("CacheDb")) as connection:
        connection.executescript(f"DROP TABLE IF EXISTS sqlite_stat1; {analyze}")
    return 0, []


# What may come between calls.
BESIDE_CALLS = {"relaunch": relaunch, "analyze": change_plans}


class Refusal(Exception):
    """Ends a call of the model with a code."""


def refuse(code: int) -> Any:
    raise Refusal(code)


def typed(wanted: type, value: Any) -> Any:
    """A value of a request, which is refused if it has another type or is not there."""
    return value if type(value) is wanted or (wanted is float and type(value) is int) else refuse(5)


def unsigned(value: Any) -> int:
    """A number as it is stored: cut to a whole one, and then to its low 32 bits."""
    return int(typed(float, value)) & 0xFFFFFFFF


def is_whole(value: Any) -> bool:
    """Whether a value is a whole number within 32 bits."""
    return type(value) in (int, float) and value == int(value) and -(1 << 31) <= value < 1 << 31


def whole(value: Any) -> int:
    """A number as it is stored where any other becomes 0."""
    number = typed(float, value)
    return int(number) if is_whole(number) else 0


# How the values of requests are stored; of both booleans the integer reading makes 0.
READERS = {"text": lambda value: typed(str, value), "i": whole,
           "?": lambda value: not isinstance(value, bool) and whole(value) != 0,
           "B": lambda value: whole(value) & 0xFF, "d": lambda value: typed(float, value),
           "Q": lambda value: int(typed(float, value))}


class Model:
    """The promise in memory: rows in dictionaries by their keys in requests, joins by looking them up."""

    def __init__(self) -> None:
        self.tables: dict[str, dict[tuple, dict]] = defaultdict(dict)
        self.server = ""

    def carry_out(self, family: str, kind: str, *arguments: Any) -> list:
        """Does what a function does, and returns what it hands out."""
        rows = self.rows(kind, **dict(zip(PARENTS.get(kind, []), [each for each in arguments if type(each) is int])))
        match family, *arguments:
            case ("add" | "adds" | "update" | "delete" | "removeAffectFlag"), text:
                try:
                    request = json.loads(text)
                except ValueError:
                    request = None
                request = request if isinstance(request, dict) else refuse(10)
                return getattr(self, family)(kind, typed(dict, request.get("D"))) or []
            case "get", *numbers:
                return [self.view(kind, self.found(kind, *numbers))]
            case "gets", *_:
                return self.hand_out(kind, rows)
            case "filter", key, text, *_:
                members = [member for member in MEMBERS[kind] if key == member.key != "" and member.form != "list"]
                member = members[0] if members and key not in ("location", "cluster_id") else refuse(10)
                is_number = member.kind != "text" and re.fullmatch(r"-?\d[\d.e+]*", text)
                name, value = "id" if member.name == "id" else key, float(text) if is_number else text
                return self.hand_out(kind, [row for row in rows if row.get(name) == value])
            case "getSiteNameAndAddress", number:
                site = self.found(kind, number)
                return [site.get("name"), site.get("address_text")]
            case "getEvents", first, last:
                return self.hand_out(kind, [row for row in rows if first <= row.get("time", -1) <= last])
            case ["getAffectEvents"]:
                return self.hand_out(kind, [row for row in rows if row.get("affect")])
            case "clearEventsBeforeDateExceptAffects", date:
                for event in rows:
                    if event.get("affect") is False and event.get("time", date + 1) <= date:
                        self.erase("Event", id=event["id"])
            case ["clearAll" | "clearAllExceptEvents"]:
                self.tables = defaultdict(dict, Event={} if family == "clearAll" else self.tables["Event"])
            case "setServerIp", text:
                self.server = text
            case ["getServerIp"]:
                return [self.server or None]
        return []

    def parsed(self, kind: str, content: dict) -> dict:
        """A record of a request as it is stored. A location is given its identifier by its site."""
        record: dict[str, Any] = {}
        if key := MEMBERS[kind][0].key:
            record["id"] = unsigned(content.get(key if key in content else ALTERNATIVE_ID.get(kind)))
        for member in MEMBERS[kind][1:]:
            if member.key and member.key in content:
                items = typed(list, content[member.key]) if member.form == "list" else [content[member.key]]
                if member.key in OBJECTS or member.form == "list" and member.kind != "I":
                    items = [self.parsed(name_of(member), typed(dict, item)) for item in items]
                else:
                    items = [READERS.get(member.kind, unsigned)(item) for item in items]
                record[member.key] = items if member.form == "list" else items[0]
        return record

    def rows(self, table: str, **match: Any) -> list[dict]:
        """The rows with these values, in the order of their keys."""
        return [row for _, row in sorted(self.tables[table].items()) if row.items() >= match.items()]

    def row(self, table: str, **match: Any) -> dict:
        """The row with these values; an empty one if there is none."""
        return next(iter(self.rows(table, **match)), {})

    def found(self, kind: str, *ids: int) -> dict:
        """The row that these identifiers name."""
        return self.row(kind, **dict(zip([*PARENTS.get(kind, []), "id"], ids))) or refuse(8)

    def pointed_at(self, kind: str, content: dict) -> dict:
        """The row that a request names; any identifier that is no number is 0."""
        values = [content[key] if key in content else refuse(5) for key in DELETE_KEYS.get(kind, ["id"])]
        return self.found(kind, *[unsigned(value) if type(value) in (int, float) else 0 for value in values])

    def erase(self, table: str, **match: Any) -> None:
        self.tables[table] = {key: row for key, row in self.tables[table].items() if not row.items() >= match.items()}

    def store(self, kind: str, record: dict, is_whole: bool = True, **parents: int) -> None:
        """Stores a record in its row: in place of what is there, or only the fields that it has."""
        key = (*list(parents.values())[:1], record["id"])  # A zone is unique in its device, whatever its section.
        row = self.tables[kind][key] = {} if is_whole else self.tables[kind].get(key, {})
        row.update(parents, **{key: value for key, value in record.items() if not isinstance(value, (dict, list))})
        if "contact" in record:
            self.store("Person", record["contact"])
            row["contact"] = record["contact"]["id"]
        if "location" in record:
            self.store("Location", {**record["location"], "id": record["id"]})
        for member in MEMBERS[kind]:
            for item in record.get(member.key, []) if member.form == "list" and is_whole else []:
                if kind == "DeviceUser":
                    self.tables["Link"][*key, item] = {"device": key[0], "user": key[1], "section": item}
                else:
                    self.store(name_of(member), item, **self.as_parent(kind, row))

    @staticmethod
    def as_parent(kind: str, row: dict) -> dict[str, int]:
        """What names the parts of a device or of a section; no other kind has parts that are its own."""
        device = {"device": row["id"]} if kind == "Device" else {}
        return {"device": row["device"], "section": row["id"]} if kind == "Section" else device

    def view(self, kind: str, row: dict, is_joined: bool = False) -> dict:
        """A row as it is handed out. A domain that is joined has no locale if that is not in the cache."""
        is_joined = is_joined or kind in ("Organization", "Contract", "Device", "Site")
        parent = self.as_parent(kind, row)
        record = {}
        for member in MEMBERS[kind]:
            other = name_of(member)
            value = row.get("id" if member.name == "id" else member.key)
            if kind == "DeviceUser" and member.form == "list":
                links = self.rows("Link", device=row["device"], user=row["id"])
                value = [link["section"] for link in links]
            elif member.form == "list":
                value = [self.view(other, part) for part in self.rows(other, **parent) if parent]
            elif other in MEMBERS:
                value = self.nested(other, row.get(NAMED_BY.get(member.name, member.key)), is_joined, kind == "Site")
            elif kind == "Event" and not member.key:
                value = self.lent(row, member.name)
            record[member.name] = value
        return record

    def nested(self, kind: str, number: int | None, is_joined: bool, is_of_site: bool) -> dict | None:
        """The record that a row names."""
        row = self.row(kind, id=number)
        if kind == "Domain" and is_of_site:  # Not joined: 0 names none, and it is as when it is read alone.
            return self.view(kind, row) if row and number != 0 else None
        if kind == "Locale" and not row and number is not None and not is_joined:
            row = {"id": number}
        return self.view(kind, row, is_joined) if row else None

    def lent(self, event: dict, name: str) -> Any:
        """What an event is given by its device, section, zone and operator."""
        device, section = event.get("device"), event.get("section")
        domain = self.row("User", id=event.get("operator_id")).get("domain")
        return {"device_account": self.row("Device", id=device).get("account"),
                "section_name": self.row("Section", device=device, id=section).get("name"),
                "zone_name": self.row("Zone", device=device, section=section, id=event.get("zone")).get("name"),
                "domain_name": self.row("Domain", id=domain).get("name")}[name]

    def hand_out(self, kind: str, rows: list[dict]) -> list:
        """Rows in one list; of events only those whose device is in the cache."""
        if kind == "Event":
            rows = [row for row in rows if self.row("Device", id=row.get("device"))]
        return [[self.view(kind, row) for row in rows or refuse(8)]]

    def add(self, kind: str, content: dict) -> list:
        record = self.parsed(kind, content)
        self.store(kind, record)
        return [self.view(kind, self.found(kind, record["id"]))]

    def adds(self, kind: str, content: dict) -> list | None:
        items = typed(list, content.get("items"))
        records = [self.parsed(kind, typed(dict, item)) for item in items] or refuse(10)
        for record in records:
            self.store(kind, record)
        ids = [record["id"] for record in records]
        return self.hand_out(kind, [row for row in self.rows(kind) if row["id"] in ids]) if kind == "Event" else None

    def update(self, kind: str, content: dict) -> list:
        parents = {key: unsigned(content.get(key)) for key in PARENTS.get(kind, [])}
        record = self.parsed(kind, content)
        if kind == "Device":  # Nothing but the version, which none empties.
            self.found(kind, record["id"]).pop("config_version", None)
            record = {key: record[key] for key in ("id", "config_version") if key in record}
        self.store(kind, record, False, **parents)
        has_section = kind != "Zone" or self.row("Section", device=parents["device"], id=parents["section"])
        if not has_section or parents and not self.row("Device", id=parents["device"]):
            refuse(11)
        return [self.view(kind, self.found(kind, *parents.values(), record["id"]))]

    def delete(self, kind: str, content: dict) -> None:
        row = self.pointed_at(kind, content)
        if kind == "Organization":
            self.erase("Person", id=row.get("contact"))
        elif kind == "Site":
            self.erase("Location", id=row["id"])
        elif parent := self.as_parent(kind, row):
            for part in ("Section", "Zone", "DeviceUser", "Link"):
                self.erase(part, **parent)
        self.erase(kind, **row)

    def removeAffectFlag(self, kind: str, content: dict) -> list:
        event = self.pointed_at(kind, content)
        event["affect"] = False
        return [self.view(kind, event)]


class Generator:
    """Makes programs. The identifiers are few, so that records meet, replace each other and name missing ones."""

    TEXTS = 3 * ["", "a", "A"] + ["5", "Объект №1", "東京", "😀", 'naïve "quoted"', "back\\slash\nline", "x' OR 1=1 --",
                                  "null", "y" * 300]
    BOUNDS = [-1, 1.9, 255, 256, 300, 65535, 2147483647, 2147483648, 4294967295, 4294967296, 1e15, -2147483648]
    REALS = [-0.5, 55.751244, 1e-7, -179.99999999999997, 90]
    UNKNOWN_KEYS = ["", "Id", "id ", "UsersId", "1=1 OR id", "zones", "device", "section", "nothing"]
    DAMAGES = [None, True, 7, "7", [], {}, [7], {"id": 1}]
    WEIGHTS = {"add": 8, "adds": 8, "update": 5, "delete": 5, "clearAll": 1, "clearAllExceptEvents": 1, "relaunch": 1,
               "analyze": 1}

    def __init__(self, seed: int):
        source = random.Random(seed)
        self.pick, self.below, self.choices = source.choice, source.randrange, source.choices
        self.functions = functions()

    def one_in(self, count: int) -> bool:
        return self.below(count) == 0

    def number(self, kind: Any = "I", oddity: int = 30) -> int | float:
        """Most often 0 to 2, the less the likelier. Identifiers are odd more rarely than other numbers."""
        if kind == "d":
            return self.pick(self.REALS)
        number = self.pick(self.BOUNDS) if self.one_in(oddity) else min(self.below(3), self.below(3))
        return 1 << 53 if kind == "Q" and number < 0 else number

    def value(self, member: Member) -> Any:
        """A value of a field, or one of the items of a list."""
        if member.kind == "text":
            return self.pick(self.TEXTS)
        if member.kind == "?" and self.one_in(4):
            return self.one_in(2)
        is_object = name_of(member) in MEMBERS and (member.form == "list" or member.key in OBJECTS)
        return self.record(name_of(member)) if is_object else self.number(member.kind, 8)

    def record(self, kind: str) -> dict:
        """A record with its identifier, about half of its fields, and at times one that it does not have."""
        key = MEMBERS[kind][0].key or "id"
        record = {ALTERNATIVE_ID.get(kind, key) if self.one_in(8) else key: self.number()}
        for member in MEMBERS[kind][1:]:
            if member.key and self.one_in(2):
                items = [self.value(member) for _ in range(self.below(4))]
                record[member.key] = items if member.form == "list" else self.value(member)
        if self.one_in(20):
            record.setdefault(self.pick(self.UNKNOWN_KEYS), self.number())
        return record

    def damaged(self, value: Any) -> Any:
        """Something else in the place of some part of a request, or a member taken out."""
        if not isinstance(value, (dict, list)) or not value or self.one_in(6):
            return self.pick(self.DAMAGES)
        place = self.pick(list(value) if isinstance(value, dict) else range(len(value)))
        if isinstance(value, dict) and self.one_in(6):
            return {key: item for key, item in value.items() if key != place}
        value[place] = self.damaged(value[place])
        return value

    def request(self, function: Function) -> str:
        if function.family == "adds":
            # Many are stored in another way than few.
            size = 40 if self.one_in(10) else 1 + self.below(3)
            content = {"items": [self.record(function.kind) for _ in range(size)]}
        elif function.family in ("add", "update"):
            content = self.record(function.kind) | {key: self.number() for key in PARENTS.get(function.kind, [])}
        else:
            content = {key: self.number() for key in DELETE_KEYS.get(function.kind, ["id"])}
        request = self.damaged({"D": content}) if self.one_in(12) else {"D": content}
        text = json.dumps(request, ensure_ascii=self.one_in(2))
        return text[:-1] if self.one_in(100) else text

    def call(self, function: Function) -> Call:
        texts = []
        if function.family == "filter":
            member = self.pick(MEMBERS[function.kind])
            key = self.pick(self.UNKNOWN_KEYS) if self.one_in(10) else member.key
            is_text = (member.kind == "text") != self.one_in(4)
            texts = [key, self.pick(self.TEXTS) if is_text else json.dumps(self.number("i", 8))]
        elif "text" in function.roles:
            texts = [self.pick(self.TEXTS) if function.name == "setServerIp" else self.request(function)]
        identifiers = [0xFFFFFFFF if self.one_in(20) else self.below(3) for _ in numbers(function)]
        return function, texts + identifiers

    def program(self) -> list[Call]:
        """Most programs dwell on some kinds of record, which thus fill up; the others see all of them together."""
        kinds = ["Device" if function.kind in ("Section", "Zone", "Event") else function.kind
                 for function in self.functions]
        chosen = self.choices(kinds, k=self.pick([2, 4, 50]))
        weights = [self.WEIGHTS.get(each.family, 3) * (kind in chosen) for each, kind in zip(self.functions, kinds)]
        calls = [self.call(function) for function in self.choices(self.functions, weights, k=60)]
        # What no call of the program may have asked about.
        for function in self.functions:
            for number in range(3):
                if function.name == "removeAffectFlag":
                    calls.append((function, [json.dumps({"D": {"id": number}})]))
                elif function.family == "gets" and len(numbers(function)) < 2:
                    calls.append((function, [number] * len(numbers(function))))
        return calls


@once
def schema(function: str) -> Draft202012Validator:
    """What the requests of a function are to be."""
    content = json.loads(SCHEMAS[function].read_text(encoding="utf-8"))
    Draft202012Validator.check_schema(content)
    return Draft202012Validator(content)


def contradiction(function: str, text: str, code: int, told: int) -> str:
    """Where the library and the schema do not agree on a request, of which `told` values were suspicious."""
    try:
        errors = list(schema(function).iter_errors(json.loads(text)))
    except ValueError:
        return ""
    # Some flags are stored as anybody reads them; it is the likes of them that are not.
    # The numbers of a list are told of once.
    mistakes = {re.sub(r"(?<=sections)\[\d+\]$", "", error.json_path): error.message for error in errors
                if error.validator != "enum" or not (error.instance is False or is_whole(error.instance))}
    if not errors and code in (5, 10) or told and not mistakes:
        return "the schema alone accepts it"
    return "" if code in (5, 10) or len(mistakes) <= told else f"only the schema refuses it: {mistakes}"


def difference(cache: Cache, program: list[Call]) -> tuple | None:
    """What the model and the library do where they differ first, on a cache without records."""
    cache.library.call("clearAll")
    cache.library.call("setServerIp", "")
    change_plans(cache, analyze="")
    model = Model()
    for function, arguments in program:
        try:
            expected = 0, model.carry_out(function.family, function.kind, *arguments)
        except Refusal as refusal:
            expected = refusal.args[0], []
        beside = BESIDE_CALLS.get(function.name)
        suspicions = cache.suspicions
        code, contents = beside(cache) if beside else cache.library.call(function.name, *arguments)
        contents = plain(contents)
        if code == 0 and "count" in function.roles and function.name != "addEvents":
            contents[0].sort(key=lambda record: record["id"])  # They come in no particular order.
        if (code, contents) != expected:
            return expected, (code, contents)
        if function.name in SCHEMAS:
            if contradicted := contradiction(function.name, arguments[0], code, cache.suspicions - suspicions):
                return contradicted, (code, contents)
    return None


cache = Cache(library=os.path.abspath(sys.argv[1]))
SCHEMAS = {path.name.removesuffix(".schema.json"): path.absolute() for path in Path(sys.argv[2]).iterdir()}
texts = {each.name for each in functions() if "text" in each.roles and each.family not in ("filter", "setServerIp")}
assert SCHEMAS.keys() == texts, "there is a schema for each function that takes a request"
# In memory where that can be had: nothing here is about a disk.
with tempfile.TemporaryDirectory(dir="/dev/shm" if os.path.isdir("/dev/shm") else None) as directory:
    os.chdir(directory)
    cache.launch()
    first = int(os.environ.get("TARNEL_MODEL_SEED", 1))
    for seed in range(first, first + int(os.environ.get("TARNEL_MODEL_PROGRAMS", 300))):
        print(f"seed {seed}", end="\r", flush=True)  # Thus known even after a crash.
        program = Generator(seed).program()
        if found := difference(cache, program):
            for position in reversed(range(len(program))):  # Drops each call without which it still fails.
                shorter = program[:position] + program[position + 1:]
                if again := difference(cache, shorter):
                    program, found = shorter, again
            calls = [f"  {function.name}({', '.join(map(str, arguments))})" for function, arguments in program]
            print(f"seed {seed}", *calls, f"expected {found[0]}", f"     got {found[1]}", sep="\n")
            break
    cache.exit()
sys.exit(found is not None)
