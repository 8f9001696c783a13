#include "host/commands/words/rule_words.h"

#include <gtest/gtest.h>

#include "store/recurrence/rule_text.h"

namespace orlocal::host {
namespace {

struct RuleCase {
  const char* rule;
  const char* words;
};

/// Of series that start on Monday, 2 November 2026.
constexpr RuleCase kRules[] = {
    {"FREQ=DAILY", "every day"},
    {"FREQ=DAILY;INTERVAL=3", "every 3 days"},
    {"FREQ=DAILY;COUNT=1", "every day, 1 time"},
    {"FREQ=DAILY;COUNT=10", "every day, 10 times"},
    {"FREQ=DAILY;BYDAY=MO,TU,WE,TH,FR", "every weekday"},
    {"FREQ=DAILY;BYMONTH=1", "every day in January"},
    {"FREQ=WEEKLY", "every week on Monday"},
    {"FREQ=WEEKLY;BYDAY=MO,WE", "every week on Monday and Wednesday"},
    {"FREQ=WEEKLY;INTERVAL=2;BYDAY=SU,TU,SA", "every 2 weeks on Sunday, Tuesday and Saturday"},
    {"FREQ=WEEKLY;BYDAY=FR,TH,WE,TU,MO", "every weekday"},
    {"FREQ=WEEKLY;INTERVAL=2;BYDAY=MO,TU,WE,TH,FR", "every 2 weeks on weekdays"},
    {"FREQ=WEEKLY;UNTIL=20261218", "every week on Monday, until 18 December 2026"},
    // The last moment lies on the next day where the viewer is.
    {"FREQ=WEEKLY;UNTIL=20261218T233000Z", "every week on Monday, until 19 December 2026"},
    {"FREQ=MONTHLY", "every month on the 2nd"},
    {"FREQ=MONTHLY;BYMONTHDAY=15", "every month on the 15th"},
    {"FREQ=MONTHLY;BYMONTHDAY=1,11,21,22,23", "every month on the 1st, the 11th, the 21st, the 22nd and the 23rd"},
    {"FREQ=MONTHLY;BYMONTHDAY=-1", "every month on the last day"},
    {"FREQ=MONTHLY;BYMONTHDAY=-2", "every month on the second to last day"},
    {"FREQ=MONTHLY;INTERVAL=6;BYDAY=2TU", "every 6 months on the second Tuesday"},
    {"FREQ=MONTHLY;BYDAY=-1FR", "every month on the last Friday"},
    {"FREQ=MONTHLY;BYDAY=1MO,3MO", "every month on the first Monday and the third Monday"},
    {"FREQ=MONTHLY;BYDAY=SA", "every month on Saturday"},
    {"FREQ=MONTHLY;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=1", "every month on the first weekday"},
    {"FREQ=MONTHLY;BYDAY=MO,TU,WE,TH,FR;BYSETPOS=-1", "every month on the last weekday"},
    {"FREQ=MONTHLY;BYDAY=SA,SU;BYSETPOS=2", "every month on the second of Saturday and Sunday"},
    {"FREQ=MONTHLY;BYDAY=FR;BYMONTHDAY=13", "every month on Friday where it is the 13th"},
    {"FREQ=YEARLY", "every year on 2 November"},
    {"FREQ=YEARLY;INTERVAL=4", "every 4 years on 2 November"},
    {"FREQ=YEARLY;BYMONTH=12;BYMONTHDAY=25", "every year on 25 December"},
    {"FREQ=YEARLY;BYMONTH=11;BYDAY=4TH", "every year on the fourth Thursday of November"},
    {"FREQ=YEARLY;BYMONTH=3,9", "every year on the 2nd of March and September"},
    {"FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=-1", "every year on the last day of February"},
    {"FREQ=YEARLY;BYYEARDAY=100,-1", "every year on the 100th day and the last day of the year"},
    {"FREQ=YEARLY;BYWEEKNO=20;BYDAY=MO", "every year on Monday in week 20"},
    {"FREQ=YEARLY;BYDAY=20MO", "every year on the 20th Monday"},
    {"FREQ=HOURLY;INTERVAL=2", "every 2 hours"},
    {"FREQ=MINUTELY;INTERVAL=15;BYHOUR=9,10", "every 15 minutes in hours 9 and 10"},
    {"FREQ=DAILY;BYHOUR=9;BYMINUTE=30", "every day at 09:30"},
    {"FREQ=DAILY;BYHOUR=9", "every day in hour 9"},
    {"FREQ=MONTHLY;RSCALE=GREGORIAN;SKIP=BACKWARD;BYMONTHDAY=31",
     "every month on the 31st, or the day before where there is none"},
    {"FREQ=YEARLY;RSCALE=HEBREW;BYMONTH=5L;BYMONTHDAY=8", "every year of the HEBREW calendar"},
};

TEST(RuleWords, SayWhatTheRuleMeans) {
  const store::Zone berlin = *store::Zone::named("Europe/Berlin");
  for (const RuleCase& each : kRules) {
    const auto rule = store::parseRule(each.rule);
    ASSERT_TRUE(rule) << each.rule;
    EXPECT_EQ(ruleWords(*rule, store::LocalDay(2026, 11, 2), berlin), each.words) << each.rule;
  }
}

TEST(RuleWords, LeaveOutWhatOnlyTheStartTells) {
  EXPECT_EQ(ruleWords(*store::parseRule("FREQ=WEEKLY"), std::nullopt, store::Zone()), "every week");
}

TEST(RecurrenceWords, NameDaysThatWereAddedAndTakenOut) {
  const auto day = [](int number) {
    return store::CalendarTime{store::CalendarTime::Kind::kDate, store::LocalTime(2026, 12, number), ""};
  };
  store::Recurrence recurrence;
  recurrence.rules = {*store::parseRule("FREQ=WEEKLY"), *store::parseRule("FREQ=MONTHLY;BYMONTHDAY=1")};
  recurrence.added = {day(24)};
  recurrence.excluded = {day(7), day(14)};
  recurrence.exceptionRules = {{*store::parseRule("FREQ=YEARLY;BYMONTH=1"), std::nullopt}};
  EXPECT_EQ(recurrenceWords(recurrence, std::nullopt, store::Zone()),
            "every week; and every month on the 1st; also on 24 December 2026; not on 7 December 2026 and "
            "14 December 2026; but not every year in January");
  recurrence = {};
  for (int i = 1; i <= 5; ++i) { recurrence.added.push_back(day(i)); }
  EXPECT_EQ(recurrenceWords(recurrence, std::nullopt, store::Zone()), "on 5 days");
}

}  // namespace
}  // namespace orlocal::host
