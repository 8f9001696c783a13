#pragma once

#include <optional>
#include <vector>

#include "store/core/queries.h"
#include "store/core/store_core.h"

namespace orlocal::store {

/// Changes of series, inside a write transaction. An occurrence is addressed by its original start.
class SeriesEdits {
 public:
  SeriesEdits(StoreCore& core, Queries& queries) : m_core(core), m_queries(queries) {}

  /// Whether nothing of the series is left before the occurrence.
  Result<bool> isFirst(const Item& series, Moment original);

  /// Writes `edited` as the changed occurrence of `series`, over its row when it has one already (then it has a
  /// series); fills in what makes it one.
  Status changeOne(const Item& series, Moment original, Item& edited);
  /// Takes one occurrence out; the series goes with its last one.
  Status exceptOne(const Item& series, Moment original);

  /// Gives the whole series the fields of `edited`, whose start and end are those of the occurrence, and whose rules
  /// are `otherRules` than those of the series. Exceptions and changed occurrences follow a move of the start.
  Status changeAll(const Item& series, Moment original, Item& edited, bool otherRules);
  /// Ends the series before the occurrence and makes a new one from there on out of `edited`; its COUNT is what is
  /// left, exceptions and changed occurrences go to the half that they belong to.
  Status split(const Item& series, Moment original, Item& edited, bool otherRules);
  /// Makes a single event of the occurrence, with the fields of `one`, and takes out all later ones: of a `whole`
  /// series every other one, and what is left stands where the first was, as far from there as `one` was moved.
  Status endAsOne(const Item& series, Moment original, bool whole, Item& one);
  /// Takes the occurrence and all later ones out; it is not the first.
  Status truncate(const Item& series, Moment original);
  /// Removes the series with its changed occurrences, or a single item.
  Status removeAll(const Item& series);

  /// Whether there are rules, added dates or changed occurrences.
  Result<bool> repeats(const Item& item);
  /// Makes a row for an item.
  Status insert(Item& item);
  /// Writes an item over its row; finds out itself whether it repeats.
  Status update(const Item& item);
  /// The same with the item's series, compiled for UTC.
  Status update(const Item& item, const Series& own);

 private:
  /// Where the rules of a series go on after an occurrence that is a single added date.
  Result<std::optional<Moment>> nextByRule(const Item& series, Moment original);
  /// Hangs changed occurrences under `target` (already written; `key` is its series compiled for UTC), where the moved
  /// rule still meets them.
  Status moveChanged(const std::vector<ItemRows::Changed>& changed, const Item& target, const Series& key,
                     const class SeriesShift& shift, bool checkThatTheyMeet);
  Result<std::vector<ItemRows::Changed>> changedFrom(const Item& series, const Series& compiled, Moment original);

  StoreCore& m_core;
  Queries& m_queries;
};

}  // namespace orlocal::store
