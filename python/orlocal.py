"""Calendars of an Orlocal store, for Python: what the program `orlocal` prints with --json, as dictionaries.

    import orlocal
    store = orlocal.Store()                      # the user's own; Store("/path/calendar.db") for another
    for event in store.agenda("today", "+7")["events"]:
        print(event["start"], event["title"])
    store.new("Lunch with Grace tomorrow 12:30 1h", calendar="Work")

The keys are described in docs/schema/output.json. Every call is a process of its own, so that nothing of a store is
held between two calls; what was saved is on the disk when the call returns. A call that fails raises `Error`.
"""
import json
import os
import subprocess

__all__ = ["Error", "Store"]


class Error(Exception):
    """What `orlocal` said, and how it ended: 1 the work failed, 2 the words were off."""

    def __init__(self, message, status):
        super().__init__(message)
        self.status = status


class Store:
    """A calendar store, by its file; None is the user's own."""

    def __init__(self, file=None, program="orlocal"):
        self._program = program
        self._store = [] if file is None else ["--store", os.fspath(file)]

    def run(self, command, *words, **options):
        """Runs any command; gives what it prints as JSON, or None. An option's value is its text, True for one without
        a value, or a list for one that may be repeated; first_day=… is --first-day."""
        # Options go before the words: behind "--" everything is a word, whatever it begins with.
        typed = [command]
        for name, value in options.items():
            for each in value if isinstance(value, (list, tuple)) else [value]:
                if each is None or each is False:
                    continue
                name_typed = "--" + name.strip("_").replace("_", "-")
                typed.append(name_typed if each is True else f"{name_typed}={each}")
        typed += ["--", *map(str, words)] if words else []
        # It reads what it is given here and asks nobody.
        done = subprocess.run(
            [self._program, *self._store, "--json", "--color=never", *typed],
            stdin=subprocess.DEVNULL, capture_output=True, encoding="utf-8", check=False)
        if done.returncode != 0:
            raise Error(done.stderr.strip().removeprefix("orlocal: "), done.returncode)
        return json.loads(done.stdout) if done.stdout.strip() else None

    def calendars(self):
        """Calendars and reminder lists."""
        return self.run("calendars")

    def agenda(self, first="today", last="+6", calendars=()):
        """What is planned from one day to the other, both included: "events", and "reminders" in several lists."""
        return self.run("agenda", from_=first, to=last, calendar=list(calendars))

    def search(self, text):
        """Events and reminders with these words, the best first."""
        return self.run("search", text)

    def show(self, what):
        """Everything that is known of the one with this title or identifier."""
        return self.run("show", what)

    def new(self, sentence, **options):
        """Makes an event, or with reminder=True a reminder; gives it back."""
        return self.run("new", sentence, **options)

    def edit(self, what, **options):
        """Changes what options name: title="…", start="tomorrow 12:30", location="…"."""
        return self.run("edit", what, **options)

    def remove(self, what, **options):
        """Removes it; of a series with occurrence="2026-11-05", this=True."""
        return self.run("remove", what, **options)
