#include "backend/current_items.h"
#include "backend/eventkit/ical_ek_functions.h"
#include "backend/keyword_table.h"
#include "backend/keywords.h"
#include "backend/property_tables.h"
#include "backend/value_texts.h"

namespace orlocal {
namespace {

OptionalText occurrence(const EKEvent& event) {
  const auto rules = event.recurrenceRules();
  return rules && !rules->empty() ? dateText(event.occurrenceDate()) : std::nullopt;
}

OptionalText timeZoneName(const EKEvent& event) {
  const auto zone = event.timeZone();
  return zone ? OptionalText(zone->abbreviation()) : std::nullopt;
}

OptionalText attendeeCount(const EKEvent& event) {
  const auto attendees = event.attendees();
  return std::to_string(attendees ? attendees->size() : 0);
}

constexpr PropertyGetter<const EKEvent&> kEventGetters[] = {
    {"startdate", [](const EKEvent& event) { return dateText(event.startDate()); }},
    {"enddate", [](const EKEvent& event) { return dateText(event.endDate()); }},
    {"title", [](const EKEvent& event) { return event.title(); }},
    {"location", [](const EKEvent& event) { return event.location(); }},
    {"notes", [](const EKEvent& event) { return event.notes(); }},
    {"url", [](const EKEvent& event) { return event.url(); }},
    {"uid", [](const EKEvent& event) { return event.eventIdentifier(); }},
    {"externaluid", [](const EKEvent& event) { return event.calendarItemExternalIdentifier(); }},
    {"isallday", [](const EKEvent& event) { return booleanText(event.isAllDay()); }},
    {"isdetached", [](const EKEvent& event) { return booleanText(event.isDetached()); }},
    {"isrecurring", [](const EKEvent& event) { return booleanText(event.recurrenceRules().has_value()); }},
    {"occurrence", occurrence},
    {"modifieddate", [](const EKEvent& event) { return dateText(event.lastModifiedDate()); }},
    {"timezone", timeZoneName},
    {"attendeecount", attendeeCount},
    {"hasattendees", [](const EKEvent& event) { return booleanText(event.attendees().has_value()); }},
    {"hasalarms", [](const EKEvent& event) { return booleanText(event.hasAlarms()); }},
};

constexpr PropertySetter<EKEvent> kEventSetters[] = {
    {"startdate", [](EKEvent& event, const PropertyValue& value) { event.setStartDate(dateOf(value)); }},
    {"enddate", [](EKEvent& event, const PropertyValue& value) { event.setEndDate(dateOf(value)); }},
    {"isallday", [](EKEvent& event, const PropertyValue& value) { event.setAllDay(isTrueText(textOf(value))); }},
    {"location", [](EKEvent& event, const PropertyValue& value) { event.setLocation(textOf(value)); }},
};

}  // namespace

std::int32_t iCalEKFunctions::fetchEventsWithStartDate(std::optional<Date> start, std::optional<Date> end,
                                                       const OptionalText&, const OptionalText& calendars) {
  return catchingExceptions(lastErrorString, -1, [&] {
    releaseItems();
    const auto array = calendarArrayFromString(calendars, "calendar");
    if (g_llasterror != 0) { return -1; }
    if (!array || array->empty()) { return failWith(kCalendarArrayNotCreated); }
    m_ekEventPredicate =
        m_ekEventStore->predicateForEvents(start.value_or(distantPast()), end.value_or(distantFuture()), *array);
    return m_ekEventPredicate ? 0 : failWith(kEventPredicateNotCreated);
  });
}

std::int32_t iCalEKFunctions::openEventWithUID(const OptionalText& uid, std::optional<Date>) {
  return catchingExceptions(lastErrorString, -1, [&] {
    releaseItems();
    if (uid) { m_ekEvent = m_ekEventStore->eventWithIdentifier(*uid); }
    return m_ekEvent ? 0 : failWith(kItemNotFound);
  });
}

std::int32_t iCalEKFunctions::openEventAt(std::int32_t index) {
  if (!m_ekEventPredicate) { return failWith(kNoEventPredicate); }
  m_ekCalendar.reset();
  m_ekAlarm.reset();
  m_ekParticipant.reset();
  m_ekRecurrenceEnd.reset();
  m_ekRecurrenceRule.reset();
  m_ekReminder.reset();
  m_ekEvent.reset();
  const auto events = m_ekEventStore->eventsMatchingPredicate(m_ekEventPredicate);
  if (!events || !isWithin(index, events->count())) { return failWith(kIndexOutOfBounds); }
  m_ekEvent = events->objectAtIndex(static_cast<std::size_t>(index - 1));
  return m_ekEvent ? 0 : failWith(kItemNotFound);
}

std::int32_t iCalEKFunctions::setEventProp(const OptionalText& property, const PropertyValue& value) {
  if (!m_ekEvent) { return failWith(kNoEventToSetProperty); }
  if (!property) { return failWith(kPropertyRequired); }
  const auto word = lowercase(*property);
  if (const auto* setter = rowFor(kEventSetters, word)) {
    setter->set(*m_ekEvent, value);
  } else {
    // Whatever it reports, the result is 0; its code stays.
    setCalendarItemProp(word, value, m_ekEvent.get());
  }
  return 0;
}

OptionalText iCalEKFunctions::getEventAttribute(const OptionalText& property, std::int32_t, const OptionalText&) {
  if (!m_ekEvent) { return noneWith(kNoEventToGetProperty); }
  if (!property) { return noneWith(kPropertyRequired); }
  if (const auto* getter = rowForAnyCase(kEventGetters, *property)) { return getter->read(*m_ekEvent); }
  return getCalendarItemAttribute(property, m_ekEvent.get());
}

}  // namespace orlocal
