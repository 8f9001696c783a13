#include "store/icalendar/content_line.h"

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "base/text.h"

namespace orlocal::store {
namespace {

std::vector<std::string> textsOf(std::string_view bytes) {
  std::vector<std::string> texts;
  ContentLines lines(bytes);
  for (ContentLine line; lines.next(line);) {
    texts.emplace_back(std::to_string(line.line) + " " + std::string(line.text));
  }
  return texts;
}
using Texts = std::vector<std::string>;

TEST(ContentLines, TakeAnyMixOfLineEnds) {
  EXPECT_EQ(textsOf("A:1\r\nB:2\nC:3\rD:4"), (Texts{"1 A:1", "2 B:2", "3 C:3", "4 D:4"}));
}

TEST(ContentLines, AreUnfoldedBeforeTheyAreDecoded) {
  // The two bytes of "ü" stand on two lines.
  EXPECT_EQ(textsOf("A:f\xC3\r\n \xBCr\r\nB:2"), (Texts{"1 A:für", "3 B:2"}));
}

TEST(ContentLines, MayGoOnAfterATab) { EXPECT_EQ(textsOf("A:1\n\t2\n  3"), Texts{"1 A:12 3"}); }
TEST(ContentLines, PassOverEmptyLines) { EXPECT_EQ(textsOf("\r\n\r\nA:1\n   \nB:2\n"), (Texts{"3 A:1  ", "5 B:2"})); }

TEST(ContentLines, ReadWhatIsNotUtf8AsWindows1252) {
  ContentLines lines("A:gr\xFC\xDF \x80 5\nB:gr\xC3\xBC\xC3\x9F\n");
  ContentLine line;
  ASSERT_TRUE(lines.next(line));
  EXPECT_EQ(line.value, "grüß € 5");
  EXPECT_TRUE(lines.reencoded());
  ASSERT_TRUE(lines.next(line));
  EXPECT_EQ(line.value, "grüß");
  EXPECT_FALSE(lines.reencoded());
}

TEST(ContentLines, PassOverThoseThatHaveNoneOfTheNames) {
  constexpr std::array<std::string_view, 2> kNames{"BEGIN", "UID"};
  // A name may go on behind a fold, and a line that is passed over, too.
  ContentLines lines("SUMMARY:a\r\n\r\n UID:b\r\nUIDS:c\r\nbeg\r\n in:D\r\nU\r\n\tID;X=1:e\r\nURL:f\n");
  std::vector<std::string> met;
  for (ContentLine line; lines.passOverTo(kNames), lines.next(line);) {
    met.push_back(std::to_string(line.line) + " " + std::string(line.text));
  }
  EXPECT_EQ(met, (Texts{"4 UIDS:c", "5 begin:D", "7 UID;X=1:e"}));
}

TEST(ContentLine, HasSeparatorsInItsQuotes) {
  const auto line = splitContentLine("ATTENDEE;CN=\"a;b:c\";X=\"d:\"\";\"e;Y=1:mailto:f", 1);
  ASSERT_TRUE(line);
  EXPECT_EQ(line->value, "mailto:f");
  EXPECT_EQ(line->parameter("CN"), "a;b:c");
  EXPECT_EQ(line->parameter("Y"), "1");
  // A quote that is never closed is none.
  EXPECT_EQ(splitContentLine("A;B=\"c:d", 1)->value, "d");
}

TEST(ContentLine, IsSplitInAStepHoweverManyQuotesItHas) {
  std::string text = "A;B=";
  for (int i = 0; i < 1'000'000; ++i) { text += "\"\""; }
  EXPECT_EQ(splitContentLine(text + ":c", 1)->value, "c");
}

TEST(ContentLines, KeepWholeCharactersOfBrokenUtf8) { EXPECT_EQ(fromWindows1252("gr\xC3\xBC\xFF"), "grüÿ"); }

TEST(ContentLines, ComeWithoutANameWhenTheyAreNone) {
  ContentLines lines("just text\n");
  ContentLine line;
  ASSERT_TRUE(lines.next(line));
  EXPECT_TRUE(line.name.empty());
  EXPECT_EQ(line.text, "just text");
}

TEST(Utf8, KnowsOverlongFormsSurrogatesAndWhatLiesTooHigh) {
  EXPECT_TRUE(isUtf8("plain, grüß, 漢字, 🎂"));
  for (const char* bytes : {"\xC0\xAF", "\xE0\x80\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80",
                            "abcdefgh\x80", "\xC3"}) {
    EXPECT_FALSE(isUtf8(bytes));
  }
}

TEST(Unfolding, SkipsEmptyLinesBeforeAContinuation) {
  EXPECT_EQ(textsOf("SUMMARY:a\r\n\r\n b\r\n\r\n\r\n c\r\n\r\nUID:1\r\n"), (Texts{"1 SUMMARY:abc", "8 UID:1"}));
  EXPECT_EQ(textsOf("SUMMARY:a\n\n\n"), Texts{"1 SUMMARY:a"});
}

TEST(SplitLine, FindsTheColonOutsideOfQuotes) {
  const auto line = splitContentLine("ATTENDEE;CN=\"Doe: \"\"J;X\":mailto:a@b", 1);
  ASSERT_TRUE(line);
  EXPECT_EQ(line->name, "ATTENDEE");
  EXPECT_EQ(line->value, "mailto:a@b");
}

TEST(SplitLine, TakesTheFirstColonWhenAQuoteIsNeverClosed) {
  const auto line = splitContentLine("SUMMARY;X=\"open:text", 1);
  ASSERT_TRUE(line);
  EXPECT_EQ(line->value, "text");
}

TEST(SplitLine, AllowsBlanksAfterTheName) {
  const auto line = splitContentLine("UID :abc", 1);
  ASSERT_TRUE(line);
  EXPECT_EQ(line->name, "UID");
  EXPECT_EQ(line->value, "abc");
}

TEST(SplitLine, IsNoneWithoutAColon) {
  for (const char* text : {"", "SUMMARY", ":x", "two words", "A;B=C"}) {
    EXPECT_FALSE(splitContentLine(text, 1)) << text;
  }
}

TEST(Parameters, AreFoundWithoutCaseAndQuotes) {
  const auto line = splitContentLine("X;tzid=\"A, B\";Cn=Tom^nJones^^ ^'T^';empty=:v", 1);
  ASSERT_TRUE(line);
  EXPECT_EQ(line->parameter("TZID"), "A, B");
  EXPECT_EQ(line->parameter("CN"), "Tom\nJones^ \"T\"");
  EXPECT_EQ(line->parameter("EMPTY"), "");
  EXPECT_EQ(line->parameter("ROLE"), std::nullopt);
}

TEST(Parameters, HaveNoControlCharactersInTheirValues) {
  using namespace std::string_literals;
  const std::string text = "X;CN=Ann \0\x1B;X=\"a\x7F\tb \":v"s;
  const auto line = splitContentLine(text, 1);
  ASSERT_TRUE(line);
  EXPECT_EQ(line->parameter("CN"), "Ann ");
  EXPECT_EQ(line->parameter("X"), "a\tb ");
}

TEST(Parameters, AreWrittenSoThatTheyCanBeReadAgain) {
  for (const char* value : {"plain", "a,b;c:d", "say \"hi\"", "two\nlines", "^caret", "grüß", " blanks ", "tab\t"}) {
    const std::string text = "X;CN=" + parameterText(value) + ":v";
    const auto line = splitContentLine(text, 1);
    ASSERT_TRUE(line) << text;
    EXPECT_EQ(line->parameter("CN"), value) << text;
    EXPECT_EQ(line->value, "v") << text;
  }
}

TEST(Texts, AreUnescapedWithoutReadingPastALoneBackslash) {
  EXPECT_EQ(unescapeText("a\\nb\\Nc\\, \\; \\\\ \\x \\"), "a\nb\nc, ; \\ \\x \\");
}

TEST(Texts, LeaveControlCharactersOut) { EXPECT_EQ(unescapeText(std::string_view("a\0b\x07\tc\x7F", 7)), "ab\tc"); }

TEST(Texts, ComeBackAsTheyWere) {
  for (const char* text : {"", "plain", "a,b;c\\d\ne", "\\n is no newline", "ends in \\", "🎂\n\n"}) {
    EXPECT_EQ(unescapeText(escapeText(text)), text);
  }
}

TEST(Folding, KeepsLinesAt75BytesAndCharactersWhole) {
  std::string text = "SUMMARY:";
  for (int i = 0; i < 60; ++i) { text += i % 3 == 0 ? "ü" : i % 3 == 1 ? "🎂" : "a"; }
  std::string folded;
  appendFolded(folded, text);
  std::size_t begin = 0;
  for (std::size_t end = folded.find("\r\n"); end != std::string::npos;
       begin = end + 2, end = folded.find("\r\n", begin)) {
    EXPECT_LE(end - begin, 75U);
    EXPECT_TRUE(isUtf8(std::string_view(folded).substr(begin, end - begin)));
  }
  EXPECT_EQ(textsOf(folded), Texts{"1 " + text});
}

TEST(Folding, LeavesALineOf75BytesWhole) {
  std::string folded;
  appendFolded(folded, std::string(75, 'x'));
  EXPECT_EQ(folded, std::string(75, 'x') + "\r\n");
}

}  // namespace
}  // namespace orlocal::store
