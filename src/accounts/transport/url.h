#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orlocal::accounts {

/// "https://host:port" in lower case, the scheme's own port left out; none for what is no http or https address.
std::optional<std::string> originOf(std::string_view url);
/// The path with what follows it, "/" when empty; as written.
std::string_view pathOf(std::string_view url);
/// Without user, password and fragment.
std::string withoutUser(std::string_view url);
/// For people: without user, query and fragment.
std::string shownUrl(std::string_view url);

/// What a server called `reference` in the answer from `base` (RFC 3986, 5.2): an absolute URL, as it was written
/// otherwise, so that it can be sent back as it came.
std::string resolved(std::string_view base, std::string_view reference);

/// One spelling for all ways in which servers write a path: decoded segment by segment and encoded again ("%40" is "@",
/// "%2b" is "+"), without the trailing slash, "." and "..". A slash that was encoded stays so.
std::string comparablePath(std::string_view urlOrPath);

/// A path segment with everything but unreserved characters encoded.
std::string encodedSegment(std::string_view segment);

}  // namespace orlocal::accounts
