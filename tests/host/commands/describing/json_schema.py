#!/usr/bin/env python3
"""Holds what the program prints with --json against docs/schema/output.json.

usage: json_schema.py PROGRAM SCHEMA
"""
import json
import os
import pathlib
import subprocess
import sys
import tempfile

import jsonschema

CONTENT = r"""BEGIN:VCALENDAR
VERSION:2.0
X-WR-CALNAME:Work
BEGIN:VEVENT
UID:review
DTSTART;TZID=America/New_York:20261102T090000
DTEND;TZID=America/New_York:20261102T103000
RRULE:FREQ=WEEKLY;BYDAY=MO,WE;UNTIL=20261231T000000Z
EXDATE;TZID=America/New_York:20261104T090000
RDATE;TZID=America/New_York:20261106T090000
SUMMARY:Design review
LOCATION:Room 4
DESCRIPTION:Bring the drawings
ORGANIZER;CN=Ada Lovelace:mailto:ada@example.org
ATTENDEE;CN=Grace Hopper;PARTSTAT=ACCEPTED;ROLE=CHAIR;CUTYPE=INDIVIDUAL:mailto:grace@example.org
STATUS:TENTATIVE
PRIORITY:1
URL:https://example.org/review
BEGIN:VALARM
ACTION:DISPLAY
TRIGGER:-PT15M
DESCRIPTION:x
END:VALARM
BEGIN:VALARM
ACTION:EMAIL
TRIGGER;VALUE=DATE-TIME:20261101T080000Z
DESCRIPTION:x
SUMMARY:x
ATTENDEE:mailto:ada@example.org
END:VALARM
END:VEVENT
BEGIN:VEVENT
UID:review
RECURRENCE-ID;TZID=America/New_York:20261109T090000
DTSTART;TZID=America/New_York:20261109T110000
DTEND;TZID=America/New_York:20261109T113000
SUMMARY:Short review
END:VEVENT
BEGIN:VEVENT
UID:holiday
DTSTART;VALUE=DATE:20261102
DTEND;VALUE=DATE:20261105
SUMMARY:Holiday
END:VEVENT
BEGIN:VTODO
UID:tax
SUMMARY:Tax review
DUE;VALUE=DATE:20261020
END:VTODO
BEGIN:VTODO
UID:read
SUMMARY:Read
END:VTODO
BEGIN:VTODO
UID:done
SUMMARY:Done
DUE;TZID=Europe/Berlin:20261103T090000
STATUS:COMPLETED
COMPLETED:20261101T100000Z
END:VTODO
END:VCALENDAR
"""

# Command, definition, how many items of which list there must be for the comparison to mean anything.
COMMANDS = [
    (["agenda"], "agenda", {"events": 3, "overdue": 1, "undated": 1}),
    (["search", "review"], "search", {"results": 2}),
    (["reminders", "--all"], "reminders", {"reminders": 3}),
    (["show", "Design review"], "show", {"next": 3, "changed": 1}),
    (["show", "Holiday"], "show", {}),
    (["show", "Tax"], "show", {}),
    (["calendars"], "calendars", {}),
]

# Commands that take --format, and what describes a row of theirs.
FORMATS = [
    (["agenda"], "item"),
    (["search", "review"], "search/properties/results/items"),
    (["reminders"], "reminders/properties/reminders/items"),
    (["show", "Holiday"], "show"),
    (["alarms"], "ring"),
    (["calendars"], "calendars/items"),
]

# What is over, and there twice.
UNTIDY = r"""BEGIN:VCALENDAR
VERSION:2.0
BEGIN:VEVENT
UID:old
DTSTART:20260302T090000Z
DTEND:20260302T100000Z
SUMMARY:Kick-off
END:VEVENT
BEGIN:VEVENT
UID:old-too
DTSTART:20260302T090000Z
DTEND:20260302T100000Z
SUMMARY:Kick-off
END:VEVENT
END:VCALENDAR
"""

# The same of commands that need it: run one after the other.
TIDYING = [
    (["free", "thursday"], "free", {"free": 1}),
    (["busy", "--days", "mon-fri"], "busy", {"busy": 2}),
    (["new", "Talk 2026-11-04 10:00 8h", "--calendar", "Work"], "new", {"overlaps": 1}),
    (["edit", "Talk", "--start", "2026-11-06 12:00"], "new", {"overlaps": 1}),
    (["duplicates"], "duplicates", {"0 members": 2}),
    (["purge", "--before", "2026-04-01", "--yes"], "purge", {"removed": 2}),
    (["log"], "log", {"0 changes": 2, "1 changes": 1}),
]


def resolved(node, schema):
    """`node` with what it refers to; of a list, what it is a list of."""
    while "$ref" in node or node.get("type") == "array":
        node = schema["$defs"][node["$ref"].rsplit("/", 1)[1]] if "$ref" in node else node["items"]
    return node


