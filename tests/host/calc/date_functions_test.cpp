#include "host/calc/calc_fixture.h"

namespace orlocal::host::calc {
namespace {

class DateFunctionsTest : public CalcTest {};

TEST_F(DateFunctionsTest, MakesDatesFromParts) {
  EXPECT_EQ(eval("Date ( 11 ; 2 ; 2026 )"), "2026-11-02");
  EXPECT_EQ(eval("Date ( 14 ; 1 ; 2026 )"), "2027-02-01");
  EXPECT_EQ(eval("Date ( 3 ; 0 ; 2028 )"), "2028-02-29");
  EXPECT_EQ(eval("Date ( 1 ; 1 ; 9999 )"), "?");
  EXPECT_EQ(typeOf("Date ( 11 ; 2 ; 2026 )"), fmx::kDate);
}

TEST_F(DateFunctionsTest, MakesTimesFromParts) {
  EXPECT_EQ(eval("Time ( 9 ; 5 ; 0 )"), "09:05:00");
  EXPECT_EQ(eval("Time ( 0 ; 90 ; 0 )"), "01:30:00");
  EXPECT_EQ(eval("Time ( 1.5 ; 0 ; 0 )"), "01:30:00");
  EXPECT_EQ(typeOf("Time ( 9 ; 5 ; 0 )"), fmx::kTime);
}

TEST_F(DateFunctionsTest, MakesTimestampsFromADateAndATime) {
  EXPECT_EQ(eval("Timestamp ( Date ( 11 ; 2 ; 2026 ) ; Time ( 9 ; 0 ; 0 ) )"), "2026-11-02 09:00:00");
  EXPECT_EQ(eval("Timestamp ( \"2026-11-02\" ; \"9:00\" )"), "2026-11-02 09:00:00");
  EXPECT_EQ(eval("Timestamp ( Date ( 11 ; 2 ; 2026 ) ; 0 )"), "2026-11-02 00:00:00");
  EXPECT_EQ(eval("Timestamp ( \"\" ; \"9:00\" )"), "?");
}

TEST_F(DateFunctionsTest, ReadsASingleArgument) {
  EXPECT_EQ(eval("Timestamp( \"2026-11-02 00:00:00\" )"), "2026-11-02 00:00:00");
  EXPECT_EQ(typeOf("Timestamp( \"2026-11-02 00:00:00\" )"), fmx::kTimeStamp);
  EXPECT_EQ(eval("Date ( \"2026-11-02\" )"), "2026-11-02");
  EXPECT_EQ(eval("Time ( \"9:00\" )"), "09:00:00");
  EXPECT_EQ(eval("Timestamp ( \"soon\" )"), "?");
}

TEST_F(DateFunctionsTest, RefusesTwoPartsOfThree) {
  EXPECT_EQ(errorOf("Date ( 11 ; 2 )"), "1:1: Date takes 1 or 3 arguments: Date ( month ; day ; year )");
  EXPECT_EQ(errorOf("Time ( 11 ; 2 )"), "1:1: Time takes 1 or 3 arguments: Time ( hours ; minutes ; seconds )");
}

TEST_F(DateFunctionsTest, TakesDatesApart) {
  EXPECT_EQ(eval("Let ( d = Date ( 11 ; 2 ; 2026 ) ; List ( Year ( d ) ; Month ( d ) ; Day ( d ) ; DayOfWeek ( d ) ; "
                 "DayOfYear ( d ) ; WeekOfYear ( d ) ; DayName ( d ) ; MonthName ( d ) ) )"),
            "2026¶11¶2¶2¶306¶45¶Monday¶November");
}

TEST_F(DateFunctionsTest, TakesTimesApart) {
  EXPECT_EQ(eval("Let ( t = Time ( 21 ; 5 ; 7.25 ) ; List ( Hour ( t ) ; Minute ( t ) ; Seconds ( t ) ) )"),
            "21¶5¶7.25");
  EXPECT_EQ(eval("Hour ( Timestamp ( \"2026-11-02 09:00:00\" ) )"), "9");
}

TEST_F(DateFunctionsTest, ReadsDatePartsFromTextsAndTimestamps) {
  EXPECT_EQ(eval("Day ( \"2026-11-02\" ) & Month ( Timestamp ( \"2026-11-02 09:00:00\" ) )"), "211");
}

TEST_F(DateFunctionsTest, TakesNothingApartToNothing) {
  EXPECT_EQ(eval("Year ( \"\" ) & DayName ( \"\" ) & Hour ( \"\" )"), "");
  EXPECT_EQ(eval("Year ( \"soon\" )"), "?");
  EXPECT_EQ(eval("Year ( 1 / 0 )"), "?");
}

TEST_F(DateFunctionsTest, CountsFiscalWeeksFromTheFirstWithFourDays) {
  EXPECT_EQ(eval("WeekOfYearFiscal ( Date ( 1 ; 1 ; 2026 ) ; 2 )"), "1");
  EXPECT_EQ(eval("WeekOfYearFiscal ( Date ( 1 ; 1 ; 2027 ) ; 2 )"), "53");
  EXPECT_EQ(eval("WeekOfYearFiscal ( Date ( 1 ; 4 ; 2027 ) ; 2 )"), "1");
  EXPECT_EQ(eval("WeekOfYearFiscal ( Date ( 1 ; 4 ; 2027 ) ; 8 )"), "?");
}

TEST_F(DateFunctionsTest, ReadsThePinnedClockInTheZone) {
  EXPECT_EQ(eval("Get ( CurrentTimestamp )"), "2026-11-02 09:00:00");
  EXPECT_EQ(eval("Get ( currentdate ) & \" \" & Get ( CurrentTime )"), "2026-11-02 09:00:00");
  EXPECT_EQ(eval("Get ( CurrentHostTimestamp )"), "2026-11-02 09:00:00");
  EXPECT_EQ(typeOf("Get ( CurrentDate )"), fmx::kDate);
  EXPECT_EQ(typeOf("Get ( CurrentTime )"), fmx::kTime);
  EXPECT_EQ(typeOf("Get ( CurrentTimestamp )"), fmx::kTimeStamp);
}

TEST_F(DateFunctionsTest, CountsUtcMillisecondsFromYearOne) {
  EXPECT_EQ(eval("Get ( CurrentTimeUTCMilliseconds ) / 1000 - GetAsNumber ( Timestamp ( \"2026-11-02 08:00:00\" ) )"),
            "0");
}

}  // namespace
}  // namespace orlocal::host::calc
