#!/usr/bin/env python3
"""Has the program judge small plug-ins, one as it should be and the others wrong in one way each.

usage: judged.py PROGRAM FOLDER [OURS]
"""
import json
import pathlib
import subprocess
import sys

# What is found in each, and nothing else.
WANTED = {
    "Tally": {},
    "Overruns": {"string-every-capacity": "failed"},
    "Stays": {
        "start-refused-registers-nothing": "failed",
        "start-again": "failed",
        "shutdown-takes-back": "failed",
        "function-languages": "failed",
    },
    "Breaks": {
        "message-then-calls": "crashed",
        "call-fewest": "crashed",
        "call-every-count": "crashed",
        "call-too-few": "crashed",
        "call-texts": "failed",
        "call-one-odd": "failed",
        "call-random": "crashed",
        "call-arguments-stay": "failed",
        "call-same-answer": "crashed",
        "call-other-number": "crashed",
        "call-sessions": "crashed",
        "call-after-restart": "crashed",
        "host-fails-calls": "crashed",
        "host-fails-calls-quietly": "crashed",
        "around-folder-gone": "crashed",
        "around-no-descriptors": "crashed",
    },
    "Hangs": {"message-unknown": "hung"},
    "Keeps": {"keep-descriptors": "failed", "keep-memory": "failed", "keep-quiet": "failed"},
    "Misnames": {
        "start-refused-registers-nothing": "failed",
        "start-descriptions": "failed",
        "shutdown-takes-back": "failed",
        "function-plugin-id": "failed",
        "function-prototypes": "failed",
        "function-prototype-bounds": "failed",
        "step-xml": "failed",
    },
}
# How long things take is the machine's.
UNTRIED = {"load-quickly"}


def judged(program, plugin, *words):
    done = subprocess.run([program, "--json", "check", str(plugin), *words], capture_output=True, text=True, check=False)
    checks = json.loads(done.stdout)["checks"]
    checks = [check for check in checks if check["name"] not in UNTRIED]
    bad = {check["name"]: check["verdict"] for check in checks if check["verdict"] not in ("passed", "skipped")}
    for check in checks:
        if bool(check["reasons"]) == (check["verdict"] == "passed"):
            sys.exit(f"{plugin.name}: {check['name']}: {check['verdict']} because of {check['reasons']}")
    if bad and done.returncode != 1:
        sys.exit(f"{plugin.name}: status {done.returncode} with {bad}")
    return len(checks), bad


def main():
    program, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    wrong = False
    for name, wanted in WANTED.items():
        count, found = judged(program, folder / f"{name}.fmx", "--level", "strict", "--patience", "10" if name == "Hangs" else "60")
        if found != wanted:
            wrong = True
            print(f"{name}: found {json.dumps(found, indent=2)}")
            print(f"{name}: wanted {json.dumps(wanted, indent=2)}")
        if count < 70:
            wrong = True
            print(f"{name}: {count} checks")
    # Ours gives back what the host's functions report, as an exception: hosts rely on that.
    for plugin in sys.argv[3:]:
        _, found = judged(program, pathlib.Path(plugin), "--level", "strict")
        if found != {"host-fails-start-quietly": "failed", "host-fails-calls-quietly": "failed"}:
            wrong = True
            print(f"{plugin}: found {json.dumps(found, indent=2)}")
    # A seed replays.
    _, found = judged(program, folder / "Breaks.fmx", "--only", "call-random", "--seed", "3")
    if found != {"call-random": "crashed"}:
        wrong = True
        print(f"Breaks, seed 3: {found}")
    print("judged:", "wrong" if wrong else "as they are")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
