#include "host/fmwrapper/value.h"

#include <string>

#include <gtest/gtest.h>

#include "host/fmwrapper/unicode.h"

namespace orlocal::host {
namespace {

DateTime stamp(std::u16string_view text) { return DateTime::parseTimestamp(text).value(); }

std::string converted(Value value, fmx::NativeType type) {
  value.convertTo(type);
  return std::to_string(value.type()) + " " + value.utf8();
}

TEST(Value, IsEmptyAndValidWhenMade) {
  const Value value;
  EXPECT_TRUE(value.isEmpty());
  EXPECT_TRUE(value.isValid());
  EXPECT_EQ(value.type(), fmx::kInvalid);
  EXPECT_EQ(value.asText(), u"");
  EXPECT_EQ(value.asNumber(), Number(0));
  EXPECT_TRUE(value.asTimestamp().isEmpty());
}

TEST(Value, IsEmptyWithAnEmptyText) {
  EXPECT_TRUE(Value::ofText(u"").isEmpty());
  EXPECT_FALSE(Value::ofText(u" ").isEmpty());
  EXPECT_FALSE(Value::ofNumber(0).isEmpty());
}

TEST(Value, WritesEveryTypeAsText) {
  EXPECT_EQ(Value::ofNumber(Number::parse(u".5")).utf8(), ".5");
  Value truth;
  truth.setBoolean(true);
  EXPECT_EQ(truth.utf8(), "1");
  truth.setBoolean(false);
  EXPECT_EQ(truth.utf8(), "0");
  EXPECT_EQ(Value::ofDate(stamp(u"11/2/2026 9:00")).utf8(), "2026-11-02");
  EXPECT_EQ(Value::ofTime(stamp(u"11/2/2026 9:00")).utf8(), "09:00:00");
  EXPECT_EQ(Value::ofTimestamp(stamp(u"11/2/2026")).utf8(), "2026-11-02 00:00:00");
}

TEST(Value, CountsDatesInDaysAndTimesInSeconds) {
  EXPECT_EQ(Value::ofDate(stamp(u"1970-01-01")).asNumber(), Number(719163));
  EXPECT_EQ(Value::ofTime(stamp(u"1970-01-01 01:00")).asNumber(), Number(3600));
  EXPECT_EQ(Value::ofTimestamp(stamp(u"1970-01-01")).asNumber(), Number(62135596800));
}

TEST(Value, ReadsNumbersAsDaysAndSeconds) {
  const Value days = Value::ofNumber(719163);
  EXPECT_EQ(days.asDate().dateText(), u"1970-01-01");
  EXPECT_EQ(days.asTime().timeText(), u"199:46:03");
  EXPECT_EQ(Value::ofNumber(62135596800).asTimestamp().timestampText(), u"1970-01-01 00:00:00");
}

TEST(Value, ReadsTextsAsUsersTypeThem) {
  const Value value = Value::ofText(u"11/2/2026 9:00:00 AM");
  EXPECT_EQ(value.asDate().timestampText(), u"2026-11-02 00:00:00");
  EXPECT_EQ(value.asTime().timeText(), u"09:00:00");
  EXPECT_EQ(value.asTimestamp().timestampText(), u"2026-11-02 09:00:00");
  EXPECT_EQ(Value::ofText(u"no date").asTimestamp().isEmpty(), true);
}

TEST(Value, TakesDatesAndTimesFromTimestamps) {
  const Value value = Value::ofTimestamp(stamp(u"2026-11-02 09:00:00"));
  EXPECT_EQ(value.asDate().timestampText(), u"2026-11-02 00:00:00");
  EXPECT_EQ(value.asTime().timestampText(), u"09:00:00");
}

TEST(Value, TakesADateAsItsMidnight) {
  const Value value = Value::ofDate(stamp(u"2026-11-02 09:00"));
  EXPECT_EQ(value.asTimestamp().timestampText(), u"2026-11-02 00:00:00");
  EXPECT_EQ(value.asTime().timeText(), u"00:00:00");
}

TEST(Value, FindsNoDateInATime) { EXPECT_TRUE(Value::ofTime(DateTime::fromTime(9, 0, 0)).asDate().isEmpty()); }

TEST(Value, IsTrueWhenItsNumberIsNotZero) {
  EXPECT_TRUE(Value::ofText(u"a1").asBoolean());
  EXPECT_FALSE(Value::ofText(u"true").asBoolean());
  EXPECT_TRUE(Value::ofNumber(Number::parse(u"-.1")).asBoolean());
  EXPECT_FALSE(Value::invalid().asBoolean());
}

TEST(Value, LendsViewsThatStayWhileOthersAreMade) {
  const Value value = Value::ofText(u"2026-11-02 09:00:00");
  const std::u16string* text = &value.asText();
  const DateTime* date = &value.asDate();
  const DateTime* time = &value.asTime();
  value.asTimestamp();
  value.asNumber();
  EXPECT_EQ(text, &value.asText());
  EXPECT_EQ(*text, u"2026-11-02 09:00:00");
  EXPECT_EQ(date->timestampText(), u"2026-11-02 00:00:00");
  EXPECT_EQ(time->timestampText(), u"09:00:00");
}

TEST(Value, MakesItsViewsAnewAfterAChange) {
  Value value = Value::ofText(u"5");
  EXPECT_EQ(value.asNumber(), Number(5));
  value.setText(u"7");
  EXPECT_EQ(value.asNumber(), Number(7));
  value.setNumber(8);
  EXPECT_EQ(value.asText(), u"8");
}

TEST(Value, ConvertsItself) {
  EXPECT_EQ(converted(Value::ofText(u"a1b2"), fmx::kNumber), "2 12");
  EXPECT_EQ(converted(Value::ofNumber(5), fmx::kText), "1 5");
  EXPECT_EQ(converted(Value::ofText(u"11/2/2026"), fmx::kTimeStamp), "5 2026-11-02 00:00:00");
  EXPECT_EQ(converted(Value::ofTimestamp(stamp(u"2026-11-02 09:00")), fmx::kDate), "3 2026-11-02");
  EXPECT_EQ(converted(Value::ofTimestamp(stamp(u"2026-11-02 09:00")), fmx::kTime), "4 09:00:00");
  EXPECT_EQ(converted(Value::ofNumber(-4), fmx::kBoolean), "7 1");
}

TEST(Value, BecomesInvalidWhenItCannotConvert) {
  EXPECT_EQ(converted(Value::ofText(u"tomorrow"), fmx::kDate), "0 ?");
  EXPECT_EQ(converted(Value::ofNumber(-1), fmx::kTimeStamp), "0 ?");
  Value value = Value::ofText(u"tomorrow");
  EXPECT_FALSE(value.convertTo(fmx::kTime));
  EXPECT_FALSE(value.isValid());
  EXPECT_FALSE(value.convertTo(fmx::kText));
}

TEST(Value, StaysEmptyWhenItConverts) {
  EXPECT_EQ(converted(Value::ofText(u""), fmx::kDate), "3 ");
  EXPECT_EQ(converted(Value(), fmx::kText), "1 ");
}

TEST(Value, IsAnEmptyNumberWithoutADigit) {
  Value value = Value::ofText(u"none");
  EXPECT_TRUE(value.convertTo(fmx::kNumber));
  EXPECT_TRUE(value.isEmpty());
}

TEST(Value, KeepsItselfWhenTheTypeHoldsNoText) {
  EXPECT_EQ(converted(Value::ofText(u"x"), fmx::kBinary), "1 x");
  EXPECT_EQ(converted(Value::ofText(u"x"), fmx::kInvalid), "1 x");
}

TEST(Value, ShowsAQuestionMarkForNoNumber) {
  const Value value = Value::ofNumber(Number(1) / 0);
  EXPECT_FALSE(value.isValid());
  EXPECT_FALSE(value.isEmpty());
  EXPECT_EQ(value.utf8(), "?");
  EXPECT_FALSE(value.asNumber().isNumber());
}

TEST(Value, ClearsToATypeAndKeepsItsLocale) {
  Value value = Value::ofText(u"x");
  value.setLocale({fmx::kLocaleEnglish});
  value.clear(fmx::kTime);
  EXPECT_TRUE(value.isEmpty());
  EXPECT_EQ(value.type(), fmx::kTime);
  EXPECT_EQ(value.asText(), u"");
  EXPECT_EQ(value.locale().type, fmx::kLocaleEnglish);
}

TEST(Value, IsEmptyWithADateThatIsNone) {
  EXPECT_TRUE(Value::ofDate(DateTime()).isEmpty());
  EXPECT_TRUE(Value::ofTimestamp(DateTime()).isEmpty());
  EXPECT_TRUE(Value::ofTime(stamp(u"2026-11-02").dateOnly()).isEmpty());
}

TEST(Value, ComesFromUtf8) { EXPECT_EQ(Value::ofUtf8("\xC3\xA4").asText(), u"ä"); }

}  // namespace
}  // namespace orlocal::host
