#include "host/commands/care/past_items.h"

#include <algorithm>

#include "base/try.h"

namespace orlocal::host {
namespace {

using store::ItemKind;
using store::Moment;
using store::WholeItem;

enum class Age { kPast, kGoesOn, kNotYet };

bool isEndless(const store::Item& series) {
  return std::any_of(series.recurrence.rules.begin(), series.recurrence.rules.end(),
                     [](const store::RecurrenceRule& rule) { return !rule.count && !rule.until; });
}

Result<Age> ageOf(store::CalendarStore& store, const store::Zone& viewer, const WholeItem& whole, Moment before) {
  const store::Item& main = whole.main;
  if (main.kind == ItemKind::kReminder) {
    return main.completed && *main.completed < before ? Age::kPast : Age::kNotYet;
  }
  if (!main.start || store::momentOf(*main.start, viewer) >= before) { return Age::kNotYet; }
  ORLOCAL_TRY(const auto first, store.firstOccurrence(main));
  const bool repeats = !main.recurrence.empty();
  // One without any occurrence is not over; orlocal doctor tells of it.
  if (!first) { return Age::kNotYet; }
  if (!repeats) { return first->end <= before ? Age::kPast : Age::kNotYet; }
  if (isEndless(main)) { return Age::kGoesOn; }
  store::EventQuery rest;
  rest.from = before;
  rest.calendars = {main.calendar};
  rest.event = main.id;
  const auto found = store.occurrences(rest);
  if (found) { return found->empty() ? Age::kPast : Age::kGoesOn; }
  // Too many to be counted are some.
  if (found.error().code == ErrorCode::kBudget) { return Age::kGoesOn; }
  return failure(found.error());
}

}  // namespace

Result<PastItems> pastItems(store::CalendarStore& store, const store::Zone& viewer,
                            const std::vector<store::Calendar>& calendars, Moment before) {
  PastItems past;
  for (const store::Calendar& calendar : calendars) {
    std::vector<WholeItem> begun;
    ORLOCAL_CHECK(store.forEachItem(calendar.id, [&](const store::Item& main, const std::vector<store::Item>& changed) {
      const auto& begins = main.kind == ItemKind::kEvent ? main.start : std::nullopt;
      const bool early =
          begins ? store::momentOf(*begins, viewer) < before : main.completed && *main.completed < before;
      if (early) { begun.push_back({main, changed}); }
      return Status();
    }));
    for (WholeItem& whole : begun) {
      ORLOCAL_TRY(const Age age, ageOf(store, viewer, whole, before));
      if (age == Age::kGoesOn) { ++past.goingOn; }
      if (age == Age::kPast) { past.items.push_back(std::move(whole)); }
    }
  }
  return past;
}

}  // namespace orlocal::host
