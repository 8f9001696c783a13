#!/usr/bin/env python3
"""All that uses a store, on one store at once, for hours: hosts, commands, watchers, syncs; and what befalls them."""
import argparse
import contextlib
import pathlib
import random
import shutil
import signal
import sys
import tempfile
import threading
import time
import traceback

sys.dont_write_bytecode = True
HERE = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(HERE), str(HERE.parent / "accounts" / "servers")]
import dav  # noqa: E402
import judges  # noqa: E402
import processes  # noqa: E402
import servers  # noqa: E402
from checks import Checks  # noqa: E402
from commands import SHARED, Importer, Keeper, OtherMachine, Person, ServerWriter  # noqa: E402
from ending import Ending  # noqa: E402
from hosts import TEAM, CurrentHost, OlderHost  # noqa: E402
from ledger import Ledger  # noqa: E402
from measures import Measurer  # noqa: E402
from stage import FAKETIME, Clock, Place, Stage  # noqa: E402
from troubles import Troubles  # noqa: E402
from watchers import AlarmWatcher, ChangeWatcher, ScriptWatcher, SyncFollower  # noqa: E402

SETTINGS = "[update-script]\nfile = Solution\nscript = Calendar changed\n"


def words():
    reader = argparse.ArgumentParser(prog="./run soak", description=__doc__,
                                     epilog="Ends with status 1 when something did not hold; what there is to see is kept then.")
    reader.add_argument("hours", nargs="?", type=float, default=1, metavar="HOURS", help="how long (1)")
    reader.add_argument("--minutes", type=float, metavar="N", help="the same in minutes")
    reader.add_argument("--seed", type=int, default=random.SystemRandom().randrange(1 << 32), metavar="S",
                        help="the actors' choices; each makes the same ones again, what meets what is up to the machine")
    reader.add_argument("--keep", type=pathlib.Path, metavar="FOLDER", help="a new folder for stores, ledgers and logs, kept")
    reader.add_argument("--pace", type=float, default=1, metavar="X", help="so many times as many changes (1)")
    reader.add_argument("--short", action="store_true", help="without what takes minutes by itself: for a try")
    reader.add_argument("--orlocal", type=pathlib.Path, required=True, help=argparse.SUPPRESS)
    return reader.parse_args()


