"""Reads what each peer prints for November 2026 into one form: a set of (start, end, title)."""

import json
from datetime import datetime, timedelta

from judge import BERLIN, MONTH


def seconds(wall_clock):
    return wall_clock.replace(tzinfo=BERLIN).timestamp()


def from_library(text):
    """Lines of start, end, title; moments in seconds."""
    rows = (line.split("\t") for line in text.splitlines())
    return {(float(row[0]), float(row[1]), row[2]) for row in rows if len(row) == 3}


def from_orlocal(text):
    """Whole days have a first and a last one."""
    entries = set()
    for event in json.loads(text)["events"]:
        whole = event["allDay"]
        start, end = (datetime.fromisoformat(event[key]).replace(tzinfo=None)
                      for key in (("firstDay", "lastDay") if whole else ("start", "end")))
        entries.add((seconds(start), seconds(end + timedelta(days=1 if whole else 0)), event["title"]))
    return entries


def from_khal(text):
    """Dates stand for whole days, the last one included."""
    entries = set()
    for line in text.splitlines():
        if line.count("\t") != 2:
            continue
        start, end, title = line.split("\t")
        whole = len(end) == len("2026-11-01")
        last = datetime.fromisoformat(end) + timedelta(days=1 if whole else 0)
        entries.add((seconds(datetime.fromisoformat(start)), seconds(last), title))
    return entries


def from_calcurse(text):
    """Under a heading for each day; "day" and a title is a whole day, several of them are one event here."""
    entries, days, day = set(), {}, None
    for line in text.splitlines():
        row = line.split("\t")
        if len(row) == 3:
            entries.add((float(row[0]), float(row[1]), row[2]))
        elif len(row) == 2:
            days.setdefault(row[1], []).append(day)
        elif line:
            day = datetime.strptime(line, "%m/%d/%y:")
    for title, found in days.items():
        entries.add((seconds(min(found)), seconds(max(found) + timedelta(days=1)), title))
    return entries


def cut(entries):
    return {(max(start, MONTH[0]), min(end, MONTH[1]), title) for start, end, title in entries}
