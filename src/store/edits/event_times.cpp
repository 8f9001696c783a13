#include "store/edits/event_times.h"

#include <chrono>

namespace orlocal::store {
namespace {

LocalDay dayOf(Moment moment, const Zone& viewer) { return LocalDay(viewer.toLocal(moment)); }

Moment firstSecondOf(LocalDay day, const Zone& viewer) { return viewer.toMoment(LocalTime(day)); }

Moment lastSecondOf(LocalDay day, const Zone& viewer) {
  return viewer.toMoment(LocalTime(day.year(), day.month(), day.day(), 23, 59, 59));
}

LocalDay lastDay(Moment start, Moment exclusiveEnd, const Zone& viewer) {
  // A midnight may be skipped; the microsecond before the end still lies on the last day.
  return exclusiveEnd > start ? dayOf(exclusiveEnd - std::chrono::microseconds(1), viewer) : dayOf(start, viewer);
}

CalendarTime wholeDay(LocalDay day) { return {CalendarTime::Kind::kDate, LocalTime(day), {}}; }

/// `moment` as a time of the same kind and zone as `pattern`.
CalendarTime timeLike(const CalendarTime& pattern, Moment moment, const Zone& viewer) {
  CalendarTime time = pattern;
  switch (pattern.kind) {
    case CalendarTime::Kind::kDate:
      time.local = LocalTime(dayOf(moment, viewer));
      break;
    case CalendarTime::Kind::kFloating:
      time.local = viewer.toLocal(moment);
      break;
    case CalendarTime::Kind::kUtc:
      time.local = Zone().toLocal(moment);
      break;
    case CalendarTime::Kind::kZoned:
      time.local = Zone::named(pattern.zone).value_or(viewer).toLocal(moment);
      break;
  }
  return time;
}

}  // namespace

ShownTimes ShownTimes::onWholeDays(const Zone& viewer) const {
  ShownTimes shown = *this;
  if (!allDay) { return shown; }
  if (start) { shown.start = firstSecondOf(dayOf(*start, viewer), viewer); }
  if (end) { shown.end = lastSecondOf(dayOf(*end, viewer), viewer); }
  return shown;
}

Moment lastSecondOfDays(Moment start, Moment exclusiveEnd, const Zone& viewer) {
  return lastSecondOf(lastDay(start, exclusiveEnd, viewer), viewer);
}

ShownTimes shownTimes(const Item& event, const std::optional<Occurrence>& occurrence, const Zone& viewer) {
  ShownTimes shown;
  shown.allDay = event.allDay();
  if (occurrence) {
    shown.start = occurrence->start;
    shown.end = occurrence->end;
  } else {
    if (event.start) { shown.start = momentOf(*event.start, viewer); }
    if (event.end) { shown.end = momentOf(*event.end, viewer); }
  }
  if (shown.allDay && shown.start && shown.end) { shown.end = lastSecondOfDays(*shown.start, *shown.end, viewer); }
  return shown;
}

void writeTimes(Item& event, const ShownTimes& shown, const ShownTimes& before, const Zone& viewer) {
  const bool sameKind = shown.allDay == before.allDay;
  const bool keepStart = sameKind && shown.start == before.start;
  const bool keepEnd = sameKind && shown.end == before.end;
  if (shown.allDay) {
    if (!keepStart) { event.start = shown.start ? std::optional(wholeDay(dayOf(*shown.start, viewer))) : std::nullopt; }
    if (!keepEnd) { event.end = shown.end ? std::optional(wholeDay(dayOf(*shown.end, viewer) + 1)) : std::nullopt; }
    return;
  }
  const auto pattern = event.start && !event.allDay() ? event.start : std::nullopt;
  const auto written = [&](const std::optional<Moment>& moment) -> std::optional<CalendarTime> {
    if (!moment) { return std::nullopt; }
    const CalendarTime time = pattern ? timeLike(*pattern, *moment, viewer) : zonedTime(*moment, viewer);
    // The second of two equal wall-clock times can be told from the first in UTC only. A series stays on the wall
    // clock.
    const bool mistaken = time.kind == CalendarTime::Kind::kZoned && event.recurrence.empty() &&
                          momentOf(time, viewer) != std::chrono::floor<std::chrono::seconds>(*moment);
    return mistaken ? CalendarTime{CalendarTime::Kind::kUtc, Zone().toLocal(*moment), {}} : time;
  };
  if (!keepStart) { event.start = written(shown.start); }
  if (!keepEnd) { event.end = written(shown.end); }
}

void moveToOccurrence(Item& series, const Occurrence& occurrence, const Zone& viewer) {
  if (!series.start) { return; }
  const CalendarTime pattern = *series.start;
  series.start = timeLike(pattern, occurrence.start, viewer);
  if (pattern.kind == CalendarTime::Kind::kDate) {
    series.end = wholeDay(lastDay(occurrence.start, occurrence.end, viewer) + 1);
  } else {
    series.end = timeLike(pattern, occurrence.end, viewer);
  }
}

CalendarTime zonedTime(Moment moment, const Zone& viewer) {
  if (viewer.name() == "UTC" || viewer.name() == "Etc/UTC" || !Zone::named(viewer.name())) {
    return {CalendarTime::Kind::kUtc, Zone().toLocal(moment), {}};
  }
  return {CalendarTime::Kind::kZoned, viewer.toLocal(moment), viewer.name()};
}

}  // namespace orlocal::store
