"""The support tool on caches at rest, left by a kill, and in use. tool_test.py TOOL FILLCACHE [LIBRARY]"""

import hashlib
import json
import os
import random
import re
import shutil
import signal
import sqlite3
import subprocess
import sys
import tempfile
import time
import unittest
from contextlib import closing
from pathlib import Path

TOOL, FILL, *LIBRARY = [os.path.abspath(argument) for argument in sys.argv[1:] if argument]
READING = (["info"], ["info", "--json"], ["check"], ["show", "sites", "-f"], ["show", "device", "100001", "-f"],
           ["events", "--last", "3"], ["events", "--hidden", "--json"], ["stats", "--prune", "2026-03-10"], ["export"])
KINDS = ("users", "domains", "organizations", "locales", "contractors", "contracts", "devices", "sites")


def tarnel(*arguments: object, status: int | None = 0, stdin: str | None = None) -> str:
    done = subprocess.run([TOOL, *map(str, arguments)], input=stdin, capture_output=True, text=True, errors="replace")
    if status is not None and done.returncode != status:
        raise AssertionError(f"{arguments}: status {done.returncode}\n{done.stdout[-500:]}{done.stderr}")
    return done.stdout if done.returncode == 0 else done.stdout + done.stderr


def lines(*arguments: object) -> list[dict]:
    return [json.loads(line) for line in tarnel(*arguments, "--json").splitlines()]


def fill(directory: Path, *arguments: object) -> subprocess.Popen:
    directory.mkdir()
    client = subprocess.Popen([FILL, directory, *map(str, arguments)], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                              stderr=subprocess.DEVNULL, text=True)
    if {"wait", "write"}.intersection(arguments):
        assert client.stdout.readline() == "ready\n"
    else:
        client.communicate()
        assert client.returncode == 0
    return client


def traces(directory: Path) -> dict[str, tuple]:
    """All that a touch would change. Looking at a file is no touch: the time of that is left out."""
    def trace(path: Path) -> tuple:
        status = path.stat()
        return (hashlib.sha256(path.read_bytes()).digest() if path.is_file() else b"", status.st_ino, status.st_mode,
                status.st_size, status.st_mtime_ns, status.st_ctime_ns)
    return {str(path): trace(path) for path in [directory, *directory.iterdir()]}


def change(directory: Path, sql: str) -> None:
    with closing(sqlite3.connect(directory / "CacheDb")) as connection:
        connection.text_factory = bytes
        connection.executescript(sql)


def ask(directory: Path, sql: str) -> list[tuple]:
    with closing(sqlite3.connect(f"file:{directory}/CacheDb?immutable=1", uri=True)) as connection:
        connection.text_factory = bytes
        return connection.execute(sql).fetchall()


def content(directory: Path) -> dict[bytes, list]:
    tables = ask(directory, "SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY 1")
    return {table: sorted(ask(directory, f"SELECT * FROM {table.decode()}"), key=repr) for table, in tables}


