#include "store/invitations/occurrences.h"

#include "base/try.h"
#include "store/edits/event_times.h"
#include "store/recurrence/original_key.h"
#include "store/recurrence/recurrence.h"

namespace orlocal::store {
namespace {

Item detached(const Item& main, const Series& series, const Series::Instance& instance) {
  Item made = main;
  made.id = 0;
  made.itemIdentifier.clear();
  made.recurrence = {};
  made.recurrenceId = series.recurrenceId(instance.start);
  if (main.kind == ItemKind::kEvent) {
    moveToOccurrence(made, {instance.start, instance.end, instance.start}, Zone());
    return made;
  }
  const auto moved = instance.local - main.anchor()->local;
  if (made.start) { made.start->local += moved; }
  if (made.due) { made.due->local += moved; }
  return made;
}

}  // namespace

Result<Item*> occurrenceIn(WholeItem& whole, const CalendarTime& recurrenceId) {
  if (whole.main.recurrenceId) { return &whole.main; }
  if (!whole.main.anchor()) { return nullptr; }
  ORLOCAL_TRY(const Series series, Series::compile(whole.main, Zone()));
  const std::int64_t key = originalKey(series, recurrenceId);
  for (Item& changed : whole.changed) {
    if (originalKey(series, *changed.recurrenceId) == key) { return &changed; }
  }
  ExpansionBudget budget;
  ORLOCAL_TRY(const auto instance, series.at(series.originalStart(recurrenceId), budget));
  if (!instance) { return nullptr; }
  return &whole.changed.emplace_back(detached(whole.main, series, *instance));
}

}  // namespace orlocal::store
