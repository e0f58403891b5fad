"""A client in Python, through ctypes alone: adds, reads, filters, updates, deletes and releases the three kinds."""

import sys
import threading
import time
from ctypes import CDLL, POINTER, Structure, byref, c_bool, c_uint, c_uint64, c_ushort

Text = POINTER(c_ushort)


class Locale(Structure):
    _fields_ = [("id", c_uint), ("iso", Text), ("description", Text)]


class Domain(Structure):
    _fields_ = [("id", c_uint), ("name", Text), ("orgId", POINTER(c_uint)), ("locale", POINTER(Locale))]


class User(Structure):
    _fields_ = [("id", c_uint), ("name", Text), ("login", Text), ("contacts", Text), ("isActive", POINTER(c_bool)),
                ("domainId", POINTER(c_uint)), ("orgId", POINTER(c_uint)), ("roles", POINTER(c_uint64)),
                ("domain", POINTER(Domain)), ("phone", POINTER(c_uint))]


tarnel = CDLL(sys.argv[1])


def text(value):
    units = value.encode("utf-16-le")
    return (c_ushort * (len(units) // 2)).from_buffer_copy(units), len(units) // 2


def from_text(pointer):
    length = next(i for i in range(1 << 20) if pointer[i] == 0)
    return b"".join(unit.to_bytes(2, "little") for unit in pointer[:length]).decode("utf-16-le")


def expect(actual, expected):
    if actual != expected:
        sys.exit(f"{actual!r} instead of {expected!r}")


def exercise(kind, plural, structure, key, value, delete_key):
    """Everything that the library does with one kind of record."""
    call = lambda name, *arguments: getattr(tarnel, name)(*arguments)
    name = "Grüße 🔑"
    expect(call(f"add{plural}", *text(f'{{"D":{{"items":[{{"id":1,"{key}":"{name}"}},{{"id":2}}]}}}}')), 0)

    one = POINTER(structure)()
    expect(call(f"get{kind}", byref(one), 1), 0)
    expect((one[0].id, from_text(getattr(one[0], key))), (1, name))
    expect(call(f"get{kind}", byref(one), 1), 10)
    expect(call(f"free{kind}", one), 0)

    for family, filters, expected in ((f"get{plural}", (), [1, 2]),
                                      (f"get{plural}WithParams", (*text(key), *text(name)), [1])):
        block, count = POINTER(structure)(), c_uint()
        expect(call(family, byref(block), byref(count), *filters), 0)
        expect(sorted(item.id for item in block[:count.value]), expected)
        expect(call(f"free{plural}Array", block, count), 0)

    if delete_key is not None:
        one = POINTER(structure)()
        expect(call(f"update{kind}", byref(one), *text(f'{{"D":{{"id":1,"{key}":"{value}"}}}}')), 0)
        expect(from_text(getattr(one[0], key)), value)
        expect(call(f"free{kind}", one), 0)
        expect(call(f"delete{kind}", *text(f'{{"D":{{"{delete_key}":1}}}}')), 0)
        expect(call(f"get{kind}", byref(POINTER(structure)()), 1), 8)


thread = threading.Thread(target=tarnel.launchCache)
thread.start()
while tarnel.getState() != 2:
    time.sleep(0.001)
try:
    expect(tarnel.getLaunchCacheResult(), 100)
    exercise("Locale", "Locales", Locale, "iso", "en", None)
    exercise("Domain", "Domains", Domain, "name", "Süd", "domain_id")
    exercise("User", "Users", User, "name", "Ada", "op_id")
finally:
    tarnel.exitCache()
    thread.join()
expect(tarnel.getState(), 0)
