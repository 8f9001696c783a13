#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "host/fmwrapper/fm_objects.h"

namespace fmx {
namespace {

using namespace orlocal::host::testing;
using orlocal::host::testing::Text;

std::string bytesOf(const Text& text, std::uint32_t room, std::uint32_t position, std::uint32_t size,
                    std::int32_t encoding = kEncodingUtf8) {
  std::string buffer(room + 4, '#');
  fine([&](Exception* x) { FM_Text_GetBytes(text.get(), buffer.data(), room, position, size, encoding, x); });
  EXPECT_EQ(buffer.substr(room), "####");
  return buffer.substr(0, room);
}

std::string bytesExOf(const Text& text, std::uint32_t room, std::uint32_t position, std::uint32_t size,
                      std::int32_t encoding = kEncodingUtf8) {
  std::string buffer(room + 4, '#');
  const auto written = fine(
      [&](Exception* x) { return FM_Text_GetBytesEx(text.get(), buffer.data(), room, position, size, encoding, x); });
  EXPECT_EQ(buffer.substr(written), std::string(room + 4 - written, '#'));
  return buffer.substr(0, written);
}

std::uint32_t find(const Text& text, std::u16string_view what, std::uint32_t from) {
  const Text wanted = orlocal::host::testing::text(what);
  return fine([&](Exception* x) { return FM_Text_Find(text.get(), wanted.get(), from, x); });
}

std::uint32_t findPrev(const Text& text, std::u16string_view what, std::uint32_t from) {
  const Text wanted = orlocal::host::testing::text(what);
  return fine([&](Exception* x) { return FM_Text_FindPrev(text.get(), wanted.get(), from, x); });
}

TEST(FmText, IsEmptyWhenMade) {
  const Text made(fine([](Exception* x) { return FM_Text_Constructor1(x); }));
  EXPECT_EQ(fine([&](Exception* x) { return FM_Text_GetSize(made.get(), x); }), 0U);
}

TEST(FmText, CountsUtf16Units) { EXPECT_EQ(unitsOf(text(u"a\U0001F600")).size(), 3U); }

TEST(FmText, AssignsBytesOfAnEncoding) {
  const Text value = text();
  for (const std::int32_t encoding : {kEncodingNative, kEncodingUtf8}) {
    fine([&](Exception* x) { FM_Text_Assign(value.get(), "gr\xC3\xBCn", encoding, x); });
    EXPECT_EQ(unitsOf(value), u"grün");
  }
  fine([&](Exception* x) { FM_Text_Assign(value.get(), "gr\xFCn", kEncodingIso8859_1, x); });
  EXPECT_EQ(unitsOf(value), u"grün");
}

TEST(FmText, AssignsCountedBytesWithNulsInside) {
  const Text value = text();
  fine([&](Exception* x) { FM_Text_AssignWithLength(value.get(), "a\0b", 3, kEncodingUtf8, x); });
  EXPECT_EQ(unitsOf(value), std::u16string(u"a\0b", 3));
}

TEST(FmText, AssignsUnicodeUpToTheNul) {
  const Text value = text();
  fine([&](Exception* x) { FM_Text_AssignUnicode(value.get(), u"ab\0c", x); });
  EXPECT_EQ(unitsOf(value), u"ab");
  fine([&](Exception* x) { FM_Text_AssignUnicodeWithLength(value.get(), u"ab\0c", 4, x); });
  EXPECT_EQ(unitsOf(value).size(), 4U);
}

TEST(FmText, RefusesAnEncodingThatItLacks) {
  const Text value = text(u"kept");
  EXPECT_EQ(codeOf([&](Exception* x) { FM_Text_Assign(value.get(), "x", 7, x); }), 2);
  EXPECT_EQ(unitsOf(value), u"kept");
}

TEST(FmText, EndsBytesWithANul) {
  EXPECT_EQ(bytesOf(text(u"abc"), 8, 0, kSizeEnd), std::string("abc\0####", 8));
  EXPECT_EQ(bytesOf(text(u"abc"), 3, 0, kSizeEnd), std::string("ab\0", 3));
  EXPECT_EQ(bytesOf(text(u"abc"), 1, 0, kSizeEnd), std::string("\0", 1));
  EXPECT_EQ(bytesOf(text(u"abc"), 0, 0, kSizeEnd), "");
}

TEST(FmText, NeverCutsACharacterOfItsBytes) {
  EXPECT_EQ(bytesOf(text(u"a\u20ACb"), 4, 0, kSizeEnd), std::string("a\0##", 4));
  EXPECT_EQ(bytesExOf(text(u"\U0001F600"), 3, 0, kSizeEnd), "");
}

TEST(FmText, GivesCountedBytesWithoutANul) {
  EXPECT_EQ(bytesExOf(text(u"abc"), 8, 0, kSizeEnd), "abc");
  EXPECT_EQ(bytesExOf(text(u"abc"), 2, 0, kSizeEnd), "ab");
  EXPECT_EQ(bytesExOf(text(u"a\u20ACb"), 8, 1, 1), "\xE2\x82\xAC");
}

TEST(FmText, GivesLatin1WithQuestionMarks) {
  EXPECT_EQ(bytesExOf(text(u"ü\u20AC\U0001F600"), 8, 0, kSizeEnd, kEncodingIso8859_1), "\xFC??");
  EXPECT_EQ(bytesOf(text(u"abc"), 8, 1, 1, kEncodingIso8859_1), std::string("b\0######", 8));
}

TEST(FmText, ClampsPositionsAndSizes) {
  EXPECT_EQ(bytesExOf(text(u"abc"), 8, 2, 100), "c");
  EXPECT_EQ(bytesExOf(text(u"abc"), 8, 3, 1), "");
  EXPECT_EQ(bytesExOf(text(u"abc"), 8, 99, kSizeEnd), "");
}

TEST(FmText, CopiesUnitsWithoutANul) {
  std::u16string buffer(4, u'#');
  fine([&](Exception* x) { FM_Text_GetUnicode(text(u"abc").get(), buffer.data(), 1, 99, x); });
  EXPECT_EQ(buffer, u"bc##");
}

TEST(FmText, TakesAPartOfAnother) {
  const Text value = text(u"old");
  fine([&](Exception* x) { FM_Text_SetText(value.get(), text(u"abcdef").get(), 2, 3, x); });
  EXPECT_EQ(unitsOf(value), u"cde");
  fine([&](Exception* x) { FM_Text_SetText(value.get(), text(u"abcdef").get(), 4, kSizeEnd, x); });
  EXPECT_EQ(unitsOf(value), u"ef");
}

TEST(FmText, TakesAPartOfItself) {
  const Text value = text(u"abcdef");
  fine([&](Exception* x) { FM_Text_SetText(value.get(), value.get(), 2, 3, x); });
  EXPECT_EQ(unitsOf(value), u"cde");
  fine([&](Exception* x) { FM_Text_AppendText(value.get(), value.get(), 0, kSizeEnd, x); });
  EXPECT_EQ(unitsOf(value), u"cdecde");
  fine([&](Exception* x) { FM_Text_InsertText(value.get(), value.get(), 1, x); });
  EXPECT_EQ(unitsOf(value), u"ccdecdedecde");
}

TEST(FmText, AppendsAndInserts) {
  const Text value = text(u"ad");
  fine([&](Exception* x) { FM_Text_InsertText(value.get(), text(u"bc").get(), 1, x); });
  EXPECT_EQ(unitsOf(value), u"abcd");
  fine([&](Exception* x) { FM_Text_InsertText(value.get(), text(u"!").get(), 99, x); });
  EXPECT_EQ(unitsOf(value), u"abcd!");
  fine([&](Exception* x) { FM_Text_AppendText(value.get(), text(u"xyz").get(), 1, 1, x); });
  EXPECT_EQ(unitsOf(value), u"abcd!y");
}

TEST(FmText, DeletesAPart) {
  const Text value = text(u"abcdef");
  fine([&](Exception* x) { FM_Text_DeleteText(value.get(), 1, 2, x); });
  EXPECT_EQ(unitsOf(value), u"adef");
  fine([&](Exception* x) { FM_Text_DeleteText(value.get(), 99, 1, x); });
  fine([&](Exception* x) { FM_Text_DeleteText(value.get(), 2, kSizeEnd, x); });
  EXPECT_EQ(unitsOf(value), u"ad");
}

TEST(FmText, FindsForwardsAndBackwards) {
  const Text value = text(u"abcabc");
  EXPECT_EQ(find(value, u"b", 0), 1U);
  EXPECT_EQ(find(value, u"b", 2), 4U);
  EXPECT_EQ(find(value, u"B", 0), kSizeInvalid);
  EXPECT_EQ(find(value, u"a", 99), kSizeInvalid);
  EXPECT_EQ(findPrev(value, u"b", 5), 4U);
  EXPECT_EQ(findPrev(value, u"b", 3), 1U);
  EXPECT_EQ(findPrev(value, u"b", 0), kSizeInvalid);
}

TEST(FmText, FindsAnEmptyTextNowhere) {
  EXPECT_EQ(find(text(u"abc"), u"", 0), kSizeInvalid);
  EXPECT_EQ(findPrev(text(u"abc"), u"", 2), kSizeInvalid);
}

TEST(FmText, FindsWithoutCase) {
  const Text value = text(u"Grüße grüsse");
  const Text wanted = text(u"GRÜSSE");
  EXPECT_EQ(fine([&](Exception* x) { return FM_Text_FindIgnoringCase(value.get(), wanted.get(), 0, x); }), 0U);
  EXPECT_EQ(fine([&](Exception* x) { return FM_Text_FindIgnoringCase(value.get(), wanted.get(), 1, x); }), 6U);
  EXPECT_EQ(fine([&](Exception* x) { return FM_Text_FindPrevIgnoringCase(value.get(), wanted.get(), kSizeEnd, x); }),
            6U);
  EXPECT_EQ(fine([&](Exception* x) { return FM_Text_FindPrevIgnoringCase(value.get(), wanted.get(), 5, x); }), 0U);
}

TEST(FmText, ChangesCaseThoughDeclaredConst) {
  const Text value = text(u"Straße É");
  const fmx::Text* unchanging = value.get();
  fine([&](Exception* x) { FM_Text_Uppercase(unchanging, x); });
  EXPECT_EQ(unitsOf(value), u"STRASSE É");
  fine([&](Exception* x) { FM_Text_Lowercase(unchanging, x); });
  EXPECT_EQ(unitsOf(value), u"strasse é");
}

TEST(FmText, ComparesByUnits) {
  const Text low = text(u"abc");
  const Text high = text(u"abd");
  EXPECT_TRUE(fine([&](Exception* x) { return FM_Text_operatorEQ(low.get(), text(u"abc").get(), x); }));
  EXPECT_TRUE(fine([&](Exception* x) { return FM_Text_operatorNE(low.get(), text(u"ABC").get(), x); }));
  EXPECT_TRUE(fine([&](Exception* x) { return FM_Text_operatorLT(low.get(), high.get(), x); }));
  EXPECT_TRUE(fine([&](Exception* x) { return FM_Text_operatorLE(low.get(), low.get(), x); }));
  EXPECT_FALSE(fine([&](Exception* x) { return FM_Text_operatorGT(low.get(), high.get(), x); }));
  EXPECT_TRUE(fine([&](Exception* x) { return FM_Text_operatorGE(high.get(), low.get(), x); }));
}

TEST(FmText, FailsWithoutAnObject) {
  const Text value = text();
  EXPECT_EQ(codeOf([](Exception* x) { FM_Text_GetSize(nullptr, x); }), 2);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_Text_Assign(value.get(), nullptr, kEncodingUtf8, x); }), 2);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_Text_AssignUnicode(value.get(), nullptr, x); }), 2);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_Text_SetText(value.get(), nullptr, 0, 0, x); }), 2);
  EXPECT_EQ(codeOf([&](Exception* x) { FM_Text_GetBytes(value.get(), nullptr, 8, 0, 0, kEncodingUtf8, x); }), 2);
  EXPECT_EQ(codeOf([](Exception* x) { FM_Text_Uppercase(nullptr, x); }), 2);
}

}  // namespace
}  // namespace fmx
