"""The third opinion: what python-dateutil finds in a calendar file, and what the RFC leaves open in it."""

import re
from dataclasses import dataclass
from datetime import datetime, timedelta, timezone

from dateutil import rrule, tz

BERLIN = tz.gettz("Europe/Berlin")
MONTH = (datetime(2026, 11, 1, tzinfo=BERLIN).timestamp(), datetime(2026, 12, 1, tzinfo=BERLIN).timestamp())


@dataclass
class Verdict:
    entries: set  # (start, end, title) that overlap the month
    undefined: set  # titles of series whose start is none of their rule's times (RFC 5545, 3.8.5.3)
    starts: set  # (start, end, title) of those starts themselves


def events(path):
    """Each event's properties as {name: (parameters, value)}; the ones of its alarms are left out."""
    text = re.sub(r"\r?\n[ \t]", "", open(path, encoding="utf-8", newline="").read())
    for body in re.findall(r"BEGIN:VEVENT\r?\n(.*?)END:VEVENT", text, re.S):
        body = re.sub(r"BEGIN:VALARM.*?END:VALARM\r?\n", "", body, flags=re.S)
        found = {}
        for line in body.splitlines():
            head, value = line.split(":", 1)
            name, _, parameters = head.partition(";")
            found[name] = (parameters, value)
        yield found


def time(parameters, value):
    """The wall clock, and the zone that it is of: floating times and whole days are read in Berlin."""
    if "VALUE=DATE" in parameters:
        return datetime.strptime(value, "%Y%m%d"), BERLIN
    return datetime.strptime(value.rstrip("Z"), "%Y%m%dT%H%M%S"), timezone.utc if value.endswith("Z") else BERLIN


def rule_of(text, start, zone):
    parts = dict(part.split("=") for part in text.split(";"))
    if "UNTIL" in parts:  # always UTC here; counted on the wall clock of the series
        until = time("", parts["UNTIL"])[0].replace(tzinfo=timezone.utc).astimezone(zone)
        parts["UNTIL"] = until.strftime("%Y%m%dT%H%M%S")
    return rrule.rrulestr(";".join("=".join(part) for part in parts.items()), dtstart=start)


def judge(path):
    verdict = Verdict(set(), set(), set())
    first, last = (datetime.fromtimestamp(moment, BERLIN).replace(tzinfo=None) for moment in MONTH)
    margin = timedelta(days=4)
    for event in events(path):
        start, zone = time(*event["DTSTART"])
        length = time(*event["DTEND"])[0] - start
        title = event["SUMMARY"][1]

        def entry(at):
            return at.replace(tzinfo=zone).timestamp(), (at + length).replace(tzinfo=zone).timestamp(), title

        begins = [start]
        if "RRULE" in event:
            rule = rule_of(event["RRULE"][1], start, zone)
            if next(iter(rule), None) != start:
                verdict.undefined.add(title)
                verdict.starts.add(entry(start))
            excluded = time(*event["EXDATE"])[0] if "EXDATE" in event else None
            begins = [at for at in rule.between(first - margin, last + margin) if at != excluded]
        verdict.entries |= {each for each in map(entry, begins) if each[0] < MONTH[1] and each[1] > MONTH[0]}
    return verdict
