#!/usr/bin/env python3
"""Holds the systemd units against the program: commands and options that it has, and pages that there are.

usage: units.py PROGRAM UNITS DOCS
"""
import pathlib
import re
import shlex
import subprocess
import sys


def offences(program, unit, docs):
    lines = unit.read_text(encoding="utf-8").replace("\\\n", " ").splitlines()
    values = [tuple(line.split("=", 1)) for line in lines if re.match(r"[A-Z]\w+=", line)]
    for page in (value for name, value in values if name == "Documentation"):
        for address in page.split():
            # "man:" pages are made of the program's help, which names its commands.
            if address.startswith("file:///usr/share/doc/orlocal/") and not (docs / address.rpartition("/")[2]).is_file():
                yield f"{unit.name}: there is no page {address}"
    commands = [value for name, value in values if name == "ExecStart"]
    if unit.suffix == ".service" and len(commands) != 1:
        yield f"{unit.name}: starts {len(commands)} commands"
    for command in commands:
        words = shlex.split(command)
        if words[:2] == ["sh", "-c"]:
            words = re.split(r"\s+", re.search(r"\borlocal [a-z].*", words[2]).group().replace('"', ""))
        words = words[: words.index("--")] if "--" in words else words
        if pathlib.Path(words[0]).name != "orlocal":
            yield f"{unit.name}: starts {words[0]}"
            continue
        names = [word for word in words[1:] if re.fullmatch(r"[a-z-]+", word) and not word.startswith("-")][:1]
        shown = subprocess.run([program, *names, "--help"], capture_output=True, text=True, check=False)
        if shown.returncode != 0:
            yield f"{unit.name}: orlocal {' '.join(names)}: {shown.stderr.strip()}"
        for option in (word for word in words[1:] if word.startswith("--")):
            if not re.search(rf"{re.escape(option.split('=')[0])}\b", shown.stdout):
                yield f"{unit.name}: orlocal {' '.join(names)} has no {option}"


def main():
    program, folder, docs = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    units = sorted(file for file in folder.iterdir() if file.suffix in (".service", ".timer"))
    found = [offence for unit in units for offence in offences(program, unit, docs)]
    for offence in found:
        print(offence)
    print(f"units: {len(units)} units, {len(found)} offences")
    return 1 if found or not units else 0


if __name__ == "__main__":
    sys.exit(main())
