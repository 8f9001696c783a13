#!/usr/bin/env python3
"""What clients of other makes see of Orlocal's, and Orlocal of theirs; and how long it takes from their write to a script.

usage: clients_test.py --orlocal PROGRAM [--rounds N]

vdirsyncer with khal, and the Python library caldav, on Radicale. The times are printed, not judged.
"""
import argparse
import contextlib
import os
import pathlib
import random
import shutil
import signal
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).parent))
import counting_proxy  # noqa: E402
import dav  # noqa: E402
import scenario  # noqa: E402
import server_test  # noqa: E402
import servers  # noqa: E402
from scenario import expect, expect_that  # noqa: E402

TESTS = []


def client(sentence):
    def add(function):
        TESTS.append(scenario.Scenario(function.__name__, sentence, function))
        return function
    return add


class Terminal:
    """vdirsyncer and khal, with settings and a folder of their own."""

    def __init__(self, bench):
        self.folder = bench.folder / "terminal"
        self.items = self.folder / "items"
        self.folder.mkdir(parents=True)
        self.environment = dict(os.environ, HOME=str(self.folder), XDG_CONFIG_HOME=str(self.folder / "config"),
                                XDG_DATA_HOME=str(self.folder / "data"), XDG_CACHE_HOME=str(self.folder / "cache"),
                                TZ="Europe/Berlin", LANG="C.UTF-8", LC_ALL="C.UTF-8")
        (self.folder / "vdirsyncer").write_text(f"""[general]
status_path = "{self.folder}/status/"
[pair team]
a = "here"
b = "there"
collections = ["from b"]
conflict_resolution = "b wins"
[storage here]
type = "filesystem"
path = "{self.items}/"
fileext = ".ics"
[storage there]
type = "caldav"
url = "{bench.address()}"
username = "alice"
password = "{servers.PASSWORD}"
""", encoding="utf-8")

    def use(self, name):
        self.calendar = self.items / name
        (self.folder / "khal").write_text(f"""[calendars]
[[team]]
path = {self.calendar}
[locale]
local_timezone = Europe/Berlin
default_timezone = Europe/Berlin
timeformat = %H:%M
dateformat = %Y-%m-%d
longdateformat = %Y-%m-%d
datetimeformat = %Y-%m-%d %H:%M
longdatetimeformat = %Y-%m-%d %H:%M
[default]
default_calendar = team
""", encoding="utf-8")

    def run(self, *words, said="y\n" * 20):
        done = subprocess.run([str(word) for word in words], env=self.environment, input=said, capture_output=True,
                              text=True, check=False)
        expect(done.returncode, 0, f"status of {' '.join(map(str, words[:4]))}: {done.stdout}{done.stderr}")
        return done.stdout

    def sync(self):
        for word in ("discover", "sync"):
            self.run("vdirsyncer", "--config", self.folder / "vdirsyncer", word)

    def khal(self, *words):
        return self.run("khal", "--config", self.folder / "khal", *words)

    def agenda(self):
        lines = self.khal("list", "--day-format", "", "--format", "{start-long-full} {title}", "2026-12-01", "2026-12-20")
        return sorted(line for line in lines.splitlines() if line.strip())


def make_items(machine):
    """A series with one changed occurrence and one taken out, an event, a reminder."""
    machine.new_event("Team", "Choir", rule='"daily";1;"";"";"";"";4')
    machine.change_event("Team", "Choir", start="2026-12-03 12:00:00", title="Concert")
    machine.remove_event("Team", "Choir", span="this")
    machine.new_event("Team", "Käse; Brot, Wein", start="2026-12-06 18:30:00", location="Küche")
    machine.new_reminder("Team", "Buy bread")
    machine.sync()
    return sorted(f"{start[:16]} {title}" for start, title in machine.events("Team"))


@client("vdirsyncer and khal read what Orlocal pushed, and what they change comes in")
def khal(bench):
    path, machine = bench.team(count=1)
    wanted = make_items(machine)
    terminal = Terminal(bench)
    terminal.use(path.rstrip("/").split("/")[-1])
    terminal.sync()
    expect(terminal.agenda(), wanted, "what khal lists")
    terminal.khal("new", "2026-12-10", "09:00", "10:00", "Dentist")
    [file] = [each for each in terminal.calendar.glob("*.ics") if "Käse" in each.read_text(encoding="utf-8")]
    file.write_text(file.read_text(encoding="utf-8").replace("Käse", "Ziegenkäse"), encoding="utf-8", newline="")
    terminal.sync()
    machine.sync()
    found = sorted(f"{start[:16]} {title}" for start, title in machine.events("Team"))
    expect(found, sorted([line.replace("Käse", "Ziegenkäse") for line in wanted] + ["2026-12-10 09:00 Dentist"]),
           "events here after changes with khal and vdirsyncer")
    expect(machine.property_of("Team", "Ziegenkäse; Brot, Wein", "location"), "Küche", "the location that nobody changed")
    machine.remove_event("Team", "Dentist")
    machine.sync()
    terminal.sync()
    expect_that(not any("Dentist" in line for line in terminal.agenda()), "khal lists no event that was removed here")


