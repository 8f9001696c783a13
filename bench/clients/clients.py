#!/usr/bin/env python3
"""Measures how far calendar servers go with many of our clients; started by run.sh.

Each server gets users with calendars; then orlocal_clients, which is the engine itself on a store for each client, does
one task after the other, and what came of it is shown as tables and kept as JSON.
"""
import argparse
import dataclasses
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time

sys.dont_write_bytecode = True
HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parents[1] / "tests/accounts/servers")]
import filling  # noqa: E402
import servers  # noqa: E402
import shown  # noqa: E402

MEMORY = pathlib.Path("/dev/shm")


@dataclasses.dataclass
class Size:
    """How much of everything."""

    users: int = 1000  # each with a calendar
    events: int = 100  # in each
    team: int = 100  # clients of one calendar
    team_events: int = 200
    rounds: int = 10  # of what one client does alone
    seconds: int = 15  # of a stretch of polling
    # Of a hundred syncs so many meet a change of their own machine, and so many one of another.
    changes: tuple = ("--changes-here", 2, "--changes-there", 2)
    team_changes: tuple = ("--changes-here", 5)
    # Clients, and syncs that are due in a minute; no further one once the server fell behind.
    steps: tuple = ((1, 60), (10, 600), (100, 1000), (1000, 1000), (1000, 2000), (1000, 4000), (1000, 8000), (1000, 16000),
                    (1000, 32000))
    team_steps: tuple = ((100, 100), (100, 600), (100, 1000), (100, 2000), (100, 4000))
    bursts: tuple = ((10, "quiet", 3), (100, "quiet", 3), (1000, "quiet", 1), (100, "received", 1), (100, "sent", 1))
    # Events of calendars that are fetched for the first time. One server takes a second for fifty events of this mix.
    first: dict = dataclasses.field(default_factory=lambda: {"radicale": (100, 1000), "cyrus": (1000, 10_000, 50_000)})
    first_rounds: int = 3


SMOKE = Size(users=4, events=10, team=3, team_events=20, rounds=1, seconds=2, changes=("--changes-here", 20, "--changes-there", 20),
             team_changes=("--changes-here", 20), steps=((1, 60), (4, 240)), team_steps=((3, 180),),
             bursts=((4, "quiet", 1),), first={"radicale": (20,), "cyrus": (20,)}, first_rounds=1)


class Field:
    """A server, and a folder for stores."""

    def __init__(self, program, server, folder):
        self.program, self.server, self.folder = program, server, folder

    def task(self, name, place, *words):
        done = subprocess.run([self.program, name, self.folder / place, self.server.origin + self.server.root,
                               "--server", str(self.server.keeper), *map(str, words)], capture_output=True, text=True,
                              check=False)
        if done.returncode != 0:
            raise RuntimeError(f"{name} {place} {' '.join(map(str, words))}: {done.stderr.strip()}")
        return json.loads(done.stdout)

    def fill(self, users, events):
        file = self.folder / "fill.ics"
        subprocess.run([self.program, "file", file, str(events)], check=True)
        filling.FILL[self.server.name](self.server, users, file.read_bytes())


def users_of(size):
    return [f"user{number:04}" for number in range(size.users)]


def first_user(events):
    return f"first{events}"


def tell(words):
    print(f"{time.strftime('%H:%M:%S')} {words}", file=sys.stderr, flush=True)


def steadily(field, place, steps, size, *words):
    """Stretches of polling, until the server does not follow any more."""
    found = []
    for clients, per_minute in steps:
        tell(f"{field.server.name}: {clients} clients, {per_minute} syncs a minute, {place}")
        found.append(field.task("steady", place, "--clients", clients, "--per-minute", per_minute, "--seconds", size.seconds,
                                *words))
        if shown.fell_behind(found[-1]):
            break
    return found


