#include "accounts/dav/trouble.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <string>
#include <system_error>

#include <fmt/format.h>

#include "accounts/dav/multistatus.h"
#include "accounts/transport/url.h"
#include "base/civil_date.h"
#include "base/text.h"
#include "base/translation.h"

namespace orlocal::accounts {
namespace {

struct ConditionMeaning {
  XmlName name;
  Trouble trouble;
};
constexpr ConditionMeaning kConditions[] = {
    // RFC 6578, 3.2
    {{XmlSpace::kDav, "valid-sync-token"}, Trouble::kInvalidToken},
    {{XmlSpace::kDav, "number-of-matches-within-limits"}, Trouble::kTooLarge},
    {{XmlSpace::kDav, "sync-traversal-supported"}, Trouble::kUnsupported},
    // RFC 3253, 3.6; RFC 3744, 7.1.1; RFC 4918, 16; RFC 4331, 6
    {{XmlSpace::kDav, "supported-report"}, Trouble::kUnsupported},
    {{XmlSpace::kDav, "need-privileges"}, Trouble::kForbidden},
    {{XmlSpace::kDav, "cannot-modify-protected-property"}, Trouble::kForbidden},
    {{XmlSpace::kDav, "resource-must-be-null"}, Trouble::kClash},
    {{XmlSpace::kDav, "lock-token-submitted"}, Trouble::kLocked},
    {{XmlSpace::kDav, "no-conflicting-lock"}, Trouble::kLocked},
    {{XmlSpace::kDav, "quota-not-exceeded"}, Trouble::kFull},
    {{XmlSpace::kDav, "sufficient-disk-space"}, Trouble::kFull},
    // RFC 4791, 5.3.1.1 and 5.3.2.1
    {{XmlSpace::kCalDav, "no-uid-conflict"}, Trouble::kClash},
    {{XmlSpace::kCalDav, "max-resource-size"}, Trouble::kTooLarge},
    {{XmlSpace::kCalDav, "valid-calendar-data"}, Trouble::kRefused},
    {{XmlSpace::kCalDav, "valid-calendar-object-resource"}, Trouble::kRefused},
    {{XmlSpace::kCalDav, "supported-calendar-data"}, Trouble::kRefused},
    {{XmlSpace::kCalDav, "supported-calendar-component"}, Trouble::kRefused},
    {{XmlSpace::kCalDav, "min-date-time"}, Trouble::kRefused},
    {{XmlSpace::kCalDav, "max-date-time"}, Trouble::kRefused},
    {{XmlSpace::kCalDav, "max-instances"}, Trouble::kRefused},
    {{XmlSpace::kCalDav, "max-attendees-per-instance"}, Trouble::kRefused},
    {{XmlSpace::kCalDav, "calendar-collection-location-ok"}, Trouble::kRefused},
    {{XmlSpace::kCalDav, "initialize-calendar-collection"}, Trouble::kRefused},
    // RFC 6638, 3.2.4
    {{XmlSpace::kCalDav, "unique-scheduling-object-resource"}, Trouble::kClash},
    {{XmlSpace::kCalDav, "same-organizer-in-all-components"}, Trouble::kRefused},
    {{XmlSpace::kCalDav, "allowed-organizer-scheduling-object-change"}, Trouble::kRefused},
    {{XmlSpace::kCalDav, "allowed-attendee-scheduling-object-change"}, Trouble::kRefused},
};

struct StatusMeaning {
  int status;
  Trouble trouble;
};
constexpr StatusMeaning kStatuses[] = {
    {400, Trouble::kRefused},      {401, Trouble::kUnauthorized}, {403, Trouble::kForbidden}, {404, Trouble::kNotFound},
    {405, Trouble::kUnsupported},  {408, Trouble::kLater},        {409, Trouble::kClash},     {410, Trouble::kNotFound},
    {412, Trouble::kPrecondition}, {413, Trouble::kTooLarge},     {423, Trouble::kLocked},    {429, Trouble::kLater},
    {501, Trouble::kUnsupported},  {503, Trouble::kLater},        {507, Trouble::kFull},
};

struct TroubleWords {
  Trouble trouble;
  const char* words;
};
constexpr TroubleWords kWords[] = {
    {Trouble::kUnauthorized, translatable("the user's name or password is not taken")},
    {Trouble::kForbidden, translatable("the server forbids it")},
    {Trouble::kNotFound, translatable("it is not there")},
    {Trouble::kClash, translatable("something with that identifier or name is there already")},
    {Trouble::kPrecondition, translatable("it was changed on the server meanwhile")},
    {Trouble::kLocked, translatable("somebody has locked it")},
    {Trouble::kTooLarge, translatable("it is more than the server takes or gives")},
    {Trouble::kRefused, translatable("the server does not take the content")},
    {Trouble::kLater, translatable("the server has no time now")},
    {Trouble::kFull, translatable("the server has no room left")},
    {Trouble::kInvalidToken, translatable("the server no longer knows what was synced last")},
    {Trouble::kUnsupported, translatable("the server cannot do that")},
    {Trouble::kServerError, translatable("the server failed")},
    {Trouble::kNonsense, translatable("the answer is none to what was asked")},
};

template <class Table, class Matches>
auto foundIn(const Table& table, Matches matches) {
  const auto* found = std::find_if(std::begin(table), std::end(table), matches);
  return found == std::end(table) ? nullptr : found;
}

const ConditionMeaning* meaningIn(std::span<const XmlElement> conditions) {
  for (const XmlElement& condition : conditions) {
    const auto* known = foundIn(kConditions, [&](const ConditionMeaning& one) { return condition.is(one.name); });
    if (known != nullptr) { return known; }
  }
  return nullptr;
}

/// "Sun, 06 Nov 1994 08:49:37 GMT"; the two obsolete forms are written by nobody.
std::optional<store::Moment> httpDate(std::string_view text) {
  constexpr std::string_view kMonths = "JanFebMarAprMayJunJulAugSepOctNovDec";
  const std::string words(text);
  std::array<char, 4> month{};
  CivilDateTime at;
  int year = 0;
  const int read = std::sscanf(words.c_str(), "%*3[A-Za-z], %2d %3[A-Za-z] %4d %2d:%2d:%2d GMT", &at.date.day,
                               month.data(), &year, &at.hour, &at.minute, &at.second);
  const std::size_t place = kMonths.find(month.data());
  constexpr int kParts = 6;
  if (read != kParts || place == kMonths.npos || place % 3 != 0) { return std::nullopt; }
  at.date = {year, static_cast<int>(place / 3) + 1, at.date.day};
  if (at.date.day < 1 || at.date.day > monthLength(year, at.date.month)) { return std::nullopt; }
  return store::Moment(std::chrono::days(dayNumberOf(at.date)) + std::chrono::hours(at.hour) +
                       std::chrono::minutes(at.minute) + std::chrono::seconds(at.second));
}

}  // namespace

Trouble troubleOf(int status, std::span<const XmlElement> conditions) {
  if (const auto* condition = meaningIn(conditions)) { return condition->trouble; }
  if (const auto* known = foundIn(kStatuses, [&](const StatusMeaning& one) { return one.status == status; })) {
    return known->trouble;
  }
  if (status >= 500) { return Trouble::kServerError; }
  return status >= 400 ? Trouble::kRefused : Trouble::kNonsense;
}

ServerFailure refusalBy(std::string_view url, int status, std::span<const XmlElement> conditions) {
  const Trouble trouble = troubleOf(status, conditions);
  const auto* words = foundIn(kWords, [&](const TroubleWords& one) { return one.trouble == trouble; });
  const auto* condition = meaningIn(conditions);
  return {trouble,
          fmt::format("{}: {} ({}{}{}).", shownUrl(url), translated(words->words), status,
                      condition == nullptr ? "" : ", ", condition == nullptr ? "" : condition->name.local),
          status, std::nullopt};
}

ServerFailure refusalIn(const HttpResponse& response, store::Moment now) {
  ServerFailure failure = refusalBy(response.url, response.status, readErrorConditions(response.body));
  if (const auto wait = response.header("Retry-After")) { failure.retryAfter = waitAskedFor(*wait, now); }
  return failure;
}

std::optional<std::chrono::seconds> waitAskedFor(std::string_view retryAfter, store::Moment now) {
  constexpr std::chrono::seconds kMostWait = std::chrono::hours(24);
  const std::string_view words = trimmed(retryAfter);
  if (words.empty()) { return std::nullopt; }
  std::chrono::seconds wait{0};
  if (words.find_first_not_of("0123456789") == words.npos) {
    std::int64_t seconds = 0;
    const auto [end, error] = std::from_chars(words.data(), words.data() + words.size(), seconds);
    wait = error == std::errc() ? std::min(std::chrono::seconds(seconds), kMostWait) : kMostWait;
  } else {
    const std::optional<store::Moment> until = httpDate(words);
    if (!until) { return std::nullopt; }
    wait = std::chrono::ceil<std::chrono::seconds>(*until - now);
  }
  return std::clamp(wait, std::chrono::seconds(0), kMostWait);
}

}  // namespace orlocal::accounts
