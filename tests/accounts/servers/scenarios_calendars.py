"""Calendars themselves."""
from scenario import Skipped, expect, expect_that, scenario, settle, there_and_back


@scenario("calendars are made, renamed, recoloured and removed here")
def calendars_here(bench):
    first, second = bench.machine(), bench.machine()
    first.run("calendars", "new", "Rehearsals", "--account", first.ACCOUNT)
    there_and_back(first, second)
    path = bench.alice.calendar_titled("Rehearsals")
    expect_that(path, "the server has the new calendar")
    expect_that(second.calendar("Rehearsals"), "the other machine has the new calendar")
    second.new_event("Rehearsals", "Choir")
    second.run("calendars", "rename", "Rehearsals", "Concerts")
    second.run("calendars", "recolour", "Concerts", "#336699")
    there_and_back(second, first)
    expect(bench.alice.calendar_titled("Concerts"), path, "the calendar of the new name on the server")
    expect_that(bench.alice.calendars()[path][1].upper().startswith("#336699"), "the server has the new colour")
    expect(first.calendar("Concerts")["colour"], "#336699", "the colour on the other machine")
    expect(len(first.events("Concerts")), 1, "events of the calendar on the other machine")
    settle(first, second)
    first.run("calendars", "remove", "Concerts")
    there_and_back(first, second)
    expect(path in bench.alice.calendars(), False, "the calendar is on the server")
    expect(second.calendar("Concerts"), None, "the calendar on the other machine")


@scenario("a calendar's name keeps its signs")
def signs_of_a_name(bench):
    if "signs_of_a_name" in bench.server.cannot:
        raise Skipped(bench.server.cannot["signs_of_a_name"])
    first, second = bench.machine(), bench.machine()
    title = "Käse & <Brot> 100 %"
    first.run("calendars", "new", title, "--account", first.ACCOUNT)
    there_and_back(first, second)
    expect_that(bench.alice.calendar_titled(title), "the server has the name")
    expect_that(second.calendar(title), "the other machine has the name")
    settle(first, second)


@scenario("a reminder list is made here")
def reminder_list(bench):
    first, second = bench.machine(), bench.machine()
    first.run("calendars", "new", "Errands", "--account", first.ACCOUNT, "--kind", "reminders")
    first.new_reminder("Errands", "Buy bread")
    there_and_back(first, second)
    expect(second.titles_of_reminders("Errands"), ["Buy bread"], "reminders of the list on the other machine")
    settle(first, second)


@scenario("calendars are made, renamed, recoloured and removed there")
def calendars_there(bench):
    machine = bench.machine()
    path = bench.calendar("Rehearsals")
    machine.sync()
    machine.new_event("Rehearsals", "Choir")
    machine.sync()
    bench.alice.set_property(path, "<D:displayname>Concerts</D:displayname>")
    bench.alice.set_property(path, "<A:calendar-color>#336699FF</A:calendar-color>")
    machine.sync()
    expect_that(machine.calendar("Concerts"), "the calendar has its new name here")
    expect(machine.calendar("Concerts")["colour"], "#336699", "its colour here")
    expect(len(machine.events("Concerts")), 1, "its events here")
    bench.alice.remove(path)
    machine.sync()
    expect(machine.calendar("Concerts"), None, "the calendar here after it was removed there")


@scenario("a calendar that was renamed on both sides has one name in the end")
def renamed_twice(bench):
    _, first, second = bench.team()
    first.run("calendars", "rename", "Team", "Crew")
    second.run("calendars", "rename", "Team", "Band")
    there_and_back(first, second)
    settle(first, second)
    expect(second.titles_of_calendars(), first.titles_of_calendars(), "titles on both machines")
