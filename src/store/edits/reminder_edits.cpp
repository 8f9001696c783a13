#include "store/edits/reminder_edits.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/edits/event_edits.h"

namespace orlocal::store {
namespace {

constexpr const char* kGone = translatable("The reminder is no longer in the calendar store.");

/// In another file that took the place of the store's, a row number may be another item's.
bool isSameReminder(const Item& row, const Item& opened) {
  return row.kind == ItemKind::kReminder && row.itemIdentifier == opened.itemIdentifier;
}

/// Whether `stored` is what somebody left who completed the reminder that was `opened`: the same series, later.
Result<bool> hasMovedOn(const Item& opened, const Item& stored, const Zone& viewer) {
  const auto from = opened.anchor(), to = stored.anchor();
  if (opened.recurrence.empty() || stored.recurrence.empty() || !from || !to) { return false; }
  const Moment now = momentOf(*to, viewer);
  if (now <= momentOf(*from, viewer)) { return false; }
  ORLOCAL_TRY(const Series series, Series::compile(opened, viewer));
  ExpansionBudget budget;
  ORLOCAL_TRY(const auto met, series.at(now, budget));
  return met.has_value();
}

}  // namespace

Result<Item> ReminderEdits::save(const ItemEdit& edit) {
  if (edit.values.kind != ItemKind::kReminder) {
    return failure(ErrorCode::kInvalid, tr("An event cannot be saved as a reminder."));
  }
  ORLOCAL_TRY(WriteTurn turn, m_core.beginWriting());
  ORLOCAL_TRY(Item saved, edit.opened == nullptr ? insertNew(edit) : saveStored(edit));
  ORLOCAL_CHECK(turn.commit());
  return saved;
}

Status ReminderEdits::check(const Item& edited) {
  ORLOCAL_CHECK(checkThatCalendarTakes(m_core, edited.calendar, ItemKind::kReminder));
  if (!edited.recurrence.empty() && !edited.anchor()) {
    return failure(ErrorCode::kInvalid, tr("A reminder that repeats needs a due date."));
  }
  return {};
}

Result<Item> ReminderEdits::insertNew(const ItemEdit& edit) {
  Item made = edit.values;
  apply(edit, made, std::nullopt, m_core.options.viewer);
  made.id = 0;
  made.series.reset();
  made.recurrenceId.reset();
  made.created = made.modified = now();
  ORLOCAL_CHECK(check(made));
  ORLOCAL_CHECK(m_series.insert(made));
  return made;
}

Result<Item> ReminderEdits::saveStored(const ItemEdit& edit) {
  ORLOCAL_TRY(const auto row, m_core.rows.read(edit.opened->id));
  if (row == nullptr || !isSameReminder(*row, *edit.opened)) {
    return failure(ErrorCode::kNotFound, translated(kGone));
  }
  const Item& stored = *row;
  ORLOCAL_CHECK(checkThatCalendarTakes(m_core, stored.calendar, ItemKind::kReminder));
  Item edited = stored;
  apply(edit, edited, std::nullopt, m_core.options.viewer);
  edited.modified = now();
  ORLOCAL_CHECK(check(edited));
  if (stored.recurrenceId) {
    ORLOCAL_TRY(const auto place, m_core.rows.place(stored.id));
    bool wall = Timeline::isWall(*stored.recurrenceId);
    if (stored.series) {
      ORLOCAL_TRY(const Series* series, m_core.series.of(*stored.series));
      if (series != nullptr) { wall = series->followsViewer(); }
    }
    ORLOCAL_CHECK(m_core.updateItem(edited, nullptr, place->original, wall));
    return edited;
  }
  const bool completes = edit.set.has(ItemField::kCompleted) && edited.completed && !stored.completed;
  if (!completes || edited.recurrence.empty()) {
    ORLOCAL_CHECK(m_series.update(edited));
    return edited;
  }
  ORLOCAL_TRY(const bool movedOn, hasMovedOn(*edit.opened, stored, m_core.options.viewer));
  if (movedOn) {
    return failure(ErrorCode::kNotFound,
                   tr("The reminder \"{}\" was completed by somebody else and has moved on to its next date; "
                      "nothing was written. Open it anew.",
                      stored.title.value_or("")));
  }
  ORLOCAL_CHECK(moveOn(edited));
  return edited;
}

Status ReminderEdits::moveOn(Item& edited) {
  const Zone& viewer = m_core.options.viewer;
  std::vector<CalendarTime> changed;
  ORLOCAL_TRY(const auto rows, m_core.rows.changedOf(edited.id));
  for (const ItemRows::Changed& row : rows) { changed.push_back(row.recurrenceId); }
  ORLOCAL_TRY(const Series series, Series::compile(edited, viewer, changed));
  const CalendarTime from = *edited.anchor();
  const Moment current = momentOf(from, viewer);
  std::optional<Series::Instance> next;
  ExpansionBudget budget;
  ORLOCAL_CHECK(series.expand(current, Moment::max(), budget, [&](const Series::Instance& instance) {
    if (instance.start <= current) { return true; }
    next = instance;
    return false;
  }));
  if (!next) { return m_series.update(edited); }

  Item done = edited;
  done.uid.clear();
  done.recurrence = Recurrence();
  done.series.reset();
  done.recurrenceId.reset();
  ORLOCAL_CHECK(m_core.insertItem(done, nullptr, std::nullopt, false));

  // Rules of exceptions keep counting from where the series began.
  for (ExceptionRule& exception : edited.recurrence.exceptionRules) {
    if (!exception.start) { exception.start = from.local; }
  }
  const auto forward = next->local - from.local;
  if (edited.start) { edited.start->local += forward; }
  if (edited.due) { edited.due->local += forward; }
  edited.completed.reset();
  for (std::size_t i = 0; i < edited.recurrence.rules.size(); ++i) {
    auto& count = edited.recurrence.rules[i].count;
    if (!count) { continue; }
    ORLOCAL_TRY(const std::int64_t before, series.countBefore(next->start, i, budget));
    *count = std::max<std::int64_t>(1, *count - before);
  }
  const auto past = [&](const CalendarTime& time) { return series.originalStart(time) <= next->start; };
  std::erase_if(edited.recurrence.added, past);
  std::erase_if(edited.recurrence.excluded, past);
  return m_series.update(edited);
}

Status ReminderEdits::remove(const Item& reminder) {
  ORLOCAL_TRY(WriteTurn turn, m_core.beginWriting());
  ORLOCAL_TRY(const auto row, m_core.rows.read(reminder.id));
  if (row == nullptr || !isSameReminder(*row, reminder)) { return failure(ErrorCode::kNotFound, translated(kGone)); }
  const Item& stored = *row;
  ORLOCAL_CHECK(checkThatCalendarTakes(m_core, stored.calendar, ItemKind::kReminder));
  ORLOCAL_CHECK(stored.series ? m_core.removeItem(stored) : m_series.removeAll(stored));
  return turn.commit();
}

}  // namespace orlocal::store
