#include "backend/current_items.h"
#include "backend/eventkit/ical_ek_functions.h"
#include "backend/keyword_table.h"
#include "backend/keywords.h"
#include "backend/property_tables.h"
#include "backend/value_texts.h"
#include "platform/awaited_reminders.h"
#include "platform/platform.h"

namespace orlocal {
namespace {

enum class Status { kIncomplete, kComplete };

struct StatusWord {
  std::string_view word;
  Status status;
};

constexpr StatusWord kStatusWords[] = {
    {"incomplete", Status::kIncomplete},
    {"incompleted", Status::kIncomplete},
    {"complete", Status::kComplete},
    {"completed", Status::kComplete},
};

OptionalText dueDateText(const EKReminder& reminder) {
  const auto parts = reminder.dueDateComponents();
  return parts ? dateText(platform().defaultTimeZone().dateFromComponents(*parts)) : std::nullopt;
}

/// Capitalised, while the words that set a priority are compared lower-cased.
OptionalText priorityText(const EKReminder& reminder) {
  const int priority = reminder.priority();
  if (priority == 0) { return "None"; }
  if (priority == 5) { return "Medium"; }
  if (priority >= 1 && priority <= 4) { return "High"; }
  if (priority >= 6 && priority <= 9) { return "Low"; }
  return std::nullopt;
}

constexpr PropertyGetter<const EKReminder&> kReminderGetters[] = {
    {"duedate", dueDateText},
    {"completeddate", [](const EKReminder& reminder) { return dateText(reminder.completionDate()); }},
    {"iscompleted", [](const EKReminder& reminder) { return booleanText(reminder.isCompleted()); }},
    {"priority", priorityText},
    {"hasalarms", [](const EKReminder& reminder) { return booleanText(reminder.hasAlarms()); }},
    {"notes", [](const EKReminder& reminder) { return reminder.notes(); }},
    {"title", [](const EKReminder& reminder) { return reminder.title(); }},
    {"externaluid", [](const EKReminder& reminder) { return reminder.calendarItemExternalIdentifier(); }},
};

void setDueDate(EKReminder& reminder, const PropertyValue& value) {
  const auto date = dateOf(value);
  reminder.setDueDateComponents(date ? std::optional(platform().defaultTimeZone().components(*date)) : std::nullopt);
}

void setPriority(EKReminder& reminder, const PropertyValue& value) {
  if (const auto priority = priorityNamed(textOf(value))) {
    reminder.setPriority(*priority);
  } else {
    // The result stays 0; callers look at the code.
    failWith(kMissingArgument);
  }
}

constexpr PropertySetter<EKReminder> kReminderSetters[] = {
    {"completeddate",
     [](EKReminder& reminder, const PropertyValue& value) { reminder.setCompletionDate(dateOf(value)); }},
    {"duedate", setDueDate},
    {"iscompleted",
     [](EKReminder& reminder, const PropertyValue& value) { reminder.setCompleted(isTrueText(textOf(value))); }},
    {"priority", setPriority},
};

}  // namespace

std::int32_t iCalEKFunctions::fetchReminders(const OptionalText& lists, const OptionalText& status,
                                             std::optional<Date> date) {
  releaseItems();
  const auto array = calendarArrayFromString(lists, "reminderlist");
  if (g_llasterror != 0) { return -1; }
  if (!array || array->empty()) { return failWith(kCalendarArrayNotCreated); }
  if (!status) { return keepReminderPredicate(m_ekEventStore->predicateForRemindersInCalendars(*array)); }
  const auto* word = rowForAnyCase(kStatusWords, *status);
  if (word == nullptr) { return failWith(kInvalidParameterValue); }
  if (word->status == Status::kIncomplete) {
    return keepReminderPredicate(m_ekEventStore->predicateForIncompleteReminders(std::nullopt, date, *array));
  }
  if (!date) { return failWith(kInvalidParameterValue); }
  return keepReminderPredicate(m_ekEventStore->predicateForCompletedReminders(date, std::nullopt, *array));
}

std::int32_t iCalEKFunctions::fetchRemindersWithCalendars(const OptionalText& lists) {
  const auto array = reminderLists(lists);
  if (array.empty()) { return failWith(kCalendarArrayNotCreated); }
  return keepReminderPredicate(m_ekEventStore->predicateForRemindersInCalendars(array));
}

std::int32_t iCalEKFunctions::fetchRemindersUncompleted(const OptionalText& lists) {
  return fetchRemindersUncompleted(std::nullopt, lists);
}

std::int32_t iCalEKFunctions::fetchRemindersUncompleted(std::optional<Date> dueBy, const OptionalText& lists) {
  const auto array = reminderLists(lists);
  if (array.empty()) { return failWith(kCalendarArrayNotCreated); }
  return keepReminderPredicate(m_ekEventStore->predicateForIncompleteReminders(std::nullopt, dueBy, array));
}

std::int32_t iCalEKFunctions::fetchRemindersCompletedSince(std::optional<Date> date, const OptionalText& lists) {
  const auto array = reminderLists(lists);
  if (array.empty()) { return failWith(kCalendarArrayNotCreated); }
  return keepReminderPredicate(m_ekEventStore->predicateForCompletedReminders(date, std::nullopt, array));
}

EKCalendarArray iCalEKFunctions::reminderLists(const OptionalText& names) {
  releaseItems();
  // An unknown name leaves the array empty: these fetches report 9004 for it, not 9013.
  return calendarArrayFromString(names, "reminderlist").value_or(EKCalendarArray());
}

std::int32_t iCalEKFunctions::keepReminderPredicate(std::shared_ptr<const EKPredicate> predicate) {
  m_ekReminderPredicate = std::move(predicate);
  if (!m_ekReminderPredicate) { return failWith(kReminderPredicateNotCreated); }
  m_ekReminder.reset();
  return 0;
}

std::shared_ptr<const EKReminderArray> iCalEKFunctions::fetchedReminders() {
  return awaitedReminders(*m_ekEventStore, m_ekReminderPredicate, platform());
}

std::shared_ptr<EKReminder> iCalEKFunctions::reminderWithIdentifier(const OptionalText& uid) {
  // Events have identifiers of the same kind; an event counts as not found.
  return uid ? std::dynamic_pointer_cast<EKReminder>(m_ekEventStore->calendarItemWithIdentifier(*uid)) : nullptr;
}

std::int32_t iCalEKFunctions::openReminderWithUID(const OptionalText& uid) {
  releaseItems();
  m_ekReminder = reminderWithIdentifier(uid);
  return m_ekReminder ? 0 : failWith(kReminderUidNotFound);
}

std::int32_t iCalEKFunctions::openReminderAt(std::int32_t index) {
  m_ekAlarm.reset();
  m_ekParticipant.reset();
  m_ekRecurrenceEnd.reset();
  m_ekRecurrenceRule.reset();
  m_ekReminder.reset();
  m_ekEvent.reset();
  const auto reminders = fetchedReminders();
  if (!reminders || !isWithin(index, reminders->count())) { return failWith(kIndexOutOfBounds); }
  m_ekReminder = reminders->objectAtIndex(static_cast<std::size_t>(index - 1));
  return m_ekReminder ? 0 : failWith(kReminderNotOpenedAtIndex);
}

std::int32_t iCalEKFunctions::setReminderProp(const OptionalText& property, const PropertyValue& value) {
  if (!m_ekReminder) { return failWith(kNoReminderToSetProperty); }
  if (!property) { return failWith(kPropertyRequired); }
  const auto word = lowercase(*property);
  if (const auto* setter = rowFor(kReminderSetters, word)) {
    setter->set(*m_ekReminder, value);
  } else {
    // Whatever it reports, the result is 0; its code stays.
    setCalendarItemProp(word, value, m_ekReminder.get());
  }
  return 0;
}

OptionalText iCalEKFunctions::getReminderAttribute(const OptionalText& property, std::int32_t, const OptionalText&) {
  if (!m_ekReminder) { return noneWith(kNoReminderToGetProperty); }
  if (!property) { return noneWith(kPropertyRequired); }
  if (const auto* getter = rowForAnyCase(kReminderGetters, *property)) { return getter->read(*m_ekReminder); }
  return getCalendarItemAttribute(property, m_ekReminder.get());
}

}  // namespace orlocal
