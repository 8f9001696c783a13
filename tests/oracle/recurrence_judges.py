"""The two who judge recurrence rules: RFC 5545, 3.3.10 read as a definition, and dateutil, another expander.

Both make times on the wall clock, from the start on, and know neither COUNT nor UNTIL.
"""
import collections
import datetime as dt
import functools
import itertools
import sys

try:
    import dateutil.rrule as dateutil
except ImportError:
    sys.exit("recurrence_oracle: dateutil is missing; install the package python3-dateutil")

FREQUENCIES = ["SECONDLY", "MINUTELY", "HOURLY", "DAILY", "WEEKLY", "MONTHLY", "YEARLY"]
SECONDLY, MINUTELY, HOURLY, DAILY, WEEKLY, MONTHLY, YEARLY = range(7)
UNIT_SECONDS = {SECONDLY: 1, MINUTELY: 60, HOURLY: 3600}
WEEKDAYS = ["MO", "TU", "WE", "TH", "FR", "SA", "SU"]
SECOND, DAY = dt.timedelta(seconds=1), dt.timedelta(days=1)


class Rule:
    """A rule's parts by name. BYDAY is a list of (ordinal or 0, weekday); weekdays count from Monday as 0."""

    def __init__(self, frequency, interval=1, week_start=None, by=None):
        self.frequency, self.interval, self.week_start = frequency, interval, week_start
        self.by = by or {}

    def __getitem__(self, part):
        return self.by.get(part, ())

    def with_parts(self, **parts):
        return Rule(self.frequency, self.interval, self.week_start, {**self.by, **parts})

    def text(self):
        text = "FREQ=" + FREQUENCIES[self.frequency]
        if self.interval != 1:
            text += f";INTERVAL={self.interval}"
        for part, values in self.by.items():
            shown = [f"{n or ''}{WEEKDAYS[day]}" for n, day in values] if part == "BYDAY" else map(str, values)
            text += f";{part}=" + ",".join(shown)
        return text if self.week_start is None else text + ";WKST=" + WEEKDAYS[self.week_start]


# --- the definition: each day (or hour, minute, second) of a span is asked whether the rule's parts hold for it


@functools.lru_cache(maxsize=None)
def week_of(date, week_start):
    """The number of its week from the front and from the back, in the year that has most of the week."""
    middle = date - dt.timedelta(days=(date.weekday() - week_start) % 7 - 3)
    first, last = dt.date(middle.year, 1, 1), dt.date(middle.year, 12, 31)
    return (middle - first).days // 7 + 1, -((last - middle).days // 7 + 1)


@functools.lru_cache(maxsize=None)
def year_ends(year):
    return dt.date(year, 1, 1), dt.date(year, 12, 31)


