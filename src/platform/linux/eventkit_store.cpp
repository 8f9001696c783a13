#include "platform/linux/eventkit_store.h"

#include <utility>

#include "platform/linux/eventkit_calendar.h"
#include "platform/linux/eventkit_event.h"
#include "platform/linux/eventkit_query.h"
#include "platform/linux/eventkit_reminder.h"

namespace orlocal {
namespace {

store::Span spanOf(EKSpan span) {
  switch (span) {
    case EKSpan::kThisEvent:
      return store::Span::kThis;
    case EKSpan::kAllEvents:
      return store::Span::kAll;
    default:
      return store::Span::kFuture;
  }
}

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

auto ask(store::CalendarStore& store, const store::EventQuery& query) {
  return orNone(store.occurrences(query), "events");
}
auto ask(store::CalendarStore& store, const store::ReminderQuery& query) {
  return orNone(store.reminders(query), "reminders");
}

/// The kept answer, or a new one when the store has changed since; null when it does not give one.
template <class Array, class Predicate>
auto answered(const Predicate& predicate, const std::shared_ptr<StoreAccess>& access) {
  store::CalendarStore& store = access->store();
  const std::uint64_t generation = store.generation();
  if (!predicate.answer || predicate.generation != generation) {
    // Two of a million occurrences are not needed at once.
    predicate.answer = nullptr;
    auto found = ask(store, predicate.query);
    predicate.answer = found ? std::make_shared<const Array>(access, *std::move(found)) : nullptr;
    predicate.generation = generation;
  }
  return predicate.answer;
}

store::EventQuery eventQuery(Date start, Date end, const EKCalendarArray& calendars) {
  store::EventQuery query;
  if (start > distantPast()) { query.from = start; }
  if (end < distantFuture()) { query.to = end; }
  query.calendars = calendarIds(calendars);
  return query;
}

/// A predicate that the store has answered once; null when it did not.
template <class Predicate, class Array, class Query>
std::shared_ptr<const EKPredicate> asked(Query query, const std::shared_ptr<StoreAccess>& access) {
  auto predicate = std::make_shared<const Predicate>(std::move(query));
  return answered<Array>(*predicate, access) ? predicate : nullptr;
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
  for (const store::Calendar& row : *rows) { calendars.push_back(object(row)); }
  return calendars;
}

std::shared_ptr<EKCalendar> EventStoreObject::calendarWithIdentifier(std::string_view identifier) {
  return object(orNone(m_access->store().calendar(identifier)).value_or(std::nullopt));
}

std::shared_ptr<EKCalendar> EventStoreObject::defaultCalendarForNewEvents() {
  return object(orNone(m_access->store().defaultCalendar(store::CalendarKind::kEvents)).value_or(std::nullopt));
}

std::shared_ptr<EKCalendar> EventStoreObject::defaultCalendarForNewReminders() {
  return object(orNone(m_access->store().defaultCalendar(store::CalendarKind::kReminders)).value_or(std::nullopt));
}

std::shared_ptr<const EKPredicate> EventStoreObject::predicateForEvents(Date start, Date end,
                                                                        const EKCalendarArray& calendars) {
  if (end < start) { return nullptr; }
  return asked<EventPredicate, EventArray>(eventQuery(start, end, calendars), m_access);
}

std::shared_ptr<const EKPredicate> EventStoreObject::predicateForOneEvent(Date start, Date end,
                                                                          const EKCalendarArray& calendars,
                                                                          std::string_view identifier) {
  if (end < start) { return nullptr; }
  const auto event = orNone(m_access->store().event(identifier));
  if (!event) { return nullptr; }
  store::EventQuery query = eventQuery(start, end, calendars);
  // No row has the number 0. An identifier that is not known now never will be.
  query.event = *event ? (*event)->id : 0;
  return asked<EventPredicate, EventArray>(std::move(query), m_access);
}

std::shared_ptr<const EKEventArray> EventStoreObject::eventsMatchingPredicate(
    const std::shared_ptr<const EKPredicate>& predicate) {
  const auto* ours = dynamic_cast<const EventPredicate*>(predicate.get());
  return ours != nullptr ? answered<EventArray>(*ours, m_access) : nullptr;
}

std::shared_ptr<EKEvent> EventStoreObject::firstOccurrenceOf(std::shared_ptr<const store::Item> event) const {
  if (!event) { return nullptr; }
  const auto occurrence = orNone(m_access->store().firstOccurrence(*event));
  if (!occurrence) { return nullptr; }
  // The first occurrence of a series may be a changed one, with a row of its own.
  if (*occurrence && (*occurrence)->item != event->id) {
    const auto changed = orNone(m_access->store().item((*occurrence)->item), "changed occurrence");
    if (!changed) { return nullptr; }
    if (*changed) { event = *changed; }
  }
  return std::make_shared<EventObject>(m_access, std::move(event), *occurrence);
}

std::shared_ptr<EKEvent> EventStoreObject::eventWithIdentifier(std::string_view identifier) {
  return firstOccurrenceOf(orNone(m_access->store().event(identifier)).value_or(nullptr));
}

std::shared_ptr<EKEvent> EventStoreObject::occurrenceOfEvent(std::string_view identifier, Date occurrenceDate) {
  store::CalendarStore& store = m_access->store();
  const auto event = orNone(store.event(identifier)).value_or(nullptr);
  if (!event) { return nullptr; }
  const auto found = orNone(store.occurrenceAt(*event, occurrenceDate)).value_or(std::nullopt);
  if (!found) { return nullptr; }
  auto row = orNone(store.item(found->item), "occurrence").value_or(nullptr);
  return row ? std::make_shared<EventObject>(m_access, std::move(row), *found) : nullptr;
}

std::shared_ptr<const EKPredicate> EventStoreObject::reminderPredicate(store::ReminderQuery::Status status,
                                                                       std::optional<Date> start,
                                                                       std::optional<Date> end,
                                                                       const EKCalendarArray& calendars) const {
  store::ReminderQuery query;
  query.status = status;
  query.from = start;
  query.to = end;
  query.calendars = calendarIds(calendars);
  return asked<ReminderPredicate, ReminderArray>(std::move(query), m_access);
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
  const auto* ours = dynamic_cast<const ReminderPredicate*>(predicate.get());
  completion(ours != nullptr ? answered<ReminderArray>(*ours, m_access) : nullptr);
}

std::shared_ptr<EKCalendarItem> EventStoreObject::calendarItemWithIdentifier(std::string_view identifier) {
  auto item = orNone(m_access->store().itemWithIdentifier(identifier)).value_or(nullptr);
  if (!item) { return nullptr; }
  if (item->kind == store::ItemKind::kReminder) { return std::make_shared<ReminderObject>(m_access, std::move(item)); }
  return firstOccurrenceOf(std::move(item));
}

bool EventStoreObject::saveCalendar(const std::shared_ptr<EKCalendar>& calendar, bool, std::optional<Error>& error) {
  const auto ours = required<CalendarObject>(calendar, "calendar", error);
  if (!ours) { return false; }
  store::Calendar edited = ours->stored();
  if (!succeeded(m_access->store().saveCalendar(edited, ours->set()), error)) { return false; }
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
  if (!ours) { return false; }
  auto saved = m_access->store().saveEvent(ours->edited(), ours->occurrence(), spanOf(span));
  if (!succeeded(saved, error)) { return false; }
  // What was written stands, even if it cannot be read back now: the object then has the times of its row.
  const auto occurrence = m_access->store().firstOccurrence(*saved);
  ours->adopt(*std::move(saved), occurrence ? *occurrence : std::nullopt);
  return true;
}

bool EventStoreObject::removeEvent(const std::shared_ptr<EKEvent>& event, EKSpan span, bool,
                                   std::optional<Error>& error) {
  const auto ours = required<EventObject>(event, "event", error);
  return ours && succeeded(m_access->store().removeEvent(ours->original(), ours->occurrence(), spanOf(span)), error);
}

bool EventStoreObject::saveReminder(const std::shared_ptr<EKReminder>& reminder, bool, std::optional<Error>& error) {
  const auto ours = required<ReminderObject>(reminder, "reminder", error);
  if (!ours) { return false; }
  auto saved = m_access->store().saveReminder(ours->edited());
  if (!succeeded(saved, error)) { return false; }
  ours->adopt(*std::move(saved));
  return true;
}

bool EventStoreObject::removeReminder(const std::shared_ptr<EKReminder>& reminder, bool, std::optional<Error>& error) {
  const auto ours = required<ReminderObject>(reminder, "reminder", error);
  return ours && succeeded(m_access->store().removeReminder(ours->original()), error);
}

}  // namespace orlocal
