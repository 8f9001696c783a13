"""Hosts: processes that load the plug-in and live as long as they may, each with calendars and items of its own."""
import datetime
import signal

from calendar_files import calendar, event
from console import Console, Refused
from judges import ANY
from ledger import DONE, DOUBTED, REFUSED
from stage import Died

MOST_ITEMS = 25
TEAM = "Team"


class Item:
    def __init__(self, key, uid, where, series):
        self.key, self.uid, self.where, self.series = key, uid, where, series
        self.version = 1
        self.parts = []  # keys of changed occurrences, which go with the series


class Host:
    """What both back ends do. An actor: `step` is called again and again by its thread."""

    words = ()

    def __init__(self, name, stage, place, ledger, chance, clock=None, may_die=True):
        self.name, self.stage, self.place, self.ledger, self.chance = name, stage, place, ledger, chance
        self.items, self.number, self.may_die = [], 0, may_die
        self.own = f"{name} calendar"
        self.console = Console(stage, name, place, self.words, clock, may_die)
        self.make_calendar(self.own)

    def ask(self, calculation):
        return self.console.ask(calculation)

    def new_key(self):
        self.number += 1
        return f"{self.name}-{self.number:05d}"

    def step(self):
        """One thing that a solution does. Whoever is killed in it begins again."""
        try:
            kinds, weights = zip(*self.deeds())
            self.chance.choices(kinds, weights)[0]()
        except Died:
            if self.stage.over.is_set():
                return
            self.console.again()
        except Refused as refused:
            self.console.judge(refused)
        self.console.judge_errors()

    def close(self):
        status = self.console.close()
        # The last kill may have come after its last step.
        if status < 0 and not (self.may_die and status == -signal.SIGKILL):
            self.stage.finding(self.name, "an exit status at the end of its input", f"signal {-status}")

    def tried(self, changes, calculation, within=()):
        """A save or removal, written down before and after; its result."""
        ops = self.ledger.begin(changes, within)
        try:
            result = self.ask(calculation)
        except Refused:
            self.ledger.end(ops, REFUSED)
            raise
        except Died:
            self.console.process.wait()
            self.ledger.end(ops, DOUBTED)
            raise
        self.ledger.end(ops, DONE)
        self.stage.count("confirmed changes of hosts")
        return result

    def make_calendar(self, title):
        for calculation in ('Orlo_NewItem("calendar")', f'Orlo_SetProperty("calendar";"title";"{title}")',
                            'Orlo_SaveItem("calendar")'):
            self.ask(calculation)

    def query(self):
        begin = datetime.date(2026, 11, 1) + datetime.timedelta(days=self.chance.randrange(90))
        self.fetch("", begin, self.chance.choice((1, 7, 31, 365)))
        for _ in range(self.chance.randrange(6)):
            count = int(self.ask('Orlo_GetItemCountForType("event")') or 0)
            if count:
                # The fetch is done anew when others changed the store: there may be fewer by now.
                try:
                    self.ask(f'Orlo_OpenItemAt("event";{self.chance.randrange(count) + 1})')
                except Refused as refused:
                    if refused.code != "9002":
                        raise
                    continue
                for name in ("title", "startdate", "location", "isrecurring", "calendartitle"):
                    self.ask(f'Orlo_GetProperty("event";"{name}")')

    def fetch(self, titles, begin, days):
        end = begin + datetime.timedelta(days=days)
        self.ask(f'Orlo_EventsFetch(Timestamp("{begin} 00:00:00");Timestamp("{end} 00:00:00");"{titles}";"")')

    def look_at_calendars(self):
        count = int(self.ask('Orlo_GetItemCountForType("calendar")'))
        if count == 0:
            self.stage.finding(self.name, "calendars", "none")
        for index in range(1, count + 1):
            try:
                self.ask(f'Orlo_OpenItemAt("calendar";{index})')
                self.ask('Orlo_GetProperty("calendar";"title")')
            except Refused as refused:
                if refused.code != "9002":
                    raise

    def lost(self, item, began, refused):
        """An item could not be opened: right when it may be gone."""
        self.items.remove(item)
        if None not in self.ledger.possible(item.key, began, self.ledger.clock()):
            self.stage.finding(self.name, f"\"{item.key}\" in the store", str(refused))


