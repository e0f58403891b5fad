"""A local cache of the reference data of a monitoring service, kept in one file.

    from tarnel import Cache, NotFound, User

    with Cache("/var/lib/client") as cache:
        cache.add([User(7, "Ada", is_active=True), User(8, "Bob")])
        user = cache.get(User, 7)
        user.phone = 4711
        cache.update(user)

`Cache` says what there is to do, `tarnel.records` what the records and the exceptions are. What a field refers to is
None while it is not in the cache: `add` of what was read then drops the reference, `update` keeps it.
"""

from tarnel._cache import Cache as Cache
from tarnel._record import Error as Error
from tarnel._record import Record as Record
from tarnel.records import *
