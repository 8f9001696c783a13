#include "store/recurrence/rule_text.h"

#include <gtest/gtest.h>

namespace orlocal::store {
namespace {

TEST(RuleTexts, ComeBackAsTheyWere) {
  for (const char* text :
       {"FREQ=DAILY", "FREQ=WEEKLY;UNTIL=20261231T225959Z;INTERVAL=2;BYDAY=MO,FR;WKST=SU",
        "FREQ=MONTHLY;COUNT=5;BYDAY=-1FR,2TU", "FREQ=YEARLY;BYMONTH=3,11;BYMONTHDAY=-1",
        "FREQ=YEARLY;BYWEEKNO=20;BYYEARDAY=1,-1", "FREQ=SECONDLY;BYHOUR=1;BYMINUTE=2;BYSECOND=3;BYSETPOS=-1",
        "RSCALE=HEBREW;FREQ=YEARLY;BYMONTH=5L;BYMONTHDAY=8;SKIP=FORWARD", "RSCALE=CHINESE;FREQ=YEARLY;BYMONTH=1,2,4L",
        "RSCALE=GREGORIAN;FREQ=MONTHLY;COUNT=3;SKIP=BACKWARD"}) {
    const auto rule = parseRule(text);
    ASSERT_TRUE(rule) << text;
    EXPECT_EQ(ruleText(*rule), text);
  }
}

TEST(RuleTexts, AreReadWithoutCaseAndWithBlanksAndEmptyParts) {
  const auto rule = parseRule("freq=weekly; byday = mo , +2tu ;;RSCALE=gregorian;SKIP=OMIT;");
  ASSERT_TRUE(rule) << rule.error().message;
  EXPECT_EQ(ruleText(*rule), "FREQ=WEEKLY;BYDAY=MO,2TU");
}

TEST(RuleTexts, AreRefusedWithTheReason) {
  EXPECT_EQ(parseRule("COUNT=2").error().message, "the rule has no FREQ");
  EXPECT_EQ(parseRule("FREQ=FORTNIGHTLY").error().message, "the rule's part \"FREQ=FORTNIGHTLY\" makes no sense");
  EXPECT_EQ(parseRule("FREQ=DAILY;X-EVERY=2").error().message, "the rule's part \"X-EVERY=2\" cannot be followed");
  for (const char* text : {"FREQ=DAILY;COUNT=0", "FREQ=DAILY;COUNT=x", "FREQ=DAILY;INTERVAL=0",
                           "FREQ=DAILY;UNTIL=tomorrow", "FREQ=DAILY;BYDAY=XX", "FREQ=DAILY;BYDAY=0MO",
                           "FREQ=DAILY;BYHOUR=", "FREQ=DAILY;WKST=1", "FREQ=DAILY;SKIP=FORWARD", "FREQ=DAILY;COUNT",
                           "FREQ=DAILY;COUNT=99999999999999999999", "FREQ=YEARLY;BYMONTH=5L",
                           "RSCALE=HEBREW;FREQ=YEARLY;BYMONTH=L", "RSCALE=;FREQ=YEARLY", "FREQ=DAILY;SKIP=SIDEWAYS"}) {
    EXPECT_FALSE(parseRule(text)) << text;
  }
}

}  // namespace
}  // namespace orlocal::store
