"""Ends what a process started, and what that started."""
import contextlib
import ctypes
import glob
import os
import signal
import time


def adopt_orphans():
    """From now on those below this process whose parents end become its children."""
    set_child_subreaper = 36  # <sys/prctl.h>
    ctypes.CDLL(None, use_errno=True).prctl(set_child_subreaper, 1, 0, 0, 0)


def descendants():
    """All processes below this one, those whose parents have ended too."""
    children = {}
    for stat in glob.glob("/proc/[0-9]*/stat"):
        with contextlib.suppress(OSError), open(stat, encoding="utf-8", errors="replace") as file:
            pid, rest = stat.split("/")[2], file.read().rpartition(")")[2].split()
            children.setdefault(int(rest[1]), []).append((int(pid), rest[0]))
    found, open_ones = [], [os.getpid()]
    while open_ones:
        for pid, state in children.get(open_ones.pop(), []):
            open_ones.append(pid)
            if state != "Z":
                found.append(pid)
    return found


def end_all():
    # An interrupt ends a database without waiting for those who use it; the others take either.
    for number, patience in ((signal.SIGINT, 1), (signal.SIGTERM, 3), (signal.SIGKILL, 5)):
        until = time.monotonic() + patience
        told = set()
        while (left := descendants()) and time.monotonic() < until:
            for pid in set(left) - told:
                with contextlib.suppress(ProcessLookupError):
                    os.kill(pid, number)
            told.update(left)
            time.sleep(0.05)
            with contextlib.suppress(ChildProcessError):
                while os.waitpid(-1, os.WNOHANG)[0]:
                    pass
