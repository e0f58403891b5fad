"""The package for Python: what it stores it reads, with its native module and without. python_test.py LIBRARY"""

import os
import sys
import tempfile
import unittest
from itertools import islice
from unittest import mock

from tarnel import *
from tarnel import _library, _reading
from tarnel._record import members

VALUES = {"text": "Грüße 🔑\n\"", "?": True, "B": 255, "i": -5, "I": 4294967295, "Q": 1 << 53, "d": 55.751244}
REFERENCES = ("device", "section", "zone", "operator_id", "domain", "contract_id")


def whole(kind):
    """A record with a value in every field that requests can have; whatever it refers to has the identifier 1."""
    record = kind(id=1)
    for name, value, key, form in [member for member in members(kind)[1:] if member.key]:
        item = VALUES[value] if value in VALUES else value(id=1) if form == "reference" else whole(value)
        item = 1 if key in REFERENCES or (form, value) == ("list", "I") else item
        setattr(record, name, [item] if form == "list" else item)
    return record


class PackageTest(unittest.TestCase):
    def test_every_field_is_stored_and_read_and_what_is_read_can_be_written_back(self):
        for kind in (Locale, Domain, User, Contractor, Organization, Contract, Device, Site, Event):
            given = whole(kind).to_dict()
            cache.add([kind.from_dict(given)])
            given.pop("devices", None)  # They are stored beside their site.
            numbers = (0, VALUES["I"]) if kind is Event else ()
            native = cache.all(kind, *numbers)
            self.assertEqual(native[0].to_dict(), given)
            cache.add(native)
            with mock.patch.object(_reading, "_native", None):
                self.assertEqual(cache.all(kind, *numbers), native)
        self.assertEqual(native[0].domain_name, VALUES["text"])
        self.assertIs(cache.add_one(Event(2, device_id=1, affect=False)).affect, False)
        self.assertEqual(cache.update(whole(Section), device=1), cache.get(Section, 1, 1))
        self.assertEqual([cache.update(whole(Zone), device=1, section=1)], cache.find(Zone, 1, 1, name=VALUES["text"]))
        cache.delete(Zone, 1, 1, 1)
        self.assertEqual((cache.all(Zone, 1), cache.find(User, is_active=False)), ([], []))

    def test_failures_are_exceptions_with_code_name_and_reason(self):
        for error, call, *given in [(NotFound, cache.get, User, 2), (InvalidRequest, cache.add, [User(1, 5)])]:
            with self.assertRaises(error) as caught:
                call(*given)
            self.assertEqual(caught.exception.name, f"TARNEL_{error.code.name}")
            self.assertTrue(caught.exception.reason and caught.exception.advice)
        for call, *given in [(cache.get, Zone, 1), (cache.all, Event), (cache.update, Zone(1)),
                             (cache.add_one, User(1)), (cache.update, Event(1)), (cache.add, [User(1), Domain(1)])]:
            self.assertRaises(TypeError, call, *given)
        self.assertRaises(OverflowError, cache.get, User, 1 << 32 | 1)
        self.assertRaises(RuntimeError, cache.launch)
        with mock.patch.object(_library, "LAYOUT", _library.LAYOUT + 1):
            self.assertRaisesRegex(InvalidArgument, "structures of layout", Cache, library=library)

    def test_many_records_are_stored_and_read_in_slices(self):
        cache.clear()
        is_cancelled = mock.Mock(side_effect=[False, False, True])
        self.assertEqual(cache.add_in_slices(map(User, range(25)), 10, True, is_cancelled), 20)
        self.assertEqual(sorted(user.id for user in cache.iterate(User, slice_size=7)), list(range(20)))
        self.assertEqual((len(list(islice(cache.iterate(User), 8))), list(cache.iterate(Site))), (8, []))


library = os.path.abspath(sys.argv[1])
os.chdir(tempfile.gettempdir())
with tempfile.TemporaryDirectory() as directory, Cache(directory, library=library) as cache:
    result = unittest.main(argv=sys.argv[:1], exit=False).result
    assert os.listdir(directory)[0].startswith("CacheDb") and os.path.samefile(".", tempfile.gettempdir())
sys.exit(not result.wasSuccessful())
