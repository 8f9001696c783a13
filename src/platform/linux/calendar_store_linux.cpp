#include "platform/linux/calendar_store_linux.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/calendar_store_linux_items.h"
#include "platform/linux/eventkit_query.h"
#include "store/base/try.h"

namespace orlocal {
namespace {

/// A query of the current platform.
struct StoredPredicate final : CalPredicate {
  std::shared_ptr<const EKPredicate> asked;
};

std::shared_ptr<const CalPredicate> predicate(std::shared_ptr<const EKPredicate> asked) {
  if (!asked) return nullptr;
  auto made = std::make_shared<StoredPredicate>();
  made->asked = std::move(asked);
  return made;
}

/// The answer to a query in the shape of the older platform; its objects are made when they are asked for.
template <class Array, class Source, class Face, class Object>
class FaceArray final : public Array {
 public:
  FaceArray(std::shared_ptr<StoreAccess> access, std::shared_ptr<const Source> source)
      : m_access(std::move(access)), m_source(std::move(source)) {}
  std::size_t count() const override { return m_source->count(); }
  auto objectAtIndex(std::size_t index) const -> decltype(Array::objectAtIndex(index)) override {
    auto object = std::dynamic_pointer_cast<Object>(m_source->objectAtIndex(index));
    return object ? std::make_shared<Face>(m_access, std::move(object)) : nullptr;
  }

