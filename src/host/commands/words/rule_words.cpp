#include "host/commands/words/rule_words.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include "base/translation.h"
#include "host/commands/words/date_names.h"
#include "host/commands/words/listed_words.h"

namespace orlocal::host {
namespace {

using store::LocalDay;
using store::RecurrenceRule;
using Frequency = RecurrenceRule::Frequency;
using Words = std::vector<std::string>;

/// "every day", "every 2 weeks".
std::string everySoMany(Frequency unit, std::size_t count) {
  switch (unit) {
    case Frequency::kSecondly:
      return trn("every second", "every {} seconds", count, count);
    case Frequency::kMinutely:
      return trn("every minute", "every {} minutes", count, count);
    case Frequency::kHourly:
      return trn("every hour", "every {} hours", count, count);
    case Frequency::kDaily:
      return trn("every day", "every {} days", count, count);
    case Frequency::kWeekly:
      return trn("every week", "every {} weeks", count, count);
    case Frequency::kMonthly:
      return trn("every month", "every {} months", count, count);
    case Frequency::kYearly:
      break;
  }
  return trn("every year", "every {} years", count, count);
}

constexpr std::size_t kInWords = 5;
// Translators: ordinals stand behind "on" or "in", as in "on the second Tuesday".
constexpr std::array<const char*, kInWords> kOrdinals{translatable("first"), translatable("second"),
                                                      translatable("third"), translatable("fourth"),
                                                      translatable("fifth")};
constexpr std::array<const char*, kInWords> kFromLast{translatable("last"), translatable("second to last"),
                                                      translatable("third to last"), translatable("fourth to last"),
                                                      translatable("fifth to last")};

/// Which of "st", "nd" and "rd" (1 to 3) a number has in English; 0 is "th".
int endingOf(int number) {
  const bool teen = number % 100 >= 11 && number % 100 <= 13;
  return !teen && number % 10 <= 3 ? number % 10 : 0;
}

/// "23rd", "23rd to last".
std::string ordinalInFigures(int number) {
  const int count = std::abs(number);
  const bool last = number < 0;
  switch (endingOf(count)) {
    case 1:
      return last ? tr("{}st to last", count) : tr("{}st", count);
    case 2:
      return last ? tr("{}nd to last", count) : tr("{}nd", count);
    case 3:
      return last ? tr("{}rd to last", count) : tr("{}rd", count);
    default:
      return last ? tr("{}th to last", count) : tr("{}th", count);
  }
}

/// "first", "23rd", "last", "second to last".
std::string ordinal(int number) {
  const auto place = static_cast<std::size_t>(std::abs(number)) - 1;
  if (number == 0 || place >= kInWords) { return ordinalInFigures(number); }
  return translated(number > 0 ? kOrdinals.at(place) : kFromLast.at(place));
}

template <class Range, class Say>
std::string listedAs(const Range& values, Say say) {
  Words words;
  for (const auto& value : values) { words.push_back(say(value)); }
  return listed(words);
}

/// By the numbers of the rule's days, from Sunday on.
std::string dayName(int day) {
  const LocalDay sunday(2023, 1, 1);
  return DateNames::ofUser().weekday(sunday + day);
}

const std::string& monthName(int month) { return DateNames::ofUser().month(month); }

std::string dayAndMonth(LocalDay day) { return DateNames::ofUser().date(day); }

/// Whether these are just the days from Monday to Friday.
bool areWorkingDays(const std::vector<RecurrenceRule::WeekDay>& days) {
  return days.size() == 5 && std::all_of(days.begin(), days.end(), [](const RecurrenceRule::WeekDay& each) {
           return each.ordinal == 0 && each.day >= 1 && each.day <= 5;
         });
}

/// "Monday and Friday", "the second Tuesday".
std::string weekDays(const RecurrenceRule& rule) {
  return listedAs(rule.byDay, [](const RecurrenceRule::WeekDay& each) {
    return each.ordinal == 0 ? dayName(each.day) : tr("the {} {}", ordinal(each.ordinal), dayName(each.day));
  });
}

/// "the last day", "the 100th day".
std::string countedDay(int number) { return tr("the {} day", ordinal(number)); }

/// "the 24th", "the last day".
std::string monthDays(const std::vector<int>& days) {
  return listedAs(days, [](int day) { return day > 0 ? tr("the {}", ordinalInFigures(day)) : countedDay(day); });
}

std::string months(const RecurrenceRule& rule) { return listedAs(rule.byMonth, monthName); }

/// The days within a period, without a preposition; empty when the rule names none.
std::string daysOf(const RecurrenceRule& rule) {
  const bool working = areWorkingDays(rule.byDay);
  if (!rule.byDay.empty() && !rule.byMonthDay.empty()) {
    return tr("{} where it is {}", working ? tr("weekdays") : weekDays(rule), monthDays(rule.byMonthDay));
  }
  if (!rule.bySetPosition.empty() && !rule.byDay.empty()) {
    const std::string position = listedAs(rule.bySetPosition, ordinal);
    return working ? tr("the {} weekday", position) : tr("the {} of {}", position, weekDays(rule));
  }
  if (working) { return tr("weekdays"); }
  if (!rule.byDay.empty()) { return weekDays(rule); }
  return rule.byMonthDay.empty() ? "" : monthDays(rule.byMonthDay);
}

bool areWeekdaysAlone(const RecurrenceRule& rule) {
  return areWorkingDays(rule.byDay) && rule.byMonthDay.empty() && rule.bySetPosition.empty();
}

/// What a rule without days takes from the start.
std::string daysFromStart(const RecurrenceRule& rule, LocalDay start) {
  switch (rule.frequency) {
    case Frequency::kWeekly:
      return dayName((static_cast<int>(cctz::get_weekday(start)) + 1) % 7);
    case Frequency::kYearly:
      if (rule.byMonth.empty()) { return DateNames::ofUser().dayOfYear(start.month(), start.day()); }
      [[fallthrough]];
    case Frequency::kMonthly:
      return monthDays({start.day()});
    default:
      return "";
  }
}

std::string timesOf(const RecurrenceRule& rule) {
  const auto numbers = [](const std::vector<int>& values) {
    return listedAs(values, [](int value) { return std::to_string(value); });
  };
  if (rule.byHour.size() == 1 && rule.byMinute.size() == 1 && rule.bySecond.empty()) {
    return tr(" at {:02}:{:02}", rule.byHour.front(), rule.byMinute.front());
  }
  std::string text;
  if (!rule.byHour.empty()) { text += trn(" in hour {}", " in hours {}", rule.byHour.size(), numbers(rule.byHour)); }
  if (!rule.byMinute.empty()) {
    text += trn(" in minute {}", " in minutes {}", rule.byMinute.size(), numbers(rule.byMinute));
  }
  if (!rule.bySecond.empty()) {
    text += trn(" in second {}", " in seconds {}", rule.bySecond.size(), numbers(rule.bySecond));
  }
  return text;
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
    text = tr(" on {}", DateNames::ofUser().dayOfYear(rule.byMonth.front(), rule.byMonthDay.front()));
  } else {
    if (!days.empty()) { text = areWeekdaysAlone(rule) ? tr(" on weekdays") : tr(" on {}", days); }
    if (!rule.byMonth.empty()) {
      text += days.empty() || !yearly ? tr(" in {}", months(rule)) : tr(" of {}", months(rule));
    }
  }
  if (!rule.byYearDay.empty()) { text += tr(" on {} of the year", listedAs(rule.byYearDay, countedDay)); }
  if (!rule.byWeekNumber.empty()) {
    text += ' ' + listedAs(rule.byWeekNumber, [](int week) {
              return week > 0 ? tr("in week {}", week) : tr("in the {} week", ordinal(week));
            });
  }
  return text;
}

}  // namespace

