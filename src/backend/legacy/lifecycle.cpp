#include "backend/current_items.h"
#include "backend/error_codes.h"
#include "backend/keywords.h"
#include "backend/legacy/ical_functions.h"
#include "platform/platform.h"

namespace orlocal {
namespace {

/// Without a word this occurrence is meant; none for a word that is no span.
std::optional<CalSpan> spanFromWord(const OptionalText& word) {
  if (!word) { return CalSpan::kThisEvent; }
  const auto span = spanNamed(word);
  if (!span) { return std::nullopt; }
  switch (*span) {
    case SpanWord::kThis:
      return CalSpan::kThisEvent;
    case SpanWord::kFuture:
      return CalSpan::kFutureEvents;
    case SpanWord::kAll:
      return CalSpan::kAllEvents;
  }
  return std::nullopt;
}

template <class Items>
std::int32_t countOf(const Items& items) {
  return items ? static_cast<std::int32_t>(items->count()) : 0;
}

}  // namespace

std::int32_t iCalFunctions::newItem(const OptionalText& type) {
  releaseItems();
  auto& framework = platform().calFramework();
  bool made = false;
  switch (const auto kind = itemKindNamed(type); kind.value_or(ItemKind::kAlarm)) {
    case ItemKind::kCalendar:
    case ItemKind::kReminderList:
      m_calendar = framework.calendar();
      made = m_calendar != nullptr;
      break;
    case ItemKind::kEvent:
      m_event = framework.event();
      made = m_event != nullptr;
      break;
    case ItemKind::kReminder:
      m_task = framework.task();
      made = m_task != nullptr;
      break;
    default:
      return failWith(kInvalidArgument);
  }
  return made ? 0 : failWith(kLegacyItemNotCreated);
}

std::int32_t iCalFunctions::saveItem(const OptionalText& type, const OptionalText& span) {
  const auto extent = spanFromWord(span);
  if (!extent) { return failWith(kInvalidArgument); }
  // A caught exception gives 0: the code carries the failure, as in the other back end.
  return catchingExceptions(lastErrorString, std::int32_t{0}, [&] {
    const std::string word = lowercase(type.value_or(""));
    // Every type but "reminderlist" saves the current calendar, "event" and "task" too: callers save calendars only
    // through this back end, and an event's save is answered with what became of the calendar's.
    if (word == "reminderlist") { return saveTaskOrEvent(word, *extent); }
    std::optional<Error> error;
    return store()->saveCalendar(m_calendar, error) ? 0 : failWithRefusal(error);
  });
}

std::int32_t iCalFunctions::saveTaskOrEvent(const std::string& type, CalSpan span) {
  std::optional<Error> error;
  if (type == "task") {
    if (!m_task) { return failWith(kInvalidCallOrder); }
    return store()->saveTask(m_task, error) ? 0 : failWithRefusal(error);
  }
  if (type == "event") {
    if (!m_event) { return failWith(kInvalidCallOrder); }
    return store()->saveEvent(m_event, span, error) ? 0 : failWithRefusal(error);
  }
  return failWith(kMissingArgument);
}

std::int32_t iCalFunctions::removeItem(const OptionalText& type, const OptionalText& uid,
                                       std::optional<Date> occurrence, const OptionalText& span) {
  releaseItems();
  const auto extent = spanFromWord(span);
  if (!extent) { return failWith(kInvalidArgument); }
  return catchingExceptions(lastErrorString, std::int32_t{0}, [&] {
    const std::string identifier = uid.value_or("");
    std::optional<Error> error;
    switch (const auto kind = itemKindNamed(type); kind.value_or(ItemKind::kAlarm)) {
      case ItemKind::kCalendar:
      case ItemKind::kReminderList: {
        const auto calendar = store()->calendarWithUID(identifier);
        if (!calendar) { return failWith(kItemNotFound); }
        return store()->removeCalendar(calendar, error) ? 0 : failWithRefusal(error);
      }
      case ItemKind::kReminder: {
        const auto task = store()->taskWithUID(identifier);
        if (!task) { return failWith(kItemNotFound); }
        return store()->removeTask(task, error) ? 0 : failWithRefusal(error);
      }
      case ItemKind::kEvent: {
        const auto event = store()->eventWithUID(identifier, occurrence);
        if (!event) { return failWith(kItemNotFound); }
        if (!span) { return failWith(kMissingArgument); }
        return store()->removeEvent(event, *extent, error) ? 0 : failWithRefusal(error);
      }
      default:
        return failWith(kMissingArgument);
    }
  });
}

std::int32_t iCalFunctions::getObjectCount(const OptionalText& type) {
  const auto kind = itemKindNamed(type);
  if (!kind) {
    return -1;  // no code: callers read an unknown type as -1, not as an error
  }
  switch (*kind) {
    case ItemKind::kCalendar:
    case ItemKind::kReminderList:
      return static_cast<std::int32_t>(store()->calendars().size());
    case ItemKind::kEvent:
      return m_eventPredicate ? countOf(store()->eventsWithPredicate(m_eventPredicate)) : failWith(kInvalidCallOrder);
    case ItemKind::kReminder:
      return m_taskPredicate ? countOf(store()->tasksWithPredicate(m_taskPredicate)) : failWith(kInvalidCallOrder);
    case ItemKind::kAttendee: {
      if (!m_event) { return failWith(kInvalidCallOrder); }
      const auto attendees = m_event->attendees();
      return attendees ? static_cast<std::int32_t>(attendees->size()) : 0;
    }
    case ItemKind::kAlarm:
      break;
  }
  return failWith(kParameterNotSupported);  // alarms are not counted here, and callers are told so
}

}  // namespace orlocal
