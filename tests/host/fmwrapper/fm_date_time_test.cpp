#include <string>

#include <gtest/gtest.h>

#include "host/fmwrapper/fm_objects.h"

namespace fmx {
namespace {

using namespace orlocal::host::testing;
using orlocal::host::testing::FixPt;

ErrorCode setDate(const Moment& moment, std::int16_t month, std::int16_t day, std::int16_t year) {
  return fine([&](Exception* x) { return FM_DateTime_SetNormalizedDate1(moment.get(), month, day, year, x); });
}

TEST(FmDateTime, IsEmptyWhenMade) { EXPECT_EQ(partsOf(moment()), "0-0-0 0:0:0"); }

TEST(FmDateTime, ReadsTexts) {
  EXPECT_EQ(partsOf(moment(u"11/2/2026 9:05:07 AM")), "2026-11-2 9:5:7");
  EXPECT_EQ(partsOf(moment(u"9:30")), "0-0-0 9:30:0");
  EXPECT_EQ(partsOf(moment(u"soon")), "0-0-0 0:0:0");
}

TEST(FmDateTime, ReadsCountedUnits) {
  const auto rules = locale();
  const Moment read(fine([&](Exception* x) { return FM_DateTime_Constructor2(u"2026-11-02999", 10, rules.get(), x); }));
  EXPECT_EQ(partsOf(read), "2026-11-2 0:0:0");
}

TEST(FmDateTime, TakesMonthDayYearInThatOrder) {
  const Moment value = moment();
  EXPECT_EQ(setDate(value, 3, 14, 2015), 0);
  EXPECT_EQ(partsOf(value), "2015-3-14 0:0:0");
}

TEST(FmDateTime, TakesYearMonthDayAsNumbersInThatOrder) {
  const Moment value = moment();
  EXPECT_EQ(fine([&](Exception* x) {
              return FM_DateTime_SetNormalizedDate2(value.get(), number(2015).get(), number(14).get(),
                                                    number(1.9).get(), x);
            }),
            0);
  EXPECT_EQ(partsOf(value), "2016-2-1 0:0:0");
}

TEST(FmDateTime, CarriesIntoTheNextPart) {
  const Moment value = moment();
  setDate(value, 12, 32, 2026);
  EXPECT_EQ(partsOf(value), "2027-1-1 0:0:0");
  fine([&](Exception* x) { FM_DateTime_SetNormalizedTime1(value.get(), 1, 61, 61, 1'000'000, x); });
  EXPECT_EQ(partsOf(value), "2027-1-1 2:2:2");
}

TEST(FmDateTime, AnswersAnErrorOutsideItsYearsAndKeepsTheDate) {
  const Moment value = moment(u"2026-11-02");
  EXPECT_NE(setDate(value, 1, 1, 4001), 0);
  EXPECT_NE(setDate(value, 12, 31, 0), 0);
  EXPECT_EQ(partsOf(value), "2026-11-2 0:0:0");
  EXPECT_EQ(setDate(value, 12, 31, 4000), 0);
  EXPECT_EQ(setDate(value, 1, 1, 1), 0);
}

TEST(FmDateTime, CountsHoursBeyondADay) {
  const Moment value = moment();
  fine([&](Exception* x) { FM_DateTime_SetNormalizedTime1(value.get(), 100'000, 0, 0, 0, x); });
  EXPECT_EQ(fine([&](Exception* x) { return FM_DateTime_GetHour(value.get(), x); }), 100'000);
}

TEST(FmDateTime, TakesTimesAsNumbers) {
  const Moment value = moment();
  fine([&](Exception* x) {
    EXPECT_EQ(FM_DateTime_SetNormalizedTime2(value.get(), number(9).get(), number(30).get(), number(15.25).get(), x),
              0);
  });
  EXPECT_EQ(partsOf(value), "0-0-0 9:30:15");
  EXPECT_EQ(fine([&](Exception* x) { return FM_DateTime_GetUSec(value.get(), x); }), 250'000);
}

TEST(FmDateTime, GivesSecondsWithTheirFraction) {
  const Moment value = moment(u"1970-01-01 00:01:02.5");
  const FixPt result = number();
  fine([&](Exception* x) { FM_DateTime_GetSeconds(value.get(), result.get(), x); });
  EXPECT_EQ(doubleOf(result.get()), 2.5);
  fine([&](Exception* x) { FM_DateTime_GetSecsSinceMidnight(value.get(), result.get(), x); });
  EXPECT_EQ(doubleOf(result.get()), 62.5);
  fine([&](Exception* x) { FM_DateTime_GetSecondsSinceEpoch(value.get(), result.get(), x); });
  EXPECT_EQ(doubleOf(result.get()), 62135596862.5);
}

TEST(FmDateTime, TakesSecondsSinceMidnightAndSinceTheEpoch) {
  const Moment value = moment(u"2026-11-02");
  fine([&](Exception* x) { FM_DateTime_SetSecsSinceMidnight(value.get(), number(3661).get(), x); });
  EXPECT_EQ(partsOf(value), "2026-11-2 1:1:1");
  fine(
      [&](Exception* x) { FM_DateTime_SetSecondsSinceEpoch(value.get(), number(std::int64_t{62135596801}).get(), x); });
  EXPECT_EQ(partsOf(value), "1970-1-1 0:0:1");
}

TEST(FmDateTime, CountsDaysFromOne) {
  const Moment value = moment();
  fine([&](Exception* x) { FM_DateTime_SetDaysSinceEpoch(value.get(), 1, x); });
  EXPECT_EQ(partsOf(value), "1-1-1 0:0:0");
  EXPECT_EQ(fine([&](Exception* x) { return FM_DateTime_GetDaysSinceEpoch(value.get(), x); }), 1);
  fine([&](Exception* x) { FM_DateTime_SetDaysSinceEpoch(value.get(), std::int64_t{1} << 40, x); });
  EXPECT_EQ(fine([&](Exception* x) { return FM_DateTime_GetDaysSinceEpoch(value.get(), x); }), 0);
}

TEST(FmDateTime, CopiesOnePartOfAnother) {
  const Moment value = moment(u"2026-11-02 09:00");
  fine([&](Exception* x) { FM_DateTime_SetDate(value.get(), moment(u"2000-01-01 01:02").get(), x); });
  EXPECT_EQ(partsOf(value), "2000-1-1 9:0:0");
  fine([&](Exception* x) { FM_DateTime_SetTime(value.get(), moment(u"1999-09-09 01:02").get(), x); });
  EXPECT_EQ(partsOf(value), "2000-1-1 1:2:0");
}

TEST(FmDateTime, KnowsTheCalendar) {
  const Moment value = moment(u"2024-03-01");
  fine([&](Exception* x) {
    EXPECT_TRUE(FM_DateTime_IsLeapYear(value.get(), x));
    EXPECT_EQ(FM_DateTime_DayOfWeek(value.get(), x), 6);
    EXPECT_EQ(FM_DateTime_DayOfYear(value.get(), x), 61);
    EXPECT_EQ(FM_DateTime_WeekOfYear(value.get(), x), 9);
  });
}

TEST(FmDateTime, ReadsTheWallClock) {
  const Moment value = moment();
  fine([&](Exception* x) { FM_DateTime_Now(value.get(), x); });
  EXPECT_EQ(partsOf(value), "2026-11-2 9:0:0");
}

TEST(FmDateTime, Compares) {
  const Moment value = moment(u"2026-11-02 09:00");
  EXPECT_TRUE(fine(
      [&](Exception* x) { return FM_DateTime_operatorEQ(value.get(), moment(u"11/2/2026 9:00:00 AM").get(), x); }));
  EXPECT_TRUE(fine([&](Exception* x) { return FM_DateTime_operatorNE(value.get(), moment(u"2026-11-02").get(), x); }));
}

TEST(FmDateTime, FailsWithoutAnObject) {
  EXPECT_EQ(codeOf([](Exception* x) { FM_DateTime_GetYear(nullptr, x); }), 2);
  EXPECT_EQ(codeOf([](Exception* x) { FM_DateTime_Constructor3(nullptr, locale().get(), x); }), 2);
  EXPECT_EQ(codeOf([](Exception* x) { FM_DateTime_Constructor2(u"", 0, nullptr, x); }), 2);
  EXPECT_EQ(codeOf([](Exception* x) { FM_DateTime_SetSecsSinceMidnight(moment().get(), nullptr, x); }), 2);
}

}  // namespace
}  // namespace fmx
