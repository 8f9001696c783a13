#include "host/commands/words/day_range.h"

#include <string>

#include "base/text.h"
#include "host/commands/words/day_words.h"

namespace orlocal::host {
namespace {

/// By `cctz::weekday`.
constexpr std::string_view kWeekDays[] = {"monday", "tuesday", "wednesday", "thursday", "friday", "saturday", "sunday"};

bool names(std::string_view words, std::string_view day) {
  constexpr std::size_t kShort = 3;
  return equalsNoCase(words, day) || equalsNoCase(words, day.substr(0, kShort));
}

}  // namespace

std::optional<DayRange> daysFromWords(std::string_view words, store::LocalDay today) {
  if (const auto day = dayFromWords(words, today)) { return DayRange{*day, *day}; }
  for (int each = 0; each < 7; ++each) {
    if (!names(words, kWeekDays[each])) { continue; }
    const int ahead = (each - static_cast<int>(cctz::get_weekday(today)) + 7) % 7;
    return DayRange{today + ahead, today + ahead};
  }
  constexpr std::size_t kMonthLength = 7;  // "2026-11"
  if (words.size() != kMonthLength) { return std::nullopt; }
  const auto first = dayFromWords(std::string(words) + "-01", today);
  if (!first) { return std::nullopt; }
  return DayRange{*first, store::LocalDay(cctz::civil_month(*first) + 1) - 1};
}

}  // namespace orlocal::host
