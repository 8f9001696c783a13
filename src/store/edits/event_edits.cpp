#include "store/edits/event_edits.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"

namespace orlocal::store {
namespace {

Status checkTimes(const Item& event) {
  if (!event.start) { return failure(ErrorCode::kRefused, tr("An event needs a start to be saved.")); }
  if (!event.end) { return failure(ErrorCode::kRefused, tr("An event needs an end to be saved.")); }
  const auto clockOf = [](const CalendarTime& time) {
    return time.kind == CalendarTime::Kind::kZoned ? CalendarTime::Kind::kUtc : time.kind;
  };
  if (clockOf(*event.start) != clockOf(*event.end)) {
    return failure(ErrorCode::kInvalid, tr("The start and the end of an event are both dates or both times."));
  }
  const bool backwards = event.allDay() ? event.end->local <= event.start->local
                                        : Timeline::keyOf(*event.end) < Timeline::keyOf(*event.start);
  if (backwards) {
    return failure(ErrorCode::kInvalid, tr("The event ends before it starts; set the end after the start."));
  }
  return {};
}

std::string quotedTitle(const Item& event) {
  return event.title ? fmt::format("\"{}\"", *event.title) : tr("without a title");
}

Status checkAttendees(const Item& event) {
  // An organizer who does not take part is nobody who would have to be told.
  const auto invited = [](const Attendee& attendee) {
    return !attendee.organizer || attendee.role != Attendee::Role::kUnknown ||
           attendee.status != Attendee::Status::kUnknown || attendee.type != Attendee::Type::kUnknown;
  };
  if (std::none_of(event.attendees.begin(), event.attendees.end(), invited)) { return {}; }
  return failure(
      ErrorCode::kRefused,
      tr("The event {} has attendees; change it in the calendar application, which tells them.", quotedTitle(event)));
}

Failed gone(const Item& event) {
  return failure(ErrorCode::kNotFound, tr("The event {} is no longer in the calendar store.", quotedTitle(event)));
}

Failed outOfSeries(const Item& event, Moment original, const Zone& viewer) {
  const LocalTime start = viewer.toLocal(original);
  return failure(ErrorCode::kNotFound,
                 tr("The event {} has no occurrence on {:04}-{:02}-{:02} at {:02}:{:02} any more: somebody else "
                    "removed it, or moved, split or changed the series. Nothing was written; open it anew.",
                    quotedTitle(event), start.year(), start.month(), start.day(), start.hour(), start.minute()));
}

Failed rulesOfOneDay(const Item& event) {
  return failure(ErrorCode::kInvalid,
                 tr("How the event {} repeats cannot be changed for one of its days alone; save it for this "
                    "and the future events.",
                    quotedTitle(event)));
}

/// In another file that took the place of the store's, a row number may be another item's.
bool isSameEvent(const Item& row, const Item& opened) {
  return row.kind == ItemKind::kEvent && row.itemIdentifier == opened.itemIdentifier;
}

/// Whether what was opened was one of several: its occurrence then says which.
bool openedInSeries(const Item& opened) { return opened.series || !opened.recurrence.empty(); }

/// Makes a copy of an occurrence an event of its own.
void standAlone(Item& event) {
  event.id = 0;
  event.uid.clear();
  event.series.reset();
  event.recurrenceId.reset();
  event.recurrence = Recurrence();
}

}  // namespace

Status checkThatCalendarTakes(StoreCore& core, CalendarId id, ItemKind kind) {
  const bool event = kind == ItemKind::kEvent;
  if (id == 0) {
    return failure(ErrorCode::kRefused, event ? tr("An event needs a calendar to be saved.")
                                              : tr("A reminder needs a reminder list to be saved."));
  }
  ORLOCAL_TRY(const auto calendar, core.calendars.withId(id));
  if (!calendar) { return failure(ErrorCode::kRefused, tr("The item's calendar is no longer in the calendar store.")); }
  if (!calendar->holds(kind)) {
    return failure(ErrorCode::kInvalid,
                   tr("\"{}\" holds no {}.", calendar->title, event ? tr("events") : tr("reminders")));
  }
  if (calendar->readOnly || calendar->immutable) {
    return failure(ErrorCode::kReadOnly, tr("\"{}\" allows no changes.", calendar->title));
  }
  return {};
}

Status EventEdits::check(const Item& stored, const Item& edited) {
  ORLOCAL_CHECK(checkThatCalendarTakes(m_core, stored.calendar, ItemKind::kEvent));
  ORLOCAL_CHECK(checkAttendees(stored));
  if (edited.calendar != stored.calendar) {
    ORLOCAL_CHECK(checkThatCalendarTakes(m_core, edited.calendar, ItemKind::kEvent));
  }
  return checkTimes(edited);
}

Result<Item> EventEdits::save(const ItemEdit& edit, const std::optional<Occurrence>& occurrence, Span span) {
  if (edit.values.kind != ItemKind::kEvent) {
    return failure(ErrorCode::kInvalid, tr("A reminder cannot be saved as an event."));
  }
  ORLOCAL_TRY(WriteTurn turn, m_core.beginWriting());
  ORLOCAL_TRY(Item saved, edit.opened == nullptr ? insertNew(edit) : saveStored(edit, occurrence, span));
  ORLOCAL_CHECK(turn.commit());
  return saved;
}

Result<Item> EventEdits::insertNew(const ItemEdit& edit) {
  Item made = edit.values;
  standAlone(made);
  made.recurrence = edit.values.recurrence;
  made.uid = edit.values.uid;
  apply(edit, made, std::nullopt, m_core.options.viewer);
  ORLOCAL_CHECK(checkThatCalendarTakes(m_core, made.calendar, ItemKind::kEvent));
  ORLOCAL_CHECK(checkTimes(made));
  ORLOCAL_CHECK(checkAttendees(made));
  made.created = made.modified = now();
  ORLOCAL_CHECK(m_series.insert(made));
  return made;
}

Result<Item> EventEdits::saveStored(const ItemEdit& edit, const std::optional<Occurrence>& occurrence, Span span) {
  ORLOCAL_TRY(const auto row, m_core.rows.read(edit.opened->id));
  const Zone& viewer = m_core.options.viewer;
  if (row == nullptr || !isSameEvent(*row, *edit.opened)) {
    if (edit.opened->series && occurrence) { return outOfSeries(*edit.opened, occurrence->originalStart, viewer); }
    return gone(*edit.opened);
  }
  const Item& stored = *row;
  if (stored.series) { return saveChanged(stored, edit, span); }
  const bool inSeries = openedInSeries(*edit.opened) && occurrence;
  ORLOCAL_TRY(const bool repeats, m_series.repeats(stored));
  if (!repeats) {
    if (inSeries && occurrence->originalStart != momentOf(*stored.start, viewer)) {
      return outOfSeries(stored, occurrence->originalStart, viewer);
    }
    return saveSingle(stored, edit);
  }
  if (!inSeries) {
    // What was opened was the event as a whole, so what was set is set for all of it.
    ORLOCAL_TRY(const Occurrence whole, m_queries.onlyOccurrence(stored));
    return saveSeries(stored, whole, edit, Span::kAll);
  }
  ORLOCAL_TRY(const auto at, m_queries.occurrenceAt(stored, occurrence->originalStart));
  if (!at) { return outOfSeries(stored, occurrence->originalStart, viewer); }
  if (at->item == stored.id) { return saveSeries(stored, *at, edit, span); }
  // Somebody changed this very occurrence meanwhile.
  ORLOCAL_TRY(const auto changed, m_core.rows.read(at->item));
  if (changed == nullptr) { return gone(stored); }
  return saveChanged(Item(*changed), edit, span);
}

Result<Item> EventEdits::saveSingle(const Item& stored, const ItemEdit& edit) {
  Item edited = stored;
  apply(edit, edited, std::nullopt, m_core.options.viewer);
  ORLOCAL_CHECK(check(stored, edited));
  edited.modified = now();
  if (stored.recurrenceId && edited.recurrence.empty()) {
    // A changed occurrence without its series stays one.
    ORLOCAL_TRY(const auto place, m_core.rows.place(stored.id));
    ORLOCAL_CHECK(m_core.updateItem(edited, nullptr, place->original, Timeline::isWall(*stored.recurrenceId)));
  } else {
    edited.recurrenceId.reset();
    ORLOCAL_CHECK(m_series.update(edited));
  }
  return edited;
}

Result<Item> EventEdits::saveSeries(const Item& series, const Occurrence& at, const ItemEdit& edit, Span span) {
  const Zone& viewer = m_core.options.viewer;
  const Moment original = at.originalStart;
  const bool otherRules = changesRules(edit, series.recurrence);
  Item edited = series;
  moveToOccurrence(edited, at, viewer);
  apply(edit, edited, at, viewer);
  ORLOCAL_CHECK(check(series, edited));
  edited.modified = now();
  if (span == Span::kThis) {
    if (otherRules) { return rulesOfOneDay(edited); }
    if (edited.calendar != series.calendar) { return detach(series, original, std::move(edited)); }
    ORLOCAL_CHECK(m_series.changeOne(series, original, edited));
    return edited;
  }
  bool whole = span == Span::kAll;
  if (!whole) { ORLOCAL_TRY(whole, m_series.isFirst(series, original)); }
  if (takesRulesAway(edit, series.recurrence)) {
    ORLOCAL_CHECK(m_series.endAsOne(series, original, whole, edited));
  } else if (whole) {
    ORLOCAL_CHECK(m_series.changeAll(series, original, edited, otherRules));
  } else {
    ORLOCAL_CHECK(m_series.split(series, original, edited, otherRules));
  }
  return edited;
}

Result<Item> EventEdits::detach(const Item& series, Moment original, Item edited) {
  ORLOCAL_CHECK(checkAttendees(series));
  ORLOCAL_CHECK(m_series.exceptOne(series, original));
  standAlone(edited);
  edited.created = edited.modified;
  ORLOCAL_CHECK(m_series.insert(edited));
  return edited;
}

Result<Item> EventEdits::seriesOf(const Item& changed) {
  ORLOCAL_TRY(const auto series, m_core.rows.read(*changed.series));
  if (series == nullptr) { return gone(changed); }
  return *series;
}

Result<Item> EventEdits::saveChanged(const Item& changed, const ItemEdit& edit, Span span) {
  ORLOCAL_TRY(const Item series, seriesOf(changed));
  ORLOCAL_TRY(const Occurrence at, m_queries.onlyOccurrence(changed));
  Item edited = changed;
  apply(edit, edited, std::nullopt, m_core.options.viewer);
  // The rules are those of the series.
  edited.recurrence = Recurrence();
  ORLOCAL_CHECK(check(changed, edited));
  edited.modified = now();
  if (span == Span::kThis) {
    if (changesRules(edit, series.recurrence)) { return rulesOfOneDay(edited); }
    if (edited.calendar != series.calendar) { return detach(series, at.originalStart, std::move(edited)); }
    ORLOCAL_CHECK(m_series.changeOne(series, at.originalStart, edited));
    return edited;
  }
  ORLOCAL_CHECK(checkAttendees(series));
  bool whole = span == Span::kAll;
  if (!whole) { ORLOCAL_TRY(whole, m_series.isFirst(series, at.originalStart)); }
  if (takesRulesAway(edit, series.recurrence)) {
    ORLOCAL_CHECK(m_series.endAsOne(series, at.originalStart, whole, edited));
    return edited;
  }
  return carryToSeries(series, changed, edited, edit, whole);
}

Result<Item> EventEdits::carryToSeries(const Item& series, const Item& changed, const Item& edited,
                                       const ItemEdit& edit, bool whole) {
  const Zone& viewer = m_core.options.viewer;
  ORLOCAL_TRY(const Occurrence at, m_queries.onlyOccurrence(changed));
  const Moment original = at.originalStart;
  ORLOCAL_TRY(const Series compiled, Series::compile(series, viewer));
  Item later = series;
  applyFields(edit, later);
  later.modified = edited.modified;
  later.start = compiled.recurrenceId(original);
  const auto lengthOf = [](const Item& item) { return item.end->local - item.start->local; };
  const bool sameLength = series.end && changed.end && lengthOf(edited) == lengthOf(changed);
  const auto length = lengthOf(sameLength ? series : edited);
  const bool sameClock = edited.start->kind == changed.start->kind && edited.start->zone == changed.start->zone;
  if (sameClock && later.allDay() == edited.allDay()) {
    later.start->local += edited.start->local - changed.start->local;
  } else {
    later.start = edited.start;
  }
  later.end = later.start;
  later.end->local += length;
  const bool otherRules = changesRules(edit, series.recurrence);
  if (otherRules && later.allDay()) { endOnDays(later.recurrence, viewer); }
  ORLOCAL_CHECK(whole ? m_series.changeAll(series, original, later, otherRules)
                      : m_series.split(series, original, later, otherRules));
  // The row itself went along, if the new rule still meets it; it takes its own fields then.
  ORLOCAL_TRY(const auto row, m_core.rows.read(changed.id));
  if (row == nullptr) { return later; }
  Item own = edited;
  own.recurrenceId = row->recurrenceId;
  ORLOCAL_CHECK(m_series.changeOne(later, original, own));
  return own;
}

Status EventEdits::remove(const Item& event, const std::optional<Occurrence>& occurrence, Span span) {
  ORLOCAL_TRY(WriteTurn turn, m_core.beginWriting());
  ORLOCAL_TRY(const auto row, m_core.rows.read(event.id));
  if (row == nullptr || !isSameEvent(*row, event)) { return gone(event); }
  const Item& stored = *row;
  ORLOCAL_CHECK(checkThatCalendarTakes(m_core, stored.calendar, ItemKind::kEvent));
  Item series = stored;
  std::optional<Occurrence> at;
  if (stored.series) {
    ORLOCAL_TRY(series, seriesOf(stored));
    ORLOCAL_TRY(at, m_queries.onlyOccurrence(stored));
  } else if (openedInSeries(event) && occurrence && span != Span::kAll) {
    ORLOCAL_TRY(at, m_queries.occurrenceAt(stored, occurrence->originalStart));
    if (!at) { return outOfSeries(stored, occurrence->originalStart, m_core.options.viewer); }
  } else {
    ORLOCAL_TRY(at, m_queries.firstOccurrence(stored));
  }
  ORLOCAL_TRY(const bool repeats, m_series.repeats(series));
  if (!repeats || !at || span == Span::kAll) {
    ORLOCAL_CHECK(m_series.removeAll(series));
    return turn.commit();
  }
  if (span == Span::kThis) {
    ORLOCAL_CHECK(m_series.exceptOne(series, at->originalStart));
    return turn.commit();
  }
  ORLOCAL_TRY(const bool first, m_series.isFirst(series, at->originalStart));
  ORLOCAL_CHECK(first ? m_series.removeAll(series) : m_series.truncate(series, at->originalStart));
  return turn.commit();
}

}  // namespace orlocal::store
