#include "store/calendar_edits.h"

#include <fmt/format.h>

#include "store/try.h"

namespace orlocal::store {
namespace {

const char* nounFor(CalendarKind kind) { return kind == CalendarKind::kEvents ? "calendar" : "reminder list"; }

}  // namespace

Status CalendarEdits::save(Calendar& calendar) {
  if (calendar.title.empty()) {
    return failure(ErrorCode::kRefused, fmt::format("A {} needs a title to be saved.", nounFor(calendar.kind)));
  }
  if (calendar.source == 0) {
    return failure(ErrorCode::kRefused, fmt::format("The {} \"{}\" needs a source to be saved; take the one of another "
                                                    "calendar.",
                                                    nounFor(calendar.kind), calendar.title));
  }
  ORLOCAL_TRY(WriteTurn turn, m_core.beginWriting());
  ORLOCAL_TRY(const auto source, m_core.calendars.source(calendar.source));
  if (!source) {
    return failure(ErrorCode::kRefused, fmt::format("The source of the {} \"{}\" is not in the calendar store.",
                                                    nounFor(calendar.kind), calendar.title));
  }
  Calendar saved = calendar;
  saved.type = source->type;
  if (calendar.id == 0) {
    ORLOCAL_CHECK(m_core.calendars.insert(saved, m_core.uuids.next()));
    ORLOCAL_CHECK(m_core.logCalendar(Operation::kInserted, saved));
  } else {
    ORLOCAL_TRY(const auto before, m_core.calendars.withId(calendar.id));
    if (!before) {
      return failure(ErrorCode::kNotFound, fmt::format("The {} \"{}\" is no longer in the calendar store.",
                                                       nounFor(calendar.kind), calendar.title));
    }
    if (before->readOnly || before->immutable) {
      return failure(ErrorCode::kReadOnly,
                     fmt::format("The {} \"{}\" allows no changes.", nounFor(before->kind), before->title));
    }
    if (before->kind != calendar.kind) {
      return failure(ErrorCode::kInvalid, "A calendar stays one of events or one of reminders; make a new one.");
    }
    saved.identifier = before->identifier;
    ORLOCAL_CHECK(m_core.calendars.update(saved));
    ORLOCAL_CHECK(m_core.logCalendar(Operation::kUpdated, saved));
  }
  ORLOCAL_CHECK(turn.commit());
  calendar = std::move(saved);
  return {};
}

Status CalendarEdits::remove(std::string_view identifier) {
  const auto uuid = Uuid::parse(identifier);
  ORLOCAL_TRY(WriteTurn turn, m_core.beginWriting());
  std::optional<Calendar> calendar;
  if (uuid) {
    ORLOCAL_TRY(calendar, m_core.calendars.withUuid(*uuid));
  }
  if (!calendar) return failure(ErrorCode::kNotFound, "The calendar to remove is not in the calendar store.");
  if (calendar->immutable) {
    return failure(ErrorCode::kReadOnly,
                   fmt::format("The {} \"{}\" may not be removed.", nounFor(calendar->kind), calendar->title));
  }
  ORLOCAL_TRY(const auto all, m_core.calendars.ofKind(calendar->kind));
  if (all.size() == 1) {
    return failure(ErrorCode::kRefused,
                   fmt::format("\"{}\" is the last {} and may not be removed; make another one first.", calendar->title,
                               nounFor(calendar->kind)));
  }
  ORLOCAL_CHECK(m_core.removeCalendar(*calendar));
  return turn.commit();
}

}  // namespace orlocal::store
