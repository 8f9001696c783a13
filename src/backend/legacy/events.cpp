#include "backend/error_codes.h"
#include "backend/keyword_table.h"
#include "backend/legacy/current_item.h"
#include "backend/legacy/ical_functions.h"
#include "backend/property_tables.h"
#include "backend/value_texts.h"

namespace orlocal {
namespace {

constexpr PropertyGetter<const CalEvent&> kEventGetters[] = {
    {"startdate", [](const CalEvent& event) { return dateText(event.startDate()); }},
    {"enddate", [](const CalEvent& event) { return dateText(event.endDate()); }},
    {"occurrence",
     [](const CalEvent& event) { return event.recurrenceRule() ? dateText(event.occurrence()) : OptionalText(); }},
    {"uid", [](const CalEvent& event) { return event.uid(); }},
    {"attendeecount",
     [](const CalEvent& event) {
       const auto attendees = event.attendees();
       return OptionalText(std::to_string(attendees ? attendees->size() : 0));
     }},
    {"isallday", [](const CalEvent& event) { return booleanText(event.isAllDay()); }},
    {"isdetached", [](const CalEvent& event) { return booleanText(event.isDetached()); }},
    {"isrecurring", [](const CalEvent& event) { return booleanText(event.recurrenceRule() != nullptr); }},
    {"location", [](const CalEvent& event) { return event.location(); }},
    {"hasattendees", [](const CalEvent& event) { return booleanText(event.attendees().has_value()); }},
};

constexpr PropertySetter<CalEvent> kEventSetters[] = {
    {"startdate", [](CalEvent& event, const PropertyValue& value) { event.setStartDate(dateOf(value)); }},
    {"enddate", [](CalEvent& event, const PropertyValue& value) { event.setEndDate(dateOf(value)); }},
    {"isallday", [](CalEvent& event, const PropertyValue& value) { event.setIsAllDay(isTrueText(textOf(value))); }},
    {"location", [](CalEvent& event, const PropertyValue& value) { event.setLocation(textOf(value)); }},
};

}  // namespace

std::int32_t iCalFunctions::fetchEventsWithStartDate(std::optional<Date> start, std::optional<Date> end,
                                                     const OptionalText& uid, const OptionalText& calendars) {
  return catchingExceptions(lastErrorString, std::int32_t{-1}, [&] {
    releaseItems();
    const auto array = calendarsToFetchFrom(calendars);
    if (!array) { return -1; }
    const Date from = start.value_or(distantPast());
    const Date to = end.value_or(distantFuture());
    m_eventPredicate = uid ? store()->eventPredicateWithStartDate(from, to, *uid, *array)
                           : store()->eventPredicateWithStartDate(from, to, *array);
    return m_eventPredicate ? 0 : failWith(kEventPredicateNotCreated);
  });
}

std::int32_t iCalFunctions::openEventWithUID(const OptionalText& uid, std::optional<Date> occurrence) {
  return catchingExceptions(lastErrorString, std::int32_t{-1}, [&] {
    releaseItems();
    m_event = store()->eventWithUID(uid.value_or(""), occurrence);
    return m_event ? 0 : failWith(kItemNotFound);
  });
}

std::int32_t iCalFunctions::openEventAt(std::int32_t index) {
  if (!m_eventPredicate) { return failWith(kInvalidCallOrder); }
  m_calendar.reset();
  m_alarm.reset();
  m_attendee.reset();
  m_recurrenceend.reset();
  m_recurrencerule.reset();
  m_task.reset();
  m_event.reset();
  return openItemAt(index, store()->eventsWithPredicate(m_eventPredicate), m_event);
}

std::int32_t iCalFunctions::setEventProp(const OptionalText& property, const PropertyValue& value) {
  if (!m_event) { return failWith(kInvalidCallOrder); }
  if (!property) { return failWith(kMissingArgument); }
  const auto word = lowercase(*property);
  if (const auto* setter = rowFor(kEventSetters, word)) {
    setter->set(*m_event, value);
  } else {
    // Whatever it reports, the result is 0; its code stays.
    setCalendarItemProp(word, value, m_event.get());
  }
  return 0;
}

OptionalText iCalFunctions::getEventAttribute(const OptionalText& property, std::int32_t, const OptionalText&) {
  if (!m_event) { return noneWith(kInvalidCallOrder); }
  if (!property) { return noneWith(kMissingArgument); }
  if (const auto* getter = rowForAnyCase(kEventGetters, *property)) { return getter->read(*m_event); }
  return getCalendarItemAttribute(property, m_event.get());
}

}  // namespace orlocal
