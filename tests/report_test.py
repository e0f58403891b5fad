"""The report that the tool makes, in a browser without a network. report_test.py LIBRARY TARNEL NODE MODULES BROWSER

Makes caches, has the tool report on them, counts in them what the page must show, and leaves the page to report_page.mjs.
"""

import json
import os
import sqlite3
import subprocess
import sys
import tempfile
from pathlib import Path

from tarnel import Cache

LIBRARY, TARNEL, NODE, MODULES, BROWSER = sys.argv[1:]
START = 1772323200
HOSTILE = ["</script><script>window.broken = 1</script>", "<img src=x onerror=\"window.broken = 1\">",
           "<!-- <script> \"'&amp;", "\u202elive\u202c \u05d0\u05d1", "line\u2028line\u2029", "a\0b", "=1+1|' /C calc'!A0",
           "{a|b}", "javascript:window.broken = 1"]


def fill(path, events):
    """A centre of 40 sites in 4 domains, in which every text is hostile to something, and some things are missing."""
    with Cache(path.parent, library=LIBRARY):
        pass
    text = lambda i: f"{HOSTILE[i % len(HOSTILE)]} {i}"
    rows = {
        "Domains": [(i, text(i), 1, 1) for i in range(1, 5)],
        "Locales": [(1, "en", "<b>")],
        "Users": [(i, text(i), f"op{i}", text(i + 1), i % 2, i % 4 + 1, 1, 1 << 60, 5550000.0) for i in range(1, 10)],
        "Contracts": [(i, text(i), 1, text(i), 1, START, text(i), None, i % 9 + 1) for i in range(1, 20)],
        "Sites": [(i, text(i), text(i), None, 0, i % 4 + 1, text(i), i, 1, 1, 1, 1, 0, 0) for i in range(1, 41)],
        "Locations": [(i, 52 + i % 4 + i / 1000, 13 + i % 4 * 2 + i / 1000) for i in range(1, 37)]
                     + [(37, "north", 13), (38, 400, 1e300)],
        "Devices": [(i, 1000 + i, i % 4 + 1, 1, 0, None) for i in range(1, 31)],
        "Sections": [(i, s, text(i + s), *[None] * 9) for i in range(1, 31) for s in (1, 2)],
        "Zones": [(i, z % 2 + 1, z, text(z), 1, *[None] * 8) for i in range(1, 31) for z in range(1, 5)],
        "DeviceUsers": [(i, 1, text(i), None, text(i)) for i in range(1, 31)],
        "Events": [(i, None if i == 5 else START + i * 97, 99 if i % 50 == 0 else i % 30 + 1, i % 2 + 1, i % 4 + 1, 1,
                    None if i % 500 == 7 else i % 12, 1, 1, START, -1, text(i), None, None, i % 9 + 1, i % 3 == 0,
                    (0, 1, None)[i % 3], "x" * 5000 if i == 9 else None) for i in range(1, events + 1)],
    }
    with sqlite3.connect(path) as file:
        for table, records in rows.items():
            file.executemany(f"INSERT INTO {table} VALUES ({','.join('?' * len(records[0]))})", records)
    file.close()


def count(path):
    """What the page must show, by the file alone."""
    with sqlite3.connect(path) as file:
        one = lambda sql: file.execute(sql).fetchone()[0]
        tables = [name for name, in file.execute("SELECT name FROM sqlite_master WHERE type='table'")]
        events = "SELECT count(*) FROM Events LEFT JOIN Devices ON DevicesId = EventsDeviceId WHERE "
        period = START + 500000, START + 900000
        return {
            "tables": {table: one(f"SELECT count(*) FROM {table}") for table in tables},
            "classes": {"none" if code is None else str(code): number for code, number in
                        file.execute("SELECT EventsClass, count(*) FROM Events GROUP BY EventsClass")},
            "period": period,
            "inPeriod": one(events + "EventsTime BETWEEN %d AND %d" % period),
            "both": one(events + "EventsTime BETWEEN %d AND %d AND EventsClass IN (3, 4) AND DevicesDomainId = 2" % period),
            "hidden": one(events + "DevicesId IS NULL"),
            "affect": one(events + "EventsAffect = 1"),
            "reason": one(events + "EventsZoneId BETWEEN 2 AND 3 AND EventsData LIKE '%calc%'"),
            "sitesOfDomain": one("SELECT count(*) FROM Sites JOIN Locations ON SitesId = LocationsId"
                                 " WHERE SitesDomainId = 2 AND typeof(LocationsLatitude) = 'real'"),
            "operators": one("SELECT count(*) FROM Users WHERE UsersDomainId = 2"),
        }


def report(path, name, *options):
    page = path.parent / name
    answer = subprocess.run([TARNEL, "report", path, "-o", page, "--json", *options], check=True, capture_output=True)
    return {"page": page.as_uri(), **json.loads(answer.stdout)}


with tempfile.TemporaryDirectory() as directory:
    path = Path(directory) / "CacheDb"
    fill(path, 20000)
    before = path.read_bytes(), path.stat().st_mtime_ns, sorted(os.listdir(directory))
    pages = {
        "whole": report(path, "whole.html"),
        "last": report(path, "last.html", "--last", "300", "--from", str(START + 97 * 100)),
    }
    report(path, "redacted.html", "--redact")
    data = lambda name: (path.parent / name).read_text().split('id="data">')[1].split("</script>")[0]
    whole, redacted = data("whole.html"), data("redacted.html")
    for text in ("calc", "onerror", "line\u2028", "\u05d0\u05d1", "{a|b}", "53.001,15.001"):
        assert text in whole and text not in redacted, f"what is personal is not masked: {text}"
    after = path.read_bytes(), path.stat().st_mtime_ns, sorted(name for name in os.listdir(directory) if not name.endswith(".html"))
    assert before == after, "the tool has touched the cache"
    assert pages["last"]["events"] == 300 and len(pages["last"]["limits"]) == 2, pages["last"]
    assert (Path(directory) / "whole.html").stat().st_mode & 0o077 == 0, "others can read the report"
    expected = json.dumps({"hostile": HOSTILE, "pages": pages, **count(path)})
    script = Path(__file__).with_name("report_page.mjs")
    sys.exit(subprocess.run([NODE, script, MODULES, BROWSER], input=expected.encode(), check=False).returncode)
