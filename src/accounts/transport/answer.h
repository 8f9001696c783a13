#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>

#include <tl/expected.hpp>

namespace orlocal::accounts {

/// Why a server did not do what it was asked, as far as somebody can act on it. After a write, `kAnswerLost`,
/// `kInterrupted`, `kTooLarge` without a status, `kNonsense` and `kServerError` leave open whether it was done all the
/// same.
enum class Trouble : std::uint8_t {
  kUnreachable,   ///< no connection came about: name, network, refused, time; nothing was done
  kAnswerLost,    ///< the connection broke after the request went out: it may have been done or not
  kUntrusted,     ///< the certificate does not hold, or the redirect leads where we do not go
  kUnauthorized,  ///< 401: the password is not taken
  kForbidden,     ///< 403: this user may not
  kNotFound,      ///< 404, 410
  kClash,         ///< 409, 403 or 412 of a server where something with that UID or name is already
  kPrecondition,  ///< 412: it is not as we knew it
  kLocked,        ///< 423
  kTooLarge,      ///< 413, or more than we take
  kRefused,       ///< the content is not taken: 400, 415, 422, 403 valid-calendar-data and their like
  kLater,         ///< 429, 503: ask again, after `retryAfter` where it says so
  kFull,          ///< 507 to a write: there is no room left
  kInvalidToken,  ///< the sync token is none (any more)
  kUnsupported,   ///< 405, 501, or a report that the server does not have
  kServerError,   ///< any other 5xx
  kNonsense,      ///< what came is no answer to what was asked
  kInterrupted,   ///< the user has had enough
  kNoSecret,      ///< the password is not to be had; no request was made
  kStore,         ///< the store on this side cannot be read or written
};

/// What went wrong with one request. The sentence names host and path and never a password, a token or a query.
struct ServerFailure {
  Trouble trouble = Trouble::kNonsense;
  std::string message;
  int status = 0;                                  ///< of HTTP; 0 when there was none
  std::optional<std::chrono::seconds> retryAfter;  ///< what the server asked for, at most a day
};

template <class T>
using Answer = tl::expected<T, ServerFailure>;
using Refusal = tl::unexpected<ServerFailure>;

inline Refusal refusal(Trouble trouble, std::string message, int status = 0) {
  return Refusal(ServerFailure{trouble, std::move(message), status, std::nullopt});
}

}  // namespace orlocal::accounts