class CurrentHost(Host):
    """The current back end does everything."""

    def deeds(self):
        full = len(self.items) >= MOST_ITEMS
        deeds = [(self.query, 4), (self.look_at_calendars, 1), (self.reminder, 2), (self.short_calendar, 1)]
        if not full:
            deeds += [(self.new_event, 4), (self.new_series, 2)]
        if self.items:
            deeds += [(self.change, 4), (self.change_occurrence, 2), (self.split, 1), (self.remove, 6 if full else 2)]
        return deeds

    def prepare(self, key, where, start):
        end = start + datetime.timedelta(hours=1)
        self.ask('Orlo_NewItem("event")')
        for name, value in (("calendartitle", f'"{where}"'), ("title", f'"{key}"'), ("location", '"v1"'),
                            ("startdate", f'Timestamp("{start}")'), ("enddate", f'Timestamp("{end}")')):
            self.ask(f'Orlo_SetProperty("event";"{name}";{value})')

    def some_start(self):
        day = datetime.datetime(2026, 12, 1) + datetime.timedelta(days=self.chance.randrange(60))
        return day.replace(hour=self.chance.randrange(7, 20), minute=15 * self.chance.randrange(4))

    def save_new(self, key, where, series):
        if where == TEAM:
            self.ledger.synced.add(key)
        self.tried({key: "v1"}, 'Orlo_SaveItem("event")')
        self.items.append(Item(key, self.ask('Orlo_GetProperty("event";"uid")'), where, series))

    def where(self):
        return TEAM if self.chance.random() < 0.4 else self.own

    def new_event(self):
        key, where = self.new_key(), self.where()
        self.prepare(key, where, self.some_start())
        if self.chance.random() < 0.3:
            self.ask('Orlo_AddAlarm("event";"";"display";"";-900;"")')
        self.save_new(key, where, False)

    def new_series(self):
        key, where = self.new_key(), self.where()
        self.prepare(key, where, self.some_start())
        kind = self.chance.choice(("daily", "weekly"))
        self.ask(f'Orlo_AddRecurrence("{kind}";1;"";"";"";"";{self.chance.randrange(4, 9)})')
        self.save_new(key, where, True)

    def open(self, item):
        began = self.ledger.clock()
        try:
            self.ask(f'Orlo_OpenItemWithUID("event";"{item.uid}")')
            return True
        except Refused as refused:
            self.lost(item, began, refused)
            return False

    def change(self):
        item = self.chance.choice(self.items)
        if not self.open(item):
            return
        item.version += 1
        self.ask(f'Orlo_SetProperty("event";"location";"v{item.version}")')
        if self.chance.random() < 0.2:
            self.ask('Orlo_AddAlarm("event";"";"display";"";-600;"")')
        self.tried({item.key: f"v{item.version}"}, 'Orlo_SaveItem("event";"all")')

    def open_occurrence(self, item, at):
        """The occurrence of that number of a series that nobody split or changed."""
        if not self.open(item):
            return False
        first = datetime.datetime.fromisoformat(self.ask('Orlo_GetProperty("event";"startdate")'))
        self.fetch(item.where, first.date(), 70)
        count, found = int(self.ask('Orlo_GetItemCountForType("event")')), 0
        try:
            for index in range(1, count + 1):
                self.ask(f'Orlo_OpenItemAt("event";{index})')
                found += self.ask('Orlo_GetProperty("event";"title")') == item.key
                if found == at:
                    # Others may have moved the positions meanwhile.
                    return self.ask('Orlo_GetProperty("event";"startdate")') > str(first)
        except Refused as refused:
            if refused.code != "9002":
                raise
        return False

    def change_occurrence(self):
        fresh = [item for item in self.items if item.series and not item.parts]
        if not fresh:
            return
        item = self.chance.choice(fresh)
        if not self.open_occurrence(item, 2):
            return
        part = f"{item.key}-o"
        self.ask(f'Orlo_SetProperty("event";"title";"{part}")')
        if item.where == TEAM:
            self.ledger.synced.add(part)
        item.parts.append(part)
        current = self.ledger.possible(item.key, self.ledger.clock(), self.ledger.clock())
        if len(current) != 1:
            return
        # The series' row is written, too, and stays as it is.
        self.tried({part: ANY, item.key: current.pop()}, 'Orlo_SaveItem("event";"this")', within=[part])

    def split(self):
        fresh = [item for item in self.items if item.series]
        if not fresh:
            return
        item = self.chance.choice(fresh)
        if not self.open_occurrence(item, 3):
            return
        key = self.new_key()
        self.ask(f'Orlo_SetProperty("event";"title";"{key}")')
        version = f"v{item.version}"
        if item.where == TEAM:
            self.ledger.synced.add(key)
        if self.ledger.possible(item.key, self.ledger.clock(), self.ledger.clock()) != {version}:
            return
        item.series = False
        self.tried({key: version, item.key: version}, 'Orlo_SaveItem("event";"future")')
        later = Item(key, self.ask('Orlo_GetProperty("event";"uid")'), item.where, False)
        later.version = item.version
        self.items.append(later)

    def remove(self):
        item = self.chance.choice(self.items)
        if not self.open(item):
            return
        self.items.remove(item)
        self.tried({item.key: None, **dict.fromkeys(item.parts)},
                   f'Orlo_RemoveItem("event";"{item.uid}";"";"all")', within=item.parts)

    def reminder(self):
        key = self.new_key()
        for calculation in ('Orlo_NewItem("reminder")', 'Orlo_SetProperty("reminder";"calendartitle";"Reminders")',
                            f'Orlo_SetProperty("reminder";"title";"{key}")'):
            self.ask(calculation)
        self.tried({key: ANY}, 'Orlo_SaveItem("reminder")')
        uid = self.ask('Orlo_GetProperty("reminder";"uid")')
        began = self.ledger.clock()
        try:
            self.ask(f'Orlo_OpenItemWithUID("reminder";"{uid}")')
        except Refused as refused:
            if None not in self.ledger.possible(key, began, self.ledger.clock()):
                self.stage.finding(self.name, f"the reminder \"{key}\"", str(refused))
            return
        self.ask('Orlo_SetProperty("reminder";"iscompleted";"true")')
        self.tried({key: ANY}, 'Orlo_SaveItem("reminder")')
        self.tried({key: None}, f'Orlo_RemoveItem("reminder";"{uid}")')

    def short_calendar(self):
        """A calendar with an event, removed with it."""
        key = self.new_key()
        title = f"{key} short"
        self.make_calendar(title)
        uid = self.ask('Orlo_GetProperty("calendar";"uid")')
        self.prepare(key, title, self.some_start())
        self.tried({key: "v1"}, 'Orlo_SaveItem("event")')
        self.tried({key: None}, f'Orlo_RemoveItem("calendar";"{uid}")')


