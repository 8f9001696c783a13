#include <string>

#include <gtest/gtest.h>

#include "host/fmwrapper/date_time.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host {
namespace {

/// What users type, and the timestamp, or the time, that it means; "none" when it is neither.
struct Typed {
  const char16_t* text;
  const char* meaning;
};

class TypedTimestamp : public ::testing::TestWithParam<Typed> {};

TEST_P(TypedTimestamp, MeansThatMoment) {
  const auto read = DateTime::parseTimestamp(GetParam().text);
  EXPECT_EQ(read ? toUtf8(read->timestampText()) : "none", GetParam().meaning);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, TypedTimestamp,
    ::testing::Values(
        Typed{u"11/2/2026 9:00:00 AM", "2026-11-02 09:00:00"}, Typed{u"11/2/2026", "2026-11-02 00:00:00"},
        Typed{u"2026-11-02 09:00:00", "2026-11-02 09:00:00"}, Typed{u"2026-11-02T09:00", "2026-11-02 09:00:00"},
        Typed{u"2026/11/02 9:05", "2026-11-02 09:05:00"}, Typed{u" 2026-11-02  23:59:59 ", "2026-11-02 23:59:59"},
        Typed{u"11.2.2026", "2026-11-02 00:00:00"}, Typed{u"11-2-2026 9 pm", "2026-11-02 21:00:00"},
        Typed{u"11/2/2026 12:00 AM", "2026-11-02 00:00:00"}, Typed{u"11/2/2026 12:00PM", "2026-11-02 12:00:00"},
        Typed{u"11/2/2026 9:00:00\u202FPM", "2026-11-02 21:00:00"},
        Typed{u"2026-11-02 09:00:00.25", "2026-11-02 09:00:00.25"},
        Typed{u"2026-11-02 09:00:00.1234567", "2026-11-02 09:00:00.123456"},
        Typed{u"2014-03-09 02:30:00 -0500", "2014-03-09 02:30:00"},
        Typed{u"2014-03-09T02:30:00Z", "2014-03-09 02:30:00"},
        Typed{u"2014-03-09T02:30:00+01:00", "2014-03-09 02:30:00"},
        Typed{u"2026-11-02 24:00:00", "2026-11-03 00:00:00"}, Typed{u"11/2", "2026-11-02 00:00:00"},
        Typed{u"1/2/27", "2027-01-02 00:00:00"}, Typed{u"1/2/56", "2056-01-02 00:00:00"},
        Typed{u"1/2/57", "1957-01-02 00:00:00"}, Typed{u"1/2/0099", "0099-01-02 00:00:00"},
        Typed{u"0001-01-01", "0001-01-01 00:00:00"}, Typed{u"12/31/4000 23:59:59", "4000-12-31 23:59:59"},
        Typed{u"2024-02-29", "2024-02-29 00:00:00"}, Typed{u"", "none"}, Typed{u"tomorrow", "none"},
        Typed{u"2026-02-29", "none"}, Typed{u"13/1/2026", "none"}, Typed{u"4001-01-01", "none"},
        Typed{u"0000-01-01", "none"}, Typed{u"12/31/4000 24:00:00", "none"}, Typed{u"11/2-2026", "none"},
        Typed{u"11/2/2026 9:60", "none"}, Typed{u"11/2/2026 13:00 PM", "none"}, Typed{u"11/2/2026 0:30 am", "none"},
        Typed{u"11/2/2026 9:00 noon", "none"}, Typed{u"2026-11-02T", "none"}, Typed{u"2026-11-02 -1:00", "none"},
        Typed{u"2026-11-02 25:00", "none"}, Typed{u"2026-11-02 09:00:00 -123456", "none"}, Typed{u"2.5", "none"},
        Typed{u"9:00", "none"}, Typed{u"99999999999999999999/1/1", "none"}, Typed{u"2026-11", "none"}));

class TypedTime : public ::testing::TestWithParam<Typed> {};

TEST_P(TypedTime, MeansThatTime) {
  const auto read = DateTime::parseTime(GetParam().text);
  EXPECT_EQ(read ? toUtf8(read->timeText()) : "none", GetParam().meaning);
}

INSTANTIATE_TEST_SUITE_P(Texts, TypedTime,
                         ::testing::Values(Typed{u"9:00", "09:00:00"}, Typed{u"09:00:00.25", "09:00:00.25"},
                                           Typed{u"9 PM", "21:00:00"}, Typed{u"9pm", "21:00:00"},
                                           Typed{u"9", "09:00:00"}, Typed{u"30:00:00", "30:00:00"},
                                           Typed{u"-1:30", "-01:30:00"}, Typed{u"12:00 am", "00:00:00"},
                                           Typed{u"2026-11-02 10:11:12", "10:11:12"}, Typed{u"11/2/2026", "00:00:00"},
                                           Typed{u"0:99", "none"}, Typed{u"", "none"}, Typed{u"1:2:3:4", "none"},
                                           Typed{u"9:00:00.", "none"}));

TEST(TypedDate, LeavesTheTimeToBeRead) {
  EXPECT_EQ(DateTime::parseDate(u"11/2/2026 9:00 AM")->dateText(), u"2026-11-02");
}

}  // namespace
}  // namespace orlocal::host
