#include "platform/linux/eventkit_store.h"

#include <utility>

#include "platform/linux/eventkit_calendar.h"
#include "platform/linux/eventkit_event.h"
#include "platform/linux/eventkit_query.h"
#include "platform/linux/eventkit_reminder.h"

namespace orlocal {
namespace {

store::Span spanOf(EKSpan span) { return span == EKSpan::kThisEvent ? store::Span::kThis : store::Span::kFuture; }

/// `object` as one of this platform's; without one `error` says that there is no `what`.
template <class Ours, class Theirs>
std::shared_ptr<Ours> required(const std::shared_ptr<Theirs>& object, const char* what, std::optional<Error>& error) {
  auto ours = std::dynamic_pointer_cast<Ours>(object);
  if (!ours) {
    error = Error{.localizedDescription = "There is no " + std::string(what) + " to save or remove.",
                  .localizedFailureReason = std::nullopt};
  }
  return ours;
}

/// The kept answer, or a new one from `ask` when the store has changed since.
template <class Predicate, class Ask>
auto answered(const Predicate& predicate, store::CalendarStore& store, Ask ask) {
  const std::uint64_t generation = store.generation();
  if (!predicate.answer || predicate.generation != generation) {
    predicate.answer = ask(predicate.query);
    predicate.generation = generation;
  }
  return predicate.answer;
}

std::shared_ptr<const EKPredicate> reminderPredicate(store::ReminderQuery::Status status, std::optional<Date> start,
                                                     std::optional<Date> end, const EKCalendarArray& calendars) {
  store::ReminderQuery query;
  query.status = status;
  query.from = start;
  query.to = end;
  query.calendars = calendarIds(calendars);
  return std::make_shared<ReminderPredicate>(std::move(query));
}

}  // namespace

std::shared_ptr<EKCalendar> EventStoreObject::object(std::optional<store::Calendar> calendar) const {
  return calendar ? std::make_shared<CalendarObject>(m_access, *std::move(calendar)) : nullptr;
}

EKCalendarArray EventStoreObject::calendarsForEntityType(EKEntityType type) {
  const auto rows = m_access->calendars(type == EKEntityType::kEvent ? store::CalendarKind::kEvents
                                                                     : store::CalendarKind::kReminders);
  EKCalendarArray calendars;
  calendars.reserve(rows->size());
  for (const store::Calendar& row : *rows) calendars.push_back(object(row));
  return calendars;
}

std::shared_ptr<EKCalendar> EventStoreObject::calendarWithIdentifier(std::string_view identifier) {
  return object(orThrow(m_access->store().calendar(identifier)));
}

std::shared_ptr<EKCalendar> EventStoreObject::defaultCalendarForNewEvents() {
  return object(orThrow(m_access->store().defaultCalendar(store::CalendarKind::kEvents)));
}

std::shared_ptr<EKCalendar> EventStoreObject::defaultCalendarForNewReminders() {
  return object(orThrow(m_access->store().defaultCalendar(store::CalendarKind::kReminders)));
}

std::shared_ptr<const EKPredicate> EventStoreObject::predicateForEvents(Date start, Date end,
                                                                        const EKCalendarArray& calendars) {
  if (end < start) return nullptr;
  store::EventQuery query;
  if (start > distantPast()) query.from = start;
  if (end < distantFuture()) query.to = end;
  query.calendars = calendarIds(calendars);
  return std::make_shared<EventPredicate>(std::move(query));
}

std::shared_ptr<const EKEventArray> EventStoreObject::eventsMatchingPredicate(
    const std::shared_ptr<const EKPredicate>& predicate) {
  const auto* asked = dynamic_cast<const EventPredicate*>(predicate.get());
  if (asked == nullptr) return nullptr;
  store::CalendarStore& store = m_access->store();
  return answered(*asked, store, [&](const store::EventQuery& query) {
    return std::make_shared<const EventArray>(m_access, orThrow(store.occurrences(query)));
  });
}

std::shared_ptr<EKEvent> EventStoreObject::firstOccurrenceOf(std::shared_ptr<const store::Item> event) const {
  if (!event) return nullptr;
  const auto occurrence = orThrow(m_access->store().firstOccurrence(*event));
  // The first occurrence of a series may be a changed one, with a row of its own.
  if (occurrence && occurrence->item != event->id) {
    if (auto changed = orThrow(m_access->store().item(occurrence->item))) event = std::move(changed);
  }
  return std::make_shared<EventObject>(m_access, std::move(event), occurrence);
}

std::shared_ptr<EKEvent> EventStoreObject::eventWithIdentifier(std::string_view identifier) {
  return firstOccurrenceOf(orThrow(m_access->store().event(identifier)));
}

std::shared_ptr<const EKPredicate> EventStoreObject::predicateForRemindersInCalendars(
    const EKCalendarArray& calendars) {
  return reminderPredicate(store::ReminderQuery::Status::kAny, std::nullopt, std::nullopt, calendars);
}

std::shared_ptr<const EKPredicate> EventStoreObject::predicateForIncompleteReminders(std::optional<Date> start,
                                                                                     std::optional<Date> end,
                                                                                     const EKCalendarArray& calendars) {
  return reminderPredicate(store::ReminderQuery::Status::kOpen, start, end, calendars);
}

std::shared_ptr<const EKPredicate> EventStoreObject::predicateForCompletedReminders(std::optional<Date> start,
                                                                                    std::optional<Date> end,
                                                                                    const EKCalendarArray& calendars) {
  return reminderPredicate(store::ReminderQuery::Status::kCompleted, start, end, calendars);
}

void EventStoreObject::fetchRemindersMatchingPredicate(const std::shared_ptr<const EKPredicate>& predicate,
                                                       ReminderCompletion completion) {
  const auto* asked = dynamic_cast<const ReminderPredicate*>(predicate.get());
  if (asked == nullptr) return completion(nullptr);
  store::CalendarStore& store = m_access->store();
  completion(answered(*asked, store, [&](const store::ReminderQuery& query) {
    return std::make_shared<const ReminderArray>(m_access, orThrow(store.reminders(query)));
  }));
}

std::shared_ptr<EKCalendarItem> EventStoreObject::calendarItemWithIdentifier(std::string_view identifier) {
  auto item = orThrow(m_access->store().itemWithIdentifier(identifier));
  if (!item) return nullptr;
  if (item->kind == store::ItemKind::kReminder) return std::make_shared<ReminderObject>(m_access, std::move(item));
  return firstOccurrenceOf(std::move(item));
}

bool EventStoreObject::saveCalendar(const std::shared_ptr<EKCalendar>& calendar, bool, std::optional<Error>& error) {
  const auto ours = required<CalendarObject>(calendar, "calendar", error);
  if (!ours) return false;
  store::Calendar edited = ours->stored();
  if (!succeeded(m_access->store().saveCalendar(edited, ours->set()), error)) return false;
  ours->adopt(std::move(edited));
  return true;
}

bool EventStoreObject::removeCalendar(const std::shared_ptr<EKCalendar>& calendar, bool, std::optional<Error>& error) {
  const auto ours = required<CalendarObject>(calendar, "calendar", error);
  return ours && succeeded(m_access->store().removeCalendar(ours->stored().identifier), error);
}

bool EventStoreObject::saveEvent(const std::shared_ptr<EKEvent>& event, EKSpan span, bool,
                                 std::optional<Error>& error) {
  const auto ours = required<EventObject>(event, "event", error);
  if (!ours) return false;
  return writeEvent(*ours, spanOf(span), error);
}

bool EventStoreObject::writeEvent(EventObject& event, store::Span span, std::optional<Error>& error) {
  auto saved = m_access->store().saveEvent(event.edited(), event.occurrence(), span);
  if (!succeeded(saved, error)) return false;
  // What was written stands, even if it cannot be read back now: the object then has the times of its row.
  const auto occurrence = m_access->store().firstOccurrence(*saved);
  event.adopt(*std::move(saved), occurrence ? *occurrence : std::nullopt);
  return true;
}

bool EventStoreObject::removeEvent(const std::shared_ptr<EKEvent>& event, EKSpan span, bool,
                                   std::optional<Error>& error) {
  const auto ours = required<EventObject>(event, "event", error);
  return ours && succeeded(m_access->store().removeEvent(ours->original(), ours->occurrence(), spanOf(span)), error);
}

bool EventStoreObject::saveReminder(const std::shared_ptr<EKReminder>& reminder, bool, std::optional<Error>& error) {
  const auto ours = required<ReminderObject>(reminder, "reminder", error);
  if (!ours) return false;
  auto saved = m_access->store().saveReminder(ours->edited());
  if (!succeeded(saved, error)) return false;
  ours->adopt(*std::move(saved));
  return true;
}

bool EventStoreObject::removeReminder(const std::shared_ptr<EKReminder>& reminder, bool, std::optional<Error>& error) {
  const auto ours = required<ReminderObject>(reminder, "reminder", error);
  return ours && succeeded(m_access->store().removeReminder(ours->original()), error);
}

}  // namespace orlocal
