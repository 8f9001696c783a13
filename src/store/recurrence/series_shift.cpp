#include "store/recurrence/series_shift.h"

#include <algorithm>

#include "base/try.h"
#include "store/time/civil_days.h"

namespace orlocal::store {
namespace {

using Frequency = RecurrenceRule::Frequency;

void keepTimesIf(std::vector<CalendarTime>& times, const Series& series, Moment from, Moment to) {
  std::erase_if(times, [&](const CalendarTime& time) {
    const Moment start = series.originalStart(time);
    return start < from || start >= to;
  });
}

int weekdayOf(LocalDay day) { return weekDayOf(dayOf(localSeconds(LocalTime(day)))); }

int daysInMonth(LocalDay day) { return monthLength(day.year(), day.month()); }

/// Which one of its weekday in its month, counted as `like` counts: from the front, or from the back when negative.
int ordinalOf(LocalDay day, int like) {
  return like > 0 ? (day.day() - 1) / 7 + 1 : -((daysInMonth(day) - day.day()) / 7 + 1);
}

}  // namespace

SeriesShift::SeriesShift(const Series& series, const CalendarTime& from, const CalendarTime& to, const Zone& viewer)
    : m_series(series),
      m_from(from),
      m_to(to),
      m_viewer(viewer),
      m_seconds(to.local - from.local),
      m_otherClock(from.kind != to.kind || from.zone != to.zone) {}

CalendarTime SeriesShift::operator()(const CalendarTime& time) const {
  if (none()) { return time; }
  CalendarTime shifted = m_to;
  shifted.local = m_series.recurrenceId(m_series.originalStart(time)).local + m_seconds;
  if (shifted.kind == CalendarTime::Kind::kDate) { shifted.local = LocalTime(LocalDay(shifted.local)); }
  return shifted;
}

CalendarTime SeriesShift::untilAt(LocalTime local) const {
  switch (m_to.kind) {
    case CalendarTime::Kind::kDate:
      return {CalendarTime::Kind::kDate, LocalTime(LocalDay(local)), {}};
    case CalendarTime::Kind::kZoned:
      // RFC 5545, 3.3.10: the end of a rule of zoned times is in UTC.
      return {CalendarTime::Kind::kUtc,
              Zone().toLocal(momentOf({CalendarTime::Kind::kZoned, local, m_to.zone}, m_viewer)),
              {}};
    default:
      return {m_to.kind, local, {}};
  }
}

RecurrenceRule SeriesShift::operator()(const RecurrenceRule& rule) const {
  RecurrenceRule shifted = rule;
  if (none()) { return shifted; }
  if (rule.until) {
    const CalendarTime& until = *rule.until;
    if (until.kind == CalendarTime::Kind::kDate && m_from.kind != CalendarTime::Kind::kDate) {
      // A date bounds a timed rule by the whole of that day.
      shifted.until = untilAt(until.local + 86'399 + m_seconds);
    } else {
      shifted.until = untilAt(m_series.recurrenceId(m_series.originalStart(until)).local + m_seconds);
    }
  }
  if (LocalDay(m_from.local) != LocalDay(m_to.local)) { followDay(shifted); }
  return shifted;
}

ExceptionRule SeriesShift::operator()(const ExceptionRule& rule) const {
  ExceptionRule shifted{(*this)(rule.rule), rule.start};
  if (shifted.start) { *shifted.start += m_seconds; }
  return shifted;
}

void SeriesShift::move(Recurrence& recurrence, bool rulesToo) const {
  if (none()) { return; }
  for (auto* times : {&recurrence.added, &recurrence.excluded}) {
    for (CalendarTime& time : *times) { time = (*this)(time); }
  }
  for (ExceptionRule& rule : recurrence.exceptionRules) { rule = (*this)(rule); }
  if (!rulesToo) { return; }
  for (RecurrenceRule& rule : recurrence.rules) { rule = (*this)(rule); }
}

void SeriesShift::followDay(RecurrenceRule& rule) const {
  // Days and months of another calendar stay as they are written.
  if (!rule.scale.empty() && rule.scale != "GREGORIAN") { return; }
  const LocalDay from(m_from.local), to(m_to.local);
  const int before = weekdayOf(from), after = weekdayOf(to);
  if (rule.frequency == Frequency::kWeekly) {
    const auto named = [&](int day) {
      return std::find(rule.byDay.begin(), rule.byDay.end(), RecurrenceRule::WeekDay{0, day});
    };
    const auto old = named(before);
    if (old == rule.byDay.end() || before == after) { return; }
    if (named(after) == rule.byDay.end()) {
      old->day = after;
    } else {
      rule.byDay.erase(old);
    }
    return;
  }
  if (rule.frequency != Frequency::kMonthly && rule.frequency != Frequency::kYearly) { return; }
  if (rule.byMonth.size() == 1 && rule.byMonth.front() == from.month()) { rule.byMonth.front() = to.month(); }
  if (rule.byMonthDay.size() == 1) {
    int& day = rule.byMonthDay.front();
    if (day == from.day()) {
      day = to.day();
    } else if (day < 0 && day == from.day() - daysInMonth(from) - 1) {
      day = to.day() - daysInMonth(to) - 1;
    }
  }
  if (rule.byDay.size() == 1 && rule.byDay.front().ordinal != 0 && rule.byDay.front().day == before &&
      rule.byDay.front().ordinal == ordinalOf(from, rule.byDay.front().ordinal)) {
    rule.byDay.front() = {ordinalOf(to, rule.byDay.front().ordinal), after};
  }
}

Result<RecurrenceHalves> halvesOf(const Item& item, const Series& series, Moment original) {
  const Recurrence& whole = item.recurrence;
  RecurrenceHalves halves{whole, whole};
  halves.left.rules.clear();
  halves.right.rules.clear();
  ExpansionBudget budget;
  std::vector<std::int64_t> before, with;  // of each rule
  for (std::size_t i = 0; i < whole.rules.size(); ++i) {
    ORLOCAL_TRY(const std::int64_t earlier, series.countBefore(original, i, budget));
    ORLOCAL_TRY(const std::int64_t upTo, series.countBefore(original + std::chrono::microseconds(1), i, budget));
    before.push_back(earlier);
    with.push_back(upTo);
    halves.ruleMakesStart = halves.ruleMakesStart || upTo > earlier;
  }
  for (std::size_t i = 0; i < whole.rules.size(); ++i) {
    const RecurrenceRule& rule = whole.rules[i];
    if (!rule.count) {
      RecurrenceRule ended = rule;
      // An earlier end stays.
      if (!rule.until || series.originalStart(*rule.until) >= original) { ended.until = untilBefore(series, original); }
      halves.left.rules.push_back(std::move(ended));
      halves.right.rules.push_back(rule);
      continue;
    }
    if (before[i] > 0) {
      halves.left.rules.push_back(rule);
      halves.left.rules.back().count = before[i];
    }
    if (*rule.count > before[i]) {
      // The start of the right half counts as the first of every rule there, also of one that does not make it.
      const bool countsAlien = halves.ruleMakesStart && with[i] == before[i];
      halves.right.rules.push_back(rule);
      halves.right.rules.back().count = *rule.count - before[i] + (countsAlien ? 1 : 0);
    }
  }
  keepTimesIf(halves.left.added, series, Moment::min(), original);
  keepTimesIf(halves.left.excluded, series, Moment::min(), original);
  keepTimesIf(halves.right.added, series, original + std::chrono::microseconds(1), Moment::max());
  keepTimesIf(halves.right.excluded, series, original, Moment::max());
  const std::optional<CalendarTime>& start = item.anchor();
  for (ExceptionRule& exception : halves.right.exceptionRules) {
    if (!exception.start) { exception.start = start->local; }
  }
  return halves;
}

CalendarTime untilBefore(const Series& series, Moment start) {
  CalendarTime until = series.recurrenceId(start);
  switch (until.kind) {
    case CalendarTime::Kind::kDate:
      until.local = LocalTime(LocalDay(until.local) - 1);
      break;
    case CalendarTime::Kind::kFloating:
      until.local -= 1;
      break;
    default:
      until = {CalendarTime::Kind::kUtc, Zone().toLocal(start - std::chrono::seconds(1)), {}};
  }
  return until;
}

}  // namespace orlocal::store