def members(node, schema):
    node = resolved(node, schema)
    found = dict(node.get("properties", {}))
    for part in [*node.get("allOf", []), *node.get("anyOf", [])]:
        found.update(members(part, schema))
    return found


def is_time(node, schema):
    node = node.get("items", node)
    names = [part.get("$ref", "").rsplit("/", 1)[-1] for part in [node, *node.get("anyOf", [])]]
    return "moment" in names or "day" in names


def fields(node, schema):
    """Every path into a row, and whether it is a day or a moment; items in items once."""
    found = {}
    for name, member in members(node, schema).items():
        found[name] = is_time(member, schema)
        if name != "changed":
            found.update({f"{name}.{path}": time for path, time in fields(member, schema).items()})
    return found


def main():
    program, schema_file = sys.argv[1:]
    schema = json.loads(pathlib.Path(schema_file).read_text(encoding="utf-8"))
    jsonschema.Draft202012Validator.check_schema(schema)
    failed = 0

    def judge(what, instance, definition):
        nonlocal failed
        validator = jsonschema.Draft202012Validator({"$ref": f"#/$defs/{definition}", "$defs": schema["$defs"]})
        for error in validator.iter_errors(instance):
            failed += 1
            if what:
                print(f"{what}: {error.json_path}: {error.message[:300]}")

    with tempfile.TemporaryDirectory() as folder:
        environment = {**os.environ, "ORLOCAL_STORE": f"{folder}/calendar.db"}

        def run(*words):
            done = subprocess.run([program, *words], env=environment, capture_output=True, text=True, check=False)
            if done.returncode != 0:
                raise SystemExit(f"{words}: {done.stderr}")
            return done.stdout

        content = pathlib.Path(folder, "content.ics")
        content.write_text(CONTENT, encoding="utf-8")
        run("import", str(content))
        run("calendars", "remove", "Calendar")

        def judge_all(commands):
            nonlocal failed
            for words, definition, counts in commands:
                answer = json.loads(run(*words, "--json"))
                judge(words, answer, definition)
                for part, count in counts.items():
                    found = answer
                    for step in part.split():
                        found = found[int(step) if step.isdigit() else step]
                    if len(found) != count:
                        failed += 1
                        print(f"{words}: {len(found)} {part} instead of {count}")

        judge_all(COMMANDS)
        lines = run("watch", "--since", "0", "--until-now", "--json").splitlines()
        if len(lines) != 8:
            failed += 1
            print(f"watch: {len(lines)} lines instead of 8")
        for line in lines:
            judge("watch", json.loads(line), "change")
        # Alarms as they are listed, as they ring late, and as they are only counted.
        run("watch", "--alarms", "--once")
        listed = json.loads(run("alarms", "--json", "--next", "3 days"))
        judge("alarms", listed, "alarms")
        told = []
        now = environment.get("ORLOCAL_NOW")
        for day in ("2026-11-03T09:00:00Z", "2026-11-09T09:00:00Z"):
            environment["ORLOCAL_NOW"] = day
            told += [json.loads(line) for line in run("watch", "--alarms", "--once", "--json").splitlines()]
        for line in told:
            judge("watch --alarms", line, "missed" if "missed" in line else "ring")
        judge("alarms dismiss", json.loads(run("alarms", "dismiss", "--all", "--json")), "alarms")
        if ["missed" in line for line in told] != [False, True] or not listed["alarms"]:
            failed += 1
            print(f"watch --alarms: {told}")
        environment.pop("ORLOCAL_NOW")
        if now:
            environment["ORLOCAL_NOW"] = now
        # A format of one's own takes the members of a row, all of them and no others.
        def refusal(words, template):
            done = subprocess.run([program, *words, "--format", template], env=environment, capture_output=True, text=True,
                                  check=False)
            if done.returncode == 2 and done.stdout == "":
                return done.stderr
            return None if done.returncode == 0 else "?"

        for words, place in FORMATS:
            row = schema["$defs"]
            for step in place.split("/"):
                row = row[step]
            described = fields(row, schema)
            known = set(refusal(words, "{?}").split("there are ")[1].split(". See")[0].split(", "))
            wrong = {path for path, time in described.items() if (refusal(words, f"{{{path}:%F}}") is None) != time}
            if known != set(described) or wrong:
                failed += 1
                print(f"{words} --format: {sorted(known ^ set(described))} {sorted(wrong)}")
        content.write_text(UNTIDY, encoding="utf-8")
        run("import", str(content), "--calendar", "Work")
        judge_all(TIDYING)
        # A schema that takes anything would be none.
        spoiled = json.loads(run("agenda", "--json"))
        spoiled["events"][0]["surprise"] = 1
        before = failed
        judge(None, spoiled, "agenda")
        failed = before if failed > before else failed + 1
    sys.exit(1 if failed else 0)


main()
