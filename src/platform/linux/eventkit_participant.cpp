#include "platform/linux/eventkit_participant.h"

#include <string_view>

#include "platform/text.h"

namespace orlocal {

OptionalText ParticipantObject::emailAddress() const {
  constexpr std::string_view kScheme = "mailto:";
  const std::string_view address = m_attendee.address;
  if (lowercase(address.substr(0, kScheme.size())) == kScheme) return std::string(address.substr(kScheme.size()));
  // Some calendars write the bare address.
  if (address.find('@') != std::string_view::npos && address.find(':') == std::string_view::npos) {
    return m_attendee.address;
  }
  return std::nullopt;
}

bool isInvited(const store::Attendee& attendee) {
  return !attendee.organizer || attendee.role != store::Attendee::Role::kUnknown ||
         attendee.status != store::Attendee::Status::kUnknown || attendee.type != store::Attendee::Type::kUnknown;
}

}  // namespace orlocal
