#include "store/recurrence/recurrence_rule.h"

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <libical/ical.h>

#include "store/recurrence/rule_text.h"
#include "store/recurrence/rule_times.h"

namespace orlocal::store {
namespace {

std::vector<std::string> ours(const CompiledRule& rule, LocalSeconds end, std::size_t most) {
  std::vector<std::string> found;
  ExpansionBudget budget;
  EXPECT_TRUE(rule.walk(0, end, budget, [&](LocalSeconds time) {
    found.push_back(textOf(time));
    return found.size() < most;
  }));
  return found;
}

std::vector<std::string> libicals(const std::string& text, const char* start, LocalSeconds end, std::size_t most) {
  std::vector<std::string> found;
  const icalrecurrencetype rule = icalrecurrencetype_from_string(text.c_str());
  icalrecur_iterator* iterator = icalrecur_iterator_new(rule, icaltime_from_string(start));
  if (iterator == nullptr) { return found; }
  for (icaltimetype time = icalrecur_iterator_next(iterator); !icaltime_is_null_time(time) && found.size() < most;
       time = icalrecur_iterator_next(iterator)) {
    if (secondsOf(icaltime_as_ical_string(time)) >= end) { break; }
    found.emplace_back(icaltime_as_ical_string(time));
  }
  icalrecur_iterator_free(iterator);
  return found;
}

/// Seeded rules of the shapes on which the two have the same reading of RFC 5545.
class RandomRules {
 public:
  explicit RandomRules(unsigned seed) : m_random(seed) {}

  std::string next() {
    const char* frequency = pick({"DAILY", "WEEKLY", "MONTHLY", "YEARLY", "HOURLY", "MINUTELY"});
    std::string rule = std::string("FREQ=") + frequency;
    if (chance(2)) { rule += ";INTERVAL=" + std::to_string(number(2, 6)); }
    const std::string kind = frequency;
    const bool months = chance(3);
    if (months) { rule += ";BYMONTH=" + list(1, 12); }
    if (kind == "MONTHLY" || kind == "YEARLY") {
      // Days of a month in a year without months: libical takes the month of the start, RFC 5545 every month.
      if ((kind == "MONTHLY" || months) && chance(3)) {
        rule += ";BYMONTHDAY=" + (chance(3) ? "-" + std::to_string(number(1, 31)) : list(1, 31));
      } else if (chance(2)) {
        // Ordinals in a year without months count in the year.
        const bool ordinal = chance(2);
        rule += ";BYDAY=" + (ordinal ? pick({"1", "2", "-1", "4"}) : std::string()) + pick({"MO", "TU", "FR", "SU"});
        if (!ordinal && chance(2)) { rule += std::string(",") + pick({"WE", "SA"}); }
      }
    } else if (chance(2)) {
      rule += std::string(";BYDAY=") + pick({"MO", "TU,TH", "SA,SU", "MO,WE,FR"});
    }
    // Limits of the hour or minute below a day: libical lets them stand in for the interval.
    const bool belowDay = kind == "HOURLY" || kind == "MINUTELY";
    if (!belowDay && chance(3)) { rule += ";BYHOUR=" + list(0, 23); }
    if (!belowDay && chance(4)) { rule += ";BYMINUTE=" + list(0, 59); }
    if (kind == "WEEKLY" && chance(2)) { rule += std::string(";WKST=") + pick({"SU", "MO"}); }
    return rule;
  }

