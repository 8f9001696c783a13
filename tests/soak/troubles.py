"""What befalls a machine: processes that are killed, or stopped as in sleep, and clocks that are set."""
import contextlib
import os
import signal
import time

HOUR = 3600
# Within a day, past which an alarm is counted and not told.
JUMPS = (300, HOUR, 5 * HOUR, 20 * HOUR, -HOUR, -5 * HOUR, -30 * HOUR)


class Troubles:
    """An actor of its own."""

    def __init__(self, stage, chance, clocks, alarm_clock, alarm_actors):
        self.stage, self.chance, self.clocks = stage, chance, clocks
        self.alarm_clock, self.alarm_actors = alarm_clock, alarm_actors
        self.stopped = {}  # pid to when it goes on
        self.set_back = {}  # clock to when it is right again
        self.away_since = None

    def step(self):
        self.let_go()
        self.chance.choices((self.kill, self.stop, self.jump, lambda: None), (3, 3, 2, 6))[0]()

    def close(self):
        self.let_go(everything=True)

    def let_go(self, everything=False):
        now = time.monotonic()
        for pid, until in list(self.stopped.items()):
            if everything or until < now:
                del self.stopped[pid]
                self.send(pid, signal.SIGCONT)
                self.stage.troubles["stop"] = now
        for clock, until in list(self.set_back.items()):
            if everything or until < now:
                del self.set_back[clock]
                self.set(clock, 0)

    def send(self, pid, number):
        # Nobody else's: what is in the table was not waited for yet.
        with self.stage.lock, contextlib.suppress(ProcessLookupError):
            if pid in self.stage.processes:
                os.kill(pid, number)

    def some(self, wanted):
        with self.stage.lock:
            pids = sorted(pid for pid, row in self.stage.processes.items() if wanted(row))
            return (self.chance.choice(pids), ) if pids else ()

    def kill(self):
        for pid in self.some(lambda row: row[1] and row[2]):
            actor = self.stage.processes.get(pid, ("", ))[0]
            if actor in self.alarm_actors:
                self.stage.disturbances.append((time.monotonic() - 1, time.monotonic() + 1, "kill"))
            self.stage.trouble("kill")
            self.send(pid, signal.SIGKILL)

    def stop(self):
        for pid in self.some(lambda row: True):
            self.stopped[pid] = time.monotonic() + self.chance.choice((0.3, 1, 3, 8, 14))
            self.stage.trouble("stop")
            self.send(pid, signal.SIGSTOP)

    def jump(self):
        if not self.clocks:
            return
        # While the alarms' clock is another one, nobody knows what has to ring.
        clock = self.chance.choices(self.clocks, [1 if each is self.alarm_clock else 5 for each in self.clocks])[0]
        self.set_back[clock] = time.monotonic() + self.chance.uniform(5, 60)
        self.set(clock, self.chance.choice(JUMPS))

    def set(self, clock, seconds):
        now = time.monotonic()
        if clock is self.alarm_clock:
            if self.away_since is not None:
                self.stage.disturbances.append((self.away_since, now, "jump"))
            self.away_since = now if seconds else None
        self.stage.trouble("jump")
        clock.set(seconds)
