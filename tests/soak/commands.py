"""What people and timers do: one command after the other, each a process of its own, some of them killed."""
import datetime
import time

import calendar_files
from judges import ANY
from ledger import DONE, DOUBTED, REFUSED, Span

KILLED = 0.06  # the part of the commands that is killed
FILE_ITEMS = 12
# Items that several change at once, each another field.
SHARED = [f"shared-{number}" for number in range(5)]


class Actor:
    def __init__(self, name, stage, place, ledger, chance, clock=None):
        self.name, self.stage, self.place, self.ledger, self.chance, self.clock = name, stage, place, ledger, chance, clock
        self.number = 0

    def step(self):
        kinds, weights = zip(*self.deeds())
        self.chance.choices(kinds, weights)[0]()

    def close(self):
        pass

    def new_key(self):
        self.number += 1
        return f"{self.name}-{self.number:05d}"

    def run(self, *words, writes=False, **more):
        kill_after = self.chance.uniform(0.001, 0.06) if self.chance.random() < KILLED else None
        return self.stage.run(self.name, self.place, *words, clock=self.clock, kill_after=kill_after, writes=writes, **more)

    def changes(self, changes, *words, failed=REFUSED, **more):
        """A command that changes these keys: whether it did, its output and errors. `failed` is what a failure means."""
        ops = self.ledger.begin(changes)
        status, out, err = self.run(*words, **more)
        outcome = DOUBTED if status < 0 else DONE if status == 0 else failed
        self.ledger.end(ops, outcome)
        return outcome, out, err


class Person(Actor):
    """new, edit, remove, done, undo, purge; and commands that look."""

    def __init__(self, *words, **more):
        super().__init__(*words, **more)
        self.items = {}  # key to its version's number
        self.all_past = []
        for title in ("Diary", "Past"):
            self.stage.run(self.name, self.place, "calendars", "new", title)

    def deeds(self):
        return [(self.new, 6), (self.look, 5), (self.purge, 1), (self.alarmed, 3), (self.export, 1), (self.edit_shared, 2),
                *([(self.edit, 4), (self.remove, 6 if len(self.items) > 25 else 2), (self.edit_and_undo, 2)] if self.items else [])]

    def look(self):
        words = self.chance.choice((["agenda", "--days", "30"], ["--json", "agenda", "2026-12"], ["search", "person"],
                                    ["free", "2026-12", "--hours", "9-17"], ["busy"], ["month"], ["week"], ["log"],
                                    ["reminders"], ["--json", "calendars"], ["alarms"], ["duplicates"], ["conflicts"],
                                    ["account", "list"], ["--json", "doctor"], ["undo", "--list"]))
        # What doctor finds is judged by the checks.
        self.run(*words, judged="doctor" not in words)

    def new(self):
        key = self.new_key()
        day = datetime.date(2026, 12, 1) + datetime.timedelta(days=self.chance.randrange(60))
        where = "Diary" if self.chance.random() < 0.7 else "Team"
        if where == "Team":
            self.ledger.synced.add(key)
        outcome, _, _ = self.changes({key: "v1"}, "new", "--title", key, "--start", f"{day} 10:00", "--calendar", where,
                                     "--location", "v1", *(["--repeat", "daily", "--count", "5"] * (self.number % 3 == 0)))
        if outcome == DONE:
            self.items[key] = 1

    def now_or_gone(self, key, outcome):
        """After a refusal: right only when the item may be gone."""
        if outcome == REFUSED:
            now = self.ledger.clock()
            if None not in self.ledger.possible(key, now, now) and "stop" not in self.stage.happened:
                self.stage.finding(self.name, f"\"{key}\" to be changed", "it is refused")
            self.items.pop(key, None)

    def edit(self):
        key = self.chance.choice(sorted(self.items))
        version = f"v{self.items[key] + 1}"
        outcome, out, _ = self.changes({key: version}, "--json", "edit", key, "--location", version, "--all")
        self.items[key] += 1
        self.now_or_gone(key, outcome)
        return outcome, out

    def remove(self):
        key = self.chance.choice(sorted(self.items))
        outcome, _, _ = self.changes({key: None}, "remove", key, "--yes", "--all")
        self.now_or_gone(key, outcome)
        self.items.pop(key, None)

    def edit_and_undo(self):
        key = self.chance.choice(sorted(self.items))
        now = self.ledger.clock()
        before = self.ledger.possible(key, now, now)
        version = f"v{self.items[key] + 1}"
        outcome, _, _ = self.changes({key: version}, "edit", key, "--location", version, "--all")
        if outcome != DONE or len(before) != 1:
            self.now_or_gone(key, outcome)
            self.items.pop(key, None)
            return
        self.items[key] += 1
        outcome, out, _ = self.changes({key: before.pop()}, "undo")
        if outcome == DONE and f"edit \"{key}\"" not in out and "restore" not in self.stage.happened:
            self.stage.finding(self.name, f"the undoing of edit \"{key}\"", out)

    def alarmed(self):
        """An event whose alarm rings soon."""
        key = self.new_key() + "-alarm"
        start = datetime.datetime.now() + datetime.timedelta(seconds=self.chance.randrange(20, 90))
        file = self.place.folder / f"{self.name}-alarm.ics"
        text = calendar_files.event(key, key, "v1", f"{utc(start)}", utc(start + datetime.timedelta(hours=1)),
                                    "BEGIN:VALARM\r\nACTION:DISPLAY\r\nTRIGGER:PT0S\r\nDESCRIPTION:x\r\nEND:VALARM\r\n")
        file.write_text(calendar_files.calendar([text]), encoding="utf-8", newline="")
        began = time.monotonic()
        outcome, _, _ = self.changes({key: "v1"}, "import", file, "--calendar", "Alarms", writes=True)
        if outcome == DONE:
            self.stage.alarms.append((key, began, time.monotonic(), start.timestamp()))

    def purge(self):
        """What is over goes, all of it in one turn."""
        day = datetime.date(2025, 1, 1) + datetime.timedelta(days=self.chance.randrange(300))
        made = []
        for _ in range(3):
            key = self.new_key()
            if self.changes({key: "v1"}, "new", "--title", key, "--start", f"{day} 10:00", "--calendar", "Past",
                            "--location", "v1")[0] != REFUSED:
                made.append(key)
        self.all_past += made
        # What a restore brought back goes, too.
        now = self.ledger.clock()
        past = [key for key in self.all_past if self.ledger.possible(key, now, now) != {None}]
        archive = self.place.folder / f"archive-{self.number}.ics"
        self.changes(dict.fromkeys(past), "purge", "--before", "2026-06-01", "--calendar", "Past", "--yes",
                     "--archive", archive, writes=True)
        archive.unlink(missing_ok=True)

    def edit_shared(self):
        """Another field than the other machine changes."""
        key = self.chance.choice(SHARED)
        self.changes({key: ANY}, "edit", key, "--location", f"v{self.chance.randrange(1000)}")

    def export(self):
        folder = self.place.folder / "exported"
        self.run("export", "-o", f"{folder}/", writes=True)


