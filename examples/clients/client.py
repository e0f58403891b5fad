"""A client in Python: fills a new cache, reads the last hundred events, changes a site, and starts the cache again.

It leaves the file "CacheDb" in the current directory; a second run finds the records there.
"""

from tarnel import Cache, Device, Event, Result, Section, Site

# As Python has them; what comes from a server as JSON is read by `Site.from_dict`.
sites = [Site(i, devices=[Device(i, sections=[Section(1, "Vault")])]) for i in range(1, 5001)]
events = [Event(i, time=i, device_id=i % 5000 + 1, section_id=1) for i in range(1, 50001)]

with Cache() as cache:
    if cache.launch_result == Result.DATABASE_CREATED:
        cache.add(sites)
        for first in range(0, len(events), 10000):
            stored = first + cache.add_in_slices(events[first:first + 10000])
            print(f"{stored} events")
    for event in cache.iterate(Event, 49901, 50000):
        print(f"event {event.id}: {event.section_name}")

    site = cache.update(Site(7, name="Südtor", is_delegated=True))
    print(f"{site.name}{', delegated' if site.is_delegated else ''}")

with Cache() as cache:
    print(cache.get(Site, 7).name)
