"""Many items, few requests, and a sync that is killed."""
import random
import time

import counting_proxy
import dav
from scenario import expect, expect_that, scenario, settle


@scenario("many items come in, and a quiet sync asks little")
def many_items(bench):
    count = bench.options.items
    path = bench.calendar("Team")
    for number in range(count):
        day, hour = number % 28 + 1, number // 28 % 24
        bench.alice.put(f"{path}item-{number}.ics", dav.calendar_text(dav.event(
            f"item-{number}", f"Event {number}", f"202612{day:02}T{hour:02}0000Z", f"202612{day:02}T{hour:02}3000Z")))
    with counting_proxy.in_front_of(bench.server) as proxy:
        began = time.monotonic()
        machine = bench.machine(proxy.origin + bench.server.root)
        came_in = time.monotonic() - began
        expect(len(machine.json("agenda", "--from", "2026-11-30", "--to", "2027-01-01", "--calendar", "Team")["events"]),
               count, "events here")
        # One server counts in whole seconds, and names those of the last one again.
        settle(machine)
        time.sleep(2.1)
        settle(machine)
        collections = len(machine.titles_of_calendars())
        proxy.clear()
        expect(machine.run("sync").strip(), f"{machine.ACCOUNT}: nothing new", "what a quiet sync says")
        asked = proxy.counts()
    bench.note(f"{count} items came in within {came_in:.1f} s; quiet sync of {collections} calendars: {sum(asked.values())} requests, "
               f"{', '.join(f'{number} {method}' for method, number in sorted(asked.items()))}")
    expect(asked.get("GET", 0), 0, "GETs of a quiet sync")
    expect_that(sum(asked.values()) <= 3 + collections, f"at most three requests and one a collection: {asked}")


@scenario("a sync that is killed again and again loses nothing and doubles nothing")
def killed(bench):
    path, first, second = bench.team()
    chance = random.Random(bench.options.seed)
    wanted, kills = set(), 0
    # The moments come from as long as a sync takes.
    began = time.monotonic()
    first.new_event("Team", "First")
    first.sync()
    longest = time.monotonic() - began
    first.remove_event("Team", "First")
    for turn in range(bench.options.kills):
        machine, other = (first, second) if turn % 2 else (second, first)
        events = [dav.event(f"{turn}-{number}", f"Event {turn}-{number}") for number in range(4)]
        file = bench.folder / f"turn{turn}.ics"
        file.write_text(dav.calendar_text(*events), encoding="utf-8", newline="")
        machine.run("import", file, "--calendar", "Team")
        wanted |= {f"Event {turn}-{number}" for number in range(4)}
        # One of an earlier turn, if it has come here: its removal is cut off as well.
        for title in sorted(title for _, title in machine.events("Team") if title.endswith("-0"))[:1]:
            machine.remove_event("Team", title)
            wanted.discard(title)
        for each in (machine, other):
            began = time.monotonic()
            if each.killed_sync(chance.uniform(0, longest)):
                kills += 1
            else:
                longest = (longest + time.monotonic() - began) / 2
    settle(first, second, most=8)
    for name, machine in (("first", first), ("second", second)):
        expect(sorted(title for _, title in machine.events("Team")), sorted(wanted), f"events of the {name} machine")
        expect(machine.conflicts(), [], f"conflicts of the {name} machine")
    expect(len(bench.alice.items(path)), len(wanted), "items on the server")
    bench.note(f"{kills} of {2 * bench.options.kills} syncs were killed at work, with --seed {bench.options.seed}")
