#pragma once

#include <memory>
#include <optional>

#include "store/edits/event_times.h"
#include "store/edits/field_set.h"
#include "store/model/model.h"
#include "store/model/occurrence.h"
#include "store/time/zone.h"

namespace orlocal::store {

/// What a caller can set of an item, each by itself.
enum class ItemField : std::uint8_t {
  kCalendar,
  kTitle,
  kNotes,
  kLocation,
  kUrl,
  kStart,
  kEnd,
  kDue,
  kAllDay,  ///< with `ItemEdit::times` only
  kPriority,
  kCompleted,
  kAlarms,
  kRules,
  kCategories,  ///< the lines CATEGORIES among those kept in `extra`
};
using ItemFields = FieldSet<ItemField>;

/// What a caller set of an item since it was opened. A save writes these fields on the row as it stands then; whatever
/// else somebody changed meanwhile stays.
struct ItemEdit {
  /// The row as the caller read it; null for a new item.
  std::shared_ptr<const Item> opened;
  /// The fields that were set have their values here; for an occurrence of a series, start and end are its own. All
  /// others count for a new item only.
  Item values;
  ItemFields set;
  /// Start, end and kind of an event as people set them, in place of `values.start` and `values.end`: they are put on
  /// the clock that the row has then.
  std::optional<ShownTimes> times;
};

/// Puts what was set into `item`: the row as it stands or, for an occurrence of a series, the series moved there, which
/// then lies at `at`. Alarms that others added, changed or removed meanwhile stay so. Rules that were all taken away
/// take single added dates with them; exceptions and added dates are the row's.
void apply(const ItemEdit& edit, Item& item, const std::optional<Occurrence>& at, const Zone& viewer);

/// The same without start, end and kind.
void applyFields(const ItemEdit& edit, Item& item);

/// A series of whole days ends with a date (RFC 5545, 3.3.10), whatever moment the caller of a rule named.
void endOnDays(Recurrence& recurrence, const Zone& viewer);

/// Whether an event that repeats like this would repeat otherwise afterwards.
bool changesRules(const ItemEdit& edit, const Recurrence& recurrence);
/// Whether it would happen once.
bool takesRulesAway(const ItemEdit& edit, const Recurrence& recurrence);

}  // namespace orlocal::store
