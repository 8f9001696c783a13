#include "host/commands/views/next_occurrences.h"

#include <chrono>

#include "base/try.h"
#include "store/recurrence/recurrence.h"

namespace orlocal::host {
namespace {

using store::Moment;
using store::Occurrence;

/// How far one looks at first, and then: most series come within a month, and of one that comes every minute years are
/// more than anybody asks for.
constexpr std::chrono::days kSteps[] = {std::chrono::days(31), std::chrono::days(400), std::chrono::days(4 * 366)};

}  // namespace

Result<std::vector<Occurrence>> nextOccurrences(store::CalendarStore& store, const store::Item& event, Moment from,
                                                std::size_t count) {
  std::vector<Occurrence> next;
  for (const auto step : kSteps) {
    ORLOCAL_TRY(const auto found, store.occurrences({from, from + step, {event.calendar}, event.id}));
    next.clear();
    for (const Occurrence& each : found) {
      if (next.size() == count) { break; }
      next.push_back(each);
    }
    if (next.size() == count || (event.recurrence.empty() && !next.empty())) { break; }
  }
  return next;
}

Result<std::vector<Occurrence>> nextDues(const store::Item& reminder, const std::vector<store::Item>& changed,
                                         std::size_t count) {
  std::vector<Occurrence> next;
  if (!reminder.anchor()) { return next; }
  const store::Zone viewer = store::Zone::ofUser();
  std::vector<store::CalendarTime> apart;
  for (const store::Item& each : changed) {
    if (each.recurrenceId) { apart.push_back(*each.recurrenceId); }
  }
  store::ExpansionBudget budget;
  ORLOCAL_TRY(const store::Series series, store::Series::compile(reminder, viewer, apart, &budget));
  const Moment due = store::momentOf(*reminder.anchor(), viewer);
  ORLOCAL_CHECK(series.expand(due, due + kSteps[std::size(kSteps) - 1], budget, [&](const auto& each) {
    if (each.start > due && next.size() < count) {
      next.push_back({each.start, each.end, each.start, reminder.id, reminder.id});
    }
    return next.size() < count;
  }));
  return next;
}

Result<std::optional<Occurrence>> nextOrLast(store::CalendarStore& store, const store::Item& item, Moment from) {
  if (item.kind != store::ItemKind::kEvent || item.series) {
    if (item.kind != store::ItemKind::kEvent || !item.start) { return std::nullopt; }
    const store::Zone viewer = store::Zone::ofUser();
    const Moment start = store::momentOf(*item.start, viewer);
    const Moment end = item.end ? store::momentOf(*item.end, viewer) : start;
    const Moment original = item.recurrenceId ? store::momentOf(*item.recurrenceId, viewer) : start;
    return Occurrence{start, end, original, item.series.value_or(item.id), item.id};
  }
  ORLOCAL_TRY(const auto next, nextOccurrences(store, item, from, 1));
  if (!next.empty()) { return next.front(); }
  for (const auto step : kSteps) {
    ORLOCAL_TRY(const auto before, store.occurrences({from - step, from, {item.calendar}, item.id}));
    if (!before.empty()) { return before[before.size() - 1]; }
  }
  return store.firstOccurrence(item);
}

}  // namespace orlocal::host
