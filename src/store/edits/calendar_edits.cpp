#include "store/edits/calendar_edits.h"

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/icalendar/item_limits.h"

namespace orlocal::store {
namespace {

std::string nounFor(CalendarKind kind) {
  return kind == CalendarKind::kReminders ? tr("reminder list") : tr("calendar");
}

void applyFields(const Calendar& edited, CalendarFields set, Calendar& row) {
  const auto take = [&](CalendarField field, auto Calendar::*member) {
    if (set.has(field)) { row.*member = edited.*member; }
  };
  take(CalendarField::kTitle, &Calendar::title);
  take(CalendarField::kNotes, &Calendar::notes);
  take(CalendarField::kColor, &Calendar::color);
  take(CalendarField::kSource, &Calendar::source);
  take(CalendarField::kOrder, &Calendar::order);
  take(CalendarField::kReadOnly, &Calendar::readOnly);
  take(CalendarField::kSubscribed, &Calendar::subscribed);
  take(CalendarField::kImmutable, &Calendar::immutable);
}

}  // namespace

Status CalendarEdits::save(Calendar& calendar, CalendarFields set) {
  ORLOCAL_TRY(WriteTurn turn, m_core.beginWriting());
  Calendar saved = calendar;
  if (calendar.id != 0) {
    ORLOCAL_TRY(const auto row, m_core.calendars.withId(calendar.id));
    // In another file that took the place of the store's, the number may be another calendar's.
    if (!row || row->identifier != calendar.identifier) {
      return failure(ErrorCode::kNotFound,
                     tr("The {} \"{}\" is no longer in the calendar store.", nounFor(calendar.kind), calendar.title));
    }
    if (row->readOnly || row->subscribed || row->immutable) {
      return failure(ErrorCode::kReadOnly, tr("The {} \"{}\" allows no changes.", nounFor(row->kind), row->title));
    }
    if (row->kind != calendar.kind) {
      return failure(ErrorCode::kInvalid, tr("A calendar stays one of events or one of reminders; make a new one."));
    }
    saved = *row;
    applyFields(calendar, set, saved);
  }
  dropUnwritable(saved.title);
  if (saved.notes) { dropUnwritable(*saved.notes); }
  if (saved.title.empty()) {
    return failure(ErrorCode::kRefused, tr("A {} needs a title to be saved.", nounFor(saved.kind)));
  }
  if (saved.source == 0) {
    return failure(ErrorCode::kRefused, tr("The {} \"{}\" needs a source to be saved; take the one of another "
                                           "calendar.",
                                           nounFor(saved.kind), saved.title));
  }
  ORLOCAL_TRY(const auto source, m_core.calendars.source(saved.source));
  if (!source) {
    return failure(ErrorCode::kRefused,
                   tr("The source of the {} \"{}\" is not in the calendar store.", nounFor(saved.kind), saved.title));
  }
  saved.type = source->type;
  if (saved.id == 0) {
    ORLOCAL_CHECK(m_core.calendars.insert(saved, m_core.uuids.next()));
    ORLOCAL_CHECK(m_core.logCalendar(Operation::kInserted, saved));
  } else {
    ORLOCAL_CHECK(m_core.calendars.update(saved));
    ORLOCAL_CHECK(m_core.logCalendar(Operation::kUpdated, saved));
  }
  ORLOCAL_CHECK(turn.commit());
  calendar = std::move(saved);
  return {};
}

Status CalendarEdits::makeDefault(std::string_view identifier, CalendarKind kind) {
  const auto uuid = Uuid::parse(identifier);
  ORLOCAL_TRY(WriteTurn turn, m_core.beginWriting());
  std::optional<Calendar> calendar;
  if (uuid) { ORLOCAL_TRY(calendar, m_core.calendars.withUuid(*uuid)); }
  if (!calendar) {
    return failure(ErrorCode::kNotFound, tr("The calendar that is to be the default is not in the calendar store."));
  }
  if (!calendar->holds(kind)) {
    return failure(ErrorCode::kInvalid, tr("\"{}\" holds no {}.", calendar->title,
                                           kind == CalendarKind::kReminders ? tr("reminders") : tr("events")));
  }
  if (calendar->readOnly || calendar->immutable) {
    return failure(ErrorCode::kReadOnly,
                   tr("The {} \"{}\" allows no changes, so that nothing new can go there; choose another one.",
                      nounFor(calendar->kind), calendar->title));
  }
  ORLOCAL_CHECK(m_core.calendars.chooseForNewItems(kind, calendar->id));
  // Others ask anew which one it is.
  ORLOCAL_CHECK(m_core.logCalendar(Operation::kUpdated, *calendar));
  return turn.commit();
}

Status CalendarEdits::remove(std::string_view identifier) {
  const auto uuid = Uuid::parse(identifier);
  ORLOCAL_TRY(WriteTurn turn, m_core.beginWriting());
  std::optional<Calendar> calendar;
  if (uuid) { ORLOCAL_TRY(calendar, m_core.calendars.withUuid(*uuid)); }
  if (!calendar) { return failure(ErrorCode::kNotFound, tr("The calendar to remove is not in the calendar store.")); }
  if (calendar->immutable) {
    return failure(ErrorCode::kReadOnly,
                   tr("The {} \"{}\" may not be removed.", nounFor(calendar->kind), calendar->title));
  }
  for (const CalendarKind kind : {CalendarKind::kEvents, CalendarKind::kReminders}) {
    if (!calendar->holds(kind)) { continue; }
    ORLOCAL_TRY(const auto all, m_core.calendars.ofKind(kind));
    if (all.size() > 1) { continue; }
    return failure(ErrorCode::kRefused, tr("\"{}\" is the last {} and may not be removed; make another one first.",
                                           calendar->title, nounFor(kind)));
  }
  ORLOCAL_CHECK(m_core.removeCalendar(*calendar));
  return turn.commit();
}

}  // namespace orlocal::store
