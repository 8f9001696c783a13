#include "bridge/conversions.h"

#include <limits>

#include "bridge/bridge_fixture.h"
#include "fakes/host_call.h"

namespace orlocal {
namespace {

using fakes::HostCall;
using fakes::WallClock;

constexpr int kHour = 3600;

Date dateOfText(const char* text) { return dateWithString(text).value(); }

class DateArgument : public BridgeTest {
 protected:
  void useZone(int offset) { system->m_defaultTimeZone = std::make_shared<fakes::FakeTimeZone>(offset); }
  /// `now` from 2026-10-25 01:00 UTC on, `before` earlier.
  void useZoneWithSummer(int before, int now, Date present = fakes::fakeNow()) {
    using Zone = fakes::FakeTimeZone;
    system->m_defaultTimeZone = std::make_shared<Zone>(
        "Fake/Summer",
        std::vector<Zone::Offset>{{Date{}, before, "S"}, {dateOfText("2026-10-25 01:00:00 +0000"), now, "W"}}, present);
  }

  template <class Argument>
  std::optional<Date> dateOf(const Argument& argument) {
    HostCall call;
    call.add(argument);
    return dateArgument(HostArguments(call.arguments()), 0);
  }
};

TEST_F(DateArgument, IsAWallClockOfTheDefaultZone) {
  useZone(-5 * kHour);
  EXPECT_EQ(dateOf(WallClock{2014, 3, 9, 2, 30, 0}), dateOfText("2014-03-09 02:30:00 -0500"));
}

TEST_F(DateArgument, TakesTheOffsetInForceOnThatDay) {
  useZoneWithSummer(2 * kHour, 1 * kHour);
  EXPECT_EQ(dateOf(WallClock{2026, 7, 1, 9, 0, 0}), dateOfText("2026-07-01 09:00:00 +0200"));
  EXPECT_EQ(dateOf(WallClock{2026, 12, 1, 9, 0, 0}), dateOfText("2026-12-01 09:00:00 +0100"));
}

TEST_F(DateArgument, ArrivesInZonesOfPartHoursWhereThatIsSet) {
  struct Case {
    int offset;
    const char* means;
  };
  for (const auto& [offset, means] :
       {Case{5 * kHour + 1800, "2026-07-01 09:00:00 +0530"}, Case{5 * kHour + 2700, "2026-07-01 09:00:00 +0545"},
        Case{-(3 * kHour + 1800), "2026-07-01 09:00:00 -0330"}, Case{9 * kHour + 1800, "2026-07-01 09:00:00 +0930"},
        Case{-1800, "2026-07-01 09:00:00 -0030"}, Case{2 * kHour, "2026-07-01 09:00:00 +0200"}}) {
    useZone(offset);
    system->m_settings.datesInPartHourZones = true;
    EXPECT_EQ(dateOf(WallClock{2026, 7, 1, 9, 0, 0}), dateOfText(means)) << offset;
    system->m_settings.datesInPartHourZones = false;
    EXPECT_EQ(dateOf(WallClock{2026, 7, 1, 9, 0, 0}).has_value(), offset % kHour == 0) << offset;
  }
}

TEST_F(DateArgument, IsFirstReadWithTheOffsetOfThisMoment) {
  const WallClock twice{2026, 10, 25, 2, 30, 0};
  useZoneWithSummer(2 * kHour, 1 * kHour, dateOfText("2026-07-01 09:00:00 +0200"));
  EXPECT_EQ(dateOf(twice), dateOfText("2026-10-25 02:30:00 +0200"));
  useZoneWithSummer(2 * kHour, 1 * kHour, dateOfText("2026-12-01 09:00:00 +0100"));
  EXPECT_EQ(dateOf(twice), dateOfText("2026-10-25 02:30:00 +0100"));
}

TEST_F(DateArgument, IsLostWhenTheOffsetOfThisMomentIsNoWholeNumberOfHours) {
  useZoneWithSummer(11 * kHour, 10 * kHour + 1800, dateOfText("2026-12-01 09:00:00 +0000"));
  EXPECT_EQ(dateOf(WallClock{2026, 7, 1, 9, 0, 0}), std::nullopt);
}

TEST_F(DateArgument, IsReadAtGreenwich) {
  useZone(0);
  EXPECT_EQ(dateOf(WallClock{2026, 7, 1, 9, 0, 5}), dateOfText("2026-07-01 09:00:05 +0000"));
}

TEST_F(DateArgument, IsLostInZonesOfHalfAndQuarterHours) {
  for (const int offset : {5 * kHour + 1800, 5 * kHour + 2700, -3 * kHour - 1800, 9 * kHour + 1800, 1800, -1800}) {
    useZone(offset);
    EXPECT_EQ(dateOf(WallClock{2026, 7, 1, 9, 0, 0}), std::nullopt) << offset;
  }
}

TEST_F(DateArgument, IsLostWhenTheOffsetOfThatDayIsNoWholeNumberOfHours) {
  useZoneWithSummer(10 * kHour + 1800, 11 * kHour);
  EXPECT_EQ(dateOf(WallClock{2026, 7, 1, 9, 0, 0}), std::nullopt);
  EXPECT_EQ(dateOf(WallClock{2026, 12, 1, 9, 0, 0}), dateOfText("2026-12-01 09:00:00 +1100"));
}

TEST_F(DateArgument, TakesARestBelowAHundredSecondsForMinutes) {
  useZone(kHour + 30);
  EXPECT_EQ(dateOf(WallClock{2026, 7, 1, 9, 0, 0}), dateOfText("2026-07-01 09:00:00 +0130"));
  useZone(kHour + 75);
  EXPECT_EQ(dateOf(WallClock{2026, 7, 1, 9, 0, 0}), std::nullopt);
}

TEST_F(DateArgument, IsNoneForAnEmptyText) { EXPECT_EQ(dateOf(""), std::nullopt); }

TEST_F(DateArgument, IsNoneWhenItIsMissing) {
  HostCall call;
  EXPECT_EQ(dateArgument(HostArguments(call.arguments()), 0), std::nullopt);
}

TEST_F(DateArgument, ReadsTheHostsTimestampOnceAndItsPartsTwice) {
  useZone(kHour);
  HostCall call;
  call.add(WallClock{2026, 7, 1, 9, 0, 0});
  host.isRecording = true;
  dateArgument(HostArguments(call.arguments()), 0);
  const std::vector<std::string> parts = {"FM_DateTime_GetYear", "FM_DateTime_GetMonth",  "FM_DateTime_GetDay",
                                          "FM_DateTime_GetHour", "FM_DateTime_GetMinute", "FM_DateTime_GetSec"};
  std::vector<std::string> expected = {"FM_DataVect_Size", "FM_DataVect_AtAsText 0", "FM_Text_GetSize",
                                       "FM_DataVect_AtAsTimeStamp 0"};
  expected.insert(expected.end(), parts.begin(), parts.end());
  expected.insert(expected.end(), parts.begin(), parts.end());
  EXPECT_EQ(host.calls, expected);
}

class TextArgument : public BridgeTest {};

TEST_F(TextArgument, KeepsEveryCharacter) {
  const std::string text = " Grüße,\r\n 🗓 " + std::string(1000, 'x');
  HostCall call;
  call.add(text);
  EXPECT_EQ(textArgument(HostArguments(call.arguments()), 0), text);
}

TEST_F(TextArgument, IsNoneWhenEmptyOrMissing) {
  HostCall call;
  call.add("");
  EXPECT_EQ(textArgument(HostArguments(call.arguments()), 0), std::nullopt);
  EXPECT_EQ(textArgument(HostArguments(call.arguments()), 1), std::nullopt);
}

TEST_F(TextArgument, IsCopiedThroughUtf16) {
  HostCall call;
  call.add("abc");
  host.isRecording = true;
  textArgument(HostArguments(call.arguments()), 0);
  EXPECT_EQ(host.calls, (std::vector<std::string>{"FM_DataVect_Size", "FM_DataVect_AtAsText 0", "FM_Text_GetSize",
                                                  "FM_Text_GetUnicode 0 3"}));
}

class NumberArgument : public BridgeTest {};

TEST_F(NumberArgument, IsConvertedByTheHost) {
  HostCall call;
  call.add(-15);
  call.add("42");
  call.add("nonsense");
  host.isRecording = true;
  const HostArguments arguments(call.arguments());
  EXPECT_EQ(numberArgument(arguments, 0), -15);
  EXPECT_EQ(host.calls, (std::vector<std::string>{"FM_DataVect_Size", "FM_DataVect_AtAsNumber 0", "FM_FixPt_AsLong"}));
  EXPECT_EQ(numberArgument(arguments, 1), 42);
  EXPECT_EQ(numberArgument(arguments, 2), 0);
}

TEST_F(NumberArgument, IsZeroWhenMissing) {
  HostCall call;
  EXPECT_EQ(numberArgument(HostArguments(call.arguments()), 0), 0);
}

class StringResult : public BridgeTest {};

TEST_F(StringResult, IsAssignedAsUnicodeWithTheResultsOwnLocale) {
  HostCall call;
  host.isRecording = true;
  AssignStringResult("Grüße 🗓", call.result());
  EXPECT_EQ(host.calls, (std::vector<std::string>{"FM_Text_Constructor1", "FM_Text_AssignUnicode Grüße 🗓",
                                                  "FM_Data_GetLocale", "FM_Data_SetAsText type 1", "FM_Text_Delete"}));
  host.isRecording = false;
  EXPECT_EQ(call.shown(), "text Grüße 🗓");
}

TEST_F(StringResult, MayBeEmpty) {
  HostCall call;
  AssignStringResult("", call.result());
  EXPECT_EQ(call.shown(), "text");
}

class WeekdayList : public BridgeTest {
 protected:
  std::vector<long> daysIn(const char* text) {
    std::vector<long> days;
    const auto list = NSStringToNSArrayDOW(text).value();
    for (const auto& day : list) { days.push_back(day->dayOfTheWeek()); }
    return days;
  }
};

TEST_F(WeekdayList, NamesADayOnEachLine) {
  EXPECT_EQ(daysIn("2\r4\r6"), (std::vector<long>{2, 4, 6}));
  EXPECT_TRUE(system->m_log.empty());
}

TEST_F(WeekdayList, IsOneDayWithoutALineEnd) { EXPECT_EQ(daysIn("7"), std::vector<long>{7}); }

TEST_F(WeekdayList, IsNoneForNoText) { EXPECT_FALSE(NSStringToNSArrayDOW(std::nullopt).has_value()); }

TEST_F(WeekdayList, TakesTheLeadingDigitsOfALine) { EXPECT_EQ(daysIn(" 3rd\r2,5"), (std::vector<long>{3, 2})); }

TEST_F(WeekdayList, LeavesOutWhatIsNoDayWithALogLine) {
  EXPECT_EQ(daysIn("1\r8\rx\r\r-1\r7"), (std::vector<long>{1, 7}));
  EXPECT_EQ(system->m_log, std::vector<std::string>(4, "Empty object"));
}

TEST_F(WeekdayList, GoesOnAfterAPlatformException) {
  eventKit->dayThatThrows = 3;
  EXPECT_EQ(daysIn("2\r3\r4"), (std::vector<long>{2, 4}));
  EXPECT_EQ(system->m_log, std::vector<std::string>{"Empty object"});
}

TEST_F(WeekdayList, IsEmptyWhenNoLineIsADay) { EXPECT_EQ(daysIn("x"), std::vector<long>{}); }

TEST_F(WeekdayList, IsSplitAtCarriageReturnsOnly) { EXPECT_EQ(daysIn("2\n4"), std::vector<long>{2}); }

class NumberList : public BridgeTest {
 protected:
  std::vector<long> numbersIn(const char* text) { return NSStringToNSArrayInts(text).value(); }
};

TEST_F(NumberList, HoldsANumberOfEachLine) { EXPECT_EQ(numbersIn("1\r15\r31"), (std::vector<long>{1, 15, 31})); }

TEST_F(NumberList, LeavesOutWhatIsNoNumberWithoutALogLine) {
  EXPECT_EQ(numbersIn("1\r\r3"), (std::vector<long>{1, 3}));
  EXPECT_EQ(numbersIn("1\rx\r15"), (std::vector<long>{1, 15}));
  EXPECT_EQ(numbersIn("3rd\r1.5\r1,000\r--2"), std::vector<long>{});
  EXPECT_TRUE(system->m_log.empty());
}

TEST_F(NumberList, KeepsNumbersOfAnySize) {
  EXPECT_EQ(numbersIn("-1\r0\r400"), (std::vector<long>{-1, 0, 400}));
  EXPECT_EQ(numbersIn("99999999999999999999\r-99999999999999999999"),
            (std::vector<long>{std::numeric_limits<long>::max(), std::numeric_limits<long>::min()}));
}

TEST_F(NumberList, DoesNotMindBlanksAroundANumber) { EXPECT_EQ(numbersIn(" 5 \r\t6"), (std::vector<long>{5, 6})); }

TEST_F(NumberList, IsNoneForNoText) { EXPECT_FALSE(NSStringToNSArrayInts(std::nullopt).has_value()); }

}  // namespace
}  // namespace orlocal