@functools.lru_cache(maxsize=None)
def month_ends(year, month):
    following = dt.date(year + month // 12, month % 12 + 1, 1)
    return dt.date(year, month, 1), following - DAY


def is_among(date, ends, values):
    """Whether the date's place between both ends, from the front as 1… or from the back as -1…, is listed."""
    return (date - ends[0]).days + 1 in values or (date - ends[1]).days - 1 in values


def day_tests(rule):
    """What a day must pass, by part: one that limits does that, one that expands takes the days of its period."""
    months, weeks, week_start = set(rule["BYMONTH"]), set(rule["BYWEEKNO"]), rule.week_start or 0
    month_days, year_days, weekdays = set(rule["BYMONTHDAY"]), set(rule["BYYEARDAY"]), set(rule["BYDAY"])
    in_month = rule.frequency == MONTHLY or bool(months)

    def weekday_fits(date):
        weekday = date.weekday()
        if (0, weekday) in weekdays:
            return True
        first, last = month_ends(date.year, date.month) if in_month else year_ends(date.year)
        places = (date - first).days // 7 + 1, -((last - date).days // 7) - 1
        return any((place, weekday) in weekdays for place in places)

    tests = [(months, lambda date: date.month in months),
             (month_days, lambda date: is_among(date, month_ends(date.year, date.month), month_days)),
             (year_days, lambda date: is_among(date, year_ends(date.year), year_days)),
             (weekdays, weekday_fits),
             (weeks, lambda date: not weeks.isdisjoint(week_of(date, week_start)))]
    return [test for values, test in tests if values]


def passing(dates, tests):
    for test in tests:
        dates = filter(test, dates)
    return list(dates)


def with_parts_of_start(rule, start):
    """What a rule does not say is as in its start."""
    parts = {}
    if rule.frequency == WEEKLY and not rule["BYDAY"]:
        parts["BYDAY"] = [(0, start.weekday())]
    if rule.frequency >= MONTHLY and not any(rule[part] for part in ("BYDAY", "BYMONTHDAY", "BYYEARDAY")):
        if rule["BYWEEKNO"]:
            parts["BYDAY"] = [(0, start.weekday())]
        else:
            parts["BYMONTHDAY"] = [start.day]
            if rule.frequency == YEARLY and not rule["BYMONTH"]:
                parts["BYMONTH"] = [start.month]
    for part, value, frequency in (("BYHOUR", start.hour, HOURLY), ("BYMINUTE", start.minute, MINUTELY),
                                   ("BYSECOND", start.second, SECONDLY)):
        if rule.frequency > frequency and not rule[part]:
            parts[part] = [value]
    # A leap second is the one before it, on a clock that has none.
    if 60 in rule["BYSECOND"]:
        parts["BYSECOND"] = [min(second, 59) for second in rule["BYSECOND"]]
    return rule.with_parts(**parts)


def week_begin(date, week_start):
    return date - dt.timedelta(days=(date.weekday() - (week_start or 0)) % 7)


def periods_of_days(rule, start, horizon):
    """The fitting days of each period, the first one from its own beginning, and the parts of each of these days."""
    begin = {DAILY: start.date(), WEEKLY: week_begin(start.date(), rule.week_start),
             MONTHLY: start.date().replace(day=1), YEARLY: dt.date(start.year, 1, 1)}[rule.frequency]
    number = {DAILY: lambda date: (date - begin).days, WEEKLY: lambda date: (date - begin).days // 7,
              MONTHLY: lambda date: (date.year - begin.year) * 12 + date.month - begin.month,
              YEARLY: lambda date: date.year - begin.year}[rule.frequency]
    tests = day_tests(rule)
    # A period that the horizon cuts is looked at to its end: its last position lies there.
    beyond = number(horizon.date())
    dates = map(dt.date.fromordinal, itertools.count(begin.toordinal()))
    for period, members in itertools.groupby(dates, number):
        if period > beyond:
            return
        if period % rule.interval == 0:
            yield passing(members, tests), rule["BYHOUR"], rule["BYMINUTE"], rule["BYSECOND"]


def periods_within_days(rule, start, horizon):
    """The same for periods shorter than a day."""
    unit = UNIT_SECONDS[rule.frequency]
    step = rule.interval * unit
    begin = start - start.second % min(unit, 60) * SECOND - start.minute * 60 % unit * SECOND
    tests = day_tests(rule)
    # The parts that limit a period, of which it has one value itself; the others it expands to.
    limits = ["BYHOUR", "BYMINUTE", "BYSECOND"][:3 - rule.frequency]
    allowed = [set(rule[part] or range(60)) for part in limits]
    expanded = [rule[part] for part in ["BYHOUR", "BYMINUTE", "BYSECOND"][len(limits):]]
    for ordinal in range(start.toordinal(), horizon.toordinal() + 1):
        date = dt.date.fromordinal(ordinal)
        if not passing([date], tests):
            continue
        since = (dt.datetime.combine(date, dt.time()) - begin) // SECOND
        for second in range(-since % step if since > 0 else -since, 86400, step):
            own = (second // 3600, second // 60 % 60, second % 60)[:len(limits)]
            if all(map(set.__contains__, allowed, own)):
                yield [date], *([value] for value in own), *expanded


def by_definition(rule, start, horizon):
    """What the rule makes from its start on, on the wall clock; nothing is certain from the horizon's day on."""
    rule = with_parts_of_start(rule, start)
    periods = (periods_of_days if rule.frequency >= DAILY else periods_within_days)(rule, start, horizon)
    for days, hours, minutes, seconds in periods:
        made = [dt.datetime.combine(day, dt.time(*time)) for day in days
                for time in itertools.product(*(sorted(set(values)) for values in (hours, minutes, seconds)))]
        if rule["BYSETPOS"]:
            made = [time for i, time in enumerate(made)
                    if i + 1 in rule["BYSETPOS"] or i - len(made) in rule["BYSETPOS"]]
        yield from (time for time in made if time >= start)


# --- dateutil


class Beyond(Exception):
    """dateutil has come to the horizon, which it itself looks at only when a rule makes something."""


class DaysUpToHorizon(dateutil._iterinfo):
    def ydayset(self, year, month, day):
        self.stop_beyond(year, 1, 1)
        return super().ydayset(year, month, day)

    def mdayset(self, year, month, day):
        self.stop_beyond(year, month, 1)
        return super().mdayset(year, month, day)

    def wdayset(self, year, month, day):
        self.stop_beyond(year, month, day)
        return super().wdayset(year, month, day)

    def ddayset(self, year, month, day):
        self.stop_beyond(year, month, day)
        return super().ddayset(year, month, day)

    def stop_beyond(self, *date):
        if dt.date(*date) > self.rrule.horizon.date():
            raise Beyond


dateutil._iterinfo = DaysUpToHorizon


def by_dateutil(rule, start, horizon):
    try:
        made = dateutil.rrulestr(rule.text(), dtstart=start)
        made.horizon = horizon
        yield from made
    except Beyond:
        return
    except ValueError as error:
        # Said of rules that cannot come, sometimes late.
        if "empty" not in str(error):
            raise


def ordinals_beside_weekdays(rule, start):
    return len({ordinal != 0 for ordinal, _ in rule["BYDAY"]}) == 2 and rule.frequency >= MONTHLY


def is_yearly_by_week_alone(rule, start):
    return bool(rule["BYWEEKNO"]) and not any(rule[part] for part in ("BYDAY", "BYMONTHDAY", "BYYEARDAY"))


def has_last_week(rule, start):
    return bool({52, 53} & set(rule["BYWEEKNO"]))


def has_first_week_from_the_back(rule, start):
    return bool({-52, -53} & set(rule["BYWEEKNO"]))


def picks_from_a_week_begun(rule, start):
    return rule.frequency == WEEKLY and bool(rule["BYSETPOS"])


def has_leap_second(rule, start):
    return 60 in rule["BYSECOND"]


def spelled_out(rule, start):
    return with_parts_of_start(rule, start), start


def from_week_begin(rule, start):
    return (with_parts_of_start(rule, start),
            dt.datetime.combine(week_begin(start.date(), rule.week_start), dt.time()))


Departure = collections.namedtuple("Departure", "applies ask reason")

# Where dateutil does not follow RFC 5545, or not what is promised beyond it. `ask` makes the question one that it does
# follow; without one its answer may differ, and the definition alone judges. The definition judges every rule.
DEPARTURES = [
    Departure(is_yearly_by_week_alone, spelled_out,
              "a week of the year without a day is the start's day of the week; dateutil takes all seven"),
    Departure(has_leap_second, spelled_out, "BYSECOND=60 is the 59th second; dateutil knows no such second"),
    Departure(picks_from_a_week_begun, from_week_begin,
              "BYSETPOS counts in whole weeks; dateutil's first one begins with the start's day"),
    Departure(ordinals_beside_weekdays, None,
              "BYDAY=MO,1TU is any of both; dateutil wants both of one day"),
    Departure(has_last_week, None,
              "2011-01-01 is of week 52 of 2010; dateutil mistakes 52 and 53 where they reach into the next year"),
    Departure(has_first_week_from_the_back, None,
              "2001-12-31 is of week -52 of 2002; dateutil leaves out -52 and -53 where they begin in the year before"),
]