def first_syncs(field, events, rounds):
    """Without the floor for the peak of memory, as the floor needs what was asked; then both, again and again."""
    user = first_user(events)
    field.fill([user], events)
    whole = ("--user", user, "--clients", 1)
    alone = field.task("join", f"first{events}", *whole)
    both = [field.task("join", f"first{events}-{number}", *whole, "--floor") for number in range(rounds)]
    polls = {kind: field.task("burst", f"first{events}", *whole, "--kind", kind, "--rounds", rounds)
             for kind in ("quiet", "received")}
    return {"events": events, "alone": alone, "both": both, **polls}


def measure(name, program, size, folder):
    users = users_of(size)
    firsts = [first_user(events) for events in size.first[name]]
    tell(f"{name}: starting, for {size.users} users")
    with servers.running(name, [*users, "team", *firsts]) as server:
        field = Field(program, server, folder)
        found = {"version": shown.version(name)}
        began = time.monotonic()
        field.fill(users, size.events)
        field.fill(["team"], size.team_events)
        tell(f"{name}: filled within {time.monotonic() - began:.0f} s")
        field.task("join", "own", "--clients", 1)
        found["one"] = [field.task("burst", "own", "--clients", 1, "--kind", kind, "--rounds", size.rounds)
                        for kind in ("quiet", "received", "sent")]
        tell(f"{name}: all clients come for the first time")
        found["joining"] = field.task("join", "own", "--clients", size.users)
        found["bursts"] = []
        for clients, kind, rounds in size.bursts:
            tell(f"{name}: {clients} clients at once, {kind}")
            found["bursts"].append(field.task("burst", "own", "--clients", clients, "--kind", kind, "--rounds", rounds))
        found["steps"] = steadily(field, "own", [step for step in size.steps if step[0] <= size.users], size, *size.changes)
        tell(f"{name}: a team")
        found["team joining"] = field.task("join", "team", "--clients", size.team, "--user", "team")
        field.task("burst", "team", "--clients", size.team, "--user", "team")
        found["team"] = steadily(field, "team", size.team_steps, size, "--user", "team", *size.team_changes)
        found["first"] = []
        for events in size.first[name]:
            tell(f"{name}: the first sync of {events} events")
            found["first"].append(first_syncs(field, events, size.first_rounds))
    return found


def main():
    parser = argparse.ArgumentParser(prog="run.sh", description="Measures calendar servers with many of our clients.")
    parser.add_argument("program", type=pathlib.Path, help=argparse.SUPPRESS)
    parser.add_argument("names", nargs="*", metavar="radicale|cyrus", help="servers (default: both; of a smoke run Radicale)")
    parser.add_argument("--smoke", action="store_true", help="once, with few clients: that everything runs")
    parser.add_argument("--json", type=pathlib.Path, help="write everything that was found, for programs")
    parser.add_argument("--report", type=pathlib.Path, help="a page that the tables are put into, between two marks")
    parser.add_argument("--show", type=pathlib.Path, nargs="+", help="measure nothing: take what --json wrote")
    parser.add_argument("--folder", type=pathlib.Path, default=MEMORY if MEMORY.is_dir() else None,
                        help="for servers and stores (default: in memory, as one disk would stand for a thousand)")
    options = parser.parse_args()
    names = options.names or (["radicale"] if options.smoke else list(filling.FILL))
    unknown = [name for name in names if name not in filling.FILL]
    if unknown:
        parser.error(f"no server {', '.join(unknown)}; there are {', '.join(filling.FILL)}")
    size = SMOKE if options.smoke else Size()
    if options.folder:
        os.environ["TMPDIR"] = str(options.folder)
        tempfile.tempdir = None
    results = {"date": time.strftime("%Y-%m-%d"), "threads": os.cpu_count(), "size": dataclasses.asdict(size), "servers": {}}
    for file in options.show or []:
        read = json.loads(file.read_text())
        results = {**read, "servers": results["servers"] | read["servers"]}
    for name in [] if options.show else names:
        with tempfile.TemporaryDirectory(prefix="clients") as folder:
            results["servers"][name] = measure(name, options.program.resolve(), size, pathlib.Path(folder))
        if options.json:
            options.json.write_text(json.dumps(results, indent=1))
    lines = "\n".join(shown.report(results))
    print(lines)
    if options.report:
        shown.put(options.report, lines)


if __name__ == "__main__":
    main()
