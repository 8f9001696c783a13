#include <gmock/gmock.h>

#include "host/calc/calc_fixture.h"

namespace orlocal::host::calc {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class LogicalFunctionsTest : public CalcTest {
 protected:
  LogicalFunctionsTest() {
    library.add({"Orlo_Act", "Orlo_Act( {value} )", "", 0, 1}, [this](std::span<const Value> arguments) {
      ++calls;
      return arguments.empty() ? Value::ofNumber(0) : arguments[0];
    });
    library.add({"Orlo_Fail", "Orlo_Fail", "", 0, 0},
                [](auto) { return failure(ErrorCode::kIo, "Orlo_Fail threw an exception"); });
  }

  int calls = 0;
};

TEST_F(LogicalFunctionsTest, ChoosesBetweenTwo) {
  EXPECT_EQ(eval("If ( 1 ; \"yes\" ; \"no\" ) & If ( 0 ; \"yes\" ; \"no\" )"), "yesno");
  EXPECT_EQ(eval("If ( 0 ; \"yes\" )"), "");
}

TEST_F(LogicalFunctionsTest, ChoosesTheFirstTrueCase) {
  EXPECT_EQ(eval("Case ( 0 ; \"a\" ; 1 ; \"b\" ; 1 ; \"c\" ; \"d\" )"), "b");
  EXPECT_EQ(eval("Case ( 0 ; \"a\" ; 0 ; \"b\" ; \"d\" )"), "d");
  EXPECT_EQ(eval("Case ( 0 ; \"a\" ; 0 ; \"b\" )"), "");
}

TEST_F(LogicalFunctionsTest, ChoosesByNumber) {
  EXPECT_EQ(eval("Choose ( 0 ; \"a\" ; \"b\" ) & Choose ( 1 ; \"a\" ; \"b\" )"), "ab");
  EXPECT_EQ(eval("Choose ( 2 ; \"a\" ; \"b\" ) & Choose ( -1 ; \"a\" ; \"b\" )"), "");
}

TEST_F(LogicalFunctionsTest, EvaluatesOnlyTheChosenBranch) {
  eval("If ( 0 ; Orlo_Act ; 1 )");
  eval("Case ( 1 ; 1 ; Orlo_Act ; Orlo_Act )");
  eval("Choose ( 0 ; 1 ; Orlo_Act )");
  EXPECT_EQ(calls, 0);
}

TEST_F(LogicalFunctionsTest, PassesAQuestionMarkInATestOn) {
  EXPECT_EQ(eval("If ( 1 / 0 ; 1 ; 2 )"), "?");
  EXPECT_EQ(eval("Choose ( 1 / 0 ; 1 ; 2 )"), "?");
}

TEST_F(LogicalFunctionsTest, TellsEmptyAndInvalidValues) {
  EXPECT_EQ(eval("IsEmpty ( \"\" ) & IsEmpty ( 0 ) & IsEmpty ( \" \" ) & IsEmpty ( 1 / 0 )"), "1001");
  EXPECT_EQ(eval("IsValid ( 1 ) & IsValid ( 1 / 0 )"), "10");
}

TEST_F(LogicalFunctionsTest, KnowsTrueAndFalse) { EXPECT_EQ(eval("True & False"), "10"); }

TEST_F(LogicalFunctionsTest, EvaluatesTexts) {
  EXPECT_EQ(eval("Evaluate ( \"1 + 1\" )"), "2");
  EXPECT_EQ(eval("Let ( $x = 5 ; Evaluate ( \"$x + 1\" ) )"), "6");
}

TEST_F(LogicalFunctionsTest, HidesVariablesOfLetFromEvaluatedTexts) {
  EXPECT_EQ(eval("Let ( x = 5 ; IsValid ( Evaluate ( \"x + 1\" ) ) )"), "0");
}

TEST_F(LogicalFunctionsTest, ShowsAQuestionMarkForAFaultyText) {
  const Outcome result = outcome("Evaluate ( \"1 +\" )");
  EXPECT_EQ(result.value.utf8(), "?");
  EXPECT_THAT(result.failures, ElementsAre(HasSubstr("1:4: a value is expected here")));
  EXPECT_EQ(eval("IsValidExpression ( \"1 +\" ) & IsValidExpression ( \"1\" )"), "01");
}

TEST_F(LogicalFunctionsTest, HandsArgumentsToTheLibrary) {
  EXPECT_EQ(eval("Orlo_Act ( Date ( 11 ; 2 ; 2026 ) )"), "2026-11-02");
}

TEST_F(LogicalFunctionsTest, GoesOnWithAQuestionMarkAfterAFailedCall) {
  const Outcome result = outcome("\"a\" & Orlo_Fail & \"b\"");
  EXPECT_EQ(result.value.utf8(), "a?b");
  EXPECT_THAT(result.failures, ElementsAre("Orlo_Fail threw an exception"));
}

TEST_F(LogicalFunctionsTest, ForgetsFailuresWithTheNextCalculation) {
  outcome("Orlo_Fail");
  EXPECT_THAT(outcome("1").failures, IsEmpty());
}

TEST_F(LogicalFunctionsTest, KeepsACalculationWithinACalculationApart) {
  library.add({"Orlo_Inner", "Orlo_Inner", "", 0, 0}, [this](auto) -> Result<Value> {
    const Result<Outcome> inner = session.evaluate("Let ( a = Orlo_Fail ; a & \"!\" )");
    return inner->value;
  });
  const Outcome result = outcome("Let ( a = 1 ; Orlo_Inner & a )");
  EXPECT_EQ(result.value.utf8(), "?!1");
  EXPECT_THAT(result.failures, IsEmpty());
}

TEST_F(LogicalFunctionsTest, MakesIdentifiersThatDiffer) {
  EXPECT_EQ(eval("Length ( Get ( UUID ) )"), "36");
  EXPECT_EQ(eval("Get ( UUID ) = Get ( UUID )"), "0");
  EXPECT_EQ(eval("Middle ( Get ( UUID ) ; 15 ; 1 )"), "4");
}

}  // namespace
}  // namespace orlocal::host::calc
