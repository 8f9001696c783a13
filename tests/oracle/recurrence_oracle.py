#!/usr/bin/env python3
"""Holds the store's recurrence against two judges, on rules made from a seed.

What the store promises beyond the rule is put onto either judge's times here: the start is always the first occurrence
and counts, UNTIL is a moment, a time that the clock skips is read with the offset before the gap, a repeated one is the
first, what falls on one moment is one occurrence, and none is a moment before the start.

Rules that differ are printed with both answers and the seed that makes them again; exit status 1 then.
"""
import argparse
import bisect
import collections
import datetime as dt
import functools
import itertools
import random
import subprocess
import sys
import zoneinfo

sys.dont_write_bytecode = True
from recurrence_judges import (DAILY, DAY, DEPARTURES, FREQUENCIES, HOURLY, MINUTELY, MONTHLY, SECOND,  # noqa: E402
                               SECONDLY, UNIT_SECONDS, WEEKLY, YEARLY, Rule, by_dateutil, by_definition)

MINUTE, UTC = dt.timedelta(minutes=1), dt.timezone.utc

# Clocks that never change, that change by an hour and by half of one, that skip midnight, that skipped a whole day.
ZONES = ["Europe/Berlin", "America/New_York", "Australia/Lord_Howe", "Asia/Kolkata", "UTC", "America/Sao_Paulo",
         "Pacific/Apia"]


# --- what the store promises beyond the rule


def moment(local, zone):
    """The offset before a gap, the first of two: what `fold` 0 means."""
    return local.replace(tzinfo=zone).astimezone(UTC)


def earliest_from(local, zone):
    """No wall-clock time from `local` on is a moment before this one."""
    return min(local.replace(tzinfo=zone, fold=fold).astimezone(UTC) for fold in (0, 1))


# `made` is what the definition makes before `known`.
Case = collections.namedtuple("Case", "rule zone start all_day count until known made from_ to")


def occurrences(case, made):
    """(local, moment) of the occurrences in the case's range. `made` are the rule's own times from the start on."""
    zone = zoneinfo.ZoneInfo(case.zone)
    # Nothing before `known` is missing, whatever a judge has found after it.
    made = list(itertools.takewhile(lambda time: time < case.known, made))
    bounded = [time for time in made if case.until is None or
               (time.date() <= case.until if case.all_day else moment(time, zone) <= case.until)]
    if case.start not in bounded[:1]:
        bounded.insert(0, case.start)
    found = sorted((moment(time, zone), time) for time in bounded[:case.count])
    # Where the start itself is skipped, times soon after it on the wall clock are moments before it.
    found = [pair for pair in found if pair[0] >= moment(case.start, zone)]
    length = DAY if case.all_day else dt.timedelta()
    first_of_each = [next(group) for _, group in itertools.groupby(found, lambda pair: pair[0])]
    return [(local, at) for at, local in first_of_each
            if at < case.to and (at >= case.from_ or moment(local + length, zone) > case.from_)]


# --- rules from a seed


@functools.lru_cache(maxsize=None)
def clock_changes(name):
    """The moments at which the zone's clock changes."""
    zone = zoneinfo.ZoneInfo(name)
    days = [dt.datetime(1995, 1, 1, tzinfo=UTC) + i * DAY for i in range(50 * 365)]
    offsets = [day.astimezone(zone).utcoffset() for day in days]
    changes = []
    for i in range(1, len(days)):
        if offsets[i] != offsets[i - 1]:
            minutes = bisect.bisect_left(range(24 * 60), True, key=lambda minute: (
                days[i - 1] + minute * MINUTE).astimezone(zone).utcoffset() == offsets[i])
            changes.append(days[i - 1] + minutes * MINUTE)
    return changes


