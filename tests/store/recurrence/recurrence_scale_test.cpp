#include "store/recurrence/recurrence_scale.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <libical/ical.h>

#include "store/recurrence/recurrence_rule.h"
#include "store/recurrence/rule_text.h"
#include "store/recurrence/rule_times.h"

namespace orlocal::store {
namespace {

using Texts = std::vector<std::string>;

Texts walked(const CompiledRule& rule, const std::string& from, const std::string& to) {
  Texts found;
  ExpansionBudget budget;
  EXPECT_TRUE(rule.walk(secondsOf(from), secondsOf(to), budget,
                        [&](LocalSeconds time) { return found.push_back(textOf(time)), true; }));
  return found;
}

Texts libicals(const std::string& text, const std::string& start, const std::string& from, const std::string& to) {
  Texts found;
  const icalrecurrencetype rule = icalrecurrencetype_from_string(text.c_str());
  // A copy that this version of libical leaves to whoever asked.
  const std::unique_ptr<char, decltype(&std::free)> scale(rule.rscale, &std::free);
  icalrecur_iterator* iterator = icalrecur_iterator_new(rule, icaltime_from_string(start.c_str()));
  if (iterator == nullptr) { return found; }
  for (icaltimetype time = icalrecur_iterator_next(iterator); !icaltime_is_null_time(time);
       time = icalrecur_iterator_next(iterator)) {
    const std::string shown = icaltime_as_ical_string(time);
    if (shown >= to) { break; }
    if (shown >= from) { found.push_back(shown); }
  }
  icalrecur_iterator_free(iterator);
  // A day that is moved onto another one comes twice there.
  std::sort(found.begin(), found.end());
  found.erase(std::unique(found.begin(), found.end()), found.end());
  return found;
}

/// libical's own answers in floating time, read in one go; ours in windows that come in any order.
TEST(ScaledRules, AgreeWithLibicalInEveryWindow) {
  int compared = 0;
  for (const char* scale : {"HEBREW", "ETHIOPIC", "ISLAMIC-CIVIL", "PERSIAN", "INDIAN", "COPTIC", "GREGORIAN"}) {
    for (const char* shape :
         {"FREQ=YEARLY", "FREQ=YEARLY;INTERVAL=3", "FREQ=MONTHLY", "FREQ=MONTHLY;INTERVAL=5",
          "FREQ=YEARLY;BYMONTH=2;BYMONTHDAY=29,30", "FREQ=MONTHLY;BYMONTHDAY=30;BYHOUR=9,17", "FREQ=YEARLY;BYDAY=1MO",
          "FREQ=MONTHLY;BYDAY=-1FR", "FREQ=YEARLY;BYMONTH=12;BYMONTHDAY=-1"}) {
      for (const char* skip : {"", ";SKIP=FORWARD", ";SKIP=BACKWARD"}) {
        const std::string text = std::string("RSCALE=") + scale + ";" + shape + skip;
        const auto rule = parseRule(text);
        ASSERT_TRUE(rule) << text;
        if (!ScaledRule::isNeededFor(*rule)) { continue; }
        const auto made = CompiledRule::make(*rule, secondsOf("20140130T093000"), false);
        ASSERT_TRUE(made) << text;
        for (const auto& [from, to] :
             {std::pair("20260101T000000", "20270101T000000"), std::pair("20140101T000000", "20160101T000000"),
              std::pair("20190301T000000", "20190601T000000")}) {
          const Texts theirs = libicals(text, "20140130T093000", from, to);
          compared += static_cast<int>(theirs.size());
          EXPECT_EQ(walked(*made, from, to), theirs) << text << " from " << from;
        }
      }
    }
  }
  EXPECT_GT(compared, 2000);
}

TEST(ScaledRules, StandBesideTheGregorianArithmeticOnlyWhereItDoesNotDo) {
  const auto needed = [](const char* text) { return ScaledRule::isNeededFor(*parseRule(text)); };
  EXPECT_FALSE(needed("FREQ=YEARLY"));
  EXPECT_FALSE(needed("RSCALE=GREGORIAN;FREQ=MONTHLY;BYMONTHDAY=31"));
  EXPECT_FALSE(needed("RSCALE=HEBREW;FREQ=WEEKLY;BYDAY=MO;INTERVAL=2"));
  EXPECT_TRUE(needed("RSCALE=HEBREW;FREQ=YEARLY"));
  EXPECT_TRUE(needed("RSCALE=GREGORIAN;FREQ=MONTHLY;BYMONTHDAY=31;SKIP=FORWARD"));
  EXPECT_TRUE(needed("RSCALE=HEBREW;FREQ=DAILY;BYMONTH=5"));
}

TEST(ScaledRules, StopWhenTheBudgetRunsOut) {
  const auto rule = CompiledRule::make(*parseRule("RSCALE=HEBREW;FREQ=MONTHLY"), 0, true).value();
  ExpansionBudget budget(20'000);
  EXPECT_FALSE(rule.walk(0, kLastLocalSecond, budget, [](LocalSeconds) { return true; }));
}

TEST(ScaledRules, AreWalkedByManyThreadsAtOnce) {
  const auto rule = CompiledRule::make(*parseRule("RSCALE=ETHIOPIC;FREQ=MONTHLY"), secondsOf("20140130"), true).value();
  const Texts expected = libicals("RSCALE=ETHIOPIC;FREQ=MONTHLY", "20140130T000000", "20200101", "20300101");
  std::vector<Texts> found(4);
  std::vector<std::thread> threads;
  for (Texts& mine : found) {
    threads.emplace_back([&rule, &mine] { mine = walked(rule, "20200101", "20300101"); });
  }
  for (std::thread& thread : threads) { thread.join(); }
  for (const Texts& mine : found) { EXPECT_EQ(mine, expected); }
}

TEST(ScaledRules, RefuseWhatTheyCannotFollow) {
  for (const char* text :
       {"RSCALE=NOWHERE;FREQ=YEARLY", "RSCALE=HEBREW;FREQ=DAILY;BYMONTH=5L", "RSCALE=HEBREW;FREQ=YEARLY;INTERVAL=99999",
        "RSCALE=HEBREW;FREQ=YEARLY;BYMONTH=1;BYMONTHDAY=31", "RSCALE=CHINESE;FREQ=YEARLY;BYDAY=1MO;BYSETPOS=5",
        "RSCALE=CHINESE;FREQ=MONTHLY;BYMONTHDAY=1;BYDAY=4MO", "RSCALE=CHINESE;FREQ=YEARLY;BYMONTH=12L;BYMONTHDAY=30",
        "RSCALE=ETHIOPIC;FREQ=YEARLY;BYMONTH=13;BYDAY=2MO", "RSCALE=HEBREW;FREQ=YEARLY;BYYEARDAY=385",
        "RSCALE=CHINESE;FREQ=MONTHLY;BYDAY=6MO", "RSCALE=ETHIOPIC;FREQ=MONTHLY;INTERVAL=13;BYMONTH=2"}) {
    const auto rule = parseRule(text);
    ASSERT_TRUE(rule) << text;
    const auto status = ScaledRule::check(*rule);
    ASSERT_FALSE(status) << text;
    EXPECT_EQ(status.error().code, ErrorCode::kUnsupported);
  }
}

}  // namespace
}  // namespace orlocal::store
