#include <gtest/gtest.h>

#include "host/fmwrapper/fm_objects.h"

namespace fmx {
namespace {

using namespace orlocal::host::testing;
using orlocal::host::testing::Data;

std::int32_t typeOf(const Data& data) {
  return fine([&](Exception* x) { return FM_Data_GetNativeType(data.get(), x); });
}

bool isEmpty(const Data& data) {
  return fine([&](Exception* x) { return FM_Data_IsEmpty(data.get(), x); });
}

bool isValid(const Data& data) {
  return fine([&](Exception* x) { return FM_Data_IsValid(data.get(), x); });
}

TEST(FmData, IsEmptyWhenMade) {
  const Data made = data();
  EXPECT_TRUE(isEmpty(made));
  EXPECT_TRUE(isValid(made));
  EXPECT_EQ(typeOf(made), kInvalid);
  EXPECT_EQ(textOf(made), u"");
}

TEST(FmData, IsEmptyWithAnEmptyText) {
  EXPECT_TRUE(isEmpty(textData(u"")));
  EXPECT_FALSE(isEmpty(textData(u"x")));
}

TEST(FmData, IsNeverAFindRequest) {
  EXPECT_FALSE(fine([](Exception* x) { return FM_Data_IsFindRequest(textData(u"*").get(), x); }));
}

TEST(FmData, CopiesTheTextThatItIsSetTo) {
  const Data value = data();
  {
    const auto source = text(u"abc");
    fine([&](Exception* x) {
      EXPECT_EQ(FM_Data_SetAsText(value.get(), source.get(), FM_Data_GetLocale(value.get(), x), kText, x), 0);
    });
  }
  EXPECT_EQ(textOf(value), u"abc");
  EXPECT_EQ(typeOf(value), kText);
}

TEST(FmData, KeepsTheLocaleOfItsText) {
  const Data value = data();
  const auto english = locale(kLocaleEnglish);
  fine([&](Exception* x) { FM_Data_SetAsText(value.get(), text(u"a").get(), english.get(), kText, x); });
  const Locale* borrowed = fine([&](Exception* x) { return FM_Data_GetLocale(value.get(), x); });
  ASSERT_NE(borrowed, nullptr);
  fine([&](Exception* x) { FM_Data_SetAsText(value.get(), text(u"b").get(), borrowed, kText, x); });
  EXPECT_EQ(fine([&](Exception* x) { return FM_Data_GetLocale(value.get(), x); }), borrowed);
}

TEST(FmData, SetsItselfToItsOwnText) {
  const Data value = textData(u"abc");
  fine([&](Exception* x) {
    FM_Data_SetAsText(value.get(), FM_Data_GetAsText(value.get(), x), FM_Data_GetLocale(value.get(), x), kText, x);
  });
  EXPECT_EQ(textOf(value), u"abc");
}

TEST(FmData, TurnsATextIntoTheTypeAskedFor) {
  const Data value = data();
  fine([&](Exception* x) {
    EXPECT_EQ(FM_Data_SetAsText(value.get(), text(u"a12").get(), locale().get(), kNumber, x), 0);
  });
  EXPECT_EQ(typeOf(value), kNumber);
  EXPECT_EQ(textOf(value), u"12");
}

TEST(FmData, AnswersAnErrorForATextThatIsNoDate) {
  const Data value = data();
  EXPECT_NE(
      fine([&](Exception* x) { return FM_Data_SetAsText(value.get(), text(u"soon").get(), locale().get(), kDate, x); }),
      0);
  EXPECT_FALSE(isValid(value));
  EXPECT_EQ(textOf(value), u"?");
}

TEST(FmData, HoldsNumbers) {
  const Data value = data();
  fine([&](Exception* x) { FM_Data_SetAsNumber(value.get(), number(0.5).get(), kNumber, x); });
  EXPECT_EQ(typeOf(value), kNumber);
  EXPECT_EQ(textOf(value), u".5");
  EXPECT_EQ(doubleOf(fine([&](Exception* x) { return FM_Data_GetAsNumber(value.get(), x); })), 0.5);
  EXPECT_TRUE(fine([&](Exception* x) { return FM_Data_GetAsBoolean(value.get(), x); }));
}

TEST(FmData, HoldsDatesTimesAndTimestamps) {
  const Data value = data();
  const auto when = moment(u"2026-11-02 09:30:15");
  fine([&](Exception* x) { FM_Data_SetAsDate(value.get(), when.get(), kDate, x); });
  EXPECT_EQ(typeOf(value), kDate);
  EXPECT_EQ(textOf(value), u"2026-11-02");
  fine([&](Exception* x) { FM_Data_SetAsTime(value.get(), when.get(), kTime, x); });
  EXPECT_EQ(typeOf(value), kTime);
  EXPECT_EQ(textOf(value), u"09:30:15");
  fine([&](Exception* x) { FM_Data_SetAsTimeStamp(value.get(), when.get(), kTimeStamp, x); });
  EXPECT_EQ(typeOf(value), kTimeStamp);
  EXPECT_EQ(textOf(value), u"2026-11-02 09:30:15");
}

TEST(FmData, SetsWhicheverKindOfDateTimeIsNamed) {
  const Data value = data();
  const auto when = moment(u"2026-11-02 09:30:15");
  fine([&](Exception* x) { FM_Data_SetDateTime(value.get(), when.get(), kDate, kDate, x); });
  EXPECT_EQ(textOf(value), u"2026-11-02");
  fine([&](Exception* x) { FM_Data_SetDateTime(value.get(), when.get(), kTime, kText, x); });
  EXPECT_EQ(textOf(value), u"09:30:15");
  EXPECT_EQ(typeOf(value), kText);
  fine([&](Exception* x) { FM_Data_SetDateTime(value.get(), when.get(), kTimeStamp, kTimeStamp, x); });
  EXPECT_EQ(textOf(value), u"2026-11-02 09:30:15");
  EXPECT_EQ(codeOf([&](Exception* x) { FM_Data_SetDateTime(value.get(), when.get(), kText, kText, x); }), 2);
}

TEST(FmData, LendsTheViewsOfATypedText) {
  const Data value = textData(u"11/2/2026 9:00:00 AM");
  fine([&](Exception* x) {
    const DateTime* date = FM_Data_GetAsDate(value.get(), x);
    const DateTime* time = FM_Data_GetAsTime(value.get(), x);
    const DateTime* stamp = FM_Data_GetAsTimeStamp(value.get(), x);
    EXPECT_EQ(partsOf(date), "2026-11-2 0:0:0");
    EXPECT_EQ(partsOf(time), "0-0-0 9:0:0");
    EXPECT_EQ(partsOf(stamp), "2026-11-2 9:0:0");
    EXPECT_EQ(FM_Data_GetAsDate(value.get(), x), date);
  });
}

TEST(FmData, ConvertsItself) {
  const Data value = textData(u"11/2/2026");
  fine([&](Exception* x) { FM_Data_ConvertData(value.get(), kTimeStamp, x); });
  EXPECT_EQ(typeOf(value), kTimeStamp);
  EXPECT_EQ(textOf(value), u"2026-11-02 00:00:00");
}

TEST(FmData, ClearsToAType) {
  const Data value = textData(u"x");
  fine([&](Exception* x) { FM_Data_Clear(value.get(), kNumber, x); });
  EXPECT_TRUE(isEmpty(value));
  EXPECT_EQ(typeOf(value), kNumber);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_Data_Clear(value.get(), 8, x); }), 2);
}

