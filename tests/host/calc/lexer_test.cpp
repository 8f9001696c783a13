#include "host/calc/lexer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orlocal::host::calc {
namespace {

using ::testing::ElementsAre;

std::vector<TokenKind> kinds(std::string_view source) {
  std::vector<TokenKind> result;
  const auto tokens = tokenize(source);
  if (!tokens) {
    ADD_FAILURE() << tokens.error().message;
    return result;
  }
  for (const Token& token : *tokens) { result.push_back(token.kind); }
  result.pop_back();
  return result;
}

std::string firstText(std::string_view source) {
  const auto tokens = tokenize(source);
  return tokens ? tokens->front().text : "error: " + tokens.error().message;
}

TEST(LexerTest, KnowsEveryOperatorInAllItsSpellings) {
  using enum TokenKind;
  EXPECT_THAT(kinds("& + - * / ^"), ElementsAre(kConcatenate, kPlus, kMinus, kTimes, kDivide, kPower));
  EXPECT_THAT(kinds("= ≠ <> < > ≤ <= ≥ >="), ElementsAre(kEqual, kNotEqual, kNotEqual, kLess, kGreater, kLessOrEqual,
                                                         kLessOrEqual, kGreaterOrEqual, kGreaterOrEqual));
  EXPECT_THAT(kinds("and OR Xor not"), ElementsAre(kAnd, kOr, kXor, kNot));
  EXPECT_THAT(kinds("( ) [ ] ; ¶"), ElementsAre(kOpen, kClose, kOpenList, kCloseList, kSeparator, kPilcrow));
}

TEST(LexerTest, ReadsNumbersWithPointsAndExponents) {
  EXPECT_EQ(firstText(".5"), ".5");
  EXPECT_EQ(firstText("1e3"), "1e3");
  EXPECT_EQ(firstText("12.50E-2"), "12.50E-2");
}

TEST(LexerTest, LeavesALetterAfterANumberAsAnError) { EXPECT_FALSE(tokenize("12abc")); }

TEST(LexerTest, ResolvesEscapesInTexts) {
  EXPECT_EQ(firstText(R"("say \"hi\"")"), "say \"hi\"");
  EXPECT_EQ(firstText(R"("C:\\x")"), "C:\\x");
}

TEST(LexerTest, KeepsABackslashThatEscapesNothing) { EXPECT_EQ(firstText(R"("\d")"), "\\d"); }

TEST(LexerTest, MakesAReturnOfAPilcrowAndOfALineBreakInsideTexts) {
  EXPECT_EQ(firstText("\"a¶b\""), "a\rb");
  EXPECT_EQ(firstText("\"a\nb\""), "a\rb");
  EXPECT_EQ(firstText("\"a\r\nb\""), "a\rb");
}

TEST(LexerTest, KeepsAnEscapedPilcrow) { EXPECT_EQ(firstText("\"a\\¶b\""), "a¶b"); }

TEST(LexerTest, SkipsBlanksCommentsAndAByteOrderMark) {
  EXPECT_THAT(kinds("\uFEFF1 // one\n\u00A0/* and\n two */ + 2"),
              ElementsAre(TokenKind::kNumber, TokenKind::kPlus, TokenKind::kNumber));
}

TEST(LexerTest, TakesNamesWithLettersOfAnyScript) {
  EXPECT_EQ(firstText("Größe_2"), "Größe_2");
  EXPECT_THAT(kinds("größe≠1"), ElementsAre(TokenKind::kName, TokenKind::kNotEqual, TokenKind::kNumber));
}

TEST(LexerTest, TellsVariablesFromGlobalOnes) {
  EXPECT_THAT(kinds("$a $$a"), ElementsAre(TokenKind::kVariable, TokenKind::kGlobalVariable));
  EXPECT_EQ(firstText("$$event.title"), "event.title");
  EXPECT_EQ(firstText("${my uid}"), "my uid");
}

TEST(LexerTest, SaysWhereAnOpenTextBegan) {
  const auto tokens = tokenize("1 & \"abc");
  ASSERT_FALSE(tokens);
  EXPECT_EQ(tokens.error().place, 4U);
}

TEST(LexerTest, SaysThatCurlyQuotesAreNotQuotes) {
  const auto tokens = tokenize("“abc”");
  ASSERT_FALSE(tokens);
  EXPECT_THAT(tokens.error().message, ::testing::HasSubstr("straight quotes"));
}

TEST(LexerTest, RefusesWhatHasNoMeaning) {
  EXPECT_FALSE(tokenize("1 # 2"));
  EXPECT_FALSE(tokenize("$"));
  EXPECT_FALSE(tokenize("/* no end"));
  EXPECT_FALSE(tokenize("${no end"));
}

TEST(LexerTest, HasNothingInBlanksAndComments) { EXPECT_TRUE(kinds(" /* nothing */ // at all").empty()); }

}  // namespace
}  // namespace orlocal::host::calc
