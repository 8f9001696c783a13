#pragma once

#include <string>
#include <string_view>

#include "platform/text.h"

namespace orlocal {

/// A stored URL as the platform's URL objects tell it: what may not stand in a URI (RFC 3986) is percent-encoded as
/// UTF-8, escapes that are there stay. A text that cannot be a URL stays as it is.
std::string urlText(std::string_view stored);

inline OptionalText urlText(const OptionalText& stored) {
  return stored ? OptionalText(urlText(std::string_view(*stored))) : std::nullopt;
}

}  // namespace orlocal
