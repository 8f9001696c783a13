#include "host/calc/calc_fixture.h"

namespace orlocal::host::calc {
namespace {

class ConversionsTest : public CalcTest {};

TEST_F(ConversionsTest, ReadsNumbersOutOfTexts) {
  EXPECT_EQ(eval("GetAsNumber ( \"-$1,200.50\" )"), "-1200.5");
  EXPECT_EQ(eval("GetAsNumber ( \"abc\" )"), "");
  EXPECT_EQ(typeOf("GetAsNumber ( \"7\" )"), fmx::kNumber);
}

TEST_F(ConversionsTest, CountsDaysAndSeconds) {
  EXPECT_EQ(eval("GetAsNumber ( Date ( 1 ; 2 ; 1 ) )"), "2");
  EXPECT_EQ(eval("GetAsNumber ( Time ( 1 ; 0 ; 1 ) )"), "3601");
}

TEST_F(ConversionsTest, ReadsDatesTimesAndTimestamps) {
  EXPECT_EQ(eval("GetAsDate ( \"2026-11-02\" )"), "2026-11-02");
  EXPECT_EQ(eval("GetAsTime ( \"9:05\" )"), "09:05:00");
  EXPECT_EQ(eval("GetAsTimestamp ( \"2026-11-02 09:00:00\" )"), "2026-11-02 09:00:00");
  EXPECT_EQ(typeOf("GetAsDate ( \"2026-11-02\" )"), fmx::kDate);
  EXPECT_EQ(typeOf("GetAsTime ( \"9:05\" )"), fmx::kTime);
  EXPECT_EQ(typeOf("GetAsTimestamp ( \"2026-11-02\" )"), fmx::kTimeStamp);
}

TEST_F(ConversionsTest, ShowsAQuestionMarkForWhatCannotBeRead) {
  EXPECT_EQ(eval("GetAsDate ( \"soon\" )"), "?");
  EXPECT_EQ(eval("GetAsTime ( \"soon\" )"), "?");
  EXPECT_EQ(eval("GetAsTimestamp ( \"soon\" )"), "?");
}

TEST_F(ConversionsTest, TakesTheDateAndTheTimeOfATimestamp) {
  EXPECT_EQ(eval("GetAsDate ( Timestamp ( \"2026-11-02 09:00:00\" ) )"), "2026-11-02");
  EXPECT_EQ(eval("GetAsTime ( Timestamp ( \"2026-11-02 09:00:00\" ) )"), "09:00:00");
}

TEST_F(ConversionsTest, MakesTextsOfEverything) {
  EXPECT_EQ(eval("GetAsText ( Date ( 11 ; 2 ; 2026 ) ) & GetAsText ( 1 / 0 )"), "2026-11-02?");
  EXPECT_EQ(typeOf("GetAsText ( 5 )"), fmx::kText);
}

TEST_F(ConversionsTest, TellsTrueFromFalseByTheNumber) {
  EXPECT_EQ(eval("GetAsBoolean ( \"2 things\" ) & GetAsBoolean ( \"none\" ) & GetAsBoolean ( \"\" )"), "100");
  EXPECT_EQ(eval("GetAsBoolean ( 1 / 0 )"), "?");
}

}  // namespace
}  // namespace orlocal::host::calc
