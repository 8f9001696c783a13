#include "store/series_shift.h"

#include <algorithm>

namespace orlocal::store {
namespace {

using Frequency = RecurrenceRule::Frequency;

/// 0 Sunday to 6 Saturday.
int weekdayOf(LocalDay day) {
  return (static_cast<int>(cctz::get_weekday(day)) + 1) % 7;  // cctz counts from Monday
}

int daysInMonth(LocalDay day) {
  const cctz::civil_month month(day);
  return static_cast<int>(LocalDay(month + 1) - LocalDay(month));
}

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
  if (none()) return time;
  CalendarTime shifted = m_to;
  shifted.local = m_series.recurrenceId(m_series.originalStart(time)).local + m_seconds;
  if (shifted.kind == CalendarTime::Kind::kDate) shifted.local = LocalTime(LocalDay(shifted.local));
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
  if (none()) return shifted;
  if (rule.until) {
    const CalendarTime& until = *rule.until;
    if (until.kind == CalendarTime::Kind::kDate && m_from.kind != CalendarTime::Kind::kDate) {
      // A date bounds a timed rule by the whole of that day.
      shifted.until = untilAt(until.local + 86'399 + m_seconds);
    } else {
      shifted.until = untilAt(m_series.recurrenceId(m_series.originalStart(until)).local + m_seconds);
    }
  }
  if (LocalDay(m_from.local) != LocalDay(m_to.local)) followDay(shifted);
  return shifted;
}

void SeriesShift::followDay(RecurrenceRule& rule) const {
  const LocalDay from(m_from.local), to(m_to.local);
  const int before = weekdayOf(from), after = weekdayOf(to);
  if (rule.frequency == Frequency::kWeekly) {
    const auto named = [&](int day) {
      return std::find(rule.byDay.begin(), rule.byDay.end(), RecurrenceRule::WeekDay{0, day});
    };
    const auto old = named(before);
    if (old == rule.byDay.end() || before == after) return;
    if (named(after) == rule.byDay.end()) {
      old->day = after;
    } else {
      rule.byDay.erase(old);
    }
    return;
  }
  if (rule.frequency != Frequency::kMonthly && rule.frequency != Frequency::kYearly) return;
  if (rule.byMonth.size() == 1 && rule.byMonth.front() == from.month()) rule.byMonth.front() = to.month();
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
