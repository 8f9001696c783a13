#pragma once

#include <chrono>
#include <optional>
#include <span>
#include <string_view>

#include "accounts/dav/xml.h"
#include "accounts/transport/answer.h"
#include "accounts/transport/http.h"
#include "store/time/time.h"

namespace orlocal::accounts {

/// What a refusal means: by the condition that it names (RFC 4918, 16), else by its status.
Trouble troubleOf(int status, std::span<const XmlElement> conditions);

/// A refusal as a failure: "https://host/path: the server forbids it (403, need-privileges)."
ServerFailure refusalBy(std::string_view url, int status, std::span<const XmlElement> conditions);

/// The same of an answer that is one, with how long the server wants to be left alone.
ServerFailure refusalIn(const HttpResponse& response, store::Moment now);

/// Retry-After: seconds, or a date (RFC 9110, 10.2.3 and 5.6.7), at most a day; none for anything else.
std::optional<std::chrono::seconds> waitAskedFor(std::string_view retryAfter, store::Moment now);

}  // namespace orlocal::accounts
