#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "accounts/dav/xml.h"

namespace orlocal::accounts {

/// Properties that met the same fate.
struct PropStat {
  int status = 0;
  std::vector<XmlElement> properties;
  std::vector<XmlElement> errors;  ///< the conditions that a refusal names
};

/// What a server says of one resource (RFC 4918, 14.24).
struct DavResponse {
  std::vector<std::string> hrefs;  ///< as written; as a rule one
  int status = 0;                  ///< of the resource; 0 when each property has its own
  std::vector<PropStat> propstats;
  std::vector<XmlElement> errors;

  /// A property that the server gave.
  const XmlElement* property(XmlName name) const;
  /// The first refusal: of the resource, or else of a property; none when all went well.
  std::optional<PropStat> refusal() const;
};

struct Multistatus {
  std::vector<DavResponse> responses;
  std::string syncToken;  ///< RFC 6578, 6.4; empty when there is none
};

/// None for what is no multistatus document.
std::optional<Multistatus> readMultistatus(std::string_view document);
/// The same, but each response goes to `take` when it has been read, so that of a long list none stays; gives the sync
/// token. What was given counts only when there is an answer in the end.
std::optional<std::string> readMultistatus(std::string_view document, const std::function<void(DavResponse)>& take);

/// The conditions in an error body (RFC 4918, 16); empty for any other body.
std::vector<XmlElement> readErrorConditions(std::string_view document);

/// "HTTP/1.1 404 Not Found" is 404; 0 for what is no status line.
int statusOf(std::string_view line);

constexpr bool isSuccess(int status) { return status >= 200 && status < 300; }

}  // namespace orlocal::accounts
