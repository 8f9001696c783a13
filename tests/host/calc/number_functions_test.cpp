#include "host/calc/calc_fixture.h"

namespace orlocal::host::calc {
namespace {

class NumberFunctionsTest : public CalcTest {};

TEST_F(NumberFunctionsTest, CutsAndRounds) {
  EXPECT_EQ(eval("Int ( -1.5 )"), "-1");
  EXPECT_EQ(eval("Floor ( -1.5 ) & Ceiling ( -1.5 )"), "-2-1");
  EXPECT_EQ(eval("Round ( 2.345 ; 2 ) & \" \" & Round ( -2.5 ; 0 ) & \" \" & Round ( 1250 ; -2 )"), "2.35 -3 1300");
  EXPECT_EQ(eval("Truncate ( 2.349 ; 2 )"), "2.34");
}

TEST_F(NumberFunctionsTest, DividesWithRemainder) {
  EXPECT_EQ(eval("Mod ( 7 ; 3 ) & Mod ( -7 ; 3 )"), "12");
  EXPECT_EQ(eval("Div ( 7 ; 2 ) & Div ( -7 ; 2 )"), "3-4");
  EXPECT_EQ(eval("Mod ( 7 ; 0 )"), "?");
  EXPECT_EQ(eval("Div ( 7 ; 0 )"), "?");
}

TEST_F(NumberFunctionsTest, TellsSignAndSize) {
  EXPECT_EQ(eval("Abs ( -3 ) & Sign ( -3 ) & Sign ( 0 ) & Sign ( .1 )"), "3-101");
}

TEST_F(NumberFunctionsTest, TakesRoots) {
  EXPECT_EQ(eval("Sqrt ( 16 )"), "4");
  EXPECT_EQ(eval("Sqrt ( -1 )"), "?");
}

TEST_F(NumberFunctionsTest, CalculatesToTheAskedPrecision) {
  EXPECT_EQ(eval("SetPrecision ( 1 ; 20 ) / 3"), ".33333333333333333333");
}

TEST_F(NumberFunctionsTest, AggregatesWhatIsThere) {
  EXPECT_EQ(eval("Sum ( 1 ; \"\" ; 2 )"), "3");
  EXPECT_EQ(eval("Count ( 1 ; \"\" ; \"a\" )"), "2");
  EXPECT_EQ(eval("Average ( 1 ; \"\" ; 2 )"), "1.5");
  EXPECT_EQ(eval("Average ( \"\" )"), "");
}

TEST_F(NumberFunctionsTest, FindsTheLargestAndSmallestAndKeepsTheirType) {
  EXPECT_EQ(eval("Max ( 9 ; 10 ; \"\" ) & Min ( 9 ; 10 ; \"\" )"), "109");
  EXPECT_EQ(eval("Max ( Date ( 1 ; 1 ; 2026 ) ; Date ( 2 ; 1 ; 2026 ) )"), "2026-02-01");
  EXPECT_EQ(eval("Max ( \"\" )"), "");
}

TEST_F(NumberFunctionsTest, PassesQuestionMarksOn) {
  for (const char* calculation :
       {"Abs ( 1 / 0 )", "Round ( 1 / 0 ; 1 )", "Truncate ( 1 / 0 ; 1 )", "Sum ( 1 ; 1 / 0 )", "Average ( 1 ; 1 / 0 )",
        "Max ( 1 ; 1 / 0 )", "Mod ( 1 / 0 ; 2 )", "SetPrecision ( 1 / 0 ; 20 )"}) {
    EXPECT_EQ(eval(calculation), "?") << calculation;
  }
}

}  // namespace
}  // namespace orlocal::host::calc
