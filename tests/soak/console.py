"""A host: one process of the program's console, given calculations over a pipe."""
import queue
import re
import signal
import threading

import expected
from stage import Died

ANSWER = re.compile(r"^(.*?)  \((?:text|number|date|time|timestamp|container)\)(?:  (.*))?$")
CODE = re.compile(r"\((-?\d+)\)$")
PATIENCE = 240


class Refused(Exception):
    """A function gave its error; with the code."""

    def __init__(self, calculation, reason):
        super().__init__(f"{calculation}: {reason}")
        found = CODE.search(reason or "")
        self.code, self.reason = found[1] if found else "", reason or ""


class Console:
    """The plug-in, loaded; started again by whoever uses it after it died."""

    def __init__(self, stage, actor, place, words=(), clock=None, may_die=True):
        self.stage, self.actor = stage, actor
        self.start = lambda: stage.start(actor, place, words, clock, long=True, may_die=may_die,
                                         more={"ORLOCAL_UPDATE_SCRIPT": "yes"})
        self.read_errors = 0
        self.listen()

    def listen(self):
        self.process, self.lines = self.start(), queue.Queue()
        threading.Thread(target=self.hear, args=(self.process.stdout, self.lines), daemon=True).start()

    @staticmethod
    def hear(stream, lines):
        for line in stream:
            lines.put(line)
        lines.put("")

    def ask(self, calculation):
        """Its result as a text. A returned error is raised as Refused, and judged by whoever made the call."""
        # One line a result, whatever is in it.
        try:
            self.process.stdin.write(f"Substitute({calculation};Char(10);\"|\")\n")
            self.process.stdin.flush()
            while line := self.line():
                if line.startswith("script "):
                    self.stage.count("script starts in hosts")
                    continue
                self.stage.count("function calls")
                if line.rstrip("\n") == "(empty)":
                    return ""
                found = ANSWER.match(line.rstrip("\n"))
                if not found:
                    self.stage.finding(self.actor, f"an answer to {calculation}", line)
                    return ""
                if found[1] == "!!ERROR!!":
                    raise Refused(calculation, found[2])
                return found[1]
        except (BrokenPipeError, OSError):
            pass
        raise Died(calculation)

    def line(self):
        try:
            return self.lines.get(timeout=PATIENCE)
        except queue.Empty:
            self.stage.finding(self.actor, f"an answer within {PATIENCE} s", "none")
            self.process.send_signal(signal.SIGKILL)
            return ""

    def judge(self, refused):
        """True when the refusal is one that there may be."""
        happened = self.stage.happened
        # The older back end answers with the store's own sentence.
        if (expected.reason_for(refused.code, happened, expected.CODES) is None
                and expected.reason_for(refused.reason, happened, expected.ROWS) is None):
            self.stage.finding(self.actor, "a result", str(refused))
            return False
        self.stage.count("refusals that were right")
        return True

    def judge_errors(self):
        self.read_errors, text = self.stage.errors(self.actor, self.read_errors)
        self.stage.judge(self.actor, text)

    def again(self):
        """After it died."""
        self.close()
        self.listen()
        self.stage.count("hosts started again")

    def close(self):
        """Its exit status. The end of its input ends it."""
        try:
            self.process.stdin.close()
        except OSError:
            pass
        status = self.stage.forget(self.process)
        self.judge_errors()
        return status
