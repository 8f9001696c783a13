"""The end of a soak: nobody writes any more, and what must come to rest does."""
import json
import time

import calendar_files
import dav
import judges
from hosts import TEAM

MOST_SYNCS = 8
HOUR = 3600
# A server is asked every minute, a quarter later at most; beside it a machine that has much to do.
POLLED = 240


class Ending:
    def __init__(self, stage, checks, machines, ledgers, server, path):
        self.stage, self.checks, self.server, self.path = stage, checks, server, path
        self.machines, self.ledgers = machines, ledgers  # "main" and "second"; ledgers have "server", too

    def alarms_ring(self):
        """Waits for the last one's moment."""
        last = max((alarm[3] for alarm in self.stage.alarms), default=0)
        while time.time() < last + 5:
            time.sleep(0.5)

    def server_is_asked(self, clock, restart):
        """A sync --follow asks the server when it should, also when the clock was ahead as it asked last."""
        for number, ahead in enumerate((5 * HOUR, 0)):
            if clock:
                clock.set(ahead)
            restart()
            key = f"marker{number}"
            stamp = "DTSTAMP:20261101T000000Z\r\n"
            dav.Client(self.server).put(f"{self.path}{key}.ics", calendar_files.calendar([calendar_files.event(
                key, key, "v1", "20270401T100000Z", "20270401T110000Z", stamp)]))
            if not self.comes(key):
                self.stage.finding("sync", f"a look at the server within {POLLED} s", f"{key} has not come from there")

    def comes(self, key):
        until = time.monotonic() + POLLED
        while time.monotonic() < until:
            _, out, _ = self.stage.run("end", self.machines["main"], "--json", "search", key)
            if json.loads(out)["results"]:
                return True
            time.sleep(2)
        return False

    def sync_settles(self):
        """Both stores until nobody has news; conflicts are decided for the server."""
        for _ in range(MOST_SYNCS):
            reports = []
            for place in self.machines.values():
                _, out, _ = self.stage.run("end", place, "--json", "sync", judged=False)
                reports += json.loads(out)
                self.decide(place)
            if not any(report[count] for report in reports
                       for count in ("received", "sent", "removedHere", "removedThere")):
                if any(report["failure"] or report["troubles"] for report in reports):
                    self.stage.finding("sync", "an end without troubles", json.dumps(reports))
                return
        self.stage.finding("sync", f"no news after {MOST_SYNCS} syncs", json.dumps(reports))

    def decide(self, place):
        _, out, _ = self.stage.run("end", place, "--json", "conflicts")
        for conflict in json.loads(out):
            self.stage.count("conflicts")
            main = self.ledgers["main"]
            if not main.restores:
                self.stage.finding("sync", "no conflict that nobody made", json.dumps(conflict))
            self.stage.run("end", place, "conflicts", "keep", "theirs", conflict["id"])

    def same_everywhere(self):
        copies = {name: self.checks.contents("end", place, place.store).get(TEAM, [])
                  for name, place in self.machines.items()}
        server = dav.Client(self.server).items(self.path)
        copies["server"] = [each for text in server.values() for each in calendar_files.components(text)]
        self.stage.count("items of the server at the end", len(server))
        self.checks.tell("end", "the same on both machines and the server", judges.same_everywhere(copies))
        now = time.monotonic()
        for name in ("second", "server"):
            self.checks.tell("end", f"what was confirmed ({name})", judges.confirmed_is_there(
                self.ledgers[name], {TEAM: copies[name]}, now, now))
        self.checks.tell("end", "each item once", judges.once_each({TEAM: copies["server"]}))

    def alarms_rang(self, log):
        rung = [line.rsplit(" ", 2) for line in log.read_text(encoding="utf-8").splitlines()] if log.exists() else []
        rung = [(title, moment, float(arrival)) for title, moment, arrival in rung if title]
        restores = self.ledgers["main"].restores
        expected = [alarm[0] for alarm in self.stage.alarms if self.had_to_ring(alarm, restores)]
        self.stage.count("alarms that had to ring", len(expected))
        self.stage.count("alarms that rang", len(rung))
        self.checks.tell("alarms", "each alarm once", judges.rang_once(expected, rung, restores))

    def had_to_ring(self, alarm, restores):
        """Not when a restore took it away, its watcher's clock was another one, or its watcher was killed as it rang."""
        _, began, ended, moment = alarm
        # What was saved too late has passed already.
        at = time.monotonic() + moment - time.time()
        if ended > at - 1 or any(restore.begin < at + 15 and restore.end > began for restore in restores):
            return False
        return not any(begin < at + 15 and end > (at if kind == "kill" else began)
                       for begin, end, kind in self.stage.disturbances)


