"""A machine with Orlocal on it: a store and settings of its own, used through the built program."""
import datetime
import json
import os
import signal
import subprocess

import servers


class Failed(Exception):
    pass


class Machine:
    """Its clock is the real one, as the servers' are; what is asserted does not depend on it."""

    ACCOUNT = "Work"

    def __init__(self, program, folder, zone="Europe/Berlin"):
        self.program = str(program)
        self.folder = folder
        folder.mkdir(parents=True)
        self.password_file = folder / "password"
        self.set_password(servers.PASSWORD)
        kept = {name: value for name, value in os.environ.items() if name == "PATH" or name.endswith("SAN_OPTIONS")}
        self.environment = {**kept, "HOME": str(folder), "XDG_CONFIG_HOME": str(folder / "config"),
                            "ORLOCAL_STORE": str(folder / "store" / "calendar.db"), "TZ": zone, "LANG": "C.UTF-8",
                            "LC_ALL": "C.UTF-8"}

    def set_password(self, word):
        self.password_file.write_text(word + "\n", encoding="utf-8")
        self.password_file.chmod(0o600)

    # The program

    def start(self, *words):
        return subprocess.Popen([self.program, *map(str, words)], env=self.environment, text=True,
                                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def tell(self, *words):
        """Status, output and errors."""
        process = self.start(*words)
        out, err = process.communicate(timeout=600)
        return process.returncode, out, err

    def run(self, *words):
        """What must go well; its output."""
        status, out, err = self.tell(*words)
        if status != 0:
            raise Failed(f"orlocal {' '.join(map(str, words))}: status {status}\n{out}{err}")
        return out

    def json(self, *words):
        return json.loads(self.run("--json", *words))

    def evaluate(self, *calculations):
        """Results, one a calculation. None may be an error."""
        # One line a result, whatever is in it.
        lines = self.run("eval", *(f"Substitute({each};Char(10);\"|\")" for each in calculations)).splitlines()
        if "!!ERROR!!" in lines:
            at = lines.index("!!ERROR!!")
            why = self.run("eval", *calculations[:at + 1], "Orlo_GetLastError").splitlines()[-1]
            raise Failed(f"{calculations[at]}: {why}")
        return lines

    # Accounts

    def add_account(self, address, user="alice"):
        return self.run("account", "add", address, "--user", user, "--password-file", self.password_file,
                        "--name", self.ACCOUNT)

    def sync(self):
        """What it did; it must go well."""
        report = self.json("sync")[0]
        if report["troubles"]:
            raise Failed(f"troubles: {report['troubles']}")
        return report

    def sync_with_conflicts(self):
        """The same where conflicts are awaited."""
        status, out, err = self.tell("--json", "sync")
        report = json.loads(out)[0]
        if report["failure"] or report["troubles"]:
            raise Failed(f"status {status}: {out}{err}")
        return report

    def killed_sync(self, seconds):
        """A sync that is killed after so long; whether it was still at it."""
        process = self.start("sync")
        try:
            process.wait(timeout=seconds)
        except subprocess.TimeoutExpired:
            process.send_signal(signal.SIGKILL)
        process.communicate()
        return process.returncode < 0

    def conflicts(self):
        return self.json("conflicts")

    def titles_of_calendars(self):
        return sorted(each["title"] for each in self.json("calendars") if each["from"] == "CalDAV")

    def calendar(self, title):
        found = [each for each in self.json("calendars") if each["title"] == title and each["from"] == "CalDAV"]
        return found[0] if len(found) == 1 else None

    # Items

    def new_event(self, calendar, title, /, start="2026-12-01 12:00:00", rule=None, **properties):
        """One hour, from `start`; `rule` is what Orlo_AddRecurrence takes."""
        end = datetime.datetime.fromisoformat(start) + datetime.timedelta(hours=1)
        steps = [f'Orlo_SetProperty("event";"{name}";{value})' for name, value in (
            ("calendartitle", f'"{calendar}"'), ("title", f'"{title}"'), ("startdate", f'Timestamp("{start}")'),
            ("enddate", f'Timestamp("{end}")'), *((name, f'"{value}"') for name, value in properties.items()))]
        self.evaluate('Orlo_NewItem("event")', *steps, *([f"Orlo_AddRecurrence({rule})"] if rule else []),
                      'Orlo_SaveItem("event")')

    def new_reminder(self, calendar, title):
        self.evaluate('Orlo_NewItem("reminder")', f'Orlo_SetProperty("reminder";"calendartitle";"{calendar}")',
                      f'Orlo_SetProperty("reminder";"title";"{title}")', 'Orlo_SaveItem("reminder")')

    def fetch(self, calendar):
        return (f'Orlo_EventsFetch(Timestamp("2026-11-30 00:00:00");Timestamp("2027-03-31 00:00:00");"{calendar}";"")')

    def events(self, calendar):
        """(start, title) of each occurrence that a solution sees, by position."""
        return [(start, title) for start, title, _ in self.occurrences(calendar)]

    def occurrences(self, calendar):
        """The same with identifiers."""
        fetch = self.fetch(calendar)
        count = int(self.evaluate(fetch, 'Orlo_GetItemCountForType("event")')[1])
        rows = [f'Let(opened=Orlo_OpenItemAt("event";{at + 1});Orlo_GetProperty("event";"startdate") & "|" & '
                'Orlo_GetProperty("event";"uid") & "|" & Orlo_GetProperty("event";"title"))' for at in range(count)]
        found = []
        for line in self.evaluate(fetch, *rows)[1:] if rows else []:
            start, uid, title = line.split("|", 2)
            found.append((start, title, uid))
        return found

    def change_event(self, calendar, title, /, span="this", start=None, **properties):
        """The first occurrence of that title, or the one that starts then."""
        found = [at for at, (begin, name) in enumerate(self.events(calendar), 1)
                 if name == title and start in (None, begin)]
        if not found:
            raise Failed(f"no event {title} {start or ''} in {calendar}: {self.events(calendar)}")
        steps = [f'Orlo_SetProperty("event";"{name}";{quoted(name, value)})' for name, value in properties.items()]
        self.evaluate(self.fetch(calendar), f'Orlo_OpenItemAt("event";{found[0]})', *steps,
                      f'Orlo_SaveItem("event";"{span}")')

    def property_of(self, calendar, title, name):
        at = [found for _, found in self.events(calendar)].index(title) + 1
        return self.evaluate(self.fetch(calendar), f'Orlo_OpenItemAt("event";{at})', f'Orlo_GetProperty("event";"{name}")')[2]

    def remove_event(self, calendar, title, span="all"):
        """All of it, or its first occurrence."""
        uid = next(uid for _, found, uid in self.occurrences(calendar) if found == title)
        self.evaluate(f'Orlo_RemoveItem("event";"{uid}";"";"{span}")')

    def reminders(self, calendar):
        fetch = f'Orlo_RemindersFetch("{calendar}";"";"")'
        count = int(self.evaluate(fetch, 'Orlo_GetItemCountForType("reminder")')[1])
        rows = [f'Let(opened=Orlo_OpenItemAt("reminder";{at + 1});Orlo_GetProperty("reminder";"iscompleted") & "|" & '
                'Orlo_GetProperty("reminder";"uid") & "|" & Orlo_GetProperty("reminder";"title"))' for at in range(count)]
        return [tuple(line.split("|", 2)) for line in self.evaluate(fetch, *rows)[1:]] if rows else []

    def titles_of_reminders(self, calendar):
        return sorted(title for _, _, title in self.reminders(calendar))

    def change_reminder(self, calendar, title, /, **properties):
        uid = next(uid for _, uid, found in self.reminders(calendar) if found == title)
        steps = [f'Orlo_SetProperty("reminder";"{name}";{quoted(name, value)})' for name, value in properties.items()]
        self.evaluate(f'Orlo_OpenItemWithUID("reminder";"{uid}")', *steps, 'Orlo_SaveItem("reminder")')

    def remove_reminder(self, calendar, title):
        uid = next(uid for _, uid, found in self.reminders(calendar) if found == title)
        self.evaluate(f'Orlo_RemoveItem("reminder";"{uid}")')


def quoted(name, value):
    return f'Timestamp("{value}")' if name.endswith("date") else f'"{value}"'