std::string ruleWords(const RecurrenceRule& rule, std::optional<LocalDay> start, const store::Zone& viewer) {
  std::string text = everySoMany(rule.frequency, static_cast<std::size_t>(rule.interval));
  const bool everyWorkingDay = rule.frequency <= Frequency::kWeekly && rule.frequency >= Frequency::kDaily &&
                               rule.interval == 1 && areWorkingDays(rule.byDay) && rule.bySetPosition.empty() &&
                               rule.byMonthDay.empty() && rule.byMonth.empty();
  // A rule of another calendar counts other days and months.
  const bool gregorian = rule.scale.empty() || rule.scale == "GREGORIAN";
  if (everyWorkingDay) {
    text = tr("every weekday");
  } else if (gregorian) {
    text += placeInPeriod(rule, start);
  } else {
    text += tr(" of the {} calendar", rule.scale);
  }
  text += timesOf(rule);
  if (rule.skip != RecurrenceRule::Skip::kOmit) {
    text += rule.skip == RecurrenceRule::Skip::kForward ? tr(", or the day after where there is none")
                                                        : tr(", or the day before where there is none");
  }
  if (rule.count) { text += trn(", {} time", ", {} times", static_cast<std::size_t>(*rule.count), *rule.count); }
  if (rule.until) {
    const LocalDay last(rule.until->kind == store::CalendarTime::Kind::kDate
                            ? rule.until->local
                            : viewer.toLocal(store::momentOf(*rule.until, viewer)));
    text += tr(", until {}", dayAndMonth(last));
  }
  return text;
}

std::string recurrenceWords(const store::Recurrence& recurrence, std::optional<LocalDay> start,
                            const store::Zone& viewer) {
  constexpr std::size_t kNamed = 4;
  const auto days = [&](const std::vector<store::CalendarTime>& times) {
    if (times.size() > kNamed) { return trn("{} day", "{} days", times.size(), times.size()); }
    return listedAs(times, [&](const store::CalendarTime& time) {
      return dayAndMonth(LocalDay(
          time.kind == store::CalendarTime::Kind::kDate ? time.local : viewer.toLocal(store::momentOf(time, viewer))));
    });
  };
  Words parts;
  for (const auto& rule : recurrence.rules) { parts.push_back(ruleWords(rule, start, viewer)); }
  std::string text;
  for (const std::string& part : parts) { text += text.empty() ? part : tr("; and {}", part); }
  if (!recurrence.added.empty()) {
    text += text.empty() ? tr("on {}", days(recurrence.added)) : tr("; also on {}", days(recurrence.added));
  }
  if (!recurrence.excluded.empty()) { text += tr("; not on {}", days(recurrence.excluded)); }
  for (const auto& exception : recurrence.exceptionRules) {
    text += tr("; but not {}", ruleWords(exception.rule, start, viewer));
  }
  return text;
}

}  // namespace orlocal::host
