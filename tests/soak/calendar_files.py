"""Reads as much of calendar texts as judging takes, with nothing of the program."""
import dataclasses
import re


@dataclasses.dataclass(frozen=True)
class Component:
    kind: str  # VEVENT or VTODO
    uid: str
    title: str
    version: str  # its location
    occurrence: str | None  # RECURRENCE-ID, of a changed occurrence
    rule: str | None
    fields: tuple  # what two copies of it must have in common

    @property
    def begin_and_end(self):
        values = dict(self.fields)
        return values.get("DTSTART"), values.get("DTEND")


COMPARED = ("SUMMARY", "LOCATION", "DESCRIPTION", "DTSTART", "DTEND", "DUE", "RRULE", "EXDATE", "RECURRENCE-ID", "STATUS")


def components(text):
    """Of one calendar text."""
    found, open_ones = [], []
    for line in re.sub("\r?\n[ \t]", "", text).splitlines():
        if line.startswith("BEGIN:"):
            open_ones.append((line[6:], []))
        elif line.startswith("END:") and open_ones:
            kind, lines = open_ones.pop()
            if kind in ("VEVENT", "VTODO"):
                found.append(component_of(kind, lines))
        elif open_ones:
            open_ones[-1][1].append(line)
    return found


def component_of(kind, lines):
    values = {}
    for line in lines:
        name, _, value = line.partition(":")
        name = name.partition(";")[0]
        values[name] = f"{values[name]},{value}" if name == "EXDATE" and name in values else value
    if "EXDATE" in values:
        values["EXDATE"] = ",".join(sorted(values["EXDATE"].split(",")))
    return Component(kind, values.get("UID", ""), values.get("SUMMARY", ""), values.get("LOCATION", ""),
                     values.get("RECURRENCE-ID"), values.get("RRULE"),
                     tuple((name, values[name]) for name in COMPARED if values.get(name)))


def title_of(text):
    """The calendar's."""
    found = re.search("^X-WR-CALNAME:(.*?)\r?$", text, re.MULTILINE)
    return found[1] if found else None


def event(uid, title, version, start, end, more=""):
    """The lines of an event, stamped by the caller's `more`."""
    return (f"BEGIN:VEVENT\r\nUID:{uid}\r\nDTSTART:{start}\r\nDTEND:{end}\r\nSUMMARY:{title}\r\nLOCATION:{version}\r\n"
            f"{more}END:VEVENT\r\n")


def calendar(parts):
    return "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Soak//Soak//EN\r\n" + "".join(parts) + "END:VCALENDAR\r\n"
