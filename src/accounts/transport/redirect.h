#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "accounts/transport/http.h"

namespace orlocal::accounts {

/// Where an answer sends whoever asked `url` in that way: none when it sends nobody, `kUntrusted` when it leads where
/// we do not go, which is to anything but http and https, and from https to http.
Answer<std::optional<std::string>> redirectOf(const std::string& url, std::string_view method,
                                              const HttpResponse& response);

}  // namespace orlocal::accounts
