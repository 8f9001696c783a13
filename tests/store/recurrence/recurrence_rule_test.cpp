#include "store/recurrence/recurrence_rule.h"

#include <algorithm>
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