 private:
  bool chance(int in) { return number(1, in) == 1; }
  int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }
  const char* pick(std::initializer_list<const char*> from) {
    return from.begin()[number(0, static_cast<int>(from.size()) - 1)];
  }
  std::string list(int low, int high) {
    int at = number(low, high);
    std::string text = std::to_string(at);
    for (int i = number(0, 2); i > 0 && at < high; --i) {
      at = number(at + 1, high);
      text += "," + std::to_string(at);
    }
    return text;
  }
  std::mt19937 m_random;
};

TEST(CompiledRule, MakesWhatAnotherExpanderMakes) {
  const char* start = "20240131T093000";
  RandomRules rules(20261121);
  int compared = 0;
  for (int i = 0; i < 500; ++i) {
    const std::string text = rules.next();
    const auto parsed = parseRule(text);
    ASSERT_TRUE(parsed) << text;
    const auto rule = CompiledRule::make(*parsed, secondsOf(start), false);
    ASSERT_TRUE(rule) << text;
    const LocalSeconds end = secondsOf("20320101T000000");
    const auto expected = libicals(text, start, end, 60);
    EXPECT_EQ(ours(*rule, end, 60), expected) << text;
    compared += expected.empty() ? 0 : 1;
  }
  EXPECT_GT(compared, 350);
}

TEST(CompiledRule, LimitsHoursAndMinutesByTheirDefinition) {
  const LocalSeconds start = secondsOf("20240131T093000"), end = start + 20 * kSecondsPerDay;
  for (const char* text :
       {"FREQ=MINUTELY;INTERVAL=7;BYHOUR=3,11;BYMINUTE=2,20,37", "FREQ=MINUTELY;INTERVAL=90;BYHOUR=0,12,15",
        "FREQ=HOURLY;INTERVAL=5;BYHOUR=4,9,14;BYDAY=MO,TU,SA", "FREQ=MINUTELY;BYMONTH=2;BYMINUTE=59",
        "FREQ=HOURLY;INTERVAL=25;BYMONTHDAY=1,-1,10", "FREQ=SECONDLY;INTERVAL=60;BYHOUR=3;BYDAY=SU"}) {
    const RecurrenceRule rule = *parseRule(text);
    const std::int64_t unit = rule.frequency == RecurrenceRule::Frequency::kHourly     ? 3600
                              : rule.frequency == RecurrenceRule::Frequency::kMinutely ? 60
                                                                                       : 1;
    const auto among = [](const auto& list, int value) {
      return list.empty() || std::find(list.begin(), list.end(), value) != list.end();
    };
    std::vector<std::string> expected;
    for (LocalSeconds time = start; time < end; time += unit * rule.interval) {
      const LocalTime at = localTime(time);
      const bool dayFits =
          rule.byDay.empty() || std::any_of(rule.byDay.begin(), rule.byDay.end(),
                                            [&](const auto& day) { return day.day == weekDayOf(dayOf(time)); });
      const bool dateFits = among(rule.byMonthDay, at.day()) ||
                            among(rule.byMonthDay, at.day() - monthLength(static_cast<int>(at.year()), at.month()) - 1);
      if (dayFits && dateFits && among(rule.byMonth, at.month()) && among(rule.byHour, at.hour()) &&
          among(rule.byMinute, at.minute())) {
        expected.push_back(textOf(time));
      }
    }
    EXPECT_FALSE(expected.empty()) << text;
    EXPECT_EQ(ours(CompiledRule::make(rule, start, false).value(), end, 100'000), expected) << text;
  }
}

/// Seeded rules below a day, and what they make by their definition: each second is looked at by itself.
class RulesBelowADay {
 public:
  explicit RulesBelowADay(unsigned seed) : m_random(seed) {}

  RecurrenceRule next() {
    RecurrenceRule rule;
    rule.frequency = static_cast<Frequency>(number(0, 2));
    constexpr std::array kIntervals{1,  1,  2,  3,  5,  7,   8,   15,   20,   24,  25,
                                    30, 45, 48, 60, 90, 120, 168, 1440, 2880, 3600};
    rule.interval = kIntervals[static_cast<std::size_t>(number(0, static_cast<int>(kIntervals.size()) - 1))];
    if (number(0, 1) == 0) { rule.byHour = some(0, 23, 6); }
    if (number(0, 2) == 0) { rule.byMinute = some(0, 59, 9); }
    if (number(0, 2) == 0 || rule.frequency == Frequency::kSecondly) { rule.bySecond = some(0, 59, 3); }
    if (number(0, 2) == 0) {
      for (const int day : some(0, 6, 4)) { rule.byDay.push_back({0, day}); }
    }
    if (number(0, 5) == 0) { rule.byMonth = some(1, 3, 1); }
    return rule;
  }

  static bool makes(const RecurrenceRule& rule, LocalSeconds start, LocalSeconds time) {
    const bool minutes = rule.frequency == Frequency::kMinutely, hours = rule.frequency == Frequency::kHourly;
    const std::int64_t unit = hours ? 3600 : minutes ? 60 : 1;
    if (time < start || (time / unit - start / unit) % rule.interval != 0) { return false; }
    const LocalTime at = localTime(time), first = localTime(start);
    const auto among = [](const std::vector<int>& list, int value, bool orElse) {
      return list.empty() ? orElse : std::ranges::find(list, value) != list.end();
    };
    const bool dayFits = rule.byDay.empty() || std::ranges::any_of(rule.byDay, [&](const RecurrenceRule::WeekDay& day) {
                           return day.day == weekDayOf(dayOf(time));
                         });
    return dayFits && among(rule.byMonth, at.month(), true) && among(rule.byHour, at.hour(), true) &&
           among(rule.byMinute, at.minute(), !hours || at.minute() == first.minute()) &&
           among(rule.bySecond, at.second(), (!hours && !minutes) || at.second() == first.second());
  }

 private:
  using Frequency = RecurrenceRule::Frequency;

  int number(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }
  std::vector<int> some(int low, int high, int most) {
    std::vector<int> values;
    for (int i = number(1, most); i > 0; --i) { values.push_back(number(low, high)); }
    return values;
  }
  std::mt19937 m_random;
};

TEST(CompiledRule, MakesAndCountsBelowADayWhatTheDefinitionSays) {
  RulesBelowADay rules(20261123);
  const LocalSeconds start = secondsOf("20240131T094510"), end = start + 8 * kSecondsPerDay;
  std::vector<RecurrenceRule> all;
  // An interval of whole weeks between the same times of day, and others.
  for (const char* text : {"FREQ=HOURLY;INTERVAL=7;BYDAY=SU", "FREQ=MINUTELY;INTERVAL=7;BYHOUR=3;BYDAY=MO,WE",
                           "FREQ=HOURLY;INTERVAL=5;BYHOUR=4,9;BYDAY=TU", "FREQ=MINUTELY;INTERVAL=45;BYHOUR=9,10"}) {
    all.push_back(*parseRule(text));
  }
  while (all.size() < 60) { all.push_back(rules.next()); }
  int met = 0;
  for (const RecurrenceRule& rule : all) {
    std::vector<LocalSeconds> expected;
    for (LocalSeconds time = start; time < end; ++time) {
      if (RulesBelowADay::makes(rule, start, time)) { expected.push_back(time); }
    }
    const auto compiled = CompiledRule::make(rule, start, false).value();
    ExpansionBudget budget(100'000'000);
    std::vector<LocalSeconds> made;
    ASSERT_TRUE(compiled.walk(start, end, budget, [&](LocalSeconds time) { return made.push_back(time), true; }));
    ASSERT_EQ(made, expected) << ruleText(rule);
    met += expected.empty() ? 0 : 1;
    for (std::size_t n = 1; n <= expected.size(); n += 1 + expected.size() / 7) {
      EXPECT_EQ(compiled.nth(static_cast<std::int64_t>(n), budget), expected[n - 1]) << ruleText(rule);
      EXPECT_EQ(compiled.count(expected[n - 1], budget), static_cast<std::int64_t>(n - 1)) << ruleText(rule);
    }
    EXPECT_EQ(compiled.count(end, budget), static_cast<std::int64_t>(expected.size())) << ruleText(rule);
    EXPECT_GE(compiled.mostInMonth(end - 1), static_cast<std::int64_t>(expected.size())) << ruleText(rule);
    if (expected.empty()) { continue; }
    EXPECT_EQ(compiled.mayMeet(budget), true) << ruleText(rule);
    // Further on than anybody would look at each second.
    std::int64_t walked = 0;
    LocalSeconds last = start;
    ASSERT_TRUE(compiled.walk(start, start + 200 * kSecondsPerDay, budget, [&](LocalSeconds time) {
      last = time;
      return ++walked < 20'000;
    }));
    EXPECT_EQ(compiled.nth(walked, budget), last) << ruleText(rule);
    EXPECT_EQ(compiled.count(last + 1, budget), walked) << ruleText(rule);
  }
  EXPECT_GT(met, 30);
}

TEST(CompiledRule, CountsFarAheadWithoutGoingThere) {
  for (const char* text : {"FREQ=HOURLY;BYHOUR=9,12,15", "FREQ=HOURLY;INTERVAL=8", "FREQ=DAILY;BYHOUR=9,12,15",
                           "FREQ=MINUTELY;INTERVAL=30;BYHOUR=9,10,11;BYDAY=MO,TU,WE,TH,FR", "FREQ=DAILY;BYDAY=MO,TU",
                           "FREQ=SECONDLY;INTERVAL=7200", "FREQ=MINUTELY;BYMINUTE=15,45",
                           "FREQ=HOURLY;INTERVAL=5;BYHOUR=4,9,14;BYDAY=MO,TU,SA", "FREQ=DAILY;INTERVAL=3;BYDAY=SU",
                           "FREQ=MINUTELY;INTERVAL=45;BYHOUR=9,10,11"}) {
    const LocalSeconds start = secondsOf("20240131T090000");
    const auto rule = CompiledRule::make(*parseRule(text), start, false).value();
    ExpansionBudget budget(500);
    const auto last = rule.nth(100'000, budget);
    ASSERT_TRUE(last) << text;
    EXPECT_EQ(rule.count(*last, budget), 99'999) << text;
  }
}

TEST(CompiledRule, KnowsThatAnIntervalMeetsNoneOfItsHours) {
  for (const char* text : {"FREQ=HOURLY;INTERVAL=2;BYHOUR=8,10", "FREQ=MINUTELY;INTERVAL=30;BYMINUTE=15",
                           "FREQ=SECONDLY;INTERVAL=120;BYMINUTE=1"}) {
    const auto rule = CompiledRule::make(*parseRule(text), secondsOf("20240131T090000"), false).value();
    ExpansionBudget budget(10);
    EXPECT_EQ(rule.mayMeet(budget), false) << text;
  }
}

TEST(CompiledRule, CountsByArithmeticWhatWalkingCounts) {
  RandomRules rules(7);
  for (int i = 0; i < 400; ++i) {
    const std::string text = rules.next();
    const LocalSeconds start = secondsOf(i % 2 == 0 ? "20240115T093000" : "20240131T093000");
    const auto rule = CompiledRule::make(*parseRule(text), start, false).value();
    ExpansionBudget budget(100'000'000);
    std::int64_t walked = 0;
    LocalSeconds last = start;
    ASSERT_TRUE(rule.walk(start, secondsOf("20310615T100000"), budget, [&](LocalSeconds time) {
      last = time;
      return ++walked < 3000;
    }));
    if (walked == 0) { continue; }
    EXPECT_EQ(rule.nth(walked, budget), last) << text;
    EXPECT_EQ(rule.count(last, budget), walked - 1) << text;
    EXPECT_EQ(rule.count(last + 1, budget), walked) << text;
  }
}

TEST(CompiledRule, StopsWhenTheBudgetRunsOut) {
  const auto rule = CompiledRule::make(*parseRule("FREQ=DAILY;BYMONTH=2;BYMONTHDAY=30"), 0, false).value();
  ExpansionBudget budget(1000);
  EXPECT_FALSE(rule.walk(0, kLastLocalSecond, budget, [](LocalSeconds) { return true; }));
}

TEST(CompiledRule, RefusesPartsOutOfRange) {
  for (const char* text :
       {"FREQ=DAILY;BYHOUR=24", "FREQ=DAILY;BYMINUTE=60", "FREQ=DAILY;BYSECOND=61", "FREQ=MONTHLY;BYMONTHDAY=32",
        "FREQ=MONTHLY;BYMONTHDAY=0", "FREQ=YEARLY;BYYEARDAY=367", "FREQ=YEARLY;BYWEEKNO=54", "FREQ=YEARLY;BYMONTH=13",
        "FREQ=YEARLY;BYDAY=54MO", "FREQ=MONTHLY;BYDAY=MO;BYSETPOS=0"}) {
    const auto rule = parseRule(text);
    ASSERT_TRUE(rule) << text;
    EXPECT_FALSE(CompiledRule::make(*rule, 0, false)) << text;
  }
}

}  // namespace
}  // namespace orlocal::store
