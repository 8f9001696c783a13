#include "backend/error_codes.h"
#include "backend/keyword_table.h"
#include "backend/legacy/attributes.h"
#include "backend/legacy/current_item.h"
#include "backend/legacy/ical_functions.h"

namespace orlocal {
namespace {

constexpr Attribute<CalAttendee> kAttributes[] = {
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
  if (!m_attendee) { return noText(kInvalidCallOrder); }
  if (!property) { return noText(kMissingArgument); }
  const auto* row = rowFor(kAttributes, lowercase(*property));
  return row ? row->read(*m_attendee) : noText(kInvalidArgument);
}

OptionalText iCalFunctions::getEventAttendeeAttribute(const OptionalText& property, std::int32_t atIndex) {
  return getAttendeeAttribute(property, atIndex, std::nullopt);
}

}  // namespace orlocal
