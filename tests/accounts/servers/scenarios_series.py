"""Series that are changed on two machines."""
from scenario import expect, scenario, settle, there_and_back

DAYS = [f"2026-12-0{day} 12:00:00" for day in range(1, 6)]
FIVE_DAYS = '"daily";1;"";"";"";"";5'


def rehearsals(bench):
    path, first, second = bench.team()
    first.new_event("Team", "Choir", rule=FIVE_DAYS)
    there_and_back(first, second)
    expect(second.events("Team"), [(day, "Choir") for day in DAYS], "the series on the other machine")
    return path, first, second


def expect_same(first, second, wanted, what):
    settle(first, second)
    for name, machine in (("first", first), ("second", second)):
        expect(sorted(machine.events("Team")), wanted, f"{what}, on the {name} machine")
        expect(machine.conflicts(), [], "conflicts")


@scenario("occurrences of a series are changed, on both machines")
def changed_occurrences(bench):
    path, first, second = rehearsals(bench)
    second.change_event("Team", "Choir", start=DAYS[1], title="Choir in the church")
    there_and_back(second, first)
    first.change_event("Team", "Choir", start=DAYS[3], startdate="2026-12-04 15:00:00", enddate="2026-12-04 16:00:00")
    first.change_event("Team", "Choir in the church", location="Nave")
    there_and_back(first, second)
    expect_same(first, second, [(DAYS[0], "Choir"), (DAYS[1], "Choir in the church"), (DAYS[2], "Choir"),
                                ("2026-12-04 15:00:00", "Choir"), (DAYS[4], "Choir")], "the series")
    expect(second.property_of("Team", "Choir in the church", "location"), "Nave", "the location of a changed occurrence")
    expect(len(bench.alice.items(path)), 1, "items on the server")


@scenario("two machines change different occurrences of a series at once")
def occurrences_at_once(bench):
    _, first, second = rehearsals(bench)
    first.change_event("Team", "Choir", start=DAYS[1], title="Upstairs")
    second.change_event("Team", "Choir", start=DAYS[2], title="Downstairs")
    there_and_back(first, second)
    expect_same(first, second, [(DAYS[0], "Choir"), (DAYS[1], "Upstairs"), (DAYS[2], "Downstairs"), (DAYS[3], "Choir"),
                                (DAYS[4], "Choir")], "the series")


@scenario("one occurrence of a series is removed")
def removed_occurrence(bench):
    path, first, second = rehearsals(bench)
    second.change_event("Team", "Choir", start=DAYS[2], title="Concert")
    there_and_back(second, first)
    first.remove_event("Team", "Choir", span="this")
    there_and_back(first, second)
    wanted = [(DAYS[1], "Choir"), (DAYS[2], "Concert"), (DAYS[3], "Choir"), (DAYS[4], "Choir")]
    expect_same(first, second, wanted, "the series without its first occurrence")
    expect(len(bench.alice.items(path)), 1, "items on the server")


@scenario("a series is split, from both machines")
def splits(bench):
    _, first, second = rehearsals(bench)
    first.change_event("Team", "Choir", span="future", start=DAYS[2], title="Orchestra")
    there_and_back(first, second)
    wanted = [(DAYS[0], "Choir"), (DAYS[1], "Choir"), (DAYS[2], "Orchestra"), (DAYS[3], "Orchestra"),
              (DAYS[4], "Orchestra")]
    expect_same(first, second, wanted, "the series split on the first machine")
    second.change_event("Team", "Orchestra", span="future", start=DAYS[4], title="Brass")
    there_and_back(second, first)
    expect_same(first, second, wanted[:4] + [(DAYS[4], "Brass")], "the series split on the second machine, too")


@scenario("a series is renamed as a whole and removed as a whole")
def whole_series(bench):
    path, first, second = rehearsals(bench)
    second.change_event("Team", "Choir", span="all", start=DAYS[0], title="Chorus")
    there_and_back(second, first)
    expect_same(first, second, [(day, "Chorus") for day in DAYS], "the series under another name")
    first.remove_event("Team", "Chorus")
    there_and_back(first, second)
    expect_same(first, second, [], "the series that was removed")
    expect(bench.alice.items(path), {}, "items on the server")


@scenario("a third machine, added later, has what the others have")
def third_machine(bench):
    _, first, second = rehearsals(bench)
    first.change_event("Team", "Choir", start=DAYS[1], title="Choir in the church")
    there_and_back(first, second)
    second.change_event("Team", "Choir", span="future", start=DAYS[3], title="Brass")
    second.new_event("Team", "Lunch", start="2026-12-24 12:00:00")
    second.new_reminder("Team", "Buy bread")
    settle(first, second)
    third = bench.machine()
    for machine in (first, second):
        expect(sorted(third.events("Team")), sorted(machine.events("Team")), "events of the third machine")
        expect(third.titles_of_reminders("Team"), machine.titles_of_reminders("Team"), "its reminders")
    third.change_event("Team", "Choir", span="this", start=DAYS[0], location="Nave")
    there_and_back(third, first, second)
    settle(first, second, third)
    for machine in (first, second, third):
        expect(machine.property_of("Team", "Choir", "location"), "Nave", "what the third machine changed")
        expect(machine.conflicts(), [], "conflicts")
