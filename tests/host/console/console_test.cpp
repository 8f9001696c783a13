#include "host/console/console.h"

#include <deque>
#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/calc/session.h"

namespace orlocal::host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class Functions : public calc::FunctionLibrary {
 public:
  std::vector<calc::Signature> signatures() const override {
    return {{"Orlo_Fail", "Orlo_Fail( {type} )", "words|Always fails.", 0, 1},
            {"Turned", "Turned( \u202etype )", "words|Clears\x1b[2J.", 0, 1}};
  }
  Result<Value> call(std::string_view, std::span<const Value>) override {
    return failure(ErrorCode::kIo, "Orlo_Fail threw an exception");
  }
};

/// Lines that a test typed; "^C" is the key.
class TypedLines : public LineSource {
 public:
  Line read(const std::string& prompt) override {
    prompts.push_back(prompt);
    if (typed.empty()) { return {}; }
    std::string line = typed.front();
    typed.pop_front();
    if (line == "^C") { return {Outcome::kCancelled, {}}; }
    return {Outcome::kLine, line};
  }
  void remember(const std::string& entry) override { remembered.push_back(entry); }

  std::deque<std::string> typed;
  std::vector<std::string> prompts;
  std::vector<std::string> remembered;
};

class ConsoleTest : public ::testing::Test {
 protected:
  std::string shownFor(std::deque<std::string> lines, bool colors = false) {
    source.typed = std::move(lines);
    std::ostringstream out;
    Console console({.lines = source,
                     .out = out,
                     .colors = colors,
                     .library = library,
                     .evaluate = [this](std::string_view calculation) { return session.evaluate(calculation); },
                     .variables = [this] { return session.variableNames(); },
                     .lastError = [this] { return lastError; },
                     .command =
                         [this](std::string_view words) {
                           commands.emplace_back(words);
                           return words == "agenda";
                         }});
    succeeded = console.run();
    return out.str();
  }

  Functions library;
  calc::Session session{library};
  TypedLines source;
  bool succeeded = false;
  std::optional<std::string> lastError;
  std::vector<std::string> commands;
};

TEST_F(ConsoleTest, ShowsEachResultWithItsType) {
  EXPECT_EQ(shownFor({"1 + 1", "\"a\"", "Date ( 11 ; 2 ; 2026 )"}), "2  (number)\na  (text)\n2026-11-02  (date)\n");
  EXPECT_TRUE(succeeded);
}

TEST_F(ConsoleTest, ShowsTheLinesOfAResultOneBelowTheOther) {
  EXPECT_EQ(shownFor({"List ( 1 ; 2 )"}), "1\n2\n(text, 2 lines)\n");
}

TEST_F(ConsoleTest, SaysThatAResultIsEmpty) { EXPECT_EQ(shownFor({"\"\""}), "(empty)\n"); }

TEST_F(ConsoleTest, GoesOnOverLinesWhileABracketIsOpen) {
  EXPECT_EQ(shownFor({"Let ( [ a = 1 ;", "  b = 2 ] ;", "  a + b )"}), "3  (number)\n");
  EXPECT_THAT(source.prompts, ElementsAre("> ", "… ", "… ", "> "));
}

TEST_F(ConsoleTest, ClearsWhatWasTypedOnCancel) {
  EXPECT_EQ(shownFor({"Let ( [ a = 1 ;", "^C", "2"}), "2  (number)\n");
}

TEST_F(ConsoleTest, PointsAtTheFaultAndGoesOn) {
  EXPECT_EQ(shownFor({"1 +", "2"}), "1:4: a value is expected here, not the end\n  1 +\n     ^\n2  (number)\n");
  EXPECT_FALSE(succeeded);
}

TEST_F(ConsoleTest, SaysWhyACallFailed) {
  EXPECT_EQ(shownFor({"Orlo_Fail"}), "?  (invalid)\n! Orlo_Fail threw an exception\n");
  EXPECT_FALSE(succeeded);
}

