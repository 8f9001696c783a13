#include "backend/error_codes.h"
#include "backend/keyword_table.h"
#include "backend/legacy/current_item.h"
#include "backend/legacy/ical_functions.h"
#include "backend/property_tables.h"

namespace orlocal {
namespace {

constexpr PropertyGetter<const CalAttendee&> kAttendeeGetters[] = {
    {"address", [](const CalAttendee& attendee) { return attendee.address(); }},
    {"commonname", [](const CalAttendee& attendee) { return attendee.commonName(); }},
    {"status", [](const CalAttendee& attendee) { return attendee.status(); }},
};

}  // namespace

std::int32_t iCalFunctions::openAttendeeAt(std::int32_t index) {
  if (!m_event) { return failWith(kInvalidCallOrder); }
  m_attendee.reset();
  return openItemAt(index, m_event->attendees().value_or(std::vector<std::shared_ptr<CalAttendee>>()), m_attendee);
}

OptionalText iCalFunctions::getAttendeeAttribute(const OptionalText& property, std::int32_t, const OptionalText&) {
  if (!m_attendee) { return noneWith(kInvalidCallOrder); }
  if (!property) { return noneWith(kMissingArgument); }
  const auto* getter = rowForAnyCase(kAttendeeGetters, *property);
  return getter != nullptr ? getter->read(*m_attendee) : noneWith(kInvalidArgument);
}

OptionalText iCalFunctions::getEventAttendeeAttribute(const OptionalText& property, std::int32_t atIndex) {
  return getAttendeeAttribute(property, atIndex, std::nullopt);
}

}  // namespace orlocal
