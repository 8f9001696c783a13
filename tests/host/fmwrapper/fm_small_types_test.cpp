#include <gtest/gtest.h>

#include "host/fmwrapper/fm_objects.h"

namespace fmx {
namespace {

using namespace orlocal::host::testing;

TEST(FmQuadChar, IsFourBytesInReadingOrder) {
  const auto id = quad("Orlo");
  EXPECT_EQ(fine([&](Exception* x) { return FM_QuadChar_GetMacType(id.get(), x); }), 0x4F726C6FU);
  EXPECT_EQ(fine([&](Exception* x) { return FM_QuadChar_operatorAR(id.get(), 0, x); }), 'O');
  EXPECT_EQ(fine([&](Exception* x) { return FM_QuadChar_operatorCAR(id.get(), 3, x); }), 'o');
}

TEST(FmQuadChar, TakesCharactersPastAsciiAsBytes) {
  const auto id = quad("\xFF\x80\x01\x7F");
  EXPECT_EQ(fine([&](Exception* x) { return FM_QuadChar_GetMacType(id.get(), x); }), 0xFF80017FU);
}

TEST(FmQuadChar, HasNoFifthCharacter) {
  const auto id = quad("Orlo");
  EXPECT_EQ(codeOf([&](Exception* x) { FM_QuadChar_operatorAR(id.get(), 4, x); }), 2);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_QuadChar_operatorCAR(id.get(), -1, x); }), 2);
}

TEST(FmQuadChar, IsEmptyWhenMadeAndCanBeSet) {
  const orlocal::host::testing::QuadChar id(fine([](Exception* x) { return FM_QuadChar_Constructor1(x); }));
  EXPECT_EQ(fine([&](Exception* x) { return FM_QuadChar_GetMacType(id.get(), x); }), 0U);
  fine([&](Exception* x) { FM_QuadChar_SetMacType(id.get(), 0x4F726C6F, x); });
  EXPECT_TRUE(fine([&](Exception* x) { return FM_QuadChar_operatorEQ(id.get(), quad("Orlo").get(), x); }));
}

TEST(FmQuadChar, CopiesAndAssigns) {
  const auto id = quad("Orlo");
  const orlocal::host::testing::QuadChar copy(
      fine([&](Exception* x) { return FM_QuadChar_Constructor3(id.get(), x); }));
  EXPECT_TRUE(fine([&](Exception* x) { return FM_QuadChar_operatorEQ(copy.get(), id.get(), x); }));
  const auto other = quad("abcd");
  EXPECT_EQ(fine([&](Exception* x) { return FM_QuadChar_operatorAS(copy.get(), other.get(), x); }), copy.get());
  EXPECT_TRUE(fine([&](Exception* x) { return FM_QuadChar_operatorNE(copy.get(), id.get(), x); }));
}

TEST(FmQuadChar, ComparesInReadingOrder) {
  const auto low = quad("Orlo");
  const auto high = quad("\xFFrlo");
  EXPECT_TRUE(fine([&](Exception* x) { return FM_QuadChar_operatorLT(low.get(), high.get(), x); }));
  EXPECT_TRUE(fine([&](Exception* x) { return FM_QuadChar_operatorLE(low.get(), low.get(), x); }));
  EXPECT_FALSE(fine([&](Exception* x) { return FM_QuadChar_operatorGT(low.get(), high.get(), x); }));
  EXPECT_TRUE(fine([&](Exception* x) { return FM_QuadChar_operatorGE(high.get(), low.get(), x); }));
}

TEST(FmQuadChar, FailsWithoutAnObject) {
  EXPECT_EQ(codeOf([](Exception* x) { FM_QuadChar_GetMacType(nullptr, x); }), 2);
  EXPECT_EQ(codeOf([](Exception* x) { FM_QuadChar_Constructor3(nullptr, x); }), 2);
  EXPECT_EQ(codeOf([](Exception* x) { FM_QuadChar_operatorEQ(quad("Orlo").get(), nullptr, x); }), 2);
}

TEST(FmLocale, CopiesAndAssigns) {
  const auto english = locale(kLocaleEnglish);
  const LocalePtr copy(fine([&](Exception* x) { return FM_Locale_Constructor2(english.get(), x); }));
  EXPECT_NE(copy.get(), english.get());
  EXPECT_EQ(fine([&](Exception* x) { return FM_Locale_operatorAS(copy.get(), locale().get(), x); }), copy.get());
  EXPECT_EQ(codeOf([](Exception* x) { FM_Locale_Constructor2(nullptr, x); }), 2);
}

TEST(FmBinaryData, CountsNoStreams) {
  const orlocal::host::testing::BinaryData binary(fine([](Exception* x) { return FM_BinaryData_Constructor1(x); }));
  EXPECT_EQ(fine([&](Exception* x) { return FM_BinaryData_GetCount(binary.get(), x); }), 0);
  EXPECT_EQ(codeOf([](Exception* x) { FM_BinaryData_GetCount(nullptr, x); }), 2);
}

TEST(FmDelete, TakesNothing) {
  EXPECT_EQ(codeOf([](Exception* x) { FM_QuadChar_Delete(nullptr, x); }), 0);
  EXPECT_EQ(codeOf([](Exception* x) { FM_Text_Delete(nullptr, x); }), 0);
}

TEST(FmExceptionRecord, MayBeMissing) { EXPECT_EQ(FM_Text_GetSize(nullptr, nullptr), 0U); }

}  // namespace
}  // namespace fmx
