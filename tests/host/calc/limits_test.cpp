#include <gmock/gmock.h>

#include "host/calc/calc_fixture.h"

namespace orlocal::host::calc {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class LimitsTest : public CalcTest {};

TEST_F(LimitsTest, EndsALoopThatGoesRoundTooOften) {
  const Outcome result = outcome("While ( [ i = 0 ] ; 1 ; [ i = i + 1 ] ; i )");
  EXPECT_EQ(result.value.utf8(), "?");
  EXPECT_THAT(result.failures, ElementsAre(HasSubstr("50000 times")));
}

TEST_F(LimitsTest, AllowsALoopThatEndsAtTheLimit) {
  const Outcome result = outcome("While ( [ i = 0 ] ; i < 50000 ; [ i = i + 1 ] ; i )");
  EXPECT_EQ(result.value.utf8(), "50000");
  EXPECT_THAT(result.failures, IsEmpty());
}

TEST_F(LimitsTest, EndsAnEvaluationOfItself) {
  eval("Let ( $self = \"Evaluate ( $self )\" ; \"\" )");
  const Outcome result = outcome("Evaluate ( $self )");
  EXPECT_EQ(result.value.utf8(), "?");
  EXPECT_THAT(result.failures, ElementsAre(HasSubstr("1000 calls deep")));
}

TEST_F(LimitsTest, EndsATextThatOutgrowsItself) {
  Session small(library, Limits{.textLength = 1000});
  for (const char* calculation :
       {"While ( [ t = \"ab\" ; i = 0 ] ; i < 50 ; [ t = t & t ; i = i + 1 ] ; t )",
        "Let ( t = \"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa\" ; Substitute ( t ; \"a\" ; t ) )",
        "While ( [ t = \"ab\" ; i = 0 ] ; i < 50 ; [ t = List ( t ; t ) ; i = i + 1 ] ; t )"}) {
    const Result<Outcome> result = small.evaluate(calculation);
    ASSERT_TRUE(result);
    EXPECT_THAT(result->value.utf8(), HasSubstr("?")) << calculation;
    ASSERT_FALSE(result->failures.empty()) << calculation;
    EXPECT_THAT(result->failures.front(), HasSubstr("longer than 1000 characters"));
  }
}

TEST_F(LimitsTest, StopsWhenInterrupted) {
  library.add({"Orlo_Interrupt", "Orlo_Interrupt", "", 0, 0}, [this](auto) {
    session.interrupt();
    return Value::ofNumber(1);
  });
  int calls = 0;
  library.add({"Orlo_Act", "Orlo_Act", "", 0, 0}, [&](auto) {
    ++calls;
    return Value::ofNumber(1);
  });
  const Outcome result = outcome("While ( [ i = 0 ] ; 1 ; [ a = Orlo_Interrupt ; b = Orlo_Act ] ; i )");
  EXPECT_EQ(result.value.utf8(), "?");
  EXPECT_THAT(result.failures, ElementsAre("interrupted"));
  EXPECT_EQ(calls, 0);
}

TEST_F(LimitsTest, CalculatesAgainAfterAnInterruption) {
  session.interrupt();
  EXPECT_EQ(eval("1 + 1"), "2");
}

/// Calculations near the size that a field can hold. None of them ends in a test's time when its cost grows with the
/// square of its length.
class LongCalculationTest : public CalcTest {
 protected:
  static constexpr std::size_t kCount = 300'000;

  static std::string repeated(std::string_view text, std::size_t count = kCount) {
    std::string result;
    for (std::size_t i = 0; i < count; ++i) { result += text; }
    return result;
  }
};

TEST_F(LongCalculationTest, JoinsAChainOfTexts) { EXPECT_EQ(eval("Length ( " + repeated("1 & ") + "1 )"), "300001"); }

TEST_F(LongCalculationTest, FindsEachOfManyNames) {
  std::string bindings = "a0 = 1";
  for (int i = 1; i < 60'000; ++i) { bindings += "; a" + std::to_string(i) + " = a" + std::to_string(i - 1) + " + 1"; }
  EXPECT_EQ(eval("Let ( [ " + bindings + " ] ; a59999 & \"/\" & a0 )"), "60000/1");
}

TEST_F(LongCalculationTest, FindsTheManiethOccurrenceForwardsAndBackwards) {
  const std::string text = "\"" + repeated("aB") + "\"";
  EXPECT_EQ(eval("Position ( " + text + " ; \"b\" ; 1 ; 200000 )"), "400000");
  EXPECT_EQ(eval("Position ( " + text + " ; \"A\" ; 600000 ; -200000 )"), "200001");
}

TEST_F(LongCalculationTest, SearchesTextsThatAreAlikeForLong) {
  const std::string calculation = "\"" + repeated("a") + "b\" ; \"" + repeated("a", kCount / 2) + "b\"";
  EXPECT_EQ(eval("PatternCount ( " + calculation + " )"), "1");
  EXPECT_EQ(eval("Position ( " + calculation + " ; 1 ; 1 )"), "150001");
  EXPECT_EQ(eval("Length ( Substitute ( " + calculation + " ; \"\" ) )"), "150000");
}

TEST_F(LongCalculationTest, FiltersByManyCharacters) {
  EXPECT_EQ(eval("Length ( Filter ( \"" + repeated("a") + "\" ; \"" + repeated("b") + "a\" ) )"), "300000");
}

TEST_F(LongCalculationTest, GivesNoCodeForATextBeyondNumbers) {
  EXPECT_EQ(eval("Code ( \"" + repeated("a") + "\" )"), "?");
}

TEST_F(LimitsTest, KeepsTheFirstReasonsOfALoopOverSomethingFaulty) {
  const Outcome result = outcome("While ( [ i = 0 ] ; i < 5000 ; [ a = Evaluate ( \"(\" ) ; i = i + 1 ] ; i )");
  EXPECT_EQ(result.value.utf8(), "5000");
  ASSERT_EQ(result.failures.size(), 101U);
  EXPECT_EQ(result.failures.back(), "and more, which are not kept");
}

TEST_F(LimitsTest, ShowsAnErrorInALongLineWithWhatStandsAround) {
  const std::string calculation = std::string(5000, ' ') + "1 1" + std::string(5000, ' ');
  const Result<Outcome> result = session.evaluate(calculation);
  ASSERT_FALSE(result);
  const std::string described = describe(calculation, result.error());
  EXPECT_LT(described.size(), 700U);
  EXPECT_THAT(described, HasSubstr("1 1 "));
}

TEST_F(LimitsTest, HidesAndShowsVariablesOfOneName) {
  EXPECT_EQ(eval("Let ( a = 1 ; Let ( [ a = a + 1 ; b = a ; a = a + 1 ] ; a & b ) & a )"), "321");
}

}  // namespace
}  // namespace orlocal::host::calc
