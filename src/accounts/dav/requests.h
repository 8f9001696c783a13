#pragma once

#include <span>
#include <string>
#include <string_view>

#include "accounts/dav/calendar_server.h"
#include "accounts/dav/xml.h"

// The bodies of requests.
namespace orlocal::accounts {

/// RFC 4918, 9.1.
std::string propFindBody(std::span<const XmlName> properties);
/// RFC 6578, 3.2, for ETags; an empty token asks for everything.
std::string syncCollectionBody(std::string_view token);
/// RFC 4791, 7.9, for ETags and texts.
std::string multigetBody(std::span<const std::string> hrefs);
/// RFC 4791, 5.3.1.
std::string mkCalendarBody(const NewCalendar& calendar);
/// RFC 4918, 9.2, of one property.
std::string propPatchBody(XmlName property, std::string_view value);

/// "#RRGGBBAA", as servers keep the colours of calendars.
std::string davColor(const store::Rgb& color);

}  // namespace orlocal::accounts