@client("the library caldav reads what Orlocal pushed, and what it changes comes in")
def library(bench):
    import caldav  # part of packages.txt beside this file
    path, machine = bench.team(count=1)
    wanted = make_items(machine)
    session = caldav.DAVClient(bench.address(), username="alice", password=servers.PASSWORD)
    [calendar] = [each for each in session.principal().calendars() if str(each.url).endswith(path)]
    titles = sorted(str(event.vobject_instance.vevent.summary.value) for event in calendar.events())
    expect(titles, ["Choir", "Käse; Brot, Wein"], "titles of its events")
    expect([str(todo.vobject_instance.vtodo.summary.value) for todo in calendar.todos()], ["Buy bread"], "its reminders")
    [event] = [each for each in calendar.events() if "Brot" in each.data]
    event.vobject_instance.vevent.summary.value = "Käse; Brot, Bier"
    event.save()
    calendar.save_event(dav.calendar_text(dav.event("dentist", "Dentist", "20261210T080000Z", "20261210T090000Z")))
    machine.sync()
    found = sorted(f"{start[:16]} {title}" for start, title in machine.events("Team"))
    expect(found, sorted([line.replace("Wein", "Bier") for line in wanted] + ["2026-12-10 09:00 Dentist"]),
           "events here after changes with the library")
    calendar.event_by_uid("dentist").delete()
    machine.sync()
    expect_that("Dentist" not in [title for _, title in machine.events("Team")], "the event that the library removed is gone")


@contextlib.contextmanager
def kept_running(machine, *words):
    """A service of Orlocal's, ended at the end; its output in lines."""
    process = machine.start(*words)
    try:
        yield process
    finally:
        process.send_signal(signal.SIGINT)
        try:
            process.communicate(timeout=10)
        except subprocess.TimeoutExpired:
            process.kill()
            process.communicate()


@client("a write of theirs starts a script here, while orlocal sync --follow runs")
def to_a_script(bench):
    path = bench.calendar("Team")
    waits, ours = [], []
    chance = random.Random(bench.options.seed)
    with counting_proxy.in_front_of(bench.server) as proxy:
        machine = bench.machine(proxy.origin + bench.server.root)
        with kept_running(machine, "sync", "--follow"), kept_running(
                machine, "watch", "--file", "Solution", "--script", "Calendar changed") as watch:
            time.sleep(3)
            for number in range(bench.options.rounds):
                # At any moment between two looks at the server.
                time.sleep(chance.uniform(0, 30))
                proxy.clear()
                began = time.monotonic()
                bench.alice.put(f"{path}put{number}.ics", dav.calendar_text(dav.event(f"put{number}", f"Put {number}")))
                line = watch.stdout.readline()
                ended = time.monotonic()
                expect_that("New" in line, f"a start of the script for a new event: {line}")
                waits.append(ended - began)
                ours.append(ended - proxy.asked[0][0])
    middle = len(waits) // 2
    bench.note(f"{len(waits)} times from PUT to the start of the script: median {sorted(waits)[middle]:.2f} s, longest "
               f"{max(waits):.2f} s; of it from the look at the server that found it: median {sorted(ours)[middle]:.3f} s, "
               f"longest {max(ours):.3f} s")


def main():
    parser = argparse.ArgumentParser(description="Orlocal beside clients of other makes.")
    parser.add_argument("--orlocal", required=True, type=pathlib.Path, help="the built program")
    parser.add_argument("--rounds", type=int, default=3, help="writes that are timed")
    parser.add_argument("--only", default="", help="names, with commas")
    parser.add_argument("--seed", type=int, default=random.randrange(1 << 32))
    options = parser.parse_args()
    options.orlocal = options.orlocal.resolve()
    for program in ("vdirsyncer", "khal"):
        if shutil.which(program) is None:
            print(f"clients_test.py: {program} is missing; ./run servers installs it", file=sys.stderr)
            return 1
    chosen = [each for each in TESTS if not options.only or each.name in options.only.split(",")]
    with tempfile.TemporaryDirectory() as folder, servers.running("radicale") as server:
        outcomes = [server_test.run_one(each, server, options, pathlib.Path(folder) / each.name) for each in chosen]
    return server_test.finish("clients", outcomes)


if __name__ == "__main__":
    sys.exit(main())
