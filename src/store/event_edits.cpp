#include "store/event_edits.h"

#include <algorithm>

#include <fmt/format.h>

#include "store/try.h"

namespace orlocal::store {
namespace {

Status checkTimes(const Item& event) {
  if (!event.start) return failure(ErrorCode::kRefused, "An event needs a start to be saved.");
  if (!event.end) return failure(ErrorCode::kRefused, "An event needs an end to be saved.");
  const auto clockOf = [](const CalendarTime& time) {
    return time.kind == CalendarTime::Kind::kZoned ? CalendarTime::Kind::kUtc : time.kind;
  };
  if (clockOf(*event.start) != clockOf(*event.end)) {
    return failure(ErrorCode::kInvalid, "The start and the end of an event are both dates or both times.");
  }
  const bool backwards = event.allDay() ? event.end->local <= event.start->local
                                        : Timeline::keyOf(*event.end) < Timeline::keyOf(*event.start);
  if (backwards) return failure(ErrorCode::kInvalid, "The event ends before it starts; set the end after the start.");
  return {};
}

std::string nameOf(const Item& event) { return event.title ? fmt::format("\"{}\"", *event.title) : "without a title"; }

Status checkAttendees(const Item& event) {
  // An organizer who does not take part is nobody who would have to be told.
  const auto invited = [](const Attendee& attendee) {
    return !attendee.organizer || attendee.role != Attendee::Role::kUnknown ||
           attendee.status != Attendee::Status::kUnknown || attendee.type != Attendee::Type::kUnknown;
  };
  if (std::none_of(event.attendees.begin(), event.attendees.end(), invited)) return {};
  return failure(ErrorCode::kRefused,
                 fmt::format("The event {} has attendees; change it in the calendar application, which tells them.",
                             nameOf(event)));
}

tl::unexpected<Error> gone(const Item& event) {
  return failure(ErrorCode::kNotFound, fmt::format("The event {} is no longer in the calendar store.", nameOf(event)));
}

/// What the user changed in one changed occurrence, brought to its series.
void carryOver(const Item& before, const Item& edited, Item& series) {
  const auto carry = [&](auto Item::*field) {
    if (!(before.*field == edited.*field)) series.*field = edited.*field;
  };
  carry(&Item::title);
  carry(&Item::notes);
  carry(&Item::location);
  carry(&Item::url);
  carry(&Item::calendar);
  carry(&Item::priority);
  carry(&Item::alarms);
  carry(&Item::extra);
}

}  // namespace

Status checkThatCalendarTakes(StoreCore& core, CalendarId id, ItemKind kind) {
  const bool event = kind == ItemKind::kEvent;
  if (id == 0) {
    return failure(ErrorCode::kRefused,
                   event ? "An event needs a calendar to be saved." : "A reminder needs a reminder list to be saved.");
  }
  ORLOCAL_TRY(const auto calendar, core.calendars.withId(id));
  if (!calendar) return failure(ErrorCode::kRefused, "The item's calendar is no longer in the calendar store.");
  if (event != (calendar->kind == CalendarKind::kEvents)) {
    return failure(ErrorCode::kInvalid,
                   fmt::format("\"{}\" holds no {}.", calendar->title, event ? "events" : "reminders"));
  }
  if (calendar->readOnly || calendar->immutable) {
    return failure(ErrorCode::kReadOnly, fmt::format("\"{}\" allows no changes.", calendar->title));
  }
  return {};
}

Status EventEdits::save(Item& edited, const std::optional<Occurrence>& occurrence, Span span) {
  if (edited.kind != ItemKind::kEvent) return failure(ErrorCode::kInvalid, "A reminder cannot be saved as an event.");
  if (edited.calendar == 0) return checkThatCalendarTakes(m_core, 0, ItemKind::kEvent);
  ORLOCAL_CHECK(checkTimes(edited));
  ORLOCAL_TRY(WriteTurn turn, m_core.beginWriting());
  ORLOCAL_CHECK(checkThatCalendarTakes(m_core, edited.calendar, ItemKind::kEvent));
  ORLOCAL_CHECK(checkAttendees(edited));
  Item saved = edited;
  saved.modified = now();
  if (saved.id == 0) {
    ORLOCAL_CHECK(insertNew(saved));
  } else {
    ORLOCAL_TRY(const auto stored, m_core.rows.read(saved.id));
    if (stored == nullptr) return gone(edited);
    ORLOCAL_CHECK(checkThatCalendarTakes(m_core, stored->calendar, ItemKind::kEvent));
    ORLOCAL_CHECK(checkAttendees(*stored));
    ORLOCAL_CHECK(saveStored(Item(*stored), saved, occurrence, span));
  }
  ORLOCAL_CHECK(turn.commit());
  edited = std::move(saved);
  return {};
}

Status EventEdits::insertNew(Item& edited) {
  if (edited.uid.empty()) edited.uid = m_core.uuids.next().text();
  edited.series.reset();
  edited.recurrenceId.reset();
  edited.created = edited.modified;
  if (edited.recurrence.empty()) return m_core.insertItem(edited, nullptr, std::nullopt, false);
  ORLOCAL_TRY(const Series series, Series::compile(edited, Zone()));
  return m_core.insertItem(edited, &series, std::nullopt, false);
}

Status EventEdits::saveStored(const Item& stored, Item& edited, const std::optional<Occurrence>& occurrence,
                              Span span) {
  edited.identifier = stored.identifier;
  edited.itemIdentifier = stored.itemIdentifier;
  edited.uid = stored.uid;
  edited.series = stored.series;
  edited.recurrenceId = stored.recurrenceId;
  if (!edited.created) edited.created = stored.created;
  if (stored.series) return saveChanged(stored, edited, span);
  ORLOCAL_TRY(const auto changed, m_core.rows.changedOf(stored.id));
  if (stored.recurrence.empty() && changed.empty()) {
    if (!stored.recurrenceId) return m_series.update(edited);
    // A changed occurrence without its series stays one.
    ORLOCAL_TRY(const auto place, m_core.rows.place(stored.id));
    return m_core.updateItem(edited, nullptr, place->original, Timeline::isWall(*stored.recurrenceId));
  }
  std::optional<Occurrence> at = occurrence;
  if (!at) {
    ORLOCAL_TRY(at, m_queries.firstOccurrence(stored));
  }
  // Without any occurrence left there is only the series to change.
  if (!at) return m_series.changeAll(stored, momentOf(*stored.start, m_core.options.viewer), edited);
  return saveOccurrence(stored, at->originalStart, edited, span);
}

Status EventEdits::saveOccurrence(const Item& series, Moment original, Item& edited, Span span) {
  if (span == Span::kFuture) {
    ORLOCAL_TRY(const bool first, m_series.isFirst(series, original));
    return first ? m_series.changeAll(series, original, edited) : m_series.split(series, original, edited);
  }
  if (edited.recurrence.rules != series.recurrence.rules) {
    return failure(ErrorCode::kInvalid,
                   fmt::format("How the event {} repeats cannot be changed for one of its days alone; save it for this "
                               "and the future events.",
                               nameOf(edited)));
  }
  return edited.calendar != series.calendar ? detach(series, original, edited)
                                            : m_series.changeOne(series, original, edited);
}

Status EventEdits::detach(const Item& series, Moment original, Item& edited) {
  ORLOCAL_CHECK(m_series.exceptOne(series, original));
  edited.id = 0;
  edited.uid.clear();
  edited.recurrence = Recurrence();
  return insertNew(edited);
}

Result<Item> EventEdits::seriesOf(const Item& changed) {
  ORLOCAL_TRY(const auto series, m_core.rows.read(*changed.series));
  if (series == nullptr) return gone(changed);
  return *series;
}

Status EventEdits::saveChanged(const Item& stored, Item& edited, Span span) {
  ORLOCAL_TRY(const Item series, seriesOf(stored));
  ORLOCAL_TRY(const Occurrence at, m_queries.onlyOccurrence(stored));
  const Moment original = at.originalStart;
  const bool otherRules = !edited.recurrence.rules.empty() && edited.recurrence.rules != series.recurrence.rules;
  if (span == Span::kThis) {
    if (!otherRules) edited.recurrence.rules = series.recurrence.rules;
    return saveOccurrence(series, original, edited, span);
  }
  // The series takes over what was changed here: fields, how far the start moved, and a new length.
  const Zone& viewer = m_core.options.viewer;
  ORLOCAL_TRY(const Series compiled, Series::compile(series, viewer));
  Item later = series;
  carryOver(stored, edited, later);
  if (otherRules) later.recurrence = edited.recurrence;
  later.modified = edited.modified;
  later.start = compiled.recurrenceId(original);
  const bool sameLength = edited.end->local - edited.start->local == stored.end->local - stored.start->local;
  const auto length =
      sameLength && series.end ? series.end->local - series.start->local : edited.end->local - edited.start->local;
  if (edited.start->kind == stored.start->kind && edited.start->zone == stored.start->zone &&
      (later.allDay() == edited.allDay())) {
    later.start->local += edited.start->local - stored.start->local;
  } else {
    later.start = edited.start;
  }
  later.end = later.start;
  later.end->local += length;
  ORLOCAL_TRY(const bool first, m_series.isFirst(series, original));
  ORLOCAL_CHECK(first ? m_series.changeAll(series, original, later) : m_series.split(series, original, later));
  // The row itself went along, if the new rule still meets it; it takes its own fields then.
  ORLOCAL_TRY(const auto row, m_core.rows.read(stored.id));
  if (row == nullptr) {
    edited = std::move(later);
    return {};
  }
  edited.recurrenceId = row->recurrenceId;
  ORLOCAL_TRY(const Series target, Series::compile(later, viewer));
  return m_series.changeOne(later, target.originalStart(*row->recurrenceId), edited);
}

Status EventEdits::remove(const Item& event, const std::optional<Occurrence>& occurrence, Span span) {
  ORLOCAL_TRY(WriteTurn turn, m_core.beginWriting());
  ORLOCAL_TRY(const auto row, m_core.rows.read(event.id));
  if (row == nullptr || row->kind != ItemKind::kEvent) return gone(event);
  const Item stored = *row;
  ORLOCAL_CHECK(checkThatCalendarTakes(m_core, stored.calendar, ItemKind::kEvent));
  Item series = stored;
  std::optional<Occurrence> at = occurrence;
  if (stored.series) {
    ORLOCAL_TRY(series, seriesOf(stored));
    ORLOCAL_TRY(at, m_queries.onlyOccurrence(stored));
  } else if (!at) {
    ORLOCAL_TRY(at, m_queries.firstOccurrence(stored));
  }
  ORLOCAL_TRY(const auto changed, m_core.rows.changedOf(series.id));
  if ((series.recurrence.empty() && changed.empty()) || !at) {
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
