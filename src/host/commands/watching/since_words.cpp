#include "host/commands/watching/since_words.h"

#include <charconv>
#include <chrono>

#include "host/commands/words/day_range.h"

namespace orlocal::host {
namespace {

using store::LocalDay;
using store::LocalTime;

struct Unit {
  char letter;
  std::chrono::seconds length;
};
constexpr Unit kUnits[] = {{'s', std::chrono::seconds(1)},
                           {'m', std::chrono::minutes(1)},
                           {'h', std::chrono::hours(1)},
                           {'d', std::chrono::days(1)},
                           {'w', std::chrono::weeks(1)}};

std::optional<std::int64_t> numberIn(std::string_view digits) {
  constexpr std::int64_t kHighest = 1'000'000'000;
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  const bool whole = error == std::errc() && end == digits.data() + digits.size();
  return whole && value >= 0 && value <= kHighest ? std::optional(value) : std::nullopt;
}

/// "08:00".
std::optional<int> minutesIn(std::string_view words) {
  if (words.size() != 5 || words[2] != ':') { return std::nullopt; }
  const auto hour = numberIn(words.substr(0, 2)), minute = numberIn(words.substr(3));
  if (!hour || !minute || *hour > 23 || *minute > 59) { return std::nullopt; }
  return static_cast<int>(*hour * 60 + *minute);
}

}  // namespace

std::optional<Since> sinceFromWords(std::string_view words, store::Moment now, const store::Zone& viewer) {
  if (const auto row = numberIn(words)) { return *row; }
  if (const auto moment = store::parseMoment(words)) { return *moment; }
  for (const Unit& unit : kUnits) {
    if (!words.ends_with(unit.letter)) { continue; }
    if (const auto count = numberIn(words.substr(0, words.size() - 1))) { return now - *count * unit.length; }
  }
  const LocalDay today(viewer.toLocal(now));
  const auto blank = words.find(' ');
  const auto days = daysFromWords(words.substr(0, blank), today);
  if (!days) { return std::nullopt; }
  const auto minutes = blank == std::string_view::npos ? 0 : minutesIn(words.substr(blank + 1));
  if (!minutes) { return std::nullopt; }
  return viewer.toMoment(LocalTime(days->first) + *minutes * 60);
}

}  // namespace orlocal::host
