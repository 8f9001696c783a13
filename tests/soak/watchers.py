"""Those who listen: to changes, to alarms, for scripts; and sync --follow. All live until somebody ends them."""
import json
import signal
import threading


class Follower:
    """A process whose output is read line by line; started again when it was killed."""

    def __init__(self, name, stage, place, clock=None, may_die=True):
        self.name, self.stage, self.place, self.clock, self.may_die = name, stage, place, clock, may_die
        self.read_errors, self.ended = 0, False
        self.thread = None

    def words(self):
        raise NotImplementedError

    def hear(self, line):
        raise NotImplementedError

    def begin(self):
        """Returns when it says that it listens."""
        self.go()
        self.thread = threading.Thread(target=self.follow, daemon=True)
        self.thread.start()

    def go(self):
        self.process = self.stage.start(self.name, self.place, self.words(), self.clock, long=True, may_die=self.may_die)

    def follow(self):
        while True:
            for line in self.process.stdout:
                # What a killed process half wrote is no line.
                if line.endswith("\n"):
                    self.hear(line)
            status = self.stage.forget(self.process)
            self.judge_errors()
            if self.ended:
                if status != 0:
                    self.stage.finding(self.name, "status 0 after an interrupt", status)
                return
            if status != -signal.SIGKILL:
                self.stage.finding(self.name, "that it goes on", f"it ended with {status}")
            self.stage.count("watchers and syncs started again")
            self.go()

    def judge_errors(self):
        self.read_errors, text = self.stage.errors(self.name, self.read_errors)
        self.stage.judge(self.name, text)

    def close(self):
        self.ended = True
        self.process.send_signal(signal.SIGINT)
        self.thread.join(60)
        if self.thread.is_alive():
            self.stage.finding(self.name, "an end within 60 s of an interrupt", "none")
            self.process.kill()


class ChangeWatcher(Follower):
    """orlocal watch; one that was killed goes on from the position before the last one that it told of, as the lines of
    a commit have one position, and not all of them may have come."""

    def __init__(self, *words, ledger, **more):
        super().__init__(*words, **more)
        self.ledger, self.lines, self.position, self.before = ledger, [], 0, 0
        self.log = open(self.stage.folder / "logs" / f"{self.name}.lines", "a", encoding="utf-8")  # noqa: SIM115

    def words(self):
        return ["--json", "watch", *(["--since", self.before] if self.position else [])]

    def hear(self, line):
        told = json.loads(line)
        now = self.ledger.clock()
        self.log.write(f"{now:.3f} {told['position']} {told['change']} {told['identifier']} {told['title']}\n")
        self.log.flush()
        if told["kind"] in ("event", "reminder"):
            self.lines.append((now, told["position"], told["change"], told["identifier"], told["title"]))
        if told["position"] != self.position:
            self.before, self.position = self.position, told["position"]
        self.stage.count(f"lines of {self.name}")


class AlarmWatcher(Follower):
    """orlocal watch --alarms with a command, which writes the alarm's title and moment to a file."""

    def __init__(self, *words, log, **more):
        super().__init__(*words, **more)
        self.log = log

    def words(self):
        # One write, so that lines of commands that run at once stay apart.
        return ["watch", "--alarms", "--", "sh", "-c",
                f"unset LD_PRELOAD; echo \"$ORLOCAL_ALARM_TITLE $ORLOCAL_ALARM_ALARM $(cut -d' ' -f1 /proc/uptime)\""
                f" >> '{self.log}'", "{}"]

    def hear(self, line):
        self.stage.count("lines of alarm watchers")


class ScriptWatcher(Follower):
    """orlocal watch with a script: the plug-in is loaded, and told of idle time for ever."""

    def words(self):
        return ["--json", "watch", "--file", "Solution", "--script", "Calendar changed"]

    def hear(self, line):
        change = json.loads(line)["parameter"].split(" ")[0]
        if change not in ("New", "Updated", "Deleted"):
            self.stage.finding(self.name, "New, Updated or Deleted", line)
        self.stage.count("script starts of watchers")


class SyncFollower(Follower):
    def words(self):
        return ["--json", "sync", "--follow"]

    def hear(self, line):
        report = json.loads(line)
        if report.get("failure"):
            self.stage.judge(self.name, str(report["failure"]))
        self.stage.count("syncs that did something")
