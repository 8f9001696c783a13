"""The same field, changed on two machines."""
from scenario import expect, scenario, settle, there_and_back

START = "2026-12-01 12:00:00"


def conflict(bench):
    """The second machine has found it: the first one's title stands."""
    path, first, second = bench.team()
    first.new_event("Team", "Lunch")
    there_and_back(first, second)
    first.change_event("Team", "Lunch", title="Early lunch")
    second.change_event("Team", "Lunch", title="Late lunch")
    first.sync()
    expect(second.sync_with_conflicts()["conflicts"], 1, "new conflicts")
    listed = second.conflicts()
    expect([(each["calendar"], each["fields"]) for each in listed], [("Team", ["title"])], "what orlocal conflicts lists")
    expect(second.events("Team"), [(START, "Early lunch")], "what stands until somebody decides")
    return path, first, second, listed[0]["id"]


def decided(bench, choice, wanted):
    path, first, second, identifier = conflict(bench)
    second.run("conflicts", "keep", choice, identifier)
    settle(second, first)
    for machine in (first, second):
        expect(sorted(title for _, title in machine.events("Team")), wanted, f"titles after keep {choice}")
        expect(machine.conflicts(), [], "conflicts that are left")
    expect(len(bench.alice.items(path)), len(wanted), "items on the server")


@scenario("a conflict is listed and settled by mine")
def conflict_mine(bench):
    decided(bench, "mine", ["Late lunch"])


@scenario("a conflict is listed and settled by theirs")
def conflict_theirs(bench):
    decided(bench, "theirs", ["Early lunch"])


@scenario("a conflict is listed and settled by both")
def conflict_both(bench):
    decided(bench, "both", ["Early lunch", "Late lunch"])


@scenario("changed here, removed there: nothing is lost before somebody decides")
def conflict_removed(bench):
    path, first, second = bench.team()
    first.new_event("Team", "Lunch")
    there_and_back(first, second)
    first.remove_event("Team", "Lunch")
    second.change_event("Team", "Lunch", title="Late lunch")
    first.sync()
    expect(second.sync_with_conflicts()["conflicts"], 1, "new conflicts")
    second.run("conflicts", "keep", "mine", second.conflicts()[0]["id"])
    settle(second, first)
    for machine in (first, second):
        expect(machine.events("Team"), [(START, "Late lunch")], "the event that was kept")
    expect(len(bench.alice.items(path)), 1, "items on the server")
