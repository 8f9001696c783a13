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
    const CalcResult<Outcome> result = small.evaluate(calculation);
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

}  // namespace
}  // namespace orlocal::host::calc
