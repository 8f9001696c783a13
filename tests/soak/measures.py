"""How much the long-lived processes take, every few seconds."""
import contextlib
import os
import re


def of_process(pid):
    """(anonymous memory, open descriptors, resident memory) in bytes; none when it is gone."""
    with contextlib.suppress(OSError, KeyError):
        with open(f"/proc/{pid}/status", encoding="utf-8") as file:
            values = dict(re.findall(r"^(\w+):\s+(\d+) kB$", file.read(), re.MULTILINE))
        return int(values["RssAnon"]) * 1024, len(os.listdir(f"/proc/{pid}/fd")), int(values["VmRSS"]) * 1024
    return None


class Measurer:
    def __init__(self, stage):
        self.stage = stage

    def step(self):
        with self.stage.lock:
            processes = list(self.stage.processes.items())
        for pid, (actor, long, _) in processes:
            sample = of_process(pid) if long else None
            if sample:
                self.stage.samples[actor, pid].append(sample)

    def close(self):
        pass
