"""Where the actors stand: the stores' folders, the program's processes, what was found, and what was counted."""
import collections
import os
import pathlib
import signal
import subprocess
import sys
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parents[1] / "accounts" / "servers"))
import expected  # noqa: E402
import servers  # noqa: E402

FAKETIME = "/usr/lib/x86_64-linux-gnu/faketime/libfaketimeMT.so.1"


STOP_FELT = 60  # seconds


class Died(Exception):
    """The process was killed, or ended by itself, before it answered."""


class Place:
    """A machine: a home folder with a store and settings."""

    def __init__(self, folder, settings=""):
        self.folder = folder
        self.store = folder / "store" / "calendar.db"
        self.store.parent.mkdir(parents=True)
        (folder / "orlocal.conf").write_text(settings, encoding="utf-8")
        self.password = folder / "password"
        self.password.write_text(servers.PASSWORD + "\n", encoding="utf-8")
        self.password.chmod(0o600)
        kept = {name: value for name, value in os.environ.items()
                if name == "PATH" or name.endswith("SAN_OPTIONS") or name.startswith("GCOV_")}
        self.environment = {**kept, "HOME": str(folder), "ORLOCAL_STORE": str(self.store),
                            "ORLOCAL_SETTINGS": str(folder / "orlocal.conf"), "XDG_CONFIG_HOME": str(folder / "config"),
                            "TZ": "Europe/Berlin", "LANG": "C.UTF-8", "LC_ALL": "C.UTF-8"}


class Clock:
    """A wall clock of its own that jumps while its processes run. Their timers go by the kernel's."""

    def __init__(self, file):
        self.file = file
        self.offset = 0
        self.set(0)

    def set(self, seconds):
        self.offset = seconds
        draft = self.file.with_suffix(".new")
        draft.write_text(f"{seconds:+d}\n", encoding="utf-8")
        draft.replace(self.file)

    def environment(self):
        return {"LD_PRELOAD": FAKETIME, "FAKETIME_TIMESTAMP_FILE": str(self.file), "FAKETIME_NO_CACHE": "1",
                "FAKETIME_DONT_FAKE_MONOTONIC": "1", "FAKETIME_DONT_RESET": "1"}


class Stage:
    def __init__(self, program, folder, out=sys.stdout):
        self.program = str(program)
        self.folder = folder
        self.out = out
        self.begun = time.monotonic()
        self.counts = collections.Counter()
        self.troubles = {}  # kind of trouble to when there was one last
        self.alarms = []  # (title, begin and end of its save, its moment): what must ring
        self.disturbances = []  # (begin, end, kind) of what may keep an alarm from ringing
        self.findings = []
        self.processes = {}  # pid to (actor, whether it lives long, whether it may be killed)
        self.samples = collections.defaultdict(list)  # (actor, pid) to (anonymous memory, descriptors, resident)
        self.killed_writers = 0
        self.over = threading.Event()  # actors begin nothing new
        self.lock = threading.RLock()
        (folder / "logs").mkdir(parents=True)

    # What is told

    def say(self, text):
        with self.lock:
            print(f"{self.at()}  {text}", file=self.out, flush=True)

    def at(self):
        seconds = int(time.monotonic() - self.begun)
        return f"{seconds // 60:3d}:{seconds % 60:02d}"

    def finding(self, actor, wanted, found):
        with self.lock:
            self.findings.append((self.at(), actor, wanted, found))
            # One broken thing is found again at each look.
            if sum(each[1:3] == (actor, wanted) for each in self.findings) <= 5:
                self.say(f"FINDING  {actor}: expected {wanted}; there was: {found}")

    def count(self, what, by=1):
        with self.lock:
            self.counts[what] += by

    def trouble(self, kind):
        with self.lock:
            self.troubles[kind] = time.monotonic()
            self.counts[kind] += 1

    @property
    def happened(self):
        """The kinds of trouble that may still be felt: a process that was stopped is felt as long as others wait for it."""
        now = time.monotonic()
        with self.lock:
            return {kind for kind, when in self.troubles.items() if kind != "stop" or now - when < STOP_FELT}

    def judge(self, actor, text, rows=expected.ROWS):
        """Lines of an error stream, or a code."""
        for line in text.splitlines():
            if line.strip() and expected.reason_for(line, self.happened, rows) is None:
                self.finding(actor, "nothing that no row of expected.py has", line)

    # Processes

    def environment(self, place, clock=None, more=None):
        return {**place.environment, **(clock.environment() if clock else {}), **(more or {})}

    def start(self, actor, place, words, clock=None, long=False, may_die=True, more=None):
        """A process with pipes; its error stream goes to a file of the actor's, read by `errors`."""
        process = subprocess.Popen([self.program, *map(str, words)], env=self.environment(place, clock, more), text=True,
                                   stdin=subprocess.PIPE, stdout=subprocess.PIPE, cwd=place.folder, bufsize=1,
                                   stderr=open(self.folder / "logs" / f"{actor}.err", "ab"))  # noqa: SIM115
        with self.lock:
            self.processes[process.pid] = (actor, long, may_die)
        return process

    def errors(self, actor, since):
        with open(self.folder / "logs" / f"{actor}.err", "rb") as file:
            file.seek(since)
            text = file.read()
        return since + len(text), text.decode(errors="replace")

    def forget(self, process):
        """It has ended."""
        status = process.wait()
        with self.lock:
            self.processes.pop(process.pid, None)
        return status

    def run(self, actor, place, *words, clock=None, kill_after=None, said="", writes=False, judged=True, more=None):
        """A command to its end: status, output, errors. The status is negative when it was killed."""
        process = subprocess.Popen([self.program, *map(str, words)], env=self.environment(place, clock, more),
                                   text=True, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                   cwd=place.folder)
        with self.lock:
            self.processes[process.pid] = (actor, False, False)
        out, err, killed = "", "", False
        try:
            out, err = process.communicate(said, timeout=kill_after or 180)
        except subprocess.TimeoutExpired:
            if kill_after is None:
                self.finding(actor, f"an end of {' '.join(map(str, words[:3]))}", "it hangs for 180 s")
            killed = True
            process.send_signal(signal.SIGKILL)
            process.communicate()
        status = self.forget(process)
        self.count(f"orlocal {words[0] if not str(words[0]).startswith('-') else words[1]}")
        if killed and status < 0:
            self.trouble("kill")
            self.killed_writers += writes
        elif judged:
            self.judge(actor, err)
            if status < 0:
                self.finding(actor, f"an exit status of {' '.join(map(str, words[:3]))}", f"signal {-status}: {err}")
            elif status != 0 and not err.strip():
                self.finding(actor, f"a reason why {' '.join(map(str, words[:3]))} failed", f"status {status}: {out[:300]}")
        return status, out, err
