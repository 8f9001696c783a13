#include "store/invitations/people.h"

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "store/icalendar/content_line.h"

namespace orlocal::store {

std::string_view withoutMailto(std::string_view address) {
  constexpr std::string_view kScheme = "mailto:";
  if (equalsNoCase(address.substr(0, kScheme.size()), kScheme)) { address.remove_prefix(kScheme.size()); }
  return trimmed(address);
}

bool isSameAddress(std::string_view left, std::string_view right) {
  return equalsNoCase(withoutMailto(left), withoutMailto(right));
}

const Attendee* organizerOf(const Item& item) {
  const auto found = std::ranges::find(item.attendees, true, &Attendee::organizer);
  return found == item.attendees.end() ? nullptr : &*found;
}

const Attendee* invitedAs(const Item& item, std::string_view address) {
  if (withoutMailto(address).empty()) { return nullptr; }
  const auto found = std::ranges::find_if(item.attendees, [&](const Attendee& attendee) {
    return !attendee.organizer && (isSameAddress(attendee.address, address) ||
                                   isSameAddress(parameterOf(attendee, "EMAIL").value_or(""), address));
  });
  return found == item.attendees.end() ? nullptr : &*found;
}

Attendee* invitedAs(Item& item, std::string_view address) {
  const Attendee* found = invitedAs(std::as_const(item), address);
  return found == nullptr ? nullptr : &item.attendees[static_cast<std::size_t>(found - item.attendees.data())];
}

std::optional<std::string> parameterOf(const Attendee& attendee, std::string_view name) {
  const ContentLine line{.name = {}, .parameters = attendee.extra, .value = {}, .text = {}};
  return line.parameter(name);
}

void setParameter(Attendee& attendee, std::string_view name, const std::optional<std::string>& value) {
  std::string others;
  std::string_view rest = attendee.extra;
  for (ContentParameter parameter; nextParameter(rest, parameter);) {
    if (!equalsNoCase(parameter.name, name)) { others += parameter.text; }
  }
  if (value) { others.append(";").append(name).append("=").append(parameterText(*value)); }
  attendee.extra = std::move(others);
}

}  // namespace orlocal::store
