#include "host/commands/words/repeat_words.h"

#include <algorithm>
#include <array>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/words/date_words.h"
#include "host/commands/words/day_words.h"
#include "store/recurrence/rule_text.h"

namespace orlocal::host {
namespace {

using store::RecurrenceRule;
using Frequency = RecurrenceRule::Frequency;
using WeekDay = RecurrenceRule::WeekDay;

constexpr std::array<const char*, 7> kDayNames{"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr std::array<int, 5> kWorkDays{1, 2, 3, 4, 5};

std::optional<Frequency> frequencyOf(int unit) {
  switch (static_cast<Unit>(unit)) {
    case Unit::kHour:
      return Frequency::kHourly;
    case Unit::kDay:
      return Frequency::kDaily;
    case Unit::kWeek:
      return Frequency::kWeekly;
    case Unit::kMonth:
      return Frequency::kMonthly;
    case Unit::kYear:
      return Frequency::kYearly;
    default:
      return std::nullopt;
  }
}

RecurrenceRule onWorkDays() {
  RecurrenceRule rule;
  rule.frequency = Frequency::kWeekly;
  for (const int day : kWorkDays) { rule.byDay.push_back({0, day}); }
  return rule;
}

/// "mon", "mon,wed", "mon, wed and fri".
std::vector<WeekDay> takeWeekDays(WordCursor& words) {
  std::vector<WeekDay> days;
  for (;;) {
    const std::size_t begin = words.at();
    if (!days.empty()) { words.take(Term::kAnd); }
    // Several in one word.
    std::string_view rest = words.next();
    std::vector<WeekDay> here;
    while (!rest.empty()) {
      const std::string_view one = rest.substr(0, rest.find(','));
      const auto day = valueOf(one, Term::kWeekDay, words.setting());
      if (!day) { break; }
      here.push_back({0, *day});
      rest.remove_prefix(std::min(one.size() + 1, rest.size()));
    }
    if (here.empty() || !rest.empty()) {
      words.moveTo(begin);
      return days;
    }
    words.take();
    for (const WeekDay& day : here) {
      if (std::find(days.begin(), days.end(), day) == days.end()) { days.push_back(day); }
    }
  }
}

/// Of a weekly rule: "on mon,thu".
void takeOnDays(WordCursor& words, RecurrenceRule& rule) {
  if (rule.frequency != Frequency::kWeekly) { return; }
  const std::size_t begin = words.at();
  words.take(Term::kOn);
  rule.byDay = takeWeekDays(words);
  if (rule.byDay.empty()) { words.moveTo(begin); }
}

/// "last friday", "first monday of the month".
std::optional<RecurrenceRule> takeOrdinalDay(WordCursor& words) {
  const std::size_t begin = words.at();
  const auto ordinal = words.take(Term::kOrdinal);
  const auto day = ordinal ? words.take(Term::kWeekDay) : std::nullopt;
  if (!day) {
    words.moveTo(begin);
    return std::nullopt;
  }
  words.take(Term::kOfMonth);
  RecurrenceRule rule;
  rule.frequency = Frequency::kMonthly;
  rule.byDay = {{*ordinal, *day}};
  return rule;
}

/// What follows "every": "2 weeks on mon,wed", "other week", "monday", "weekday", "last friday".
Result<std::optional<RecurrenceRule>> takeEach(WordCursor& words) {
  if (words.take(Term::kWeekdays)) { return onWorkDays(); }
  if (auto ordinal = takeOrdinalDay(words)) { return ordinal; }
  RecurrenceRule rule;
  rule.frequency = Frequency::kWeekly;
  rule.byDay = takeWeekDays(words);
  if (!rule.byDay.empty()) { return rule; }
  const std::size_t count = words.at();
  if (words.take(Term::kOther)) {
    rule.interval = 2;
  } else if (const auto number = wholeNumber(words.next())) {
    rule.interval = *number;
    words.take();
  } else {
    rule.interval = words.take(Term::kNumber).value_or(1);
  }
  const auto unit = words.take(Term::kUnit);
  const auto frequency = unit ? frequencyOf(*unit) : std::nullopt;
  if (!frequency) {
    return words.refused(tr("After \"every\" comes a day of the week, or a number of days, weeks, months or years"));
  }
  if (rule.interval < 1 || rule.interval > 1000) { return words.refusedAt(count, tr("Write a number from 1 to 1000")); }
  rule.frequency = *frequency;
  takeOnDays(words, rule);
  return rule;
}

/// "until 2026-12-24", "10 times".
Status takeEnd(WordCursor& words, RecurrenceRule& rule) {
  const std::size_t begin = words.at();
  if (words.take(Term::kUntil)) {
    ORLOCAL_TRY(const auto day, takeDay(words));
    if (!day) { return words.refused(tr("After \"until\" comes a day")); }
    rule.until = store::CalendarTime{store::CalendarTime::Kind::kDate, store::LocalTime(*day), {}};
    return {};
  }
  std::string_view word = words.next();
  const auto count = takeNumber(word);
  if (!count) { return {}; }
  words.take();
  if (word == "x" || (word.empty() && words.take(Term::kTimes))) {
    if (*count < 1) { return words.refusedAt(begin, tr("Write how many times, from 1 on")); }
    rule.count = *count;
    return {};
  }
  words.moveTo(begin);
  return {};
}

/// What `--repeat` takes without "every".
Result<std::optional<RecurrenceRule>> takeBareRepeat(WordCursor& words) {
  if (words.take(Term::kWeekdays)) { return onWorkDays(); }
  if (const auto unit = words.take(Term::kRepeats)) {
    RecurrenceRule rule;
    rule.frequency = *frequencyOf(*unit);
    takeOnDays(words, rule);
    return rule;
  }
  if (auto ordinal = takeOrdinalDay(words)) { return ordinal; }
  RecurrenceRule rule;
  rule.frequency = Frequency::kWeekly;
  rule.byDay = takeWeekDays(words);
  if (!rule.byDay.empty()) { return rule; }
  // "2 weeks": as if "every" stood before.
  if (wholeNumber(words.next())) { return takeEach(words); }
  return std::nullopt;
}

}  // namespace

Result<std::optional<RecurrenceRule>> takeRepeat(WordCursor& words) {
  const std::size_t begin = words.at();
  if (!words.take(Term::kEvery)) { return std::nullopt; }
  auto rule = takeEach(words);
  if (!rule) { return rule; }
  if (!*rule) {
    words.moveTo(begin);
    return std::nullopt;
  }
  ORLOCAL_CHECK(takeEnd(words, **rule));
  return rule;
}

Result<RecurrenceRule> readRepeat(std::string_view text, const WordsSetting& setting) {
  std::string_view rule = trimmed(text);
  if (inCapitals(rule.substr(0, 6)) == "RRULE:") { rule.remove_prefix(6); }
  if (inCapitals(rule).find("FREQ=") != std::string::npos) { return store::parseRule(rule); }
  WordCursor words(text, setting);
  ORLOCAL_TRY(auto read, takeRepeat(words));
  if (!read) {
    ORLOCAL_TRY(read, takeBareRepeat(words));
    if (read) { ORLOCAL_CHECK(takeEnd(words, *read)); }
  }
  if (read && words.done()) { return *std::move(read); }
  return words.refused(
      tr("\"{}\" is no repetition; write daily, weekly, every 2 weeks, weekdays, mon,wed, monthly, "
         "yearly, last friday, or a rule such as FREQ=WEEKLY;BYDAY=MO",
         text.substr(std::min(words.place(), text.size()))));
}

}  // namespace orlocal::host