class Soak:
    def __init__(self, options, folder, server):
        self.options, self.server = options, server
        self.stage = Stage(options.orlocal.resolve(), folder)
        self.main, self.second = Place(folder / "main", SETTINGS), Place(folder / "second")
        self.ledgers = {name: Ledger(folder / "logs" / f"{name}.ledger") for name in ("main", "second", "server")}
        for ledger in self.ledgers.values():
            ledger.weak.update(SHARED)
        self.groups = {}
        # Programs that are built with sanitizers let nothing be loaded before those.
        clocks = pathlib.Path(FAKETIME).exists() and not options.short
        if not clocks and not options.short:
            self.stage.say(f"{FAKETIME} is not there: no clock jumps")
        self.clocks = {name: Clock(folder / f"clock-{name}") if clocks else None
                       for name in ("alarms", "commands", "sync", "hosts")}
        self.threads, self.acting, self.followers = [], [], []

    def chance(self, name):
        return random.Random(f"{self.options.seed} {name}")

    def prepare(self):
        """The account on both machines, and its calendar."""
        client = dav.Client(self.server)
        client.make_calendar("team", TEAM)
        self.path = client.calendar_titled(TEAM)
        # It puts there what everybody changes, before the first sync.
        self.writer = ServerWriter("server", self.stage, None, self.ledgers["server"], self.chance("server"), client=client,
                                   path=self.path)
        for place in (self.main, self.second):
            for command in (["account", "add", self.server.origin + self.server.root, "--user", "alice", "--password-file",
                             place.password, "--name", "Work"], ["sync"], ["calendars", "new", "--reminders", "Reminders"]):
                status, out, err = self.stage.run("begin", place, *command, judged=False)
                if status != 0 and command[0] != "calendars":
                    raise RuntimeError(f"orlocal {' '.join(map(str, command))}: {out}{err}")

    def follow(self, kind, name, place, **more):
        follower = kind(name, self.stage, place, **more)
        follower.begin()
        self.followers.append(follower)
        return follower

    def act(self, actor, seconds, name=None):
        """Steps with pauses, `seconds` on average, until the end."""
        chance = self.chance(f"{name or actor.name} pauses")
        self.acting.append(actor)

        def go():
            while not self.stage.over.wait(min(chance.expovariate(self.options.pace / seconds), 10 * seconds)):
                self.guarded(name or actor.name, actor.step)
        self.threads.append(threading.Thread(target=go, daemon=True, name=name or actor.name))

    def guarded(self, name, step):
        """A mistake in the soak itself is found, too, and ends nothing else."""
        try:
            step()
        except Exception:
            self.stage.finding(name, "a soak that works", traceback.format_exc())

    def set_up(self):
        main, ledger, alarm_log = self.main, self.ledgers["main"], self.stage.folder / "logs" / "alarms"
        self.alarm_log = alarm_log
        self.watchers = [self.follow(ChangeWatcher, "watch", main, ledger=ledger, may_die=False),
                         self.follow(ChangeWatcher, "watch-resumed", main, ledger=ledger)]
        self.follow(AlarmWatcher, "alarms", main, log=alarm_log, clock=self.clocks["alarms"], may_die=False)
        self.follow(AlarmWatcher, "alarms-killed", main, log=alarm_log)
        self.follow(ScriptWatcher, "scripts", main)
        self.sync = self.follow(SyncFollower, "sync", main, clock=self.clocks["sync"])
        self.follow(SyncFollower, "sync-second", self.second, may_die=False)
        time.sleep(1)
        for kind, name, clock, may_die in ((CurrentHost, "host", None, False), (CurrentHost, "host-killed", None, True),
                                           (CurrentHost, "host-clock", "hosts", True), (OlderHost, "older", None, False),
                                           (OlderHost, "older-killed", None, True)):
            self.act(kind(name, self.stage, main, ledger, self.chance(name), self.clocks[clock] if clock else None, may_die),
                     0.6)
        for kind, name, clock, seconds, more in (
                (Person, "person", "commands", 0.8, {}), (Importer, "importer", None, 2.5, {"groups": self.groups}),
                (Keeper, "keeper", "commands", 2 if self.options.short else 25, {})):
            self.act(kind(name, self.stage, main, ledger, self.chance(name), self.clocks[clock] if clock else None, **more),
                     seconds)
        self.act(OtherMachine("second", self.stage, self.second, self.ledgers["second"], self.chance("second")), 2)
        self.act(self.writer, 3)
        self.checks = Checks(self.stage, main, ledger, self.groups)
        self.troubles = Troubles(self.stage, self.chance("troubles"), [clock for clock in self.clocks.values() if clock],
                                 self.clocks["alarms"], {"alarms-killed"})
        self.act(self.troubles, 1.5, "troubles")
        self.act(Measurer(self.stage), 1 if self.options.short else 5, "measures")

    def run(self):
        seconds = 60 * self.options.minutes if self.options.minutes is not None else 3600 * self.options.hours
        self.prepare()
        self.set_up()
        self.stage.say(f"{seconds / 60:.1f} minutes, seed {self.options.seed}, in {self.stage.folder}")
        for thread in self.threads:
            thread.start()
        until = time.monotonic() + seconds
        every = 5 if self.options.short else 60
        try:
            while (left := until - time.monotonic()) > 0:
                time.sleep(min(every, left))
                self.guarded("check", self.checks.step)
                self.checks.processes_are_flat()
                if self.stage.counts["checks"] % 5 == 0:
                    self.stage.say(f"{self.stage.counts['confirmed changes of hosts']} changes of hosts, "
                                   f"{self.stage.counts['kill']} kills, {self.stage.counts['restore']} restores, "
                                   f"{len(self.stage.findings)} findings")
        except KeyboardInterrupt:
            self.stage.say("interrupted; coming to an end")
        self.guarded("end", self.finish)

    def finish(self):
        self.stage.over.set()
        for thread in self.threads:
            thread.join(5)
        # What was stopped goes on, so that who waits for it does.
        self.troubles.close()
        for thread in self.threads:
            thread.join(300)
            if thread.is_alive():
                self.stage.finding(thread.name, "an end of its step within five minutes", "none")
        ending = Ending(self.stage, self.checks, {"main": self.main, "second": self.second}, self.ledgers, self.server,
                        self.path)
        if not self.options.short:
            ending.alarms_ring()
            ending.server_is_asked(self.clocks["sync"], self.restart_sync)
        else:
            time.sleep(3)
        for each in (*self.acting, *self.followers):
            each.close()
        for watcher in self.watchers:
            for sentence in judges.told_once(self.ledgers["main"], watcher.lines):
                self.stage.finding(watcher.name, "each commit told", sentence)
        ending.sync_settles()
        self.checks.step()
        ending.same_everywhere()
        if not self.options.short:
            ending.alarms_rang(self.alarm_log)
        self.checks.folder_is_clean(self.main, self.stage.counts["restore"])
        self.checks.folder_is_clean(self.second, 0)
        self.checks.nobody_is_left({self.server.keeper, *self.of_server()})

    def restart_sync(self):
        with self.stage.lock:
            self.sync.process.send_signal(signal.SIGKILL)

    def of_server(self):
        return servers_processes(self.server.keeper)


