#include "host/calc/calc_fixture.h"

namespace orlocal::host::calc {
namespace {

class OperatorsTest : public CalcTest {};

TEST_F(OperatorsTest, CalculatesInDecimals) {
  EXPECT_EQ(eval(".1 + .2"), ".3");
  EXPECT_EQ(eval("1 / 3"), ".3333333333333333");
  EXPECT_EQ(eval("9007199254740993 + 1"), "9007199254740994");
  EXPECT_EQ(eval("1e3"), "1000");
}

TEST_F(OperatorsTest, ReadsTextsAsNumbersInArithmetic) {
  EXPECT_EQ(eval("\"5 apples\" + 1"), "6");
  EXPECT_EQ(eval("\"\" + 1"), "1");
}

TEST_F(OperatorsTest, ShowsAQuestionMarkForADivisionByZero) {
  EXPECT_EQ(eval("1 / 0"), "?");
  EXPECT_EQ(eval("1 / 0 + 1"), "?");
  EXPECT_EQ(eval("1 / 0 = 1"), "?");
  EXPECT_EQ(eval("not ( 1 / 0 )"), "?");
  EXPECT_EQ(eval("-( 1 / 0 )"), "?");
  EXPECT_EQ(eval("1 and 1 / 0"), "?");
  EXPECT_EQ(eval("\"a\" & 1 / 0"), "a?");
}

TEST_F(OperatorsTest, JoinsTexts) {
  EXPECT_EQ(eval("\"a\" & 1 & \"b\" & .5"), "a1b.5");
  EXPECT_EQ(eval("\"a\" & ¶ & \"b\""), "a¶b");
  EXPECT_EQ(typeOf("1 & 2"), fmx::kText);
}

TEST_F(OperatorsTest, ComparesTextsWithoutCase) {
  EXPECT_EQ(eval("\"Work\" = \"WORK\""), "1");
  EXPECT_EQ(eval("\"Straße\" = \"STRASSE\""), "1");
  EXPECT_EQ(eval("\"apple\" < \"Banana\""), "1");
  EXPECT_EQ(eval("\"10\" < \"9\""), "1");
  EXPECT_EQ(eval("\"a\" ≠ \"A\""), "0");
}

TEST_F(OperatorsTest, ComparesAsNumbersWhenOneSideIsANumber) {
  EXPECT_EQ(eval("\"10\" < 9"), "0");
  EXPECT_EQ(eval("9 < \"10\""), "1");
  EXPECT_EQ(eval("\"5 apples\" = 5"), "1");
  EXPECT_EQ(eval("2 ≥ 2 and 2 ≤ 2 and 3 > 2 and 2 <> 3"), "1");
}

TEST_F(OperatorsTest, KeepsATextWithoutDigitsApartFromZero) {
  EXPECT_EQ(eval("\"!!ERROR!!\" = 0"), "0");
  EXPECT_EQ(eval("0 = \"!!ERROR!!\""), "0");
  EXPECT_EQ(eval("\"\" = 0"), "0");
  EXPECT_EQ(eval("\"\" = \"\""), "1");
  EXPECT_EQ(eval("\"\" < -5"), "1");
}

TEST_F(OperatorsTest, ComparesDatesWithTextsThatAreDates) {
  EXPECT_EQ(eval("Date ( 11 ; 2 ; 2026 ) = \"2026-11-02\""), "1");
  EXPECT_EQ(eval("\"2026-11-01\" < Date ( 11 ; 2 ; 2026 )"), "1");
  EXPECT_EQ(eval("Date ( 11 ; 2 ; 2026 ) = \"tomorrow\""), "0");
}

TEST_F(OperatorsTest, ComparesADateWithATimestampAtMidnight) {
  EXPECT_EQ(eval("Date ( 11 ; 2 ; 2026 ) = Timestamp ( \"2026-11-02 00:00:00\" )"), "1");
  EXPECT_EQ(eval("Date ( 11 ; 2 ; 2026 ) < Timestamp ( \"2026-11-02 00:00:01\" )"), "1");
}

TEST_F(OperatorsTest, CountsDaysBetweenDates) {
  EXPECT_EQ(eval("Date ( 11 ; 9 ; 2026 ) - Date ( 11 ; 2 ; 2026 )"), "7");
  EXPECT_EQ(typeOf("Date ( 11 ; 9 ; 2026 ) - Date ( 11 ; 2 ; 2026 )"), fmx::kNumber);
}

TEST_F(OperatorsTest, CountsSecondsBetweenTimestamps) {
  EXPECT_EQ(eval("Timestamp ( \"2026-11-02 10:00:00\" ) - Timestamp ( \"2026-11-02 09:00:00\" )"), "3600");
}

TEST_F(OperatorsTest, KeepsADateADateAcrossDays) {
  EXPECT_EQ(eval("Date ( 12 ; 31 ; 2026 ) + 1"), "2027-01-01");
  EXPECT_EQ(eval("1 + Date ( 12 ; 31 ; 2026 )"), "2027-01-01");
  EXPECT_EQ(eval("Date ( 1 ; 1 ; 2027 ) - 1"), "2026-12-31");
}

TEST_F(OperatorsTest, KeepsATimestampATimestampAcrossSeconds) {
  EXPECT_EQ(eval("Timestamp ( \"2026-11-02 23:00:00\" ) + 7200"), "2026-11-03 01:00:00");
  EXPECT_EQ(eval("Timestamp ( \"2026-11-02 23:00:00\" ) - Time ( 1 ; 30 ; 0 )"), "2026-11-02 21:30:00");
  EXPECT_EQ(eval("Time ( 1 ; 0 ; 0 ) + Timestamp ( \"2026-11-02 23:00:00\" )"), "2026-11-03 00:00:00");
}

TEST_F(OperatorsTest, KeepsTimesTimes) {
  EXPECT_EQ(eval("Time ( 9 ; 0 ; 0 ) + Time ( 0 ; 30 ; 0 )"), "09:30:00");
  EXPECT_EQ(eval("Time ( 9 ; 0 ; 0 ) - 60"), "08:59:00");
}

TEST_F(OperatorsTest, MakesPlainNumbersOfEverythingElse) {
  EXPECT_EQ(eval("Time ( 1 ; 0 ; 0 ) * 2"), "7200");
  EXPECT_EQ(typeOf("Time ( 1 ; 0 ; 0 ) / 2"), fmx::kNumber);
}

TEST_F(OperatorsTest, LeavesTheRangeOfDatesWithAQuestionMark) {
  EXPECT_EQ(eval("Date ( 1 ; 1 ; 1 ) - 1000"), "?");
  EXPECT_EQ(eval("Date ( 12 ; 31 ; 4000 ) + 1"), "?");
}

TEST_F(OperatorsTest, JoinsTruthValues) {
  EXPECT_EQ(eval("1 and 0"), "0");
  EXPECT_EQ(eval("1 or 0"), "1");
  EXPECT_EQ(eval("1 xor 1"), "0");
  EXPECT_EQ(eval("not 5"), "0");
  EXPECT_EQ(eval("not \"\""), "1");
}

TEST_F(OperatorsTest, LeavesTheRightSideAloneWhenTheLeftDecides) {
  int calls = 0;
  library.add({"Orlo_Act", "Orlo_Act", "", 0, 0}, [&](auto) {
    ++calls;
    return Value::ofNumber(1);
  });
  EXPECT_EQ(eval("0 and Orlo_Act"), "0");
  EXPECT_EQ(eval("1 or Orlo_Act"), "1");
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(eval("1 and Orlo_Act"), "1");
  EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace orlocal::host::calc
