#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace orlocal::accounts {

/// "https://host:port" in lower case, the scheme's own port left out; none for what is no http or https address.
std::optional<std::string> originOf(std::string_view url);
/// "host" of "https://host:port", in lower case, an IPv6 address without its brackets; empty for what is no address.
std::string hostOf(std::string_view url);
/// The host is this machine, by the names that no resolver is asked for.
bool isLoopback(std::string_view url);
/// The path with its query, as written; "/" when both are empty.
std::string_view pathOf(std::string_view url);
/// Without user, password and fragment.
std::string withoutUser(std::string_view url);
/// For people: without user, query and fragment.
std::string shownUrl(std::string_view url);

/// What a server called `reference` in the answer from `base` (RFC 3986, 5.2): an absolute URL without user, as it was
/// written otherwise, so that it can be sent back as it came. Only what begins with http:// or https:// is absolute:
/// names with a colon in them come unescaped. For the same reason a "#" belongs to the name, and comes out encoded.
std::string resolved(std::string_view base, std::string_view reference);
/// The same for what an answer lists: what a host that was asked over https names as its own over http is meant over
/// https. A server that has another speak TLS for it does not know better.
std::string listedUrl(std::string_view base, std::string_view reference);

/// One spelling for all ways in which servers write a path: decoded segment by segment and encoded again ("%40" is "@",
/// "%2b" is "+"), without slash at the end, empty segments, "." and "..". A slash that was encoded stays so; a query
/// counts as part of the last segment, since names with a question mark come unescaped, too.
std::string comparablePath(std::string_view urlOrPath);

/// A path segment with everything but unreserved characters encoded.
std::string encodedSegment(std::string_view segment);
/// "%41" is "A"; a "%" that begins no escape stays.
std::string decoded(std::string_view text);
/// The address with those characters encoded that none may have: blanks, controls, quotes, bytes beyond ASCII.
std::string sendable(std::string_view url);

}  // namespace orlocal::accounts
