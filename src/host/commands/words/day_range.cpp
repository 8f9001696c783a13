#include "host/commands/words/day_range.h"

#include <string>

#include "base/translation.h"
#include "host/commands/words/date_words.h"
#include "host/commands/words/day_words.h"

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
  // Without its year the one that is, or the next to come.
  int year = static_cast<int>(setting.today().year()) + (*month < setting.today().month() ? 1 : 0);
  constexpr std::size_t kYearLength = 4;
  if (const auto named = wholeNumber(words.next()); named && words.next().size() == kYearLength) {
    year = *named;
    words.take();
  }
  if (!words.done()) { return std::nullopt; }
  return store::LocalDay(year, *month, 1);
}

DayRange wholeMonth(cctz::civil_month month) { return {store::LocalDay(month), store::LocalDay(month + 1) - 1}; }

/// "this week", from its Monday on, "next month".
std::optional<DayRange> periodFromWords(std::string_view text, const WordsSetting& setting) {
  constexpr int kDaysInWeek = 7;
  WordCursor words(text, setting);
  const int ahead = words.take(Term::kNext) ? 1 : 0;
  if (ahead == 0 && !words.take(Term::kThis)) { return std::nullopt; }
  const auto unit = words.take(Term::kUnit);
  if (!words.done()) { return std::nullopt; }
  if (unit == static_cast<int>(Unit::kMonth)) { return wholeMonth(cctz::civil_month(setting.today()) + ahead); }
  if (unit != static_cast<int>(Unit::kWeek)) { return std::nullopt; }
  const store::LocalDay monday = cctz::prev_weekday(setting.today() + 1, cctz::weekday::monday) + ahead * kDaysInWeek;
  return DayRange{monday, monday + (kDaysInWeek - 1)};
}

}  // namespace

std::optional<DayRange> daysFromWords(std::string_view words, store::LocalDay today) {
  const WordsSetting setting = settingOfUser(store::LocalTime(today));
  if (const auto first = firstOfMonth(words, setting)) { return wholeMonth(cctz::civil_month(*first)); }
  if (const auto period = periodFromWords(words, setting)) { return period; }
  if (const auto day = readDay(words, setting)) { return DayRange{*day, *day}; }
  return std::nullopt;
}

std::string objectionToDays(const std::string& words) {
  if (daysFromWords(words, store::LocalDay())) { return {}; }
  return tr("\"{}\" is no day; write 2026-11-02, 2026-11, today, tomorrow, monday or +7", words);
}

std::string objectionToDay(const std::string& words) {
  const auto days = daysFromWords(words, store::LocalDay());
  if (days && days->first == days->last) { return {}; }
  return tr("\"{}\" is no day; write 2026-11-02, today, tomorrow, monday or +7", words);
}

}  // namespace orlocal::host
