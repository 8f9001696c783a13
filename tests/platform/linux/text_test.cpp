#include "platform/text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orlocal {
namespace {

using testing::ElementsAre;

TEST(Utf8FromUtf16, KeepsAsciiTextsAsTheyAre) { EXPECT_EQ(utf8FromUtf16(u"Orlo_Version"), "Orlo_Version"); }

TEST(Utf8FromUtf16, WritesEveryLengthOfCharacter) { EXPECT_EQ(utf8FromUtf16(u"aé€😀"), "aé€😀"); }

TEST(Utf8FromUtf16, KeepsZeroUnits) {
  EXPECT_EQ(utf8FromUtf16(std::u16string_view(u"a\0b", 3)), std::string("a\0b", 3));
}

TEST(Utf8FromUtf16, ReplacesAHighSurrogateWithoutItsPartner) {
  EXPECT_EQ(utf8FromUtf16(u"a\xD83D"), "a\uFFFD");
  EXPECT_EQ(utf8FromUtf16(u"\xD83Dz"), "\uFFFDz");
}

TEST(Utf8FromUtf16, ReplacesALowSurrogateWithoutItsPartner) { EXPECT_EQ(utf8FromUtf16(u"\xDE00z"), "\uFFFDz"); }

TEST(Utf8FromUtf16, ReplacesTheFirstOfTwoHighSurrogatesOnly) {
  EXPECT_EQ(utf8FromUtf16(u"\xD83D\xD83D\xDE00"), "\uFFFD😀");
}

TEST(Utf16FromUtf8, ReadsEveryLengthOfCharacter) { EXPECT_EQ(utf16FromUtf8("aé€😀"), u"aé€😀"); }

TEST(Utf16FromUtf8, KeepsAsciiTextsAsTheyAre) { EXPECT_EQ(utf16FromUtf8("!!ERROR!!"), u"!!ERROR!!"); }

struct Malformed {
  const char* bytes;
  const char16_t* units;
};

TEST(Utf16FromUtf8, ReplacesWhatIsMalformed) {
  constexpr Malformed kTable[] = {
      {"\x80", u"\uFFFD"},                                // a follower alone
      {"\xC3", u"\uFFFD"},                                // cut off at the end
      {"\xE2\x82", u"\uFFFD"},                            // cut off later: one piece, one mark
      {"\xE2\x82z", u"\uFFFDz"},                          // cut off by another character, which stays
      {"\xC0\xAF", u"\uFFFD\uFFFD"},                      // overlong solidus
      {"\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD"},            // overlong in three
      {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},            // a surrogate
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond U+10FFFF
      {"\xFF", u"\uFFFD"},
  };
  for (const Malformed& row : kTable) {
    EXPECT_EQ(utf16FromUtf8(row.bytes), row.units) << testing::PrintToString(row.bytes);
  }
}

TEST(Lowercase, LowersAsciiLetters) { EXPECT_EQ(lowercase("ReminderList [Z]"), "reminderlist [z]"); }

TEST(Lowercase, LowersLettersOfOtherScripts) { EXPECT_EQ(lowercase("ÄÖÜ ЖУК"), "äöü жук"); }

TEST(Lowercase, EndsAGreekWordWithTheFinalSigma) { EXPECT_EQ(lowercase("ΟΔΟΣ"), "οδος"); }

TEST(Lowercase, KnowsNoLocale) {
  ::setenv("LC_ALL", "tr_TR.UTF-8", 1);
  EXPECT_EQ(lowercase("TITLE İ"), "title i\u0307");
  ::setenv("LC_ALL", "C.UTF-8", 1);
}

TEST(IsTrueText, IsTheWordInAnyCaseAndNothingElse) {
  EXPECT_TRUE(isTrueText("true"));
  EXPECT_TRUE(isTrueText("TRUE"));
  EXPECT_TRUE(isTrueText("True"));
  EXPECT_FALSE(isTrueText(" true"));
  EXPECT_FALSE(isTrueText("truely"));
  EXPECT_FALSE(isTrueText("tru"));
  EXPECT_FALSE(isTrueText("1"));
  EXPECT_FALSE(isTrueText(""));
  EXPECT_FALSE(isTrueText(std::nullopt));
}

TEST(SplitAtNewlines, EndsAPieceAtEachSeparator) {
  EXPECT_THAT(splitAtNewlines("a\nb\x0B"
                              "c\x0C"
                              "d\re\u0085f\u2028g\u2029h"),
              ElementsAre("a", "b", "c", "d", "e", "f", "g", "h"));
}

TEST(SplitAtNewlines, FindsAnEmptyPieceBetweenReturnAndLineFeed) {
  EXPECT_THAT(splitAtNewlines("a\r\nb"), ElementsAre("a", "", "b"));
}

TEST(SplitAtNewlines, GivesOnePieceForATextWithoutSeparators) {
  EXPECT_THAT(splitAtNewlines("Work"), ElementsAre("Work"));
  EXPECT_THAT(splitAtNewlines(""), ElementsAre(""));
}

TEST(SplitAtNewlines, GivesAnEmptyPieceAfterALastSeparator) {
  EXPECT_THAT(splitAtNewlines("a\r"), ElementsAre("a", ""));
}

TEST(SplitAtNewlines, LeavesBlanksAndTabsAlone) { EXPECT_THAT(splitAtNewlines("a b\tc"), ElementsAre("a b\tc")); }

TEST(SplitAtWhitespace, SplitsAtEverySpaceSeparatorAndTheTab) {
  EXPECT_THAT(splitAtWhitespace("a b\tc\u00A0d\u1680e\u2000f\u200Ag\u202Fh\u205Fi\u3000j"),
              ElementsAre("a", "b", "c", "d", "e", "f", "g", "h", "i", "j"));
}

TEST(SplitAtWhitespace, KeepsEmptyPieces) { EXPECT_THAT(splitAtWhitespace("255  0"), ElementsAre("255", "", "0")); }

TEST(SplitAtWhitespace, LeavesNewlinesAndZeroWidthSpacesAlone) {
  EXPECT_THAT(splitAtWhitespace("a\nb\u200Bc"), ElementsAre("a\nb\u200Bc"));
}

}  // namespace
}  // namespace orlocal
