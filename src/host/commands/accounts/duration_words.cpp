#include "host/commands/accounts/duration_words.h"

#include <charconv>
#include <cstdint>
#include <iterator>

#include <fmt/format.h>

#include "base/translation.h"

namespace orlocal::host {
namespace {

constexpr struct {
  char letter;
  std::chrono::seconds length;
} kUnits[] = {{'s', std::chrono::seconds(1)},
              {'m', std::chrono::minutes(1)},
              {'h', std::chrono::hours(1)},
              {'d', std::chrono::hours(24)},
              {'w', std::chrono::hours(24 * 7)}};
constexpr std::chrono::seconds kShortest = std::chrono::minutes(1);
constexpr std::chrono::seconds kLongest = std::chrono::hours(24 * 366);

}  // namespace

std::optional<std::chrono::seconds> durationOf(std::string_view words) {
  std::int64_t count = 0;
  const auto [end, error] = std::from_chars(words.data(), words.data() + words.size(), count);
  if (error != std::errc() || end + 1 != words.data() + words.size() || count < 1) { return std::nullopt; }
  for (const auto& unit : kUnits) {
    if (unit.letter != *end || count > kLongest / unit.length) { continue; }
    const std::chrono::seconds length = unit.length * count;
    return length >= kShortest ? std::optional(length) : std::nullopt;
  }
  return std::nullopt;
}

std::string objectionToDuration(const std::string& words) {
  if (durationOf(words)) { return {}; }
  return tr("\"{}\" is no length of time from a minute to a year; write 30m, 6h or 1d", words);
}

std::string durationText(std::chrono::seconds length) {
  const auto* unit = std::prev(std::end(kUnits));
  while (unit != std::begin(kUnits) && length % unit->length != std::chrono::seconds(0)) { --unit; }
  return fmt::format("{}{}", length / unit->length, unit->letter);
}

}  // namespace orlocal::host