 private:
  std::shared_ptr<StoreAccess> m_access;
  std::shared_ptr<const Source> m_source;
};
using CalEventFaces = FaceArray<CalEventArray, EKEventArray, CalEventObject, EventObject>;
using CalTaskFaces = FaceArray<CalTaskArray, EKReminderArray, CalTaskObject, ReminderObject>;

EKCalendarArray stored(const CalCalendarArray& calendars) {
  EKCalendarArray result;
  for (const auto& calendar : calendars) {
    if (const auto ours = std::dynamic_pointer_cast<CalCalendarObject>(calendar)) result.push_back(ours->calendar());
  }
  return result;
}

/// What `object` is a face of; null for anything that this platform did not make.
template <class Face, class Interface>
auto storedObject(const std::shared_ptr<Interface>& object) {
  const auto ours = std::dynamic_pointer_cast<Face>(object);
  return ours ? ours->object() : nullptr;
}

std::shared_ptr<CalendarObject> storedObject(const std::shared_ptr<CalCalendar>& calendar) {
  const auto ours = std::dynamic_pointer_cast<CalCalendarObject>(calendar);
  return ours ? ours->calendar() : nullptr;
}

/// Passes on whether the store did as it was told. Its sentences end with a full stop, and callers put their own.
bool told(bool done, std::optional<Error>& error) {
  if (!done && error && error->localizedDescription.ends_with('.')) error->localizedDescription.pop_back();
  return done;
}

EKSpan eventSpan(CalSpan span) { return static_cast<EKSpan>(span); }

}  // namespace

CalCalendarArray CalendarStoreObject::calendars() {
  CalCalendarArray result;
  for (const auto type : {EKEntityType::kEvent, EKEntityType::kReminder}) {
    for (const auto& calendar : m_store.calendarsForEntityType(type)) {
      result.push_back(std::make_shared<CalCalendarObject>(std::dynamic_pointer_cast<CalendarObject>(calendar)));
    }
  }
  return result;
}

std::shared_ptr<CalCalendar> CalendarStoreObject::calendarWithUID(std::string_view uid) {
  auto calendar = std::dynamic_pointer_cast<CalendarObject>(m_store.calendarWithIdentifier(uid));
  return calendar ? std::make_shared<CalCalendarObject>(std::move(calendar)) : nullptr;
}

std::shared_ptr<CalEvent> CalendarStoreObject::eventWithUID(std::string_view uid, std::optional<Date> occurrence) {
  if (occurrence) return occurrenceOf(uid, *occurrence);
  auto first = std::dynamic_pointer_cast<EventObject>(m_store.eventWithIdentifier(uid));
  return first ? std::make_shared<CalEventObject>(m_access, std::move(first)) : nullptr;
}

std::shared_ptr<CalEvent> CalendarStoreObject::occurrenceOf(std::string_view uid, Date originalStart) {
  auto found = std::dynamic_pointer_cast<EventObject>(m_store.occurrenceOfEvent(uid, originalStart));
  return found ? std::make_shared<CalEventObject>(m_access, std::move(found)) : nullptr;
}

std::shared_ptr<CalTask> CalendarStoreObject::taskWithUID(std::string_view uid) {
  auto task = std::dynamic_pointer_cast<ReminderObject>(m_store.calendarItemWithIdentifier(uid));
  return task ? std::make_shared<CalTaskObject>(m_access, std::move(task)) : nullptr;
}

std::shared_ptr<const CalPredicate> CalendarStoreObject::eventPredicateWithStartDate(
    Date start, Date end, const CalCalendarArray& calendars) {
  return predicate(m_store.predicateForEvents(start, end, stored(calendars)));
}

std::shared_ptr<const CalPredicate> CalendarStoreObject::eventPredicateWithStartDate(
    Date start, Date end, std::string_view uid, const CalCalendarArray& calendars) {
  return predicate(m_store.predicateForOneEvent(start, end, stored(calendars), uid));
}

std::shared_ptr<const CalPredicate> CalendarStoreObject::taskPredicateWithCalendars(const CalCalendarArray& calendars) {
  return predicate(m_store.predicateForRemindersInCalendars(stored(calendars)));
}

std::shared_ptr<const CalPredicate> CalendarStoreObject::taskPredicateWithUncompletedTasks(
    const CalCalendarArray& calendars) {
  return predicate(m_store.predicateForIncompleteReminders(std::nullopt, std::nullopt, stored(calendars)));
}

std::shared_ptr<const CalPredicate> CalendarStoreObject::taskPredicateWithUncompletedTasksDueBefore(
    std::optional<Date> date, const CalCalendarArray& calendars) {
  if (!date) return nullptr;
  return predicate(m_store.predicateForIncompleteReminders(std::nullopt, date, stored(calendars)));
}

std::shared_ptr<const CalPredicate> CalendarStoreObject::taskPredicateWithTasksCompletedSince(
    std::optional<Date> date, const CalCalendarArray& calendars) {
  if (!date) return nullptr;
  return predicate(m_store.predicateForCompletedReminders(date, std::nullopt, stored(calendars)));
}

std::shared_ptr<const CalEventArray> CalendarStoreObject::eventsWithPredicate(
    const std::shared_ptr<const CalPredicate>& predicate) {
  const auto* ours = dynamic_cast<const StoredPredicate*>(predicate.get());
  auto events = ours != nullptr ? m_store.eventsMatchingPredicate(ours->asked) : nullptr;
  return events ? std::make_shared<const CalEventFaces>(m_access, std::move(events)) : nullptr;
}

std::shared_ptr<const CalTaskArray> CalendarStoreObject::tasksWithPredicate(
    const std::shared_ptr<const CalPredicate>& predicate) {
  const auto* asked = dynamic_cast<const StoredPredicate*>(predicate.get());
  std::shared_ptr<const CalTaskArray> tasks;
  // The store here delivers at once.
  m_store.fetchRemindersMatchingPredicate(asked ? asked->asked : nullptr,
                                          [&](const std::shared_ptr<const EKReminderArray>& reminders) {
                                            if (reminders)
                                              tasks = std::make_shared<const CalTaskFaces>(m_access, reminders);
                                          });
  return tasks;
}

bool CalendarStoreObject::saveCalendar(const std::shared_ptr<CalCalendar>& calendar, std::optional<Error>& error) {
  const auto ours = storedObject(calendar);
  // The older platform has no sources to choose from: a new calendar comes where new events go.
  if (ours && !ours->source()) {
    if (const auto usual = m_store.defaultCalendarForNewEvents()) ours->setSource(usual->source());
  }
  return told(m_store.saveCalendar(ours, true, error), error);
}

bool CalendarStoreObject::saveEvent(const std::shared_ptr<CalEvent>& event, CalSpan span, std::optional<Error>& error) {
  const auto ours = storedObject<CalEventObject>(event);
  return told(m_store.saveEvent(ours, eventSpan(span), true, error), error);
}

bool CalendarStoreObject::saveTask(const std::shared_ptr<CalTask>& task, std::optional<Error>& error) {
  return told(m_store.saveReminder(storedObject<CalTaskObject>(task), true, error), error);
}

bool CalendarStoreObject::removeCalendar(const std::shared_ptr<CalCalendar>& calendar, std::optional<Error>& error) {
  return told(m_store.removeCalendar(storedObject(calendar), true, error), error);
}

bool CalendarStoreObject::removeEvent(const std::shared_ptr<CalEvent>& event, CalSpan span,
                                      std::optional<Error>& error) {
  const auto ours = storedObject<CalEventObject>(event);
  return told(m_store.removeEvent(ours, eventSpan(span), true, error), error);
}

bool CalendarStoreObject::removeTask(const std::shared_ptr<CalTask>& task, std::optional<Error>& error) {
  return told(m_store.removeReminder(storedObject<CalTaskObject>(task), true, error), error);
}

}  // namespace orlocal
