#include "platform/linux/eventkit_participant.h"

#include <string_view>

#include "platform/linux/url_text.h"
#include "platform/text.h"
#include "store/icalendar/content_line.h"

namespace orlocal {

OptionalText ParticipantObject::url() const {
  return m_attendee.address.empty() ? std::nullopt : OptionalText(urlText(std::string_view(m_attendee.address)));
}

std::vector<std::string> ParticipantObject::emailAddresses() const {
  std::vector<std::string> addresses;
  // RFC 7986, 6.2: written for address books, when the calendar address itself would tell them nothing.
  const store::ContentLine line{.name = {}, .parameters = m_attendee.extra, .value = {}, .text = {}};
  if (auto email = line.parameter("EMAIL"); email && !email->empty()) { addresses.push_back(*std::move(email)); }
  constexpr std::string_view kScheme = "mailto:";
  const std::string_view address = m_attendee.address;
  if (lowercase(address.substr(0, kScheme.size())) == kScheme) {
    addresses.emplace_back(address.substr(kScheme.size()));
  } else if (address.find('@') != std::string_view::npos && address.find(':') == std::string_view::npos) {
    // Some calendars write the bare address.
    addresses.push_back(m_attendee.address);
  }
  return addresses;
}

bool isInvited(const store::Attendee& attendee) {
  return !attendee.organizer || attendee.role != store::Attendee::Role::kUnknown ||
         attendee.status != store::Attendee::Status::kUnknown || attendee.type != store::Attendee::Type::kUnknown;
}

}  // namespace orlocal
