#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "accounts/transport/answer.h"
#include "base/result.h"
#include "store/model/model.h"

// What stands in the texts that the store keeps for accounts and their calendars, as JSON; docs/accounts.md describes
// it.
namespace orlocal::accounts {

/// What the user said of an account. Changed by commands only.
struct AccountSettings {
  enum class Kind : std::uint8_t { kCalDav, kSubscription };
  Kind kind = Kind::kCalDav;
  std::string address;  ///< as it was given, without a password
  std::string user;
  std::string secret;  ///< where the password comes from; see `SecretSource`
  std::string caFile;  ///< empty: the system's certificates
  bool paused = false;
  std::optional<std::chrono::seconds> every;  ///< how often it is looked at; none: as the server or we think fit

  std::string text() const;
  static Result<AccountSettings> ofText(std::string_view text);
};

/// Whether a server was seen to keep the condition of a write.
enum class Keeps : std::uint8_t { kUnknown = 0, kYes = 1, kNo = 2 };

/// What was found out of an account. Changed by each sync.
struct AccountState {
  std::string principal;
  std::vector<std::string> homes;
  bool schedules = false;
  Keeps writeConditions = Keeps::kUnknown;   ///< If-Match of PUT
  Keeps removeConditions = Keeps::kUnknown;  ///< If-Match of DELETE
  std::optional<store::Moment> lastTry, lastSuccess;
  std::string failure;                     ///< of the last try; empty when it went well
  std::optional<Trouble> trouble;          ///< of what kind it was
  int failures = 0;                        ///< tries in a row that failed
  std::optional<store::Moment> notBefore;  ///< the next try, where the server asked for patience
  /// Of a subscription: what the server said of the text that was taken in last.
  std::string etag, lastModified;
  std::optional<std::chrono::seconds> wishedInterval;

  std::string text() const;
  static Result<AccountState> ofText(std::string_view text);
};

/// What both sides agreed on last of a calendar itself.
struct AgreedCalendar {
  std::string title;
  std::optional<store::Rgb> color;
  std::int64_t order = 0;

  friend bool operator==(const AgreedCalendar&, const AgreedCalendar&) = default;
};

/// What both sides agree on when the server has taken the calendar as it stands here.
inline AgreedCalendar agreedOn(const store::Calendar& calendar) {
  return {calendar.title, calendar.color, calendar.order};
}

struct MirrorState {
  AgreedCalendar agreed;
  std::string token;  ///< of sync-collection; empty when there is none
  std::string ctag;   ///< where there is no token
  /// When token and ctag were learned. A server that counts in seconds gives the same token to two states of one
  /// second.
  std::optional<store::Moment> asOf;
  bool settled = false;  ///< whether the server was asked once more, later than that second
  bool unmade = false;   ///< the server was or is to make it, and was not seen to have it
  bool writable = true;
  bool rightsKnown = false;  ///< whether the server says what is allowed; else the first refusal does
  std::string trouble;       ///< why its content could not be brought here; empty when it went well

  std::string text() const;
  static Result<MirrorState> ofText(std::string_view text);
};

}  // namespace orlocal::accounts
