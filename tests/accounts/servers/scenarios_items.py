"""Events and reminders between machines and a server."""
import time

import dav
from scenario import expect, expect_that, scenario, settle, there_and_back

STRANGE = """X-SEAT;X-ROW=4:12B
CATEGORIES:Stage,Lights
GEO:52.52;13.40
ATTACH;FMTTYPE=text/plain:https://example.org/plan.txt
BEGIN:VALARM
ACTION:DISPLAY
DESCRIPTION:Soon
TRIGGER:-PT15M
X-LOUD:very
END:VALARM
"""


@scenario("events and reminders go both ways: new, changed, removed")
def both_ways(bench):
    path, first, second = bench.team()
    first.new_event("Team", "Lunch", location="Canteen")
    first.new_event("Team", "Supper")
    first.new_reminder("Team", "Buy bread")
    first.new_reminder("Team", "Buy salt")
    there_and_back(first, second)
    expect(sorted(second.events("Team")), [("2026-12-01 12:00:00", "Lunch"), ("2026-12-01 12:00:00", "Supper")],
           "events that were made on the other machine")
    expect(second.property_of("Team", "Lunch", "location"), "Canteen", "the location")
    expect(second.titles_of_reminders("Team"), ["Buy bread", "Buy salt"], "reminders that were made on the other machine")

    second.change_event("Team", "Lunch", title="Late lunch", startdate="2026-12-01 12:30:00")
    second.remove_event("Team", "Supper")
    second.change_reminder("Team", "Buy bread", iscompleted="True")
    second.remove_reminder("Team", "Buy salt")
    there_and_back(second, first)
    expect(first.events("Team"), [("2026-12-01 12:30:00", "Late lunch")], "events after changes on the other machine")
    expect([(done, title) for done, _, title in first.reminders("Team")], [("True", "Buy bread")], "reminders likewise")
    expect(len(bench.alice.items(path)), 2, "items on the server")

    first.remove_event("Team", "Late lunch")
    first.remove_reminder("Team", "Buy bread")
    there_and_back(first, second)
    expect((second.events("Team"), second.reminders("Team")), ([], []), "all is removed")
    expect(bench.alice.items(path), {}, "on the server, too")


@scenario("what another client makes, changes and removes comes in")
def another_client(bench):
    path, machine = bench.team(count=1)
    bench.alice.put(path + "talk.ics", dav.calendar_text(dav.event("talk", "Talk")))
    bench.alice.put(path + "call.ics", dav.calendar_text(dav.task("call", "Call Ada")))
    machine.sync()
    expect(machine.events("Team"), [("2026-12-01 13:00:00", "Talk")], "the event")
    expect(machine.titles_of_reminders("Team"), ["Call Ada"], "the reminder")
    # One server counts in whole seconds.
    time.sleep(1.1)
    bench.alice.put(path + "talk.ics", dav.calendar_text(dav.event("talk", "Long talk", more="SEQUENCE:1\n")))
    bench.alice.remove(path + "call.ics")
    machine.sync()
    expect(machine.events("Team"), [("2026-12-01 13:00:00", "Long talk")], "the event after a change")
    expect(machine.titles_of_reminders("Team"), [], "the reminder after it was removed")
    bench.alice.remove(path + "talk.ics")
    machine.sync()
    expect(machine.events("Team"), [], "the event after it was removed")


@scenario("text that Orlocal does not understand survives a change here")
def strange_text(bench):
    path, machine = bench.team(count=1)
    bench.alice.put(path + "show.ics", dav.calendar_text(dav.event("show", "Show", more=STRANGE)))
    machine.sync()
    # What this server keeps of it is what must stay.
    kept = [line for line in dav.unfolded(bench.alice.get(path + "show.ics")) if line in STRANGE.splitlines()]
    expect_that(any(line.startswith("X-SEAT") for line in kept), "the server keeps a line of another client's own")
    machine.change_event("Team", "Show", title="Second show")
    machine.sync()
    after = dav.unfolded(bench.alice.get(path + "show.ics"))
    expect_that("SUMMARY:Second show" in after, "the change is on the server")
    expect([line for line in kept if line not in after], [], "lines that are lost")


@scenario("one field changed here, another one there: both stay")
def merge(bench):
    _, first, second = bench.team()
    first.new_event("Team", "Lunch", notes="Bring money")
    there_and_back(first, second)
    first.change_event("Team", "Lunch", title="Late lunch")
    second.change_event("Team", "Lunch", notes="Paid already")
    there_and_back(first, second, first)
    for machine in (first, second):
        expect(machine.property_of("Team", "Late lunch", "notes"), "Paid already", "notes beside the new title")
        expect(machine.conflicts(), [], "conflicts")


@scenario("an item moves to another calendar")
def moves(bench):
    path, first, second = bench.team()
    other = bench.calendar("Other")
    settle(first, second)
    first.new_event("Team", "Lunch")
    first.new_event("Team", "Walk", rule='"daily";1;"";"";"";"";3')
    first.new_reminder("Team", "Buy bread")
    there_and_back(first, second)
    second.change_event("Team", "Lunch", span="all", calendartitle="Other")
    second.change_event("Team", "Walk", span="all", calendartitle="Other")
    second.change_reminder("Team", "Buy bread", calendartitle="Other")
    there_and_back(second, first)
    expect(first.events("Team"), [], "events of the calendar that they left")
    expect(sorted(title for _, title in first.events("Other")), ["Lunch", "Walk", "Walk", "Walk"], "events where they went")
    expect(first.titles_of_reminders("Other"), ["Buy bread"], "reminders where they went")
    expect((len(bench.alice.items(path)), len(bench.alice.items(other))), (0, 3), "items in both on the server")
    settle(first, second)


@scenario("a name with signs, letters of other alphabets and line breaks stays as it is")
def letters(bench):
    _, first, second = bench.team()
    title = "Käse & Brötchen; «日本» 100 %, <b>fett</b> \\n 🎻"
    notes = "one¶two; three, four \\\\ five"
    first.new_event("Team", title.replace("\\", "\\\\"), notes=notes)
    there_and_back(first, second)
    mine = first.events("Team")
    expect(second.events("Team"), mine, "the event")
    expect(second.property_of("Team", mine[0][1], "notes"), first.property_of("Team", mine[0][1], "notes"), "its notes")
    second.change_event("Team", mine[0][1], location="Zürich")
    there_and_back(second, first)
    expect(first.property_of("Team", mine[0][1], "location"), "Zürich", "the location")
    expect(first.events("Team"), mine, "the title after a change elsewhere")