class OlderHost(Host):
    """The older back end saves no events, so what it removes is imported for it."""

    words = ("--system-minor", "7")

    def deeds(self):
        return [(self.query, 4), (self.look_at_calendars, 2), (self.remove_imported, 3), (self.short_calendar, 1)]

    def remove_imported(self):
        key = self.new_key()
        file = self.place.folder / f"{self.name}.ics"
        start = f"2027010{self.chance.randrange(1, 9)}T"
        file.write_text(calendar([event(key, key, "v1", start + "100000Z", start + "110000Z")]), encoding="utf-8",
                        newline="")
        ops = self.ledger.begin({key: "v1"})
        status, _, _ = self.stage.run(self.name, self.place, "import", file, "--calendar", self.own)
        self.ledger.end(ops, DONE if status == 0 else REFUSED)
        began = self.ledger.clock()
        self.fetch(self.own, datetime.date(2027, 1, 1), 10)
        for index in range(1, int(self.ask('Orlo_GetItemCountForType("event")')) + 1):
            self.ask(f'Orlo_OpenItemAt("event";{index})')
            if self.ask('Orlo_GetProperty("event";"title")') == key:
                uid = self.ask('Orlo_GetProperty("event";"uid")')
                self.tried({key: None}, f'Orlo_RemoveItem("event";"{uid}";"";"all")')
                return
        if None not in self.ledger.possible(key, began, self.ledger.clock()):
            self.stage.finding(self.name, f"\"{key}\" among the events", "it is not")

    def short_calendar(self):
        self.make_calendar(f"{self.new_key()} short")
        uid = self.ask('Orlo_GetProperty("calendar";"uid")')
        self.ask(f'Orlo_RemoveItem("calendar";"{uid}")')


