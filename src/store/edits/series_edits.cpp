#include "store/edits/series_edits.h"

#include <algorithm>

#include "base/try.h"
#include "store/recurrence/original_key.h"
#include "store/recurrence/series_shift.h"

namespace orlocal::store {
namespace {

/// The series as it stands, changed occurrences and all; edits need their own copy, as the cache forgets it on writing.
Result<Series> compiled(const Item& item, const Zone& viewer) { return Series::compile(item, viewer); }

}  // namespace

Result<bool> SeriesEdits::isFirst(const Item& series, Moment original) {
  ORLOCAL_TRY(const auto first, m_queries.firstOccurrence(series));
  return !first || first->originalStart >= original;
}

Result<bool> SeriesEdits::repeats(const Item& item) {
  if (!item.recurrence.empty()) { return true; }
  ORLOCAL_TRY(const auto changed, m_core.rows.changedOf(item.id));
  return !changed.empty();
}

Status SeriesEdits::insert(Item& item) {
  if (item.recurrence.empty()) { return m_core.insertItem(item, nullptr, std::nullopt, false); }
  ORLOCAL_TRY(const Series series, compiled(item, Zone()));
  return m_core.insertItem(item, &series, std::nullopt, false);
}

Status SeriesEdits::update(const Item& item) {
  ORLOCAL_TRY(const bool series, repeats(item));
  if (!series) { return m_core.updateItem(item, nullptr, std::nullopt, false); }
  ORLOCAL_TRY(const Series own, compiled(item, Zone()));
  return m_core.updateItem(item, &own, std::nullopt, false);
}

Status SeriesEdits::update(const Item& item, const Series& own) {
  ORLOCAL_TRY(const bool series, repeats(item));
  return m_core.updateItem(item, series ? &own : nullptr, std::nullopt, false);
}

Status SeriesEdits::changeOne(const Item& series, Moment original, Item& edited) {
  const bool isChanged = edited.series.has_value();
  edited.series = series.id;
  edited.identifier = series.identifier;
  edited.uid = series.uid;
  edited.kind = series.kind;
  edited.calendar = series.calendar;
  edited.recurrence = Recurrence();
  ORLOCAL_TRY(const Series* here, m_core.series.of(series.id));
  const bool wall = here->followsViewer();
  if (isChanged) {
    // The original start stays what the row has: it names the occurrence, wherever changes have moved it.
    ORLOCAL_TRY(const auto place, m_core.rows.place(edited.id));
    return m_core.updateItem(edited, nullptr, place->original, wall);
  }
  edited.recurrenceId = here->recurrenceId(original);
  return m_core.insertItem(edited, nullptr, originalKeyAt(*here, original), wall);
}

Status SeriesEdits::exceptOne(const Item& series, Moment original) {
  // Whatever is asked of the cached series is asked before the first write, which forgets it.
  ORLOCAL_TRY(const Series* here, m_core.series.of(series.id));
  const CalendarTime recurrenceId = here->recurrenceId(original);
  ORLOCAL_TRY(const ItemId changed, m_core.rows.changedAt(series.id, originalKeyAt(*here, original)));
  if (changed != 0) {
    ORLOCAL_TRY(const auto row, m_core.rows.readNamed(changed));
    ORLOCAL_CHECK(m_core.removeItem(*row));
  }
  // Of a changed occurrence, too: without its row the rule's own one would come back.
  Item rest = series;
  rest.recurrence.excluded.push_back(recurrenceId);
  rest.modified = now();
  // A single event with a changed occurrence in its place has no rule that an exception could belong to.
  if (rest.recurrence.empty()) { return removeAll(series); }
  ORLOCAL_CHECK(update(rest));
  ORLOCAL_TRY(const auto left, m_queries.firstOccurrence(rest));
  return left ? Status() : removeAll(rest);
}

Status SeriesEdits::removeAll(const Item& series) {
  ORLOCAL_TRY(const auto changed, m_core.rows.changedOf(series.id));
  for (const ItemRows::Changed& row : changed) {
    ORLOCAL_TRY(const auto item, m_core.rows.readNamed(row.id));
    ORLOCAL_CHECK(m_core.removeItem(*item));
  }
  return m_core.removeItem(series);
}

Result<std::vector<ItemRows::Changed>> SeriesEdits::changedFrom(const Item& series, const Series& here,
                                                                Moment original) {
  ORLOCAL_TRY(auto changed, m_core.rows.changedOf(series.id));
  // By where the rule put them: one that was moved across `original` belongs to the side that it came from.
  std::erase_if(changed, [&](const ItemRows::Changed& row) { return here.originalStart(row.recurrenceId) < original; });
  return changed;
}

Result<std::optional<Moment>> SeriesEdits::nextByRule(const Item& series, Moment original) {
  // Also a start that is taken out counts: intervals and counts run over it.
  Item bare = series;
  bare.recurrence.added.clear();
  bare.recurrence.excluded.clear();
  bare.recurrence.exceptionRules.clear();
  ORLOCAL_TRY(const Series rules, compiled(bare, m_core.options.viewer));
  std::optional<Moment> next;
  ExpansionBudget budget;
  ORLOCAL_CHECK(rules.expand(original, Moment::max(), budget, [&](const Series::Instance& instance) {
    if (instance.start > original) { next = instance.start; }
    return !next;
  }));
  return next;
}

Status SeriesEdits::truncate(const Item& series, Moment original) {
  ORLOCAL_TRY(const Series here, compiled(series, m_core.options.viewer));
  ORLOCAL_TRY(const auto later, changedFrom(series, here, original));
  for (const ItemRows::Changed& row : later) {
    ORLOCAL_TRY(const auto item, m_core.rows.readNamed(row.id));
    ORLOCAL_CHECK(m_core.removeItem(*item));
  }
  ORLOCAL_TRY(RecurrenceHalves parts, halvesOf(series, here, original));
  Item left = series;
  left.recurrence = std::move(parts.left);
  left.modified = now();
  return update(left);
}

Status SeriesEdits::moveChanged(const std::vector<ItemRows::Changed>& changed, const Item& target, const Series& key,
                                const SeriesShift& shift, bool checkThatTheyMeet) {
  ExpansionBudget budget;
  for (const ItemRows::Changed& row : changed) {
    ORLOCAL_TRY(const auto stored, m_core.rows.readNamed(row.id));
    Item moved = *stored;
    moved.recurrenceId = shift(row.recurrenceId);
    const Moment original = key.originalStart(*moved.recurrenceId);
    bool meets = !checkThatTheyMeet;
    if (!meets) {
      // `key` was compiled without the changed occurrences, so it has the ones that they stand for.
      ORLOCAL_TRY(const auto met, key.at(original, budget));
      meets = met.has_value();
    }
    if (!meets) {
      // The changed series has no occurrence there that this one could stand for.
      ORLOCAL_CHECK(m_core.removeItem(*stored));
      continue;
    }
    moved.series = target.id;
    moved.identifier = target.identifier;
    moved.uid = target.uid;
    moved.calendar = target.calendar;
    ORLOCAL_CHECK(m_core.updateItem(moved, nullptr, originalKey(key, *moved.recurrenceId), key.followsViewer()));
  }
  return {};
}

Status SeriesEdits::changeAll(const Item& series, Moment original, Item& edited, bool otherRules) {
  ORLOCAL_TRY(const Series here, compiled(series, m_core.options.viewer));
  const Zone& viewer = m_core.options.viewer;
  const CalendarTime from = here.recurrenceId(original);
  // The start is compared where the viewer sees it: a skipped hour has two names.
  const bool moved =
      momentOf(*edited.start, viewer) != original || edited.start->kind != from.kind || edited.start->zone != from.zone;
  const CalendarTime to = moved ? *edited.start : from;
  const SeriesShift shift(here, from, to, viewer);

  Item whole = edited;
  whole.start = shift(*series.start);
  // An occurrence in whose night the clock changes is as long as the others and looks an hour shorter or longer. So the
  // series keeps its own end, unless the length was changed; then it is the one seen on the wall clock.
  const auto lengthOf = [&](const Item& item) { return momentOf(*item.end, viewer) - momentOf(*item.start, viewer); };
  const auto daysOf = [&](const Item& item) { return item.end->local - item.start->local; };
  const bool sameLength = series.end && (whole.allDay() ? series.allDay() && daysOf(series) == daysOf(edited)
                                                        : !series.allDay() && lengthOf(series) == lengthOf(edited));
  whole.end = edited.end;
  if (sameLength) {
    whole.end = series.end;
    whole.end->local += whole.start->local - series.start->local;
    // An end with a zone of its own (a flight's landing) keeps it.
    if (series.end->zone == series.start->zone) {
      whole.end->kind = whole.start->kind;
      whole.end->zone = whole.start->zone;
    }
  } else {
    whole.end->local = whole.start->local + (edited.end->local - edited.start->local);
  }
  shift.move(whole.recurrence, !otherRules);
  whole.id = series.id;
  whole.identifier = series.identifier;
  whole.itemIdentifier = series.itemIdentifier;
  whole.uid = series.uid;
  whole.series.reset();
  whole.recurrenceId.reset();
  ORLOCAL_TRY(const auto changed, m_core.rows.changedOf(series.id));
  ORLOCAL_TRY(const Series key, compiled(whole, Zone()));
  ORLOCAL_CHECK(update(whole, key));
  if (!shift.none() || otherRules || whole.calendar != series.calendar) {
    ORLOCAL_CHECK(moveChanged(changed, whole, key, shift, !shift.none() || otherRules));
    // The entry on the timeline says whether there are changed occurrences.
    ORLOCAL_CHECK(update(whole, key));
  }
  edited = std::move(whole);
  return {};
}

Status SeriesEdits::split(const Item& series, Moment original, Item& edited, bool otherRules) {
  ORLOCAL_TRY(const Series here, compiled(series, m_core.options.viewer));
  const CalendarTime from = here.recurrenceId(original);
  const bool moved = momentOf(*edited.start, m_core.options.viewer) != original || edited.start->kind != from.kind ||
                     edited.start->zone != from.zone;
  const SeriesShift shift(here, from, moved ? *edited.start : from, m_core.options.viewer);
  ORLOCAL_TRY(const auto later, changedFrom(series, here, original));
  ORLOCAL_TRY(RecurrenceHalves parts, halvesOf(series, here, original));

  Item right = edited;
  ExpansionBudget budget;
  ORLOCAL_TRY(const auto byRule, here.at(original, budget));
  if (!moved && byRule) {
    // Where the clock skips its hour it is seen at another one; the later occurrences stay on theirs.
    right.end->local += byRule->local - right.start->local;
    right.start->local = byRule->local;
  }
  right.uid.clear();
  right.series.reset();
  right.recurrenceId.reset();
  right.created = right.modified;
  right.sequence = 0;
  right.recurrence.added = std::move(parts.right.added);
  right.recurrence.excluded = std::move(parts.right.excluded);
  right.recurrence.exceptionRules = std::move(parts.right.exceptionRules);
  if (!otherRules) {
    right.recurrence.rules = std::move(parts.right.rules);
    if (!parts.ruleMakesStart && !right.recurrence.rules.empty()) {
      // The rules run from a start of their own making; the added date stays an added one.
      ORLOCAL_TRY(const auto next, nextByRule(series, original));
      if (next) {
        const auto length = right.end->local - right.start->local;
        right.start = shift(here.recurrenceId(*next));
        right.end->local = right.start->local + length;
        right.recurrence.added.push_back(from);
      } else {
        right.recurrence.rules.clear();
      }
    }
  }
  shift.move(right.recurrence, !otherRules);
  // The right half first, since the changed occurrences need its row, and the left one last: what it still has under it
  // decides whether it repeats.
  ORLOCAL_TRY(const Series compiledRight, compiled(right, Zone()));
  const bool repeats = !right.recurrence.empty() || !later.empty();
  ORLOCAL_CHECK(m_core.insertItem(right, repeats ? &compiledRight : nullptr, std::nullopt, false));
  ORLOCAL_CHECK(moveChanged(later, right, compiledRight, shift, otherRules || !shift.none()));
  // Perhaps the new times met none of them; then the right half is a single event.
  if (right.recurrence.empty() && !later.empty()) { ORLOCAL_CHECK(update(right, compiledRight)); }

  Item left = series;
  left.recurrence = std::move(parts.left);
  left.modified = edited.modified;
  ORLOCAL_CHECK(update(left));
  edited = std::move(right);
  return {};
}

Status SeriesEdits::endAsOne(const Item& series, Moment original, bool whole, Item& one) {
  one.series.reset();
  one.recurrenceId.reset();
  one.recurrence = Recurrence();
  if (!whole) {
    ORLOCAL_CHECK(truncate(series, original));
    one.uid.clear();
    one.created = one.modified;
    one.sequence = 0;
    return insert(one);
  }
  ORLOCAL_TRY(const Series here, compiled(series, m_core.options.viewer));
  ORLOCAL_TRY(const auto first, m_queries.firstOccurrence(series));
  if (first) {
    const auto back = here.recurrenceId(first->originalStart).local - here.recurrenceId(original).local;
    one.start->local += back;
    one.end->local += back;
  }
  ORLOCAL_TRY(const auto changed, m_core.rows.changedOf(series.id));
  for (const ItemRows::Changed& row : changed) {
    ORLOCAL_TRY(const auto item, m_core.rows.readNamed(row.id));
    ORLOCAL_CHECK(m_core.removeItem(*item));
  }
  one.id = series.id;
  one.identifier = series.identifier;
  one.itemIdentifier = series.itemIdentifier;
  one.uid = series.uid;
  return update(one);
}

}  // namespace orlocal::store
