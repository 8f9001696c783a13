#include "host/fmwrapper/unicode.h"

#include <string>

#include <gtest/gtest.h>

namespace orlocal::host {
namespace {

using namespace std::string_literals;

TEST(Unicode, GoesToUtf8AndBack) {
  const std::u16string text = u"aä\u20AC\U0001F600";
  EXPECT_EQ(toUtf8(text), "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ(toUtf16(toUtf8(text)), text);
}

TEST(Unicode, ReplacesUnpairedSurrogates) {
  EXPECT_EQ(toUtf8(u"a\xD800z"), "a\xEF\xBF\xBDz");
  EXPECT_EQ(toUtf8(u"\xDC00"), "\xEF\xBF\xBD");
}

struct Malformed {
  std::string bytes;
  std::u16string units;
};

class UnicodeMalformed : public ::testing::TestWithParam<Malformed> {};

TEST_P(UnicodeMalformed, BecomesReplacementCharacters) { EXPECT_EQ(toUtf16(GetParam().bytes), GetParam().units); }

INSTANTIATE_TEST_SUITE_P(Bytes, UnicodeMalformed,
                         ::testing::Values(Malformed{"a\x80z", u"a\uFFFDz"}, Malformed{"\xC0\xAF", u"\uFFFD\uFFFD"},
                                           Malformed{"\xE2\x82", u"\uFFFD"}, Malformed{"\xE2\x82z", u"\uFFFDz"},
                                           Malformed{"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
                                           Malformed{"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
                                           Malformed{"\xFF", u"\uFFFD"}));

TEST(Unicode, EncodesOnlyWholeCharacters) {
  std::string buffer(3, '#');
  EXPECT_EQ(encodeUtf8(u"a\u20AC", buffer.data(), buffer.size()), 1U);
  EXPECT_EQ(buffer, "a##");
}

TEST(Unicode, ChangesCaseBeyondAscii) {
  EXPECT_EQ(toUpper(u"straße é"), u"STRASSE É");
  EXPECT_EQ(toLower(u"ÄÖÜ X"), u"äöü x");
  EXPECT_EQ(toUpper(u"plain"), u"PLAIN");
  EXPECT_EQ(toLower(u"PLAIN"), u"plain");
}

TEST(Unicode, GrowsATextThatNeedsMoreRoomInUpperCase) {
  EXPECT_EQ(toUpper(std::u16string(100, u'ß')), std::u16string(200, u'S'));
}

TEST(Unicode, FindsWithoutCaseAtOriginalPositions) {
  EXPECT_EQ(findIgnoringCase(u"Die Straße", u"STRASSE", 0), 4U);
  EXPECT_EQ(findIgnoringCase(u"ßßx", u"X", 0), 2U);
  EXPECT_EQ(findIgnoringCase(u"abcABC", u"B", 2), 4U);
}

TEST(Unicode, FindsNothingThatIsAPartOfACharacter) {
  EXPECT_EQ(findIgnoringCase(u"ßx", u"sx", 0), kNotFound);
  EXPECT_EQ(findIgnoringCase(u"xß", u"xs", 0), kNotFound);
  EXPECT_EQ(findIgnoringCase(u"xß", u"XSS", 0), 0U);
  EXPECT_EQ(findIgnoringCase(u"sxßx", u"sx", 3, -1), 0U);
}

TEST(Unicode, FindsBackwardsFromAPosition) {
  EXPECT_EQ(findIgnoringCase(u"abcABCabc", u"aB", 8, -1), 6U);
  EXPECT_EQ(findIgnoringCase(u"abcABCabc", u"aB", 5, -1), 3U);
  EXPECT_EQ(findIgnoringCase(u"abc", u"x", 2, -1), kNotFound);
}

TEST(Unicode, FindsAnEmptyTextNowhere) {
  EXPECT_EQ(findIgnoringCase(u"abc", u"", 0), kNotFound);
  EXPECT_EQ(findIgnoringCase(u"abc", u"", 2, -1), kNotFound);
}

}  // namespace
}  // namespace orlocal::host
