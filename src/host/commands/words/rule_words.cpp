#include "host/commands/words/rule_words.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include <fmt/format.h>

#include "host/commands/words/date_names.h"
#include "host/commands/words/listed_words.h"

namespace orlocal::host {
namespace {

using store::LocalDay;
using store::RecurrenceRule;
using Frequency = RecurrenceRule::Frequency;
using Words = std::vector<std::string>;

/// By `Frequency`.
constexpr std::string_view kUnits[] = {"second", "minute", "hour", "day", "week", "month", "year"};
/// By the numbers of the rule's days.
constexpr std::string_view kDays[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};
constexpr std::string_view kOrdinals[] = {"first", "second", "third", "fourth", "fifth"};

/// "first", "23rd", "last", "second to last".
std::string ordinal(int number) {
  const int count = std::abs(number);
  std::string word;
  if (count >= 1 && count <= 5) {
    word = kOrdinals[count - 1];
  } else {
    constexpr std::string_view kEndings[] = {"th", "st", "nd", "rd"};
    const bool teen = count % 100 >= 11 && count % 100 <= 13;
    word = fmt::format("{}{}", count, kEndings[!teen && count % 10 <= 3 ? count % 10 : 0]);
  }
  if (number >= 0) { return word; }
  return count == 1 ? "last" : word + " to last";
}

std::string inFigures(int number) {
  const std::string word = ordinal(number);
  if (number < 1 || number > 3) { return number > 0 && number <= 5 ? fmt::format("{}th", number) : word; }
  constexpr std::string_view kShort[] = {"1st", "2nd", "3rd"};
  return std::string(kShort[number - 1]);
}

template <class Range, class Say>
std::string listedAs(const Range& values, Say say) {
  Words words;
  for (const auto& value : values) { words.push_back(say(value)); }
  return listed(words);
}

std::string dayName(int day) { return std::string(kDays[static_cast<std::size_t>(day)]); }

/// The sentence is English, and its dates are.
const std::string& monthName(int month) {
  static const DateNames kNames("en");
  return kNames.month(month);
}

std::string dayAndMonth(LocalDay day) { return fmt::format("{} {} {}", day.day(), monthName(day.month()), day.year()); }

/// Whether these are just the days from Monday to Friday.
bool areWorkingDays(const std::vector<RecurrenceRule::WeekDay>& days) {
  return days.size() == 5 && std::all_of(days.begin(), days.end(), [](const RecurrenceRule::WeekDay& each) {
           return each.ordinal == 0 && each.day >= 1 && each.day <= 5;
         });
}

/// "Monday and Friday", "the second Tuesday", "weekdays".
std::string weekDays(const RecurrenceRule& rule, bool several) {
  if (areWorkingDays(rule.byDay)) { return several ? "weekdays" : "weekday"; }
  return listedAs(rule.byDay, [](const RecurrenceRule::WeekDay& each) {
    return each.ordinal == 0 ? dayName(each.day) : fmt::format("the {} {}", ordinal(each.ordinal), dayName(each.day));
  });
}

std::string monthDays(const std::vector<int>& days) {
  return listedAs(days,
                  [](int day) { return day > 0 ? "the " + inFigures(day) : fmt::format("the {} day", ordinal(day)); });
}

std::string months(const RecurrenceRule& rule) {
  std::vector<int> all = rule.byMonth;
  return listedAs(all, monthName);
}

/// The days within a period, without a preposition; empty when the rule names none.
std::string daysOf(const RecurrenceRule& rule) {
  if (!rule.byDay.empty() && !rule.byMonthDay.empty()) {
    return fmt::format("{} where it is {}", weekDays(rule, true), monthDays(rule.byMonthDay));
  }
  if (!rule.bySetPosition.empty() && !rule.byDay.empty()) {
    const std::string position = listedAs(rule.bySetPosition, ordinal);
    return areWorkingDays(rule.byDay) ? fmt::format("the {} {}", position, weekDays(rule, false))
                                      : fmt::format("the {} of {}", position, weekDays(rule, true));
  }
  if (!rule.byDay.empty()) { return weekDays(rule, true); }
  return rule.byMonthDay.empty() ? "" : monthDays(rule.byMonthDay);
}

/// What a rule without days takes from the start.
std::string daysFromStart(const RecurrenceRule& rule, LocalDay start) {
  switch (rule.frequency) {
    case Frequency::kWeekly:
      return dayName((static_cast<int>(cctz::get_weekday(start)) + 1) % 7);
    case Frequency::kMonthly:
      return "the " + inFigures(start.day());
    case Frequency::kYearly:
      return rule.byMonth.empty() ? fmt::format("{} {}", start.day(), monthName(start.month()))
                                  : "the " + inFigures(start.day());
    default:
      return "";
  }
}

std::string timesOf(const RecurrenceRule& rule) {
  const auto numbers = [](const std::vector<int>& values) {
    return listedAs(values, [](int value) { return std::to_string(value); });
  };
  const auto part = [&](const char* one, const char* several, const std::vector<int>& values) {
    return values.empty() ? "" : fmt::format(" in {} {}", values.size() == 1 ? one : several, numbers(values));
  };
  if (rule.byHour.size() == 1 && rule.byMinute.size() == 1 && rule.bySecond.empty()) {
    return fmt::format(" at {:02}:{:02}", rule.byHour.front(), rule.byMinute.front());
  }
  return part("hour", "hours", rule.byHour) + part("minute", "minutes", rule.byMinute) +
         part("second", "seconds", rule.bySecond);
}

/// " on Monday", " on the last day of March", " on 25 December".
std::string placeInPeriod(const RecurrenceRule& rule, std::optional<LocalDay> start) {
  const bool yearly = rule.frequency == Frequency::kYearly;
  std::string days = daysOf(rule);
  const bool placed = !rule.byYearDay.empty() || !rule.byWeekNumber.empty();
  if (days.empty() && !placed && start) { days = daysFromStart(rule, *start); }
  std::string text;
  if (yearly && rule.byMonth.size() == 1 && rule.byMonthDay.size() == 1 && rule.byMonthDay.front() > 0 &&
      rule.byDay.empty()) {
    text = fmt::format(" on {} {}", rule.byMonthDay.front(), monthName(rule.byMonth.front()));
  } else {
    if (!days.empty()) { text = " on " + days; }
    if (!rule.byMonth.empty()) { text += (days.empty() || !yearly ? " in " : " of ") + months(rule); }
  }
  if (!rule.byYearDay.empty()) {
    text += " on " + listedAs(rule.byYearDay, [](int day) { return fmt::format("the {} day", ordinal(day)); }) +
            " of the year";
  }
  if (!rule.byWeekNumber.empty()) {
    text += " in " + listedAs(rule.byWeekNumber, [](int week) {
              return week > 0 ? fmt::format("week {}", week) : fmt::format("the {} week", ordinal(week));
            });
  }
  return text;
}

}  // namespace

std::string ruleWords(const RecurrenceRule& rule, std::optional<LocalDay> start, const store::Zone& viewer) {
  const std::string_view unit = kUnits[static_cast<std::size_t>(rule.frequency)];
  std::string text =
      rule.interval == 1 ? fmt::format("every {}", unit) : fmt::format("every {} {}s", rule.interval, unit);
  const bool everyWorkingDay = rule.frequency <= Frequency::kWeekly && rule.frequency >= Frequency::kDaily &&
                               rule.interval == 1 && areWorkingDays(rule.byDay) && rule.bySetPosition.empty() &&
                               rule.byMonthDay.empty() && rule.byMonth.empty();
  // A rule of another calendar counts other days and months.
  const bool gregorian = rule.scale.empty() || rule.scale == "GREGORIAN";
  if (everyWorkingDay) {
    text = "every weekday";
  } else if (gregorian) {
    text += placeInPeriod(rule, start);
  } else {
    text += fmt::format(" of the {} calendar", rule.scale);
  }
  text += timesOf(rule);
  if (rule.skip != RecurrenceRule::Skip::kOmit) {
    text += rule.skip == RecurrenceRule::Skip::kForward ? ", or the day after where there is none"
                                                        : ", or the day before where there is none";
  }
  if (rule.count) { text += fmt::format(", {} {}", *rule.count, *rule.count == 1 ? "time" : "times"); }
  if (rule.until) {
    const LocalDay last(rule.until->kind == store::CalendarTime::Kind::kDate
                            ? rule.until->local
                            : viewer.toLocal(store::momentOf(*rule.until, viewer)));
    text += ", until " + dayAndMonth(last);
  }
  return text;
}

std::string recurrenceWords(const store::Recurrence& recurrence, std::optional<LocalDay> start,
                            const store::Zone& viewer) {
  constexpr std::size_t kNamed = 4;
  const auto days = [&](const std::vector<store::CalendarTime>& times) {
    if (times.size() > kNamed) { return fmt::format("{} days", times.size()); }
    return listedAs(times, [&](const store::CalendarTime& time) {
      return dayAndMonth(LocalDay(
          time.kind == store::CalendarTime::Kind::kDate ? time.local : viewer.toLocal(store::momentOf(time, viewer))));
    });
  };
  Words parts;
  for (const auto& rule : recurrence.rules) { parts.push_back(ruleWords(rule, start, viewer)); }
  std::string text;
  for (const std::string& part : parts) { text += (text.empty() ? "" : "; and ") + part; }
  if (!recurrence.added.empty()) { text += (text.empty() ? "on " : "; also on ") + days(recurrence.added); }
  if (!recurrence.excluded.empty()) { text += "; not on " + days(recurrence.excluded); }
  for (const auto& exception : recurrence.exceptionRules) {
    text += "; but not " + ruleWords(exception.rule, start, viewer);
  }
  return text;
}

}  // namespace orlocal::host