def utc(moment):
    return moment.astimezone(datetime.timezone.utc).strftime("%Y%m%dT%H%M%SZ")


class Importer(Actor):
    """Files that come again and again, each time with other things in them."""

    def __init__(self, *words, groups, **more):
        super().__init__(*words, **more)
        self.groups, self.version = groups, 0

    def deeds(self):
        return [(self.plain, 4), (self.pruned, 3), (self.feed, 3)]

    def file(self, name, titles):
        self.version += 1
        now = datetime.datetime.now(datetime.timezone.utc).strftime("%Y%m%dT%H%M%SZ")
        parts = [calendar_files.event(title, title, f"v{self.version}", "20270201T100000Z", "20270201T110000Z",
                                      f"DTSTAMP:{now}\r\nLAST-MODIFIED:{now}\r\nSEQUENCE:{self.version}\r\n"
                                      + "RRULE:FREQ=WEEKLY;COUNT=5\r\n" * (index % 4 == 0))
                 for index, title in enumerate(titles)]
        path = self.place.folder / f"{self.name}-{name}.ics"
        path.write_text(calendar_files.calendar(parts), encoding="utf-8", newline="")
        return path

    def bring(self, name, titles, known, *words):
        """The file's items have its version, and of `known` those that are not in it are gone."""
        changes = {title: f"v{self.version + 1}" for title in titles}
        changes |= {title: None for title in known if title not in titles}
        # What is missing is removed after the file has come in, by a commit of its own.
        outcome, _, _ = self.changes(changes, "import", self.file(name, titles), *words, writes=True,
                                     failed=DOUBTED if len(changes) > len(titles) else REFUSED)
        self.stage.count("imported items", len(titles) if outcome == DONE else 0)

    def plain(self):
        group = self.chance.randrange(3)
        titles = [f"{self.name}-plain-{group}-{index}" for index in range(FILE_ITEMS)]
        self.groups[f"plain {group}"] = titles
        self.bring(f"plain{group}", titles, [], "--calendar", "Plain")

    def some_of(self, kind):
        known = [f"{self.name}-{kind}-{index}" for index in range(2 * FILE_ITEMS)]
        return self.chance.sample(known, FILE_ITEMS), known

    def pruned(self):
        titles, known = self.some_of("pruned")
        self.bring("pruned", titles, known, "--calendar", "Pruned", "--prune")

    def feed(self):
        titles, known = self.some_of("feed")
        self.bring("feed", titles, known, "--calendar", "Feed", "--subscription")