TEST(FmData, HasNoContainer) {
  const Data value = textData(u"x");
  const BinaryData* binary = fine([&](Exception* x) { return FM_Data_GetBinaryData(value.get(), x); });
  EXPECT_EQ(fine([&](Exception* x) { return FM_BinaryData_GetCount(binary, x); }), 0);
}

TEST(FmData, IsEmptyAfterBinaryDataOfNothing) {
  const Data value = textData(u"x");
  const orlocal::host::testing::BinaryData binary(fine([](Exception* x) { return FM_BinaryData_Constructor1(x); }));
  fine([&](Exception* x) { FM_Data_SetBinaryData(value.get(), binary.get(), false, x); });
  EXPECT_EQ(typeOf(value), kText);
  EXPECT_TRUE(isEmpty(value));
  fine([&](Exception* x) { FM_Data_SetBinaryData(value.get(), binary.get(), true, x); });
  EXPECT_EQ(typeOf(value), kBinary);
}

TEST(FmData, FailsWithoutAnObject) {
  const Data value = data();
  EXPECT_EQ(codeOf([](Exception* x) { FM_Data_IsEmpty(nullptr, x); }), 2);
  EXPECT_EQ(codeOf([](Exception* x) { FM_Data_GetAsText(nullptr, x); }), 2);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_Data_SetAsNumber(value.get(), nullptr, kNumber, x); }), 2);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_Data_SetAsText(value.get(), text().get(), nullptr, kText, x); }), 2);
}

}  // namespace
}  // namespace fmx
