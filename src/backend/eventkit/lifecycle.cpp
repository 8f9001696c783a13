#include <algorithm>
#include <limits>

#include "backend/current_items.h"
#include "backend/eventkit/ical_ek_functions.h"
#include "backend/keywords.h"
#include "platform/platform.h"

namespace orlocal {
namespace {

/// "all" means the same as "future".
EKSpan spanOf(SpanWord word) { return word == SpanWord::kThis ? EKSpan::kThisEvent : EKSpan::kFutureEvents; }

std::int32_t asCount(std::size_t count) {
  constexpr auto kMost = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
  return static_cast<std::int32_t>(std::min(count, kMost));
}

/// A calendar lives where the default calendar of its kind does; one that was saved before moves there.
void takeSource(EKCalendar* calendar, const std::shared_ptr<EKCalendar>& defaultCalendar) {
  if (calendar != nullptr) { calendar->setSource(defaultCalendar ? defaultCalendar->source() : nullptr); }
}

}  // namespace

std::int32_t iCalEKFunctions::newItem(const OptionalText& type) {
  releaseItems();
  auto& eventKit = platform().eventKit();
  switch (itemKindNamed(type).value_or(ItemKind::kAlarm)) {
    case ItemKind::kCalendar:
      m_ekCalendar = eventKit.calendarForEntityType(EKEntityType::kEvent, m_ekEventStore);
      return m_ekCalendar ? 0 : failWith(kCalendarNotCreated);
    case ItemKind::kReminderList:
      m_ekCalendar = eventKit.calendarForEntityType(EKEntityType::kReminder, m_ekEventStore);
      return m_ekCalendar ? 0 : failWith(kReminderListNotCreated);
    case ItemKind::kEvent:
      m_ekEvent = eventKit.eventWithEventStore(m_ekEventStore);
      return m_ekEvent ? 0 : failWith(kEventNotCreated);
    case ItemKind::kReminder:
      m_ekReminder = eventKit.reminderWithEventStore(m_ekEventStore);
      return m_ekReminder ? 0 : failWith(kReminderNotCreated);
    case ItemKind::kAttendee:
    case ItemKind::kAlarm:
      break;
  }
  return failWith(kInvalidType);
}

std::int32_t iCalEKFunctions::saveItem(const OptionalText& type, const OptionalText& span) {
  return catchingExceptions(lastErrorString, 0, [&] {
    const auto word = span ? spanNamed(span) : SpanWord::kThis;
    if (!word) { return failWith(kInvalidSpan); }
    switch (itemKindNamed(type).value_or(ItemKind::kAlarm)) {
      case ItemKind::kCalendar:
        return saveCurrentCalendar();
      case ItemKind::kReminderList:
        return saveCurrentReminderList();
      case ItemKind::kReminder:
        return saveCurrentReminder();
      case ItemKind::kEvent:
        return saveCurrentEvent(spanOf(*word));
      case ItemKind::kAttendee:
      case ItemKind::kAlarm:
        break;
    }
    return failWith(kMissingArgument);
  });
}

std::int32_t iCalEKFunctions::saveCurrentCalendar() {
  takeSource(m_ekCalendar.get(), m_ekEventStore->defaultCalendarForNewEvents());
  std::optional<Error> error;
  if (m_ekEventStore->saveCalendar(m_ekCalendar, true, error)) { return 0; }
  const bool modifiable = m_ekCalendar && m_ekCalendar->allowsContentModifications();
  return failWith(modifiable ? kCalendarNotSaved : kCalendarContentNotModifiable);
}

std::int32_t iCalEKFunctions::saveCurrentReminderList() {
  takeSource(m_ekCalendar.get(), m_ekEventStore->defaultCalendarForNewReminders());
  std::optional<Error> error;
  return m_ekEventStore->saveCalendar(m_ekCalendar, true, error) ? 0 : failWith(kCalendarNotSaved);
}

std::int32_t iCalEKFunctions::saveCurrentReminder() {
  std::optional<Error> error;
  return m_ekEventStore->saveReminder(m_ekReminder, true, error) ? 0 : failWith(kReminderNotSaved);
}

std::int32_t iCalEKFunctions::saveCurrentEvent(EKSpan span) {
  if (m_ekEvent) {
    const auto start = m_ekEvent->startDate();
    const auto end = m_ekEvent->endDate();
    if (start && end && *start > *end) { return failWith(kStartAfterEnd); }
  }
  std::optional<Error> error;
  // A store that names no error has saved, whatever it reports.
  if (m_ekEventStore->saveEvent(m_ekEvent, span, true, error) || !error) { return 0; }
  return failWith(m_ekEvent && m_ekEvent->hasAttendees() ? kEventWithAttendeesNotSaved : kEventNotSaved);
}

std::int32_t iCalEKFunctions::removeItem(const OptionalText& type, const OptionalText& uid, std::optional<Date>,
                                         const OptionalText& span) {
  return catchingExceptions(lastErrorString, 0, [&] {
    releaseItems();
    const auto word = spanNamed(span);
    if (span && !word) { return failWith(kInvalidArgument); }
    std::optional<Error> error;
    switch (itemKindNamed(type).value_or(ItemKind::kAlarm)) {
      case ItemKind::kCalendar:
      case ItemKind::kReminderList: {
        const auto calendar = uid ? m_ekEventStore->calendarWithIdentifier(*uid) : nullptr;
        if (!calendar) { return failWith(kCalendarNotFound); }
        return m_ekEventStore->removeCalendar(calendar, true, error) ? 0 : failWith(kCalendarNotDeleted);
      }
      case ItemKind::kReminder: {
        const auto reminder = reminderWithIdentifier(uid);
        if (!reminder) { return failWith(kReminderNotFound); }
        return m_ekEventStore->removeReminder(reminder, true, error) ? 0 : failWith(kReminderNotDeleted);
      }
      case ItemKind::kEvent: {
        const auto event = uid ? m_ekEventStore->eventWithIdentifier(*uid) : nullptr;
        if (!event) { return failWith(kEventNotFound); }
        if (!word) { return failWith(kSpanRequired); }
        return m_ekEventStore->removeEvent(event, spanOf(*word), true, error) ? 0 : failWith(kEventNotDeleted);
      }
      case ItemKind::kAttendee:
      case ItemKind::kAlarm:
        break;
    }
    return failWith(kMissingArgument);
  });
}

std::int32_t iCalEKFunctions::getObjectCount(const OptionalText& type) {
  const auto kind = itemKindNamed(type);
  if (!kind) { return failWith(kInvalidType); }
  switch (*kind) {
    case ItemKind::kCalendar:
      return asCount(m_ekEventStore->calendarsForEntityType(EKEntityType::kEvent).size());
    case ItemKind::kReminderList:
      return asCount(m_ekEventStore->calendarsForEntityType(EKEntityType::kReminder).size());
    case ItemKind::kEvent: {
      if (!m_ekEventPredicate) { return failWith(kNoEventsFetched); }
      const auto events = m_ekEventStore->eventsMatchingPredicate(m_ekEventPredicate);
      return asCount(events ? events->count() : 0);
    }
    case ItemKind::kReminder: {
      if (!m_ekReminderPredicate) { return failWith(kNoRemindersFetched); }
      const auto reminders = fetchedReminders();
      return asCount(reminders ? reminders->count() : 0);
    }
    case ItemKind::kAttendee: {
      if (!m_ekEvent) { return failWith(kNoEventToCount); }
      const auto attendees = m_ekEvent->attendees();
      return asCount(attendees ? attendees->size() : 0);
    }
    case ItemKind::kAlarm: {
      // The event comes first here, while opening an alarm asks the reminder first; solutions know both.
      const EKCalendarItem* owner = m_ekEvent ? static_cast<EKCalendarItem*>(m_ekEvent.get()) : m_ekReminder.get();
      if (owner == nullptr) { return failWith(kNoItemToCountAlarms); }
      return owner->hasAlarms() ? asCount(owner->alarms().size()) : 0;
    }
  }
  return failWith(kInvalidType);
}

}  // namespace orlocal