class Cases:
    # What is looked at of each frequency, in days.
    SPAN = {SECONDLY: 2, MINUTELY: 10, HOURLY: 60, DAILY: 300, WEEKLY: 600, MONTHLY: 1500, YEARLY: 4400}

    def __init__(self, seed):
        self.random = random.Random(seed)

    def one_in(self, count):
        return self.random.randrange(count) == 0

    def numbers(self, low, high, most=3, negative=False):
        values = [self.random.randint(low, high) for _ in range(self.random.randint(1, most))]
        return [-value if negative and self.one_in(3) else value for value in values]

    def parts(self, frequency, all_day):
        """Only what RFC 5545 allows beside the frequency."""
        by = {}
        if frequency < DAILY and self.one_in(3):
            return by
        if self.one_in(4):
            by["BYMONTH"] = self.numbers(1, 12, 4)
        if frequency == YEARLY and self.one_in(4):
            edge = self.one_in(3)
            by["BYWEEKNO"] = self.numbers(50 if edge else 1, 53, 4, True) if not self.one_in(6) else [1]
        if frequency not in (DAILY, WEEKLY, MONTHLY) and self.one_in(6):
            by["BYYEARDAY"] = self.numbers(355, 366, 6, True) if self.one_in(4) else self.numbers(1, 366, 20, True)
        if frequency != WEEKLY and self.one_in(4):
            by["BYMONTHDAY"] = self.numbers(1, 31, 6, True)
        if self.one_in(2):
            days = self.random.choices(range(7), k=self.random.randint(1, 4))
            most = 0 if frequency < MONTHLY or "BYWEEKNO" in by else 5 if frequency == MONTHLY else 53
            if most == 53 and ("BYMONTH" in by or self.one_in(3)):
                most = 5
            kind = self.random.randrange(4) if most else 0
            by["BYDAY"] = [(0 if kind in (0, 1) or kind == 2 and self.one_in(3) else self.numbers(1, most, 1, True)[0],
                            day) for day in days]
        if not all_day:
            for part, last, own in (("BYHOUR", 23, HOURLY), ("BYMINUTE", 59, MINUTELY), ("BYSECOND", 59, SECONDLY)):
                if self.one_in(4 if frequency != own else 3):
                    by[part] = self.numbers(0, last, 4 if self.one_in(2) else 12)
                    if part == "BYSECOND" and self.one_in(8):
                        by[part].append(60)
        if by and self.one_in(3):
            by["BYSETPOS"] = self.numbers(1, self.random.choice([1, 2, 4, 10, 60, 366]), 3, True)
            if frequency == SECONDLY:
                # A second has one place: others alone would be looked for second by second.
                by["BYSETPOS"].append(self.random.choice([1, -1]))
        parts = list(by.items())
        self.random.shuffle(parts)
        return dict(parts)

    def rule(self, frequency, all_day):
        interval = 1
        if self.one_in(2):
            interval = self.random.choice([2, 3, 4, 5, 6, 7, 10, 12, 13])
            if frequency < DAILY and self.one_in(2):
                interval = self.random.choice([15, 17, 24, 25, 30, 45, 60, 90, 100, 1440, 3600, 5000])
        week_start = self.random.choice([None, *range(7)])
        return Rule(frequency, interval, week_start, self.parts(frequency, all_day))

    def start(self, rule, zone):
        changes = clock_changes(zone)
        time = dt.datetime(1995, 1, 1) + self.random.randrange(50 * 365 * 86400) * SECOND
        if changes and self.one_in(2):
            change = self.random.choice(changes)
            time = change.astimezone(zoneinfo.ZoneInfo(zone)).replace(tzinfo=None)
            if rule.frequency < DAILY:
                # Few enough periods away for the change to be seen.
                return time - self.random.randrange(UNIT_SECONDS[rule.frequency] * rule.interval * 40) * SECOND
            # At a time of day that the clock skips or repeats then, or beside it.
            time += self.random.randint(-60, 60) * MINUTE
            return time - self.random.randrange(self.SPAN[rule.frequency] // 4) * DAY
        if self.one_in(4):
            time = time.replace(month=12, day=self.random.randint(25, 31))
        elif self.one_in(6):
            time = (time.replace(day=1) - DAY).replace(hour=time.hour)
        hour = self.random.choice([0, 1, 2, 2, 3, 9, 23, time.hour, time.hour])
        minute, second = self.random.choice([(0, 0), (30, 0), (59, 59), (time.minute, 0), (time.minute, time.second)])
        return time.replace(hour=hour, minute=minute, second=second)

    def case(self):
        frequency = self.random.choice([SECONDLY, MINUTELY, HOURLY, DAILY, DAILY, WEEKLY, WEEKLY, MONTHLY, MONTHLY,
                                        MONTHLY, YEARLY, YEARLY, YEARLY, YEARLY])
        all_day = frequency >= DAILY and self.one_in(6)
        rule = self.rule(frequency, all_day)
        name = self.random.choice(ZONES)
        start = self.start(rule, name)
        if all_day:
            start = start.replace(hour=0, minute=0, second=0)
        span = self.SPAN[frequency] * DAY
        if frequency < WEEKLY and any(rule[part] for part in ("BYMONTH", "BYMONTHDAY", "BYYEARDAY", "BYDAY")):
            span *= 6
        if self.one_in(2):
            # Most series start with what their rule makes.
            start = self.random.choice([start, *itertools.islice(by_definition(rule, start, start + span // 3), 10)])
        horizon = start + span
        most = 600 if self.one_in(20) else 60
        made = list(itertools.islice(by_definition(rule, start, horizon), most))
        known = made[-1] if len(made) == most else horizon.replace(hour=0, minute=0, second=0)
        made = [time for time in made if time < known]
        return self.bounded(rule, name, start, all_day, known, made)

    def bounded(self, rule, name, start, all_day, known, made):
        zone = zoneinfo.ZoneInfo(name)
        end = max(earliest_from(known, zone), moment(start, zone))
        count = until = None
        if self.one_in(3):
            count = self.random.randint(1, len(made) + 2) if made else 1
        elif self.one_in(3):
            last = self.random.choice(made or [start])
            until = moment(last, zone) + self.random.choice([0, 0, -1, 1, 3600, -86400]) * SECOND
            until = last.date() if all_day else until
            if self.one_in(20):
                until = start.date() - DAY if all_day else moment(start, zone) - SECOND
        changes = [change for change in clock_changes(name) if moment(start, zone) <= change <= end]

        def edge():
            if changes and self.one_in(2):
                return self.random.choice(changes) + self.random.randint(-90, 90) * MINUTE
            return moment(self.random.choice(made or [start]), zone) + self.random.choice([0, 0, 1, -1, 86400]) * SECOND

        from_ = edge() if self.one_in(3) else moment(start, zone) - DAY
        to = min(end, edge()) if self.one_in(3) else end
        return Case(rule, name, start, all_day, count, until, known, made, from_, to)


# --- asking and comparing


def line(case):
    if case.all_day:
        start = f"{case.start:%Y%m%d}"
    else:
        start = f"{case.start:%Y%m%dT%H%M%S}" + ("Z" if case.zone == "UTC" else "")
    rule = case.rule.text()
    if case.count is not None:
        rule += f";COUNT={case.count}"
    if case.until is not None:
        rule += f";UNTIL={case.until:%Y%m%d}" if case.all_day else f";UNTIL={case.until:%Y%m%dT%H%M%SZ}"
    return "\t".join([case.zone, start, rule, f"{case.from_:%Y%m%dT%H%M%SZ}", f"{case.to:%Y%m%dT%H%M%SZ}"])


def ask_store(program, lines):
    done = subprocess.run([program], input="".join(text + "\n" for text in lines), capture_output=True, text=True)
    answers = done.stdout.splitlines()
    if done.returncode != 0 or len(answers) != len(lines):
        sys.exit(f"recurrence_oracle: {program} ended with {done.returncode} after {len(answers)} of {len(lines)} "
                 f"rules\n{done.stderr}")
    return answers


def text_of(pairs):
    return [(f"{local:%Y%m%dT%H%M%S}", f"{at:%Y%m%dT%H%M%SZ}") for local, at in pairs]


def difference(answer, expected):
    """None where they are the same, else what is different in words."""
    if answer.startswith("refused: "):
        return answer
    found = [tuple(pair.split("=")) for pair in answer.split()]
    for what, index in (("wall clock", 0), ("moments", 1)):
        mine, theirs = [pair[index] for pair in found], [pair[index] for pair in expected]
        if mine != theirs:
            same = itertools.takewhile(lambda pair: pair[0] == pair[1], zip(mine, theirs))
            at = sum(1 for _ in same)
            around = slice(max(0, at - 2), at + 4)
            return (f"{what} differs at occurrence {at + 1}\n  store ({len(mine)}): … {' '.join(mine[around])}\n"
                    f"  judge ({len(theirs)}): … {' '.join(theirs[around])}")
    return None


class Comparison:
    def __init__(self):
        self.rules = self.occurrences = 0
        self.differences = []
        self.met = collections.Counter()
        self.excused = collections.Counter()

    def add(self, case, text, answer):
        self.rules += 1
        expected = text_of(occurrences(case, case.made))
        self.occurrences += len(expected)
        found = difference(answer, expected)
        if found:
            self.differences.append(("definition", text, found))
        departures = [departure for departure in DEPARTURES if departure.applies(case.rule, case.start)]
        rule, start = case.rule, case.start
        for departure in departures:
            self.met[departure.reason] += 1
            if departure.ask:
                rule, start = departure.ask(rule, start)
        made = (time for time in by_dateutil(rule, start, case.known) if time >= case.start)
        found = difference(answer, text_of(occurrences(case, made)))
        reasons = [departure.reason for departure in departures if not departure.ask]
        if found and reasons:
            self.excused.update(reasons)
        elif found:
            self.differences.append(("dateutil", text, found))


def main():
    parser = argparse.ArgumentParser(description="Holds the store's recurrence against two judges.")
    parser.add_argument("program", help="expand_rules as built")
    parser.add_argument("--rules", type=int, default=2000)
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(1 << 31))
    given = parser.parse_args()
    print(f"seed {given.seed}", flush=True)
    cases, comparison = Cases(given.seed), Comparison()
    while comparison.rules < given.rules and len(comparison.differences) < 10:
        some = [cases.case() for _ in range(min(500, given.rules - comparison.rules))]
        lines = [line(case) for case in some]
        for case, text, answer in zip(some, lines, ask_store(given.program, lines)):
            comparison.add(case, text, answer)
    for judge, text, found in comparison.differences[:10]:
        print(f"\n{text.expandtabs(1)}\n  seed {given.seed}, against {judge}: {found}")
    print(f"\n{comparison.rules} rules, {comparison.occurrences} occurrences, "
          f"{len(comparison.differences)} differences")
    for departure in DEPARTURES:
        excused = "asked another way" if departure.ask else f"{comparison.excused[departure.reason]} differ"
        print(f"  {comparison.met[departure.reason]} of them, {excused}: {departure.reason}")
    if comparison.rules >= 100 and comparison.occurrences < 5 * comparison.rules:
        sys.exit("recurrence_oracle: the rules made too little to be compared")
    sys.exit(1 if comparison.differences else 0)


if __name__ == "__main__":
    main()
