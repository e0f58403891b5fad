"""A client in Python: adds, reads, filters, changes and deletes users, and lists a history.

It leaves the file "CacheDb" in the current directory, and needs one that has none yet.
"""

from tarnel import Cache, Device, Domain, Event, Locale, NotFound, Result, User

with Cache() as cache:
    if cache.launch_result == Result.DATABASE_CREATED:
        print("A new file: everything is to be asked of the server.")

    cache.add([Locale(1, iso="de")])
    cache.add([Domain(3, "Süd", locale=Locale(1))])
    # As a server sends it, and as Python has it.
    cache.add([User.from_dict({"id": 7, "name": "Ada", "active": 1, "domain": 3}), User(8, "Grüße 🔑")])

    ada = cache.get(User, 7)
    assert ada.is_active and ada.domain and ada.domain.name == "Süd"
    ada.phone = 4711
    print(cache.update(ada))
    assert cache.find(User, name="Grüße 🔑") == [cache.get(User, 8)]

    cache.delete(User, 8)
    try:
        cache.get(User, 8)
    except NotFound as error:
        print(error.name, error.reason, error.advice, sep="\n")

    cache.add_one(Device(1, account=100))
    stored = cache.add_in_slices((Event(number, time=number, device_id=1) for number in range(20000)), progress=True)
    accounts = {event.device_account for event in cache.iterate(Event, 5000, 15000)}
    print(f"{stored} events, of the accounts {accounts}")
