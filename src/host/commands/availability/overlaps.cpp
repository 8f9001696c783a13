#include "host/commands/availability/overlaps.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/availability/taken_time.h"
#include "host/commands/availability/time_spans.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/when_words.h"
#include "store/recurrence/recurrence.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

using store::LocalDay;
using store::LocalTime;
using store::Moment;

constexpr std::size_t kMostTold = 3;
/// A series that comes every minute has no year that anybody wants to see.
constexpr std::size_t kMostPlanned = 10'000;
/// A look at others' times must not hold up what was asked for.
constexpr std::uint64_t kMostSteps = 2'000'000;
constexpr std::chrono::milliseconds kLongest{500};

/// When the event is, by start.
Result<std::vector<TimeSpan>> plannedTimes(const store::Item& planned, const store::Zone& viewer) {
  ORLOCAL_TRY(const store::Series series, store::Series::compile(planned, viewer));
  store::ExpansionBudget budget(kMostSteps, kLongest);
  std::vector<TimeSpan> times;
  ORLOCAL_TRY(const auto first, series.first(budget));
  if (!first) { return times; }
  // What is over of a series is in nobody's way.
  const bool repeats = !planned.recurrence.empty();
  const Moment from = repeats ? std::max(first->start, store::now()) : first->start;
  const Moment to = repeats ? from + kOverlapHorizon : std::max(first->end, first->start + std::chrono::seconds(1));
  ORLOCAL_CHECK(series.expand(from, to, budget, [&](const store::Series::Instance& instance) {
    if (instance.end > instance.start) { times.push_back({instance.start, instance.end}); }
    return times.size() < kMostPlanned;
  }));
  return times;
}

/// Whether one of the times, which all last alike and are in order, meets the occurrence.
bool meets(const std::vector<TimeSpan>& times, std::chrono::microseconds longest, const store::Occurrence& when) {
  // None that starts earlier reaches it.
  auto each = std::lower_bound(times.begin(), times.end(), when.start - longest,
                               [](const TimeSpan& span, Moment start) { return span.start < start; });
  for (; each != times.end() && each->start < when.end; ++each) {
    if (each->end > when.start) { return true; }
  }
  return false;
}

std::string whenInWords(const Overlap& overlap, std::optional<LocalDay> day, const store::Zone& viewer) {
  Times times{viewer.toLocal(overlap.when.start), viewer.toLocal(overlap.when.end), overlap.item->allDay()};
  // As midnights: a day may begin at another hour.
  if (times.allDay) {
    times.start = LocalTime(LocalDay(times.start));
    times.end = LocalTime(LocalDay(viewer.toLocal(overlap.when.end - std::chrono::microseconds(1))) + 1);
  }
  const bool thatDay = !times.allDay && LocalDay(times.start) == day && LocalDay(times.end) == day;
  return thatDay ? fmt::format("{}–{}", clockTime(times.start), clockTime(times.end)) : timesInWords(times);
}

}  // namespace

Result<std::vector<Overlap>> overlapsOf(store::CalendarStore& store, const store::Zone& viewer,
                                        const store::Item& planned, const std::vector<store::ItemId>& own) {
  std::vector<Overlap> overlaps;
  const TimeOwner owner = TimeOwner::ofUser();
  if (planned.kind != store::ItemKind::kEvent || !takenBy(planned, owner)) { return overlaps; }
  ORLOCAL_TRY(const auto times, plannedTimes(planned, viewer));
  if (times.empty()) { return overlaps; }
  std::chrono::microseconds longest{0};
  Moment last = times.front().end;
  for (const TimeSpan& time : times) {
    longest = std::max(longest, time.length());
    last = std::max(last, time.end);
  }
  ORLOCAL_TRY(const auto calendars, allCalendars(store));
  ORLOCAL_TRY(const auto taken, takenBetween(store, times.front().start, last, calendars, owner));
  for (const TakenTime& each : taken) {
    const bool isOwn = std::find(own.begin(), own.end(), each.when.event) != own.end();
    if (isOwn || each.when.end <= each.when.start || !meets(times, longest, each.when)) { continue; }
    ORLOCAL_TRY(auto item, store.item(each.when.item));
    if (item != nullptr) { overlaps.push_back({each.when, std::move(item), each.kind}); }
  }
  return overlaps;
}

std::vector<std::string> overlapLines(const std::vector<Overlap>& overlaps, std::optional<LocalDay> day,
                                      const CalendarNames& names, const store::Zone& viewer) {
  std::vector<std::string> lines;
  for (const Overlap& each : overlaps) {
    if (lines.size() == kMostTold && overlaps.size() > kMostTold) {
      lines.push_back(tr("  and {} more", overlaps.size() - kMostTold));
      break;
    }
    const store::Calendar* calendar = names.calendar(each.item->calendar);
    lines.push_back(tr("  overlaps \"{}\" {} in {}{}", printable(each.item->title.value_or("")),
                       whenInWords(each, day, viewer), printable(calendar != nullptr ? names.name(*calendar) : ""),
                       each.kind == store::BusyKind::kTentative ? tr(" (tentative)") : ""));
  }
  return lines;
}

nlohmann::json overlapsJson(const std::vector<Overlap>& overlaps, const CalendarNames& names,
                            const store::Zone& viewer) {
  nlohmann::json json = nlohmann::json::array();
  for (const Overlap& each : overlaps) { json.push_back(itemJson(*each.item, each.when, names, viewer)); }
  return json;
}

}  // namespace orlocal::host
