"""What scenarios share: a server, machines with its account, calendars of a scenario's own, and expectations."""
import dataclasses
import time

import dav
from machine import Machine

ALL = []


class Skipped(Exception):
    """The server cannot do it, and why."""


class Unexpected(Exception):
    pass


@dataclasses.dataclass
class Scenario:
    name: str
    sentence: str
    run: object


def scenario(sentence):
    """A function that takes a Bench, in the order of the list."""
    def add(function):
        ALL.append(Scenario(function.__name__, sentence, function))
        return function
    return add


def expect(found, wanted, what):
    if found != wanted:
        raise Unexpected(f"{what}\n  wanted: {wanted}\n  found:  {found}")


def expect_that(holds, what):
    if not holds:
        raise Unexpected(what)


class Bench:
    """One scenario's: what it makes on the server is removed when it ends."""

    made = 0

    def __init__(self, server, folder, options, note):
        self.server = server
        self.program = options.orlocal
        self.note = note  # prints a line below the scenario's
        self.folder = folder
        self.options = options
        self.alice = dav.Client(server)
        self.machines = []

    def address(self, path=None):
        return self.server.origin + (path or self.server.root)

    def machine(self, address=None, user="alice"):
        """A machine that has synced for the first time."""
        made = Machine(self.program, self.folder / f"machine{len(self.machines) + 1}")
        self.machines.append(made)
        made.add_account(address or self.address(), user)
        made.sync()
        return made

    def team(self, count=2, title="Team"):
        """A calendar, its address on the server, and machines that have it."""
        return (self.calendar(title), *(self.machine() for _ in range(count)))

    def calendar(self, title):
        """Its address. The name is new each time: one server takes a while to forget one that was removed."""
        Bench.made += 1
        self.alice.make_calendar(f"{title.lower()}{Bench.made}", title)
        return self.alice.calendar_titled(title)

    def clear(self):
        for path in set(self.alice.calendars()) - self.before:
            try:
                self.alice.remove(path)
            except dav.Refused as refused:
                self.note(f"cannot be removed after the scenario: {str(refused).splitlines()[0]}")

    def __enter__(self):
        self.before = set(self.alice.calendars())
        return self

    def __exit__(self, *_):
        self.clear()


def there_and_back(first, *others):
    """What is new on the first one comes to the others."""
    first.sync()
    for other in others:
        other.sync()


def settle(*machines, most=5):
    """Syncs until nobody has news."""
    for _ in range(most):
        reports = [machine.sync() for machine in machines]
        if not any(report[count] for report in reports for count in ("received", "sent", "removedHere", "removedThere")):
            return
    raise Unexpected(f"there is no end of news: {reports}")


def until(holds, seconds):
    """When it holds; none when it does not in that time."""
    began = time.monotonic()
    while time.monotonic() - began < seconds:
        if holds():
            return time.monotonic() - began
        time.sleep(0.05)
    return None
