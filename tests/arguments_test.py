"""What every function refuses: one wrong argument among right ones, and any call while no cache runs.

arguments_test.py LIBRARY
"""

import ctypes
import json
import os
import re
import sys
import tempfile
from itertools import chain, repeat

from tarnel import Cache
from tarnel.records import FUNCTIONS

RECORD = dict.fromkeys(["id", "org_id", "op_id", "domain_id", "site_id", "device", "section", "zone"], 1)
REQUEST = json.dumps({"D": RECORD | {"items": [RECORD]}})


def expect(codes: tuple, name: str, arguments: list) -> None:
    code = getattr(library, name)(*arguments)
    assert code in codes, f"{name}({', '.join(map(str, arguments))}) returned {code} instead of {codes}"


def right_arguments(name: str) -> list:
    texts = {0: [], 1: [REQUEST], 2: ["org_id" if "Organization" in name else "id", "1"]}
    return library.prepare(name, chain(texts[FUNCTIONS[name].parameters.count("text")], repeat(1))).arguments


def expect_refusals(name: str) -> None:
    taken = ctypes.c_void_p(4711)
    occupied = ctypes.pointer(taken)
    for position, (role, kind) in enumerate(zip(FUNCTIONS[name].parameters, getattr(library, name).argtypes)):
        wrong = {"text": [None], "length": [1 << 31], "count": [None], "out": [None, occupied]}.get(role, [])
        for value in wrong[:1] if name == "removeAffectFlag" else wrong:  # It replaces what is in its output.
            arguments = right_arguments(name)
            arguments[position] = ctypes.cast(value, kind) if value is occupied else value
            expect((10,), name, arguments)
            assert taken.value == 4711, f"{name} has replaced what was in its output"


cache = Cache(library=os.path.abspath(sys.argv[1]))
library = cache.library
stored = [name for name in FUNCTIONS if not re.match("free|launch|exit|getState|getLaunch|tarnel", name)]
with tempfile.TemporaryDirectory() as directory:
    os.chdir(directory)
    for name in stored:
        expect((255,), name, right_arguments(name))
    cache.launch()
    for name in stored:
        expect((0, 8, 11), name, right_arguments(name))
        expect_refusals(name)
    expect((0,), "setServerIp", [None, 0])  # Nothing of length 0 is an empty text.
    cache.exit()
for name in FUNCTIONS:
    if name.startswith("free"):
        block = ctypes.create_string_buffer(8)
        for arguments in [[None, 1], [block, 0]] if name.endswith("Array") else [[None]]:
            expect((10,), name, arguments)
