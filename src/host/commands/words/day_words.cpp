#include "host/commands/words/day_words.h"

#include <charconv>
#include <cstdlib>

#include <fmt/format.h>

#include "host/commands/words/date_names.h"

namespace orlocal::host {
namespace {

struct NamedDay {
  std::string_view word;
  int fromToday;
};
constexpr NamedDay kNamedDays[] = {{"today", 0}, {"tomorrow", 1}, {"yesterday", -1}};

std::optional<int> number(std::string_view digits) {
  int value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error != std::errc() || end != digits.data() + digits.size()) { return std::nullopt; }
  return value;
}

}  // namespace

std::optional<store::LocalDay> dayFromWords(std::string_view words, store::LocalDay today) {
  for (const NamedDay& named : kNamedDays) {
    if (words == named.word) { return today + named.fromToday; }
  }
  constexpr int kFarthest = 1'000'000;
  if (words.size() > 1 && (words.front() == '+' || words.front() == '-')) {
    const auto days = number(words.substr(1));
    if (!days || *days < 0 || *days > kFarthest) { return std::nullopt; }
    return today + (words.front() == '-' ? -*days : *days);
  }
  if (words.size() != 10 || words[4] != '-' || words[7] != '-') { return std::nullopt; }
  const auto year = number(words.substr(0, 4));
  const auto month = number(words.substr(5, 2));
  const auto day = number(words.substr(8, 2));
  if (!year || !month || !day || *year < 1) { return std::nullopt; }
  const store::LocalDay read(*year, *month, *day);
  // Parts that overflow would roll over into another month.
  if (read.month() != *month || read.day() != *day) { return std::nullopt; }
  return read;
}

std::string isoDay(store::LocalDay day) { return fmt::format("{:04}-{:02}-{:02}", day.year(), day.month(), day.day()); }

std::string longDay(store::LocalDay day) { return DateNames::ofUser().longDay(day); }

std::string shortDay(store::LocalDay day) { return DateNames::ofUser().shortDay(day); }

std::string isoMoment(store::Moment moment, const store::Zone& zone) {
  const store::LocalTime local = zone.toLocal(moment);
  const int offset = zone.offsetSeconds(moment) / 60;
  return fmt::format("{}T{:02}:{:02}:{:02}{}{:02}:{:02}", isoDay(store::LocalDay(local)), local.hour(), local.minute(),
                     local.second(), offset < 0 ? '-' : '+', std::abs(offset) / 60, std::abs(offset) % 60);
}

std::string clockTime(store::LocalTime time) { return fmt::format("{:02}:{:02}", time.hour(), time.minute()); }

}  // namespace orlocal::host
