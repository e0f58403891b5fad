"""A client in Python: adds, reads, filters, updates and deletes records of three kinds.

    python3 client.py libTarnelLib.so.0 /usr/include/tarnel/tarnel.h

It leaves the file "CacheDb" in the current directory, and needs one that has none yet.
"""

import sys

from tarnel import Library


def expect(actual, expected):
    if actual != expected:
        sys.exit(f"{actual!r} instead of {expected!r}")


def exercise(kind, key, value, delete_key):
    """Everything that the library does with one kind of record."""
    name = "Grüße 🔑"
    expect(tarnel.call(f"add{kind}s", f'{{"D":{{"items":[{{"id":1,"{key}":"{name}"}},{{"id":2}}]}}}}'), (0, []))

    code, [record] = tarnel.call(f"get{kind}", 1)
    expect((code, record["id"], record[key]), (0, 1, name))
    print(kind, record)

    for family, filters, expected in ((f"get{kind}s", (), [1, 2]), (f"get{kind}sWithParams", (key, name), [1])):
        code, [records] = tarnel.call(family, *filters)
        expect((code, sorted(record["id"] for record in records)), (0, expected))

    if delete_key is not None:
        code, [record] = tarnel.call(f"update{kind}", f'{{"D":{{"id":1,"{key}":"{value}"}}}}')
        expect((code, record[key]), (0, value))
        expect(tarnel.call(f"delete{kind}", f'{{"D":{{"{delete_key}":1}}}}'), (0, []))
        expect(tarnel.call(f"get{kind}", 1), (8, []))


tarnel = Library(sys.argv[1], sys.argv[2])
tarnel.launch()
try:
    expect(tarnel.getLaunchCacheResult(), 100)
    exercise("Locale", "iso", "en", None)
    exercise("Domain", "name", "Süd", "domain_id")
    exercise("User", "name", "Ada", "op_id")
finally:
    tarnel.exit()
expect(tarnel.getState(), 0)
