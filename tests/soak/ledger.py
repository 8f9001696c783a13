"""What the program confirmed, and what a store may hold because of it.

A key is the title of an item: each is given once. The state of a key is a version (the item's location says it) or None
where it is not there. A change whose process was killed is in doubt, one that overlaps a copy of the store may be in it
or not: so what is asked for is the set of the states that are right.
"""
import dataclasses
import json
import math
import threading
import time

DONE, REFUSED, DOUBTED = "done", "refused", "doubted"


@dataclasses.dataclass
class Op:
    """One change of one key."""
    key: str
    becomes: str | None
    begin: float
    end: float = math.inf
    outcome: str = DOUBTED
    # In the commit of a change of another key, so that nobody is told of it by itself.
    within: bool = False

    @property
    def counts(self):
        return self.outcome != REFUSED


@dataclasses.dataclass
class Span:
    """A backup, from its beginning to its end."""
    begin: float
    end: float


@dataclasses.dataclass
class Restore(Span):
    backup: Span = None
    outcome: str = DOUBTED


class Ledger:
    """One store's. Written down as it goes, for whoever looks at the kept files."""

    def __init__(self, path=None, clock=time.monotonic):
        self.clock = clock
        self.ops = {}  # key to its operations, in order
        self.restores = []
        self.synced = set()  # keys in calendars that a server has, too
        self.weak = set()  # keys that several change at once: what stands at the end is up to how changes meet
        self.lock = threading.Lock()
        self.file = open(path, "a", encoding="utf-8") if path else None  # noqa: SIM115

    def note(self, **row):
        if self.file:
            self.file.write(json.dumps({"at": round(self.clock(), 3), **row}) + "\n")
            self.file.flush()

    def begin(self, changes, within=()):
        """What is about to be tried: key to state; keys of `within` change in the same commit."""
        with self.lock:
            now = self.clock()
            made = [Op(key, state, now, within=key in within) for key, state in changes.items()]
            for op in made:
                self.ops.setdefault(op.key, []).append(op)
            self.note(begin=changes)
            return made

    def end(self, ops, outcome):
        with self.lock:
            for op in ops:
                op.end, op.outcome = self.clock(), outcome
            self.note(end=[op.key for op in ops], outcome=outcome)

    def begin_restore(self, backup):
        with self.lock:
            self.restores.append(Restore(self.clock(), math.inf, backup))
            self.note(restore=[backup.begin, backup.end])
            return self.restores[-1]

    def end_restore(self, restore, outcome):
        with self.lock:
            restore.end, restore.outcome = self.clock(), outcome
            self.note(restored=outcome)

    def possible(self, key, begin, end):
        """The states of which one stood at some moment from `begin` to `end`."""
        with self.lock:
            return self._possible(key, begin, end, {})

    def _possible(self, key, begin, end, known):
        """`known` are the answers for backups: each restore asks for those before it, too."""
        ops = [op for op in self.ops.get(key, []) if op.counts and op.begin < end]
        states, since = {None}, -math.inf
        for restore in self.restores:
            if restore.begin >= end or restore.outcome == REFUSED:
                continue
            before = fold(states, [op for op in ops if op.begin >= since and op.end <= restore.begin], restore.begin)
            span = restore.backup.begin, restore.backup.end
            if span not in known:
                known[span] = self._possible(key, *span, known)
            back = known[span]
            settled = restore.outcome == DONE and restore.end <= begin
            meanwhile = [op for op in ops if op.begin < restore.end and op.end > restore.begin]
            states = back if settled else back | before
            states = states | {op.becomes for op in meanwhile}
            if key in self.synced:
                # The server has what came after the backup, and the two meet: any of what it once was may stand.
                states = states | before | {op.becomes for op in ops if op.begin < restore.end}
            since = restore.end
        return fold(states, [op for op in ops if op.begin >= since], begin)

    def keys(self):
        with self.lock:
            return list(self.ops)

    def unsettled(self, key):
        """Whether a restore has made of a synced item whatever the server and the backup agree on."""
        with self.lock:
            ops = self.ops.get(key, [])
            return key in self.synced and any(restore.outcome != REFUSED and ops and ops[0].begin < restore.end
                                              for restore in self.restores)


def fold(states, ops, begin):
    """Each change on what was there; those that were not over at `begin` may have come later."""
    for op in ops:
        if op.outcome == DONE and op.end <= begin:
            states = {op.becomes}
        else:
            states = states | {op.becomes}
    return states