class ToolTest(unittest.TestCase):
    def setUp(self) -> None:
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.path = Path(temporary.name)
        private = self.path / "private"
        private.mkdir()
        os.environ["TMPDIR"] = str(private)
        self.addCleanup(lambda: self.assertEqual(list(private.iterdir()), [], "something private is left behind"))

    def filled(self, name: str, *arguments: object) -> Path:
        fill(self.path / name, *(arguments or (20, 500)))
        return self.path / name

    def end(self, client: subprocess.Popen) -> str:
        answer = client.communicate("\n")[0]
        self.assertEqual(client.returncode, 0)
        return answer

    def test_reading_touches_nothing(self):
        waiting = fill(self.path / "live", 20, 500, "wait")
        time.sleep(2.5)  # Its log has been folded then.
        for directory in (self.filled("rest"), self.filled("left", 20, 500, "kill"), self.path / "live"):
            before = traces(directory)
            for command in READING:
                answer = tarnel(*command, directory, status=1 if command == ["check"] else 0)
                self.assertTrue(answer)
                self.assertEqual(traces(directory), before, command)
        self.end(waiting)
        # All three hold the same; a log that is left is taken in.
        exports = {tarnel("export", self.path / name) for name in ("rest", "left", "live")}
        self.assertEqual(len(exports), 1)

    def test_a_client_that_writes_is_never_refused_and_each_look_sees_one_state(self):
        writing = fill(self.path / "live", 20, 500, "write", 3)
        counts = []
        while writing.poll() is None:
            info = json.loads(tarnel("info", "--json", self.path / "live"))
            counts.append(info["tables"]["Events"])
            self.assertEqual((info["launch"]["code"], counts[-1] % 50), (0, 0), info)
            tarnel("stats", self.path / "live")
        added, refused = map(int, self.end(writing).split())
        self.assertEqual(refused, 0)
        self.assertEqual(counts, sorted(counts))
        self.assertEqual(json.loads(tarnel("info", "--json", self.path / "live"))["tables"]["Events"], 500 + added)

    def test_an_import_of_an_export_is_the_same_cache(self):
        source = self.filled("source", 100, 12000)
        change(source, """
            INSERT INTO Persons VALUES (7, 'Nobody''s', NULL, NULL, NULL), (8, NULL, '1', NULL, NULL);
            DELETE FROM Persons WHERE PersonsId IN (SELECT OrganizationsContactId FROM Organizations LIMIT 1);
            INSERT INTO Sections (SectionsDeviceId, SectionsSectionId, SectionsName) VALUES (3, 1, 'Lost');
            INSERT INTO Zones (ZonesDeviceId, ZonesSectionId, ZonesZoneId, ZonesName)
                VALUES (3, 9, 4, 'L'), (100001, 99, 98, '');
            UPDATE Users SET UsersRoles = 1.844674407370955e19, UsersPhone = 4294967295.0 WHERE UsersId = 101;
            UPDATE Users SET UsersName = CAST(x'61ED9FBFEDA080' AS TEXT), UsersLogin = CAST(x'EFBBBF62' AS TEXT),
                UsersContacts = 'a' || char(0, 8232, 65535, 127, 128273) || '"\\' WHERE UsersId = 102;
            UPDATE Sites SET SitesContractId = -7, SitesName = '' WHERE SitesId = 10001;
            UPDATE Locations SET LocationsLatitude = NULL, LocationsLongitude = -0.1 WHERE LocationsId = 10002;""")
        (self.path / "lines").write_text(tarnel("export", source))
        imported = self.path / "imported"
        # It is ended in the middle, twice, and goes on: once it can tell, once it cannot.
        for number, status in ((signal.SIGTERM, 3), (signal.SIGKILL, -9)):
            client = subprocess.Popen([TOOL, "import", imported], stdin=subprocess.PIPE,
                                      stderr=subprocess.PIPE, text=True)
            part = (self.path / "lines").read_text().splitlines(keepends=True)[:15 if status > 0 else 25]
            client.stdin.write("".join(part))
            client.stdin.flush()
            while not (imported / "CacheDb.imported").exists() or int(
                    (imported / "CacheDb.imported").read_text()) < len(part) - 1:
                time.sleep(0.01)
            client.send_signal(number)
            client.stdin.write("\n")
            client.communicate()
            self.assertEqual(client.returncode, status)
        tarnel("import", imported, self.path / "lines")
        self.assertEqual([path.name for path in imported.iterdir()], ["CacheDb"])
        self.assertEqual(content(imported), content(source))
        self.assertIn("has a CacheDb already", tarnel("import", imported, self.path / "lines", status=3))

    def test_a_redacted_file_has_the_shape_and_none_of_the_texts(self):
        source = self.filled("source", 100, 3000)
        change(source, "UPDATE Users SET UsersName = 'Vanished Name' WHERE UsersId = 101;"
                       "UPDATE Users SET UsersName = 'Another Name' WHERE UsersId = 101;"
                       "DELETE FROM Users WHERE UsersId = 102")
        output = self.path / "redacted"
        output.mkdir()
        tarnel("redact", source, "-o", output / "CacheDb")
        original, redacted = content(source), content(output)
        self.assertEqual((output / "CacheDb").stat().st_mode & 0o777, 0o600)
        self.assertEqual({table: len(rows) for table, rows in original.items()},
                         {table: len(rows) for table, rows in redacted.items()})
        content_bytes = (output / "CacheDb").read_bytes()
        texts = {value for table, rows in original.items() if table not in (b"Locales", b"Version")
                 for row in rows for value in row if isinstance(value, bytes)} | {b"Vanished Name"}
        texts = {text for text in texts if any(letter.isalnum() for letter in text.decode(errors="replace"))}
        self.assertGreater(len(texts), 1000)
        self.assertEqual([text for text in texts if text in content_bytes and len(text) > 3], [])
        for column in ("UsersPhone", "LocationsLatitude", "LocationsLongitude"):
            question = f"SELECT {column} FROM {re.match('[A-Z][a-z]+s', column)[0]} WHERE {column} IS NOT NULL"
            before, after = set(ask(source, question)), set(ask(output, question))
            self.assertTrue(before and not before & after, column)
        events = "SELECT EventsId, EventsTime, EventsClass, length(CAST(EventsData AS BLOB)) FROM Events ORDER BY 1"
        self.assertEqual(ask(output, events), ask(source, events))
        self.assertEqual(json.loads(tarnel("info", "--json", output))["launch"]["code"], 0)

    def test_check_tells_each_fault(self):
        sound = self.filled("sound", 20, 0)
        clean = "CREATE INDEX EventsTimeIndex ON Events (EventsTime); UPDATE Contracts SET ContractsUserId = 101"

        def event(device: int, section: object = "NULL", zone: object = "NULL", affect: object = 0,
                  local: object = "NULL") -> str:
            return ("INSERT INTO Events (EventsId, EventsTime, EventsDeviceId, EventsSectionId, EventsZoneId, "
                    f"EventsAffect, EventsLocalTime) VALUES (1, 1, {device}, {section}, {zone}, {affect}, {local})")

        for number, (sql, verdict, subject, what) in enumerate([
                ("SELECT 1", "sound", "", ""),
                (event(5), "suspicious", "Events", "device is not stored"),
                (event(100001, 77), "suspicious", "Events", "section is not stored"),
                (event(100001, 1, 777), "suspicious", "Events", "zone is not stored"),
                (event(100001, affect="NULL"), "suspicious", "Events", "do not say whether"),
                (event(100001, affect=1), "sound", "Events", "carry the affect flag"),
                (event(100001, local=99999), "suspicious", "Events", "cut to 32 bits"),
                ("UPDATE Users SET UsersDomainId = 5", "suspicious", "Users", "domain that they name is not stored"),
                ("UPDATE Sites SET SitesContractId = 5", "suspicious", "Sites", "contract that they name is not"),
                ("UPDATE Sites SET SitesContractId = NULL", "sound", "Sites", "name no contract"),
                ("DELETE FROM Sections", "suspicious", "Zones", "section that they belong to"),
                ("DELETE FROM Devices", "suspicious", "DeviceUsers", "device that they belong to"),
                ("UPDATE Sites SET SitesType = 4294967295", "suspicious", "SitesType", "-1"),
                ("UPDATE Sites SET SitesType = 4294967296", "suspicious", "SitesType", "out of the field's range"),
                ("UPDATE Sites SET SitesIsCrossing = 2", "suspicious", "SitesIsCrossing", "out of the field's range"),
                ("UPDATE Sites SET SitesType = 'x'", "suspicious", "SitesType", "no number"),
                ("UPDATE Users SET UsersName = CAST(x'41FF' AS TEXT)", "suspicious", "UsersName", "no valid Unicode"),
                ("UPDATE Users SET UsersName = 'a' || char(0)", "suspicious", "UsersName", "zero in it"),
                ("DROP TABLE Zones", "broken", "file", "no such table"),
                ("PRAGMA writable_schema = 1; UPDATE sqlite_master SET rootpage = (SELECT rootpage FROM sqlite_master "
                 "WHERE name = 'Sites') WHERE name = 'Users'", "broken", "file", "")]):
            with self.subTest(sql):
                directory = self.path / str(number)
                shutil.copytree(sound, directory)
                change(directory, f"{clean}; {sql}")
                status = ("sound", "suspicious", "broken").index(verdict)
                found = json.loads(tarnel("check", "--json", directory, status=status))
                self.assertEqual(found["verdict"], verdict, found)
                told = [finding for finding in found["findings"]
                        if finding["subject"] == subject and what in finding["what"]]
                self.assertEqual(bool(told), bool(subject), found)

    def test_events_are_followed(self):
        source = self.filled("source", 20, 100)
        follower = subprocess.Popen([TOOL, "events", source, "--follow", "--json", "--last", "1"],
                                    stdout=subprocess.PIPE, text=True)
        self.assertEqual(json.loads(follower.stdout.readline())["id"], 100)
        change(source, "INSERT INTO Events (EventsId, EventsDeviceId) VALUES (555, 1)")
        self.assertEqual(json.loads(follower.stdout.readline()), {"id": 555, "device": 1, "hidden": True})
        follower.terminate()
        follower.communicate()

    def test_the_manual_and_the_completion_have_every_command_and_option(self):
        tools = Path(__file__).parent.parent / "tools" / "tarnel"
        manual = (tools / "tarnel.1").read_text().replace("\\-", "-")
        script = (f"source {tools}/completion.bash; COMP_WORDS=({TOOL} $1); COMP_CWORD=1; _tarnel {TOOL};"
                  "echo ${COMPREPLY[@]}")

        def complete(word: str) -> list[str]:
            return subprocess.run(["bash", "-c", script, "", word], capture_output=True, text=True).stdout.split()

        commands = complete("")
        self.assertEqual(set(commands), set(re.findall(r"^  ([a-z]+)  ", tarnel("--help"), re.MULTILINE)))
        self.assertGreater(len(commands), 7)
        for command in commands:
            self.assertEqual(complete(command[:-1]), [command])
            self.assertIn(f'.BR {command} "', manual)
            for option in re.findall(r"--[a-z-]+", tarnel(command, "--help")):
                self.assertIn(option, manual, command)

    def test_mistakes_say_what_to_type(self):
        source = self.filled("source")
        (self.path / "garbage").write_bytes(b"no database" * 1000)
        (self.path / "bad").write_text('{"call": "exitCache"}\n')
        for arguments, status, text in [
                (["info", self.path / "none"], 3, "name the file"), (["info", "--jsn"], 64, "--jsn"),
                ([], 64, "subcommand"),
                (["show", "blah", "-f", source], 3, "the kinds are users"),
                (["show", "sections", "-f", source], 3, "tarnel show sections DEVICE"),
                (["show", "users", "--where", "x=1", "-f", source], 3, "the fields are id, name"),
                (["show", "user", "1", "-f", source], 3, "tarnel show users"),
                (["events", source, "--site", "1"], 3, "--device ID"),
                (["events", source, "--from", "now"], 64, "2026-03-01"),
                (["stats", self.path / "garbage"], 3, "tarnel info"), (["redact", source], 64, "--output"),
                (["import", self.path / "new", self.path / "bad"], 3, "line 1:"),
                (["import", self.path / "bad", self.path / "bad"], 3, "Not a directory"),
                (["redact", source, "-o", source / "CacheDb"], 3, "is there already")]:
            self.assertIn(text, tarnel(*arguments, status=status))
        # Whoever reads the output may stop, and a terminal's colours are for terminals.
        done = subprocess.run(["bash", "-c", f"{TOOL} export {source} | head -c1; echo ${{PIPESTATUS[0]}}"],
                              capture_output=True, text=True)
        self.assertEqual((done.stdout, done.stderr), ("{0\n", ""))
        self.assertNotIn("\x1b", tarnel("info", source))
        for more, is_coloured in (({}, True), ({"NO_COLOR": "1"}, False)):
            done = subprocess.run(["script", "-qec", f"{TOOL} info {source}", "/dev/null"], capture_output=True,
                                  text=True, env={**os.environ, "TERM": "xterm", **more})
            self.assertEqual("\x1b" in done.stdout, is_coloured)

    @unittest.skipUnless(LIBRARY, "there is no library for Python")
    def test_the_library_says_the_same(self):
        from tarnel import Cache, Device, Event, NotFound, Section, Zone, records
        source = self.filled("source", 60, 2000)
        generator = random.Random(1)
        with Cache(source, library=LIBRARY[0]) as cache:
            for _ in range(200):  # Whatever the centre has, some of it is not in the cache any more.
                kind = generator.choice(["domain", "user", "contract", "contractor", "device"])
                name = {"user": "UsersId", "domain": "DomainsId"}.get(kind, f"{kind.capitalize()}sId")
                found = ask(source, f"SELECT {name} FROM {name[:-2]} ORDER BY random() LIMIT 1")
                if found:
                    try:
                        cache.delete(getattr(records, kind.capitalize()), found[0][0])
                    except NotFound:
                        pass
            device = cache.all(Device)[3]
            cache.delete(Section, device.id, device.sections[0].id)
        with Cache(source, library=LIBRARY[0]) as cache:
            answers = {kind: [record.to_dict() for record in cache.all(getattr(records, kind[:-1].capitalize()))]
                       for kind in KINDS}
            events = cache.all(Event, 0, 4294967295)
            zones = [zone.to_dict() for zone in cache.all(Zone, device.id)]
        for kind in KINDS:
            told = json.loads(tarnel("show", kind, "--json", "-f", source))
            self.assertEqual([{key: value for key, value in record.items() if key[0].islower()} for record in told],
                             answers[kind], kind)
        self.assertEqual(json.loads(tarnel("show", "zones", device.id, "--json", "-f", source)), zones)
        told = lines("events", source)
        borrowed = ("device_account", "section_name", "zone_name", "domain_name")
        self.assertEqual({event["id"]: [event.get(key) for key in borrowed] for event in told if "hidden" not in event},
                         {event.id: [getattr(event, key) for key in borrowed] for event in events})
        self.assertEqual({event["id"] for event in lines("events", source, "--hidden")},
                         {event["id"] for event in told} - {event.id for event in events})
        date = sorted(event["time"] for event in told)[700]
        pruning = json.loads(tarnel("stats", source, "--prune", date, "--json"))["pruning"]
        with Cache(source, library=LIBRARY[0]) as cache:
            cache.library.call("clearEventsBeforeDateExceptAffects", date)
        self.assertEqual(len(lines("events", source)), len(told) - pruning["removes"])
        self.assertEqual(pruning["keeps_affect"] + pruning["keeps_unsaid"],
                         sum(event["time"] <= date for event in lines("events", source)))

    @unittest.skipUnless(LIBRARY, "there is no library for Python")
    def test_a_launch_comes_to_what_was_foretold(self):
        sound = self.filled("sound", 5, 20)
        codes = set()
        for seed in range(40):
            generator = random.Random(seed)
            directory = self.path / f"damaged{seed}"
            shutil.copytree(sound, directory)
            file = directory / "CacheDb"
            damage = generator.choice(
                ["version", "drop", "rename", "bytes", "cut", "garbage", "left", "nothing", "view"])
            table, = generator.choice(ask(sound, "SELECT name FROM sqlite_master WHERE type = 'table'"))
            table = table.decode()
            if damage == "version":
                other = generator.choice(["0.2", "NULL", "'0.1 '"])
                change(directory, f"UPDATE Version SET VersionNumber = {other}")
            elif damage == "drop":
                change(directory, f"DROP TABLE {table}")
            elif damage == "rename":
                column = generator.choice(ask(sound, f"SELECT name FROM pragma_table_info('{table}')"))[0].decode()
                change(directory, f"ALTER TABLE {table} RENAME {column} TO Other")
            elif damage == "view":
                change(directory, f"ALTER TABLE {table} RENAME TO Other; CREATE VIEW {table} AS SELECT * FROM Other")
            elif damage == "left":
                shutil.rmtree(directory)
                fill(directory, 5, 20, "kill")
            elif damage != "nothing":
                content = bytearray(file.read_bytes())
                for _ in range(generator.choice([1, 20, 2000])):
                    end = len(content) if damage == "garbage" else 4096
                    content[generator.randrange(end)] = generator.randrange(256)
                file.write_bytes(content[:generator.randrange(len(content))] if damage == "cut" else content)
            foretold = json.loads(tarnel("info", "--json", directory))["launch"]["code"]
            launch = subprocess.run([sys.executable, "-c", f"""
import os, sys, threading, time
from tarnel._library import Library
library = Library({LIBRARY[0]!r})
os.chdir({str(directory)!r})
thread = threading.Thread(target=library.launchCache)
thread.start()
while library.getState() != 2: time.sleep(0.001)
print(library.getLaunchCacheResult())
library.exitCache()
thread.join()"""], capture_output=True, text=True)
            codes.add(foretold)
            self.assertEqual(int(launch.stdout), foretold, (seed, damage, table))
        self.assertTrue(codes >= {0, 101, 103}, codes)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
