#include "store/recurrence/day_pattern.h"

#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "store/recurrence/recurrence_rule.h"
#include "store/recurrence/rule_text.h"
#include "store/recurrence/rule_times.h"

namespace orlocal::store {
namespace {

using Frequency = RecurrenceRule::Frequency;

CompiledRule compiled(const char* text, const char* start) {
  return *CompiledRule::make(*parseRule(text), secondsOf(start), false);
}

/// Rules of every part that a pattern may have, often several at once.
RecurrenceRule randomRule(std::mt19937& random) {
  const auto pick = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
  RecurrenceRule rule;
  rule.frequency = static_cast<Frequency>(pick(3, 6));
  rule.interval = pick(0, 1) == 0 ? 1 : pick(2, 5);
  if (pick(0, 2) == 0) { rule.weekStart = pick(0, 6); }
  for (int i = pick(-3, 3); i > 0; --i) { rule.byMonth.push_back(pick(1, 12)); }
  for (int i = pick(-3, 4); i > 0; --i) { rule.byMonthDay.push_back(pick(0, 2) == 0 ? -pick(1, 31) : pick(1, 31)); }
  const bool ordinals = pick(0, 1) == 0;
  for (int i = pick(-2, 3); i > 0; --i) {
    const int ordinal = pick(0, 1) == 0 ? pick(1, 5) : -pick(1, 4);
    rule.byDay.push_back({ordinals ? ordinal : 0, pick(0, 6)});
  }
  if (pick(0, 3) == 0) { rule.byHour = {pick(0, 23)}; }
  return rule;
}

TEST(DayPattern, TakesTheDaysThatTheRuleMakes) {
  std::mt19937 random(20261123);
  int compared = 0, taken = 0;
  for (int i = 0; i < 600; ++i) {
    const RecurrenceRule rule = randomRule(random);
    const LocalSeconds start =
        secondsOf("20240131T093000") + static_cast<LocalSeconds>(random() % 400) * kSecondsPerDay;
    const CompiledRule made = *CompiledRule::make(rule, start, false);
    const auto pattern = made.dayPattern();
    if (!pattern) { continue; }
    ++compared;
    const std::vector<int> slots = pattern->slots();
    ExpansionBudget budget;
    for (DayNumber day = dayOf(start) + 1; day < dayOf(start) + 1500; ++day) {
      const DayParts parts(day);
      const bool takes = pattern->takes(parts);
      ASSERT_EQ(takes, made.makes(day * kSecondsPerDay + made.timeOfDay(), budget)) << ruleText(rule) << " on " << day;
      if (!takes) { continue; }
      ++taken;
      const auto ofDay = DayPattern::slotsOf(parts);
      const auto shared = std::count_if(ofDay.begin(), ofDay.end(), [&](int slot) {
        return std::find(slots.begin(), slots.end(), slot) != slots.end();
      });
      ASSERT_EQ(shared, 1) << ruleText(rule) << " on " << day;
    }
  }
  EXPECT_GT(compared, 400);
  EXPECT_GT(taken, 15'000);
}

TEST(DayPattern, NamesEachSlotOnce) {
  for (const char* text : {"FREQ=MONTHLY;BYMONTHDAY=28,-1,-2", "FREQ=MONTHLY;BYDAY=1MO,-1MO,MO", "FREQ=DAILY",
                           "FREQ=YEARLY;BYMONTH=2,3;BYMONTHDAY=-1,1"}) {
    std::vector<int> slots = compiled(text, "20240131T093000").dayPattern()->slots();
    std::sort(slots.begin(), slots.end());
    EXPECT_EQ(std::adjacent_find(slots.begin(), slots.end()), slots.end()) << text;
    EXPECT_GE(slots.front(), 0);
    EXPECT_LT(slots.back(), DayPattern::kSlots);
  }
}

TEST(DayPattern, IsForRulesOfOneTimeADayThatLookAtNothingElse) {
  for (const char* text :
       {"FREQ=HOURLY", "FREQ=DAILY;BYHOUR=9,17", "FREQ=MONTHLY;BYDAY=MO;BYSETPOS=-1", "FREQ=YEARLY;BYYEARDAY=100",
        "FREQ=YEARLY;BYWEEKNO=20", "FREQ=YEARLY;BYDAY=20MO", "FREQ=MONTHLY;BYDAY=-5MO", "FREQ=YEARLY;RSCALE=CHINESE"}) {
    EXPECT_FALSE(compiled(text, "20240131T093000").dayPattern()) << text;
  }
  EXPECT_TRUE(compiled("FREQ=DAILY;BYHOUR=17", "20240131T093000").dayPattern());
  EXPECT_EQ(compiled("FREQ=DAILY;BYHOUR=17", "20240131T093015").timeOfDay(), 17 * 3600 + 30 * 60 + 15);
}

TEST(DayPattern, OfADateTakesItEveryYear) {
  const DayPattern pattern = DayPattern::onDateOf(dayNumber(2026, 11, 23));
  EXPECT_TRUE(pattern.takes(DayParts(dayNumber(2026, 11, 23))));
  EXPECT_TRUE(pattern.takes(DayParts(dayNumber(2027, 11, 23))));
  EXPECT_FALSE(pattern.takes(DayParts(dayNumber(2026, 11, 24))));
  EXPECT_EQ(pattern.slots(), std::vector<int>{DayPattern::slotsOf(DayParts(dayNumber(2026, 11, 23))).back()});
}

TEST(DayPattern, OfNothingTakesEveryDay) {
  EXPECT_TRUE(DayPattern().takes(DayParts(dayNumber(2026, 11, 23))));
  EXPECT_EQ(DayPattern().slots(), std::vector<int>{DayPattern::slotsOf(DayParts(0)).front()});
}

}  // namespace
}  // namespace orlocal::store
