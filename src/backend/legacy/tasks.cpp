#include "backend/error_codes.h"
#include "backend/keyword_table.h"
#include "backend/keywords.h"
#include "backend/legacy/current_item.h"
#include "backend/legacy/ical_functions.h"
#include "backend/property_tables.h"
#include "backend/value_texts.h"

namespace orlocal {
namespace {

/// The lower-case word; none for a number that has none.
OptionalText priorityWord(int priority) {
  for (const char* word : {"none", "high", "medium", "low"}) {
    if (priorityNamed(word) == priority) { return word; }
  }
  return std::nullopt;
}

constexpr PropertyGetter<const CalTask&> kTaskGetters[] = {
    {"duedate", [](const CalTask& task) { return dateText(task.dueDate()); }},
    {"completeddate", [](const CalTask& task) { return dateText(task.completedDate()); }},
    {"iscompleted", [](const CalTask& task) { return booleanText(task.isCompleted()); }},
    {"priority", [](const CalTask& task) { return priorityWord(task.priority()); }},
};

void setPriority(CalTask& task, const PropertyValue& value) {
  if (const auto priority = priorityNamed(textOf(value))) {
    task.setPriority(*priority);
  } else {
    // The result stays 0; callers look at the code.
    failWith(kMissingArgument);
  }
}

constexpr PropertySetter<CalTask> kTaskSetters[] = {
    {"completeddate", [](CalTask& task, const PropertyValue& value) { task.setCompletedDate(dateOf(value)); }},
    {"duedate", [](CalTask& task, const PropertyValue& value) { task.setDueDate(dateOf(value)); }},
    {"iscompleted", [](CalTask& task, const PropertyValue& value) { task.setIsCompleted(isTrueText(textOf(value))); }},
    {"priority", setPriority},
};

}  // namespace

std::int32_t iCalFunctions::keepTaskPredicate(std::shared_ptr<const CalPredicate> predicate) {
  m_taskPredicate = std::move(predicate);
  return m_taskPredicate ? 0 : failWith(kReminderPredicateNotCreated);
}

std::int32_t iCalFunctions::fetchTasks(const OptionalText& calendars, const OptionalText& status,
                                       std::optional<Date> date) {
  const OptionalText word = lowercased(status);
  releaseItems();
  const auto array = calendarsToFetchFrom(calendars);
  if (!array) { return -1; }
  if (!word) { return keepTaskPredicate(store()->taskPredicateWithCalendars(*array)); }
  if (word == "incomplete" || word == "incompleted") {
    return keepTaskPredicate(date ? store()->taskPredicateWithUncompletedTasksDueBefore(date, *array)
                                  : store()->taskPredicateWithUncompletedTasks(*array));
  }
  if ((word == "complete" || word == "completed") && date) {
    return keepTaskPredicate(store()->taskPredicateWithTasksCompletedSince(date, *array));
  }
  return failWith(kInvalidParameterValue);
}

// Callers may open and count tasks after either of the next two fetches as after any other, so their predicate is held
// like every other one: the slot is its owner, and nothing is left to point at a query that has gone.

std::int32_t iCalFunctions::fetchTasksWithCalendars(const OptionalText& calendars) {
  releaseItems();
  const auto array = calendarsToFetchFrom(calendars);
  return array ? keepTaskPredicate(store()->taskPredicateWithCalendars(*array)) : -1;
}

std::int32_t iCalFunctions::fetchTasksUncompleted(const OptionalText& calendars) {
  releaseItems();
  const auto array = calendarsToFetchFrom(calendars);
  return array ? keepTaskPredicate(store()->taskPredicateWithUncompletedTasks(*array)) : -1;
}

std::int32_t iCalFunctions::fetchTasksUncompleted(std::optional<Date> dueBefore, const OptionalText& calendars) {
  releaseItems();
  const auto array = calendarsToFetchFrom(calendars);
  return array ? keepTaskPredicate(store()->taskPredicateWithUncompletedTasksDueBefore(dueBefore, *array)) : -1;
}

std::int32_t iCalFunctions::fetchTasksCompletedSince(std::optional<Date> date, const OptionalText& calendars) {
  releaseItems();
  const auto array = calendarsToFetchFrom(calendars);
  return array ? keepTaskPredicate(store()->taskPredicateWithTasksCompletedSince(date, *array)) : -1;
}

std::int32_t iCalFunctions::openTaskWithUID(const OptionalText& uid) {
  releaseItems();
  m_task = store()->taskWithUID(uid.value_or(""));
  return m_task ? 0 : failWith(kItemNotFound);
}

std::int32_t iCalFunctions::openTaskAt(std::int32_t index) {
  // The current calendar stays open, unlike when an event is opened by index.
  m_alarm.reset();
  m_attendee.reset();
  m_recurrenceend.reset();
  m_recurrencerule.reset();
  m_task.reset();
  m_event.reset();
  // Without a fetch there are no tasks, so callers see an index out of bounds and not a wrong order of calls.
  return openItemAt(index, store()->tasksWithPredicate(m_taskPredicate), m_task);
}

std::int32_t iCalFunctions::setTaskProp(const OptionalText& property, const PropertyValue& value) {
  if (!m_task) { return failWith(kInvalidCallOrder); }
  if (!property) { return failWith(kMissingArgument); }
  const auto word = lowercase(*property);
  if (const auto* setter = rowFor(kTaskSetters, word)) {
    setter->set(*m_task, value);
  } else {
    // Whatever it reports, the result is 0; its code stays.
    setCalendarItemProp(word, value, m_task.get());
  }
  return 0;
}

OptionalText iCalFunctions::getTaskAttribute(const OptionalText& property, std::int32_t, const OptionalText&) {
  if (!m_task) { return noneWith(kInvalidCallOrder); }
  if (!property) { return noneWith(kMissingArgument); }
  if (const auto* getter = rowForAnyCase(kTaskGetters, *property)) { return getter->read(*m_task); }
  return getCalendarItemAttribute(property, m_task.get());
}

}  // namespace orlocal