def servers_processes(keeper):
    """Those of the server's own session."""
    found = set()
    for pid in processes.descendants():
        with contextlib.suppress(OSError), open(f"/proc/{pid}/stat", encoding="utf-8") as file:
            if int(file.read().rpartition(")")[2].split()[3]) == keeper:
                found.add(pid)
    return found


def table(stage):
    print("\nWhat was done")
    for what, count in sorted(stage.counts.items(), key=lambda each: -each[1]):
        print(f"  {count:9,d}  {what}")
    print("\nMemory of those that lived longest (anonymous MiB first, last; descriptors first, last; samples)")
    longest = {}
    for (actor, _), samples in stage.samples.items():
        longest[actor] = max(longest.get(actor, []), samples, key=len)
    for actor, samples in sorted(longest.items()):
        quarter = max(len(samples) // 4, 1)
        first, last = samples[quarter if len(samples) > quarter else 0], samples[-1]
        print(f"  {actor:14s} {first[0] / judges.MEBIBYTE:7.1f} {last[0] / judges.MEBIBYTE:7.1f}   "
              f"{first[1]:4d} {last[1]:4d}   {len(samples):5d}")
    print(f"\n{len(stage.findings)} findings" + (f"; what there is to see is in {stage.folder}" if stage.findings else ""))
    for at, actor, wanted, found in stage.findings[:40]:
        print(f"  {at}  {actor}: expected {wanted}; there was: {found}")


def main():
    options = words()
    for number in (signal.SIGINT, signal.SIGTERM):
        # Also where a shell has an interrupt ignored: processes that are started here would inherit that.
        signal.signal(number, signal.default_int_handler)
    processes.adopt_orphans()
    if options.keep:
        options.keep.mkdir(parents=True)
    folder = options.keep.resolve() if options.keep else pathlib.Path(tempfile.mkdtemp(prefix="soak"))
    soak = None
    try:
        with servers.running("radicale") as server:
            soak = Soak(options, folder, server)
            soak.run()
    finally:
        processes.end_all()
    table(soak.stage)
    if not soak.stage.findings and not options.keep:
        shutil.rmtree(folder, ignore_errors=True)
    return 1 if soak.stage.findings else 0


if __name__ == "__main__":
    sys.exit(main())
