#include "host/commands/words/day_range.h"

#include <string>

#include "host/commands/words/day_words.h"
#include "host/commands/words/time_words.h"

namespace orlocal::host {
namespace {

/// "2026-11", "november", "nov 2027".
std::optional<store::LocalDay> firstOfMonth(std::string_view text, const WordsSetting& setting) {
  constexpr std::size_t kMonthLength = 7;  // "2026-11"
  if (text.size() == kMonthLength) {
    if (const auto first = dayFromWords(std::string(text) + "-01", setting.today())) { return first; }
  }
  WordCursor words(text, setting);
  const auto month = words.take(Term::kMonth);
  if (!month) { return std::nullopt; }
  int year = static_cast<int>(setting.today().year());
  constexpr std::size_t kYearLength = 4;
  if (const auto named = wholeNumber(words.next()); named && words.next().size() == kYearLength) {
    year = *named;
    words.take();
  }
  if (!words.done()) { return std::nullopt; }
  return store::LocalDay(year, *month, 1);
}

}  // namespace

std::optional<DayRange> daysFromWords(std::string_view words, store::LocalDay today) {
  const WordsSetting setting = settingOfUser(store::LocalTime(today));
  if (const auto first = firstOfMonth(words, setting)) {
    return DayRange{*first, store::LocalDay(cctz::civil_month(*first) + 1) - 1};
  }
  if (const auto day = readDay(words, setting)) { return DayRange{*day, *day}; }
  return std::nullopt;
}

std::string objectionToDays(const std::string& words) {
  if (daysFromWords(words, store::LocalDay())) { return {}; }
  return "\"" + words + "\" is no day; write 2026-11-02, 2026-11, today, tomorrow, monday or +7";
}

std::string objectionToDay(const std::string& words) {
  const auto days = daysFromWords(words, store::LocalDay());
  if (days && days->first == days->last) { return {}; }
  return "\"" + words + "\" is no day; write 2026-11-02, today, tomorrow, monday or +7";
}

}  // namespace orlocal::host
