#pragma once

#include <string_view>

#include "accounts/transport/http.h"

namespace orlocal::accounts {

/// Whether a 401 offers that scheme (RFC 9110, 11.6.1), its name in any case.
bool offers(const HttpResponse& response, std::string_view scheme);

}  // namespace orlocal::accounts
