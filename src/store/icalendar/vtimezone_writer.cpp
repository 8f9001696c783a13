#include "store/icalendar/vtimezone_writer.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "store/icalendar/content_line.h"
#include "store/icalendar/icalendar_writer.h"
#include "store/recurrence/rule_text.h"
#include "store/time/civil_days.h"
#include "store/time/time_text.h"

// Writing VTIMEZONE (RFC 5545, 3.6.5) from a zone's own changes.
namespace orlocal::store {

namespace {

/// Rules are looked at up to here; a clock that still changes then goes on doing so.
constexpr int kLastYear = 2037;
/// What changes alike in so many years in a row is written as a rule.
constexpr std::size_t kFewestForRule = 3;

/// An onset, told on the clock before it.
struct Onset {
  Zone::Change change;
  LocalTime local;
  int month = 0, weekDay = 0;

  explicit Onset(const Zone::Change& from) : change(from) {
    local = Zone().toLocal(from.at + std::chrono::seconds(from.offsetBefore));
    month = local.month();
    weekDay = weekDayOf(dayOf(localSeconds(local)));
  }
  /// Whether one yearly rule could make both.
  bool alike(const Onset& other) const {
    return change.offsetBefore == other.change.offsetBefore && change.offsetAfter == other.change.offsetAfter &&
           change.daylight == other.change.daylight && change.abbreviation == other.change.abbreviation &&
           month == other.month && weekDay == other.weekDay && local.hour() == other.local.hour() &&
           local.minute() == other.local.minute() && local.second() == other.local.second();
  }
};

/// A stretch of years in each of which the clock changes alike.
struct Run {
  std::vector<Onset> onsets;
  int lowestDay = 31, highestDay = 1;
  bool allLast = true;  ///< each is the last such weekday of its month

  bool takes(const Onset& onset) const {
    if (onsets.empty()) { return true; }
    const bool nextYear = onset.local.year() == onsets.back().local.year() + 1;
    const int low = std::min(lowestDay, onset.local.day()), high = std::max(highestDay, onset.local.day());
    return nextYear && onset.alike(onsets.back()) && (high - low < 7 || (allLast && isLast(onset)));
  }
  void add(const Onset& onset) {
    lowestDay = std::min(lowestDay, onset.local.day());
    highestDay = std::max(highestDay, onset.local.day());
    allLast = allLast && isLast(onset);
    onsets.push_back(onset);
  }
  static bool isLast(const Onset& onset) {
    return onset.local.day() + 7 > monthLength(static_cast<int>(onset.local.year()), onset.month);
  }
  std::string rule() const {
    const Onset& first = onsets.front();
    const std::string_view day = kWeekDays[static_cast<std::size_t>(first.weekDay)];
    std::string text = fmt::format("FREQ=YEARLY;BYMONTH={}", first.month);
    const int nth = (lowestDay - 1) / 7 + 1;
    if (allLast) { return text + fmt::format(";BYDAY=-1{}", day); }
    if ((highestDay - 1) / 7 + 1 == nth) { return text + fmt::format(";BYDAY={}{}", nth, day); }
    // "The Sunday on or after the 9th": seven days, one of which is the weekday.
    text += fmt::format(";BYMONTHDAY={}", lowestDay);
    for (int next = lowestDay + 1; next < lowestDay + 7; ++next) { text += fmt::format(",{}", next); }
    return text + fmt::format(";BYDAY={}", day);
  }
};

std::vector<Run> runsOf(const std::vector<Onset>& onsets) {
  std::vector<Run> runs;
  std::vector<bool> taken(onsets.size(), false);
  for (std::size_t i = 0; i < onsets.size(); ++i) {
    if (taken[i]) { continue; }
    Run run;
    for (std::size_t j = i; j < onsets.size(); ++j) {
      if (taken[j] || !run.takes(onsets[j])) { continue; }
      run.add(onsets[j]);
      taken[j] = true;
    }
    runs.push_back(std::move(run));
  }
  return runs;
}

void writePart(std::string& out, const Zone::Change& change, LocalTime start, const std::string& rule) {
  const char* name = change.daylight ? "DAYLIGHT" : "STANDARD";
  appendFolded(out, fmt::format("BEGIN:{}", name));
  appendFolded(out, "DTSTART:" + timeText({CalendarTime::Kind::kFloating, start, ""}));
  appendFolded(out, "TZOFFSETFROM:" + offsetText(change.offsetBefore));
  appendFolded(out, "TZOFFSETTO:" + offsetText(change.offsetAfter));
  if (!change.abbreviation.empty()) { appendFolded(out, "TZNAME:" + escapeText(change.abbreviation)); }
  if (!rule.empty()) { appendFolded(out, "RRULE:" + rule); }
  appendFolded(out, fmt::format("END:{}", name));
}

void writeRun(std::string& out, const Run& run) {
  const Onset& first = run.onsets.front();
  const Onset& last = run.onsets.back();
  if (run.onsets.size() < kFewestForRule) {
    for (const Onset& onset : run.onsets) { writePart(out, onset.change, onset.local, ""); }
    return;
  }
  const bool goesOn = last.local.year() >= kLastYear;
  writePart(out, first.change, first.local, goesOn ? run.rule() : run.rule() + ";UNTIL=" + momentText(last.change.at));
}

}  // namespace

void writeZone(std::string& out, const std::string& name, int fromYear) {
  const auto zone = Zone::named(name);
  if (!zone) { return; }
  if (const auto text = zone->privateText()) {
    ContentLines lines(*text);
    for (ContentLine line; lines.next(line);) { appendFolded(out, line.text); }
    return;
  }
  const Moment begin = zone->toMoment(LocalTime(std::clamp(fromYear, 1, kLastYear - 1), 1, 1));
  const Moment end = Zone().toMoment(LocalTime(kLastYear + 1, 1, 1));
  std::vector<Onset> onsets;
  for (auto change = zone->changeAfter(begin); change && change->at < end; change = zone->changeAfter(change->at)) {
    onsets.emplace_back(*change);
  }
  appendFolded(out, "BEGIN:VTIMEZONE");
  appendFolded(out, "TZID:" + escapeText(name));
  // The clock that is in force at the beginning.
  const int offset = zone->offsetSeconds(begin);
  const bool daylight =
      !onsets.empty() && !onsets.front().change.daylight && onsets.front().change.offsetAfter < offset;
  writePart(out, {begin, offset, offset, daylight, zone->abbreviation(begin)},
            Zone().toLocal(begin + std::chrono::seconds(offset)), "");
  for (const Run& run : runsOf(onsets)) { writeRun(out, run); }
  appendFolded(out, "END:VTIMEZONE");
}

}  // namespace orlocal::store
