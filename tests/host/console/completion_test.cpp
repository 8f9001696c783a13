#include "host/console/completion.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orlocal::host {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class OneFunction : public calc::FunctionLibrary {
 public:
  std::vector<calc::Signature> signatures() const override {
    return {{"Orlo_GetLastError", "Orlo_GetLastError( {type} )", "", 0, 1},
            {"Orlo_OpenItemAt", "Orlo_OpenItemAt( type ; index )", "", 2, 2}};
  }
  Result<Value> call(std::string_view, std::span<const Value>) override { return Value{}; }
};

class CompletionTest : public ::testing::Test {
 protected:
  Completion at(std::string_view beforeCursor) {
    return complete(beforeCursor, candidatesFor(library, {"$uid", "$$all"}));
  }

  std::vector<std::string> shownAt(std::string_view beforeCursor) {
    std::vector<std::string> shown;
    for (const Candidate& candidate : at(beforeCursor).matching) { shown.push_back(candidate.prototype); }
    return shown;
  }

  OneFunction library;
};

TEST_F(CompletionTest, CompletesTheOnlyNameAndOpensItsArguments) {
  EXPECT_EQ(at("1 + Orlo_O").insertion, "penItemAt ( ");
  EXPECT_EQ(at("lengt").insertion, "h ( ");
}

TEST_F(CompletionTest, OpensNothingForAFunctionThatNeedsNoArguments) {
  EXPECT_EQ(at("Orlo_G").insertion, "etLastError");
  EXPECT_EQ(at("Tru").matching.size(), 2U);  // True, Truncate
  EXPECT_EQ(at("Fals").insertion, "e");
}

TEST_F(CompletionTest, GoesAsFarAsAllNamesAgree) {
  EXPECT_EQ(at("orl").insertion, "o_");
  EXPECT_EQ(at("lef").insertion, "t");
}

TEST_F(CompletionTest, ShowsPrototypesInOrder) {
  EXPECT_THAT(shownAt("orlo_"), ElementsAre("Orlo_GetLastError( {type} )", "Orlo_OpenItemAt( type ; index )"));
}

TEST_F(CompletionTest, ShowsThePrototypeOfANameThatIsWhole) {
  EXPECT_THAT(shownAt("Orlo_OpenItemAt"), ElementsAre("Orlo_OpenItemAt( type ; index )"));
}

TEST_F(CompletionTest, KnowsTheWordsOfGet) {
  EXPECT_EQ(at("Get ( CurrentD").insertion, "ate");
  EXPECT_THAT(shownAt("1 & get(us"), ElementsAre("UserName"));
  EXPECT_EQ(shownAt("Get ( ").size(), 10U);
}

TEST_F(CompletionTest, LeavesGetOnceItIsClosed) { EXPECT_THAT(shownAt("Get ( UUID ) & us"), IsEmpty()); }

TEST_F(CompletionTest, CompletesVariables) {
  EXPECT_EQ(at("$u").insertion, "id");
  EXPECT_EQ(at("$$").insertion, "all");
}

TEST_F(CompletionTest, CompletesKeywordsWithinATextAndClosesIt) {
  EXPECT_EQ(at("Orlo_SaveItem( \"event\" ; \"fu").insertion, "ture\"");
  EXPECT_THAT(shownAt("Orlo_SaveItem( \"event\" ; \"fu"),
              ElementsAre("future  the open occurrence and the later ones"));
  EXPECT_EQ(at("Orlo_NewItem( \"re").insertion, "minder");
  EXPECT_EQ(at("Orlo_GetProperty( \"event\" ; \"start").insertion, "date\"");
  EXPECT_THAT(shownAt("Orlo_NewItem( \"nonsense"), IsEmpty());
}

TEST_F(CompletionTest, CompletesNoNamesWithinAText) { EXPECT_THAT(shownAt("\"orlo_"), IsEmpty()); }

TEST_F(CompletionTest, CompletesWhatItsCallerKnowsOfTexts) {
  const auto titles = [](const TextPlace& place) {
    EXPECT_EQ(place.function, "Open");
    return std::vector<Candidate>{{"Work", "Work", false}, {"Wörk", "Wörk", false}, {"Wärk", "Wärk", false}};
  };
  EXPECT_EQ(complete("Open( \"", {}, titles).insertion, "W");
  EXPECT_EQ(complete("Open( \"W", {}, titles).insertion, "");
  EXPECT_EQ(complete("Open( \"Wo", {}, titles).insertion, "rk\"");
  EXPECT_EQ(complete("Open( \"wo", {}, titles).insertion, "");
}

TEST_F(CompletionTest, DoesNothingWithoutAName) {
  EXPECT_THAT(shownAt(""), IsEmpty());
  EXPECT_THAT(shownAt("1 + "), IsEmpty());
  EXPECT_THAT(shownAt("nonsense"), IsEmpty());
}

}  // namespace
}  // namespace orlocal::host
