#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "store/model/model.h"

// Who is who in an invitation.
namespace orlocal::store {

/// "mailto:" is taken off, whatever its case; other addresses stay.
std::string_view withoutMailto(std::string_view address);

/// Calendar addresses are compared without case.
bool isSameAddress(std::string_view left, std::string_view right);

/// Null when nobody is named as its organiser.
const Attendee* organizerOf(const Item& item);

/// Who is invited under the address; the organizer's own entry is none. Null when nobody is.
const Attendee* invitedAs(const Item& item, std::string_view address);
Attendee* invitedAs(Item& item, std::string_view address);

/// A parameter of an attendee that no field holds: "DELEGATED-TO", …
std::optional<std::string> parameterOf(const Attendee& attendee, std::string_view name);
/// Sets it, or (none) takes it away.
void setParameter(Attendee& attendee, std::string_view name, const std::optional<std::string>& value);

}  // namespace orlocal::store