class Keeper(Actor):
    """Backups, and now and then a restore of the last or the one before."""

    RESTORE_EVERY = 0.25

    def __init__(self, *words, **more):
        super().__init__(*words, **more)
        self.backups = []  # (file, span), the newest last

    def deeds(self):
        # A backup that is restored at once would only ever bring back what was there.
        return [(self.backup, 3), *([(self.restore, 1)] if len(self.backups) == 2 else [])]

    def backup(self):
        file = self.place.folder / f"backup-{self.new_key()}.db"
        begin = self.ledger.clock()
        status, _, _ = self.run("backup", file, writes=True)
        if status == 0:
            self.backups.append((file, Span(begin, self.ledger.clock())))
            self.stage.count("backups")
        elif status > 0 and file.exists():
            self.stage.finding(self.name, "no file of a backup that failed", file)
        if len(self.backups) > 2:
            self.backups.pop(0)[0].unlink()

    def restore(self):
        file, span = self.backups[self.chance.randrange(2)]
        restore = self.ledger.begin_restore(span)
        self.stage.trouble("restore")
        status, _, _ = self.run("restore", file, writes=True)
        self.ledger.end_restore(restore, DOUBTED if status < 0 else DONE if status == 0 else REFUSED)
        # Others change the store before it is brought back again.
        self.backups.clear()
        kept = sorted(self.place.store.parent.glob("*.before-restore-*"), key=lambda each: each.stat().st_mtime)
        for copy in kept[:-2]:
            copy.unlink()


class OtherMachine(Actor):
    """A second store with the same account. Its sync --follow carries what is changed here."""

    def __init__(self, *words, **more):
        super().__init__(*words, **more)
        self.items = {}

    def deeds(self):
        return [(self.new, 3), (self.edit_shared, 2), *([(self.edit, 3), (self.remove, 5 if len(self.items) > 15 else 1)] if self.items else [])]

    def new(self):
        key = self.new_key()
        day = datetime.date(2027, 1, 1) + datetime.timedelta(days=self.chance.randrange(60))
        self.ledger.synced.add(key)
        if self.changes({key: "v1"}, "new", "--title", key, "--start", f"{day} 10:00", "--calendar", "Team",
                        "--location", "v1")[0] == DONE:
            self.items[key] = 1

    def edit(self):
        key = self.chance.choice(sorted(self.items))
        self.items[key] += 1
        self.changes({key: f"v{self.items[key]}"}, "edit", key, "--location", f"v{self.items[key]}")

    def remove(self):
        key = self.chance.choice(sorted(self.items))
        self.items.pop(key)
        self.changes({key: None}, "remove", key, "--yes")

    def edit_shared(self):
        key = self.chance.choice(SHARED)
        self.changes({key: ANY}, "edit", key, "--notes", f"n{self.chance.randrange(1000)}")


class ServerWriter(Actor):
    """A client of another make, which writes to the server alone."""

    def __init__(self, *words, client, path, **more):
        super().__init__(*words, **more)
        self.client, self.path, self.items = client, path, {}
        for key in SHARED:
            self.put(key, 1)

    def deeds(self):
        return [(self.new, 3), *([(self.change, 3), (self.remove, 5 if len(self.items) > 15 else 1)] if self.items else [])]

    def put(self, key, version):
        ops = self.ledger.begin({key: f"v{version}"})
        stamp = datetime.datetime.now(datetime.timezone.utc).strftime("DTSTAMP:%Y%m%dT%H%M%SZ\r\n")
        self.client.put(f"{self.path}{key}.ics", calendar_files.calendar([calendar_files.event(
            key, key, f"v{version}", "20270301T100000Z", "20270301T110000Z", stamp)]))
        self.ledger.end(ops, DONE)
        self.stage.count("writes straight to the server")

    def new(self):
        key = self.new_key()
        self.put(key, 1)
        self.items[key] = 1

    def change(self):
        key = self.chance.choice(sorted(self.items))
        self.items[key] += 1
        self.put(key, self.items[key])

    def remove(self):
        key = self.chance.choice(sorted(self.items))
        self.items.pop(key)
        ops = self.ledger.begin({key: None})
        self.client.remove(f"{self.path}{key}.ics")
        self.ledger.end(ops, DONE)
        self.stage.count("writes straight to the server")


