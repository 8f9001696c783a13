#include "store/reminder_edits.h"

#include <algorithm>

#include "store/event_edits.h"
#include "store/try.h"

namespace orlocal::store {
namespace {

constexpr const char* kGone = "The reminder is no longer in the calendar store.";

}  // namespace

Status ReminderEdits::save(Item& edited) {
  if (edited.kind != ItemKind::kReminder)
    return failure(ErrorCode::kInvalid, "An event cannot be saved as a reminder.");
  if (edited.calendar == 0) return checkThatCalendarTakes(m_core, 0, ItemKind::kReminder);
  if (!edited.recurrence.empty() && !edited.start && !edited.end) {
    return failure(ErrorCode::kInvalid, "A reminder that repeats needs a due date.");
  }
  ORLOCAL_TRY(WriteTurn turn, m_core.beginWriting());
  ORLOCAL_CHECK(checkThatCalendarTakes(m_core, edited.calendar, ItemKind::kReminder));
  Item saved = edited;
  saved.modified = now();
  ORLOCAL_CHECK(write(saved));
  ORLOCAL_CHECK(turn.commit());
  edited = std::move(saved);
  return {};
}

Status ReminderEdits::write(Item& edited) {
  if (edited.id == 0) {
    if (edited.uid.empty()) edited.uid = m_core.uuids.next().text();
    edited.series.reset();
    edited.recurrenceId.reset();
    edited.created = edited.modified;
    if (edited.recurrence.empty()) return m_core.insertItem(edited, nullptr, std::nullopt, false);
    ORLOCAL_TRY(const Series series, Series::compile(edited, Zone()));
    return m_core.insertItem(edited, &series, std::nullopt, false);
  }
  ORLOCAL_TRY(const auto row, m_core.rows.read(edited.id));
  if (row == nullptr || row->kind != ItemKind::kReminder) return failure(ErrorCode::kNotFound, kGone);
  const Item stored = *row;
  ORLOCAL_CHECK(checkThatCalendarTakes(m_core, stored.calendar, ItemKind::kReminder));
  edited.identifier = stored.identifier;
  edited.itemIdentifier = stored.itemIdentifier;
  edited.uid = stored.uid;
  edited.series = stored.series;
  edited.recurrenceId = stored.recurrenceId;
  if (!edited.created) edited.created = stored.created;
  if (stored.recurrenceId) {
    ORLOCAL_TRY(const auto place, m_core.rows.place(stored.id));
    bool wall = Timeline::isWall(*stored.recurrenceId);
    if (stored.series) {
      ORLOCAL_TRY(const Series* series, m_core.series.of(*stored.series));
      if (series != nullptr) wall = series->followsViewer();
    }
    return m_core.updateItem(edited, nullptr, place->original, wall);
  }
  if (edited.completed && !stored.completed && !edited.recurrence.empty()) return moveOn(edited);
  return m_series.update(edited);
}

Status ReminderEdits::moveOn(Item& edited) {
  const Zone& viewer = m_core.options.viewer;
  std::vector<CalendarTime> changed;
  ORLOCAL_TRY(const auto rows, m_core.rows.changedOf(edited.id));
  for (const ItemRows::Changed& row : rows) changed.push_back(row.recurrenceId);
  ORLOCAL_TRY(const Series series, Series::compile(edited, viewer, changed));
  const CalendarTime from = edited.start ? *edited.start : *edited.end;
  const Moment current = momentOf(from, viewer);
  std::optional<Series::Instance> next;
  ExpansionBudget budget;
  ORLOCAL_CHECK(series.expand(current, Moment::max(), budget, [&](const Series::Instance& instance) {
    if (instance.start <= current) return true;
    next = instance;
    return false;
  }));
  if (!next) return m_series.update(edited);

  Item done = edited;
  done.uid = m_core.uuids.next().text();
  done.recurrence = Recurrence();
  done.series.reset();
  done.recurrenceId.reset();
  ORLOCAL_CHECK(m_core.insertItem(done, nullptr, std::nullopt, false));

  const auto forward = next->local - from.local;
  if (edited.start) edited.start->local += forward;
  if (edited.end) edited.end->local += forward;
  edited.completed.reset();
  for (std::size_t i = 0; i < edited.recurrence.rules.size(); ++i) {
    auto& count = edited.recurrence.rules[i].count;
    if (!count) continue;
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
  if (row == nullptr || row->kind != ItemKind::kReminder) return failure(ErrorCode::kNotFound, kGone);
  const Item stored = *row;
  ORLOCAL_CHECK(checkThatCalendarTakes(m_core, stored.calendar, ItemKind::kReminder));
  ORLOCAL_CHECK(stored.series ? m_core.removeItem(stored) : m_series.removeAll(stored));
  return turn.commit();
}

}  // namespace orlocal::store
