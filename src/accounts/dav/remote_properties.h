#pragma once

#include <span>
#include <string_view>

#include "accounts/dav/calendar_server.h"
#include "accounts/dav/multistatus.h"

namespace orlocal::accounts {

/// What is asked of a calendar.
std::span<const XmlName> calendarProperties(Marks marks);

/// The resource is a calendar (RFC 4791, 5.2).
bool isCalendar(const DavResponse& response);

/// What a server told of it; what it kept to itself stays unknown.
RemoteCalendar calendarOf(const DavResponse& response, std::string url);

/// "-1" is what a calendar without items has on some servers, and nothing else than no token.
std::string usableToken(std::string_view token);

}  // namespace orlocal::accounts
