#include "platform/legacy/cal_store_face.h"

#include "platform/legacy/calendar_face.h"
#include "platform/legacy/event_face.h"
#include "platform/legacy/task_face.h"

namespace orlocal {
namespace {

EKSpan spanOf(CalSpan span) {
  switch (span) {
    case CalSpan::kThisEvent:
      return EKSpan::kThisEvent;
    case CalSpan::kAllEvents:
      return EKSpan::kAllEvents;
    default:
      return EKSpan::kFutureEvents;
  }
}

/// Passes on whether the store did as it was told. Its sentences end with a full stop, and callers put their own.
bool told(bool done, std::optional<Error>& error) {
  if (!done && error && error->localizedDescription.ends_with('.')) { error->localizedDescription.pop_back(); }
  return done;
}

}  // namespace

CalCalendarArray CalCalendarStoreFace::calendars() {
  CalCalendarArray result;
  for (const auto type : {EKEntityType::kEvent, EKEntityType::kReminder}) {
    for (const auto& calendar : m_store->calendarsForEntityType(type)) {
      result.push_back(faceOf<CalendarFace>(calendar));
    }
  }
  return result;
}

std::shared_ptr<CalCalendar> CalCalendarStoreFace::calendarWithUID(std::string_view uid) {
  return faceOf<CalendarFace>(m_store->calendarWithIdentifier(uid));
}

std::shared_ptr<CalEvent> CalCalendarStoreFace::eventWithUID(std::string_view uid, std::optional<Date> occurrence) {
  return faceOf<EventFace>(
      occurrence ? m_store->occurrenceOfEvent(uid, *occurrence) : m_store->eventWithIdentifier(uid), m_surroundings);
}

std::shared_ptr<CalTask> CalCalendarStoreFace::taskWithUID(std::string_view uid) {
  // Events have identifiers of the same kind; an event is no task.
  return faceOf<TaskFace>(std::dynamic_pointer_cast<EKReminder>(m_store->calendarItemWithIdentifier(uid)),
                          m_surroundings);
}

bool CalCalendarStoreFace::saveCalendar(const std::shared_ptr<CalCalendar>& calendar, std::optional<Error>& error) {
  const auto object = behind<CalendarFace>(calendar);
  // The older platform has no sources to choose from: a new calendar comes where new events go.
  if (object && !object->source()) {
    if (const auto usual = m_store->defaultCalendarForNewEvents()) { object->setSource(usual->source()); }
  }
  return told(m_store->saveCalendar(object, true, error), error);
}

bool CalCalendarStoreFace::saveEvent(const std::shared_ptr<CalEvent>& event, CalSpan span,
                                     std::optional<Error>& error) {
  return told(m_store->saveEvent(behind<EventFace>(event), spanOf(span), true, error), error);
}

bool CalCalendarStoreFace::saveTask(const std::shared_ptr<CalTask>& task, std::optional<Error>& error) {
  return told(m_store->saveReminder(behind<TaskFace>(task), true, error), error);
}

bool CalCalendarStoreFace::removeCalendar(const std::shared_ptr<CalCalendar>& calendar, std::optional<Error>& error) {
  return told(m_store->removeCalendar(behind<CalendarFace>(calendar), true, error), error);
}

bool CalCalendarStoreFace::removeEvent(const std::shared_ptr<CalEvent>& event, CalSpan span,
                                       std::optional<Error>& error) {
  return told(m_store->removeEvent(behind<EventFace>(event), spanOf(span), true, error), error);
}

bool CalCalendarStoreFace::removeTask(const std::shared_ptr<CalTask>& task, std::optional<Error>& error) {
  return told(m_store->removeReminder(behind<TaskFace>(task), true, error), error);
}

}  // namespace orlocal
