#include "backend/error_codes.h"
#include "backend/keyword_table.h"
#include "backend/legacy/attributes.h"
#include "backend/legacy/current_item.h"
#include "backend/legacy/ical_functions.h"
#include "backend/value_texts.h"

namespace orlocal {
namespace {

constexpr Attribute<CalEvent> kAttributes[] = {
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
    {"isallday", [](const CalEvent& event) { return OptionalText(booleanText(event.isAllDay())); }},
    {"isdetached", [](const CalEvent& event) { return OptionalText(booleanText(event.isDetached())); }},
    {"isrecurring", [](const CalEvent& event) { return OptionalText(booleanText(event.recurrenceRule() != nullptr)); }},
    {"location", [](const CalEvent& event) { return event.location(); }},
    {"hasattendees", [](const CalEvent& event) { return OptionalText(booleanText(event.attendees().has_value())); }},
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
  const std::string name = lowercase(*property);
  if (name == "enddate") {
    m_event->setEndDate(dateOf(value));
  } else if (name == "isallday") {
    m_event->setIsAllDay(isTrueText(textOf(value)));
  } else if (name == "location") {
    m_event->setLocation(textOf(value));
  } else if (name == "startdate") {
    m_event->setStartDate(dateOf(value));
  } else {
    setCalendarItemProp(name, value, m_event.get());  // callers look at the code, not at the result
  }
  return 0;
}

OptionalText iCalFunctions::getEventAttribute(const OptionalText& property, std::int32_t, const OptionalText&) {
  if (!m_event) { return noText(kInvalidCallOrder); }
  if (!property) { return noText(kMissingArgument); }
  const std::string name = lowercase(*property);
  if (const auto* own = rowFor(kAttributes, name)) { return own->read(*m_event); }
  return getCalendarItemAttribute(name, m_event.get());
}

}  // namespace orlocal