TEST_F(ConsoleTest, StopsAtQuit) {
  EXPECT_EQ(shownFor({"1", "quit", "2"}), "1  (number)\n");
  EXPECT_EQ(shownFor({" EXIT ", "2"}), "");
}

TEST_F(ConsoleTest, SkipsBlankLines) { EXPECT_EQ(shownFor({"", "  ", "1"}), "1  (number)\n"); }

TEST_F(ConsoleTest, ShowsWhatIsWrongWithAnUnfinishedCalculationAtTheEnd) {
  EXPECT_THAT(shownFor({"Left ( \"a\""}), HasSubstr("; or ) is expected here, not the end"));
}

TEST_F(ConsoleTest, HelpsWithItselfAndWithFunctions) {
  EXPECT_THAT(shownFor({"help"}), HasSubstr("quit"));
  EXPECT_EQ(shownFor({"help orlo_fail"}), "Orlo_Fail( {type} )\n    Always fails.\n");
  EXPECT_THAT(shownFor({"help left"}), HasSubstr("LeftValues ( text ; numberOfValues )"));
  EXPECT_THAT(shownFor({"help nonsense"}), HasSubstr("no function's name begins with nonsense"));
}

TEST_F(ConsoleTest, HelpsWithTheFunctionsOfTheLanguage) {
  EXPECT_EQ(shownFor({"help Length"}),
            "Length ( text )\n    How many characters a text has.\n    Example: Length ( \"Monday\" ) is 6\n");
  EXPECT_EQ(shownFor({"help currentdate"}), "Get ( CurrentDate )\n    Today.\n");
}

TEST_F(ConsoleTest, HelpsWithKeywords) {
  EXPECT_EQ(shownFor({"help future"}), "\"future\" (span): the open occurrence and the later ones\n");
}

TEST_F(ConsoleTest, ShowsTheReasonBesideAnError) {
  lastError = "Item not found. (9001)";
  EXPECT_EQ(shownFor({"\"!!ERROR!!\"", "\"fine\""}), "!!ERROR!!  (text)  Item not found. (9001)\nfine  (text)\n");
  lastError.reset();
  EXPECT_EQ(shownFor({"\"!!ERROR!!\""}), "!!ERROR!!  (text)\n");
}

TEST_F(ConsoleTest, HandsCommandsOnWithoutTheirDot) {
  shownFor({".agenda", " .agenda ", ".5"});
  EXPECT_THAT(commands, ElementsAre("agenda", "agenda"));
  EXPECT_TRUE(succeeded);
  shownFor({".month --json"});
  EXPECT_FALSE(succeeded);
}

TEST_F(ConsoleTest, ShowsVariables) {
  EXPECT_EQ(shownFor({"Let ( $a = 1 ; \"\" )", "variables"}), "(empty)\n$a = 1  (number)\n");
}

TEST_F(ConsoleTest, RemembersCalculationsAsOneLine) {
  shownFor({"1", "List ( 1 ;", "  2 )", "quit"});
  EXPECT_THAT(source.remembered, ElementsAre("1", "List ( 1 ; 2 )"));
}

TEST_F(ConsoleTest, RemembersLinesApartWhenACommentWouldSwallowTheRest) {
  shownFor({"List ( 1 ; // one", "2 )"});
  EXPECT_THAT(source.remembered, ElementsAre("List ( 1 ; // one", "2 )"));
}

TEST_F(ConsoleTest, TakesCommandsToTheTerminalOutOfResults) {
  EXPECT_THAT(shownFor({"Char ( 27 ) & \"[31m\""}, true), HasSubstr("␛[31m"));
  EXPECT_THAT(shownFor({"Char ( 27 ) & \"[31m\""}, false), Not(HasSubstr("␛")));
}

TEST_F(ConsoleTest, HelpShowsNothingThatSteersTheTerminal) {
  const std::string shown = shownFor({"help Turned"});
  EXPECT_THAT(shown, HasSubstr("Turned( \uFFFDtype )"));
  EXPECT_THAT(shown, HasSubstr("Clears\u241b[2J."));
}

}  // namespace
}  // namespace orlocal::host
