#include <gmock/gmock.h>

#include "host/calc/calc_fixture.h"

namespace orlocal::host::calc {
namespace {

using ::testing::ElementsAre;

class VariablesTest : public CalcTest {};

TEST_F(VariablesTest, NamesValuesInLet) {
  EXPECT_EQ(eval("Let ( [ a = 1 ; b = a + 1 ] ; a & b )"), "12");
  EXPECT_EQ(eval("Let ( a = 1 ; a )"), "1");
  EXPECT_EQ(eval("Let ( [ ] ; 1 )"), "1");
  EXPECT_EQ(eval("Let ( [ a = 1 ; ] ; a )"), "1");
}

TEST_F(VariablesTest, FindsNamesWithoutCase) { EXPECT_EQ(eval("Let ( Größe = 1 ; größe & GRÖßE )"), "11"); }

TEST_F(VariablesTest, LetsALaterBindingReplaceAnEarlierOne) {
  EXPECT_EQ(eval("Let ( [ a = 1 ; a = a + 1 ] ; a )"), "2");
}

TEST_F(VariablesTest, HidesOuterNamesInsideAnInnerLet) {
  EXPECT_EQ(eval("Let ( a = 1 ; Let ( a = a + 1 ; a ) & a )"), "21");
}

TEST_F(VariablesTest, BindsComparisonsWhole) { EXPECT_EQ(eval("Let ( a = 2 = 2 ; a )"), "1"); }

TEST_F(VariablesTest, KeepsDollarVariablesFromCalculationToCalculation) {
  EXPECT_EQ(eval("Let ( [ $a = 1 ; $$b = 2 ] ; \"\" )"), "");
  EXPECT_EQ(eval("$a & $$b & $b & $$a"), "12");
  EXPECT_EQ(eval("$A & $$B"), "12");
  EXPECT_THAT(session.variableNames(), ElementsAre("$$b", "$a"));
}

TEST_F(VariablesTest, KeepsTheTypeOfWhatIsStored) {
  eval("Let ( $d = Date ( 11 ; 2 ; 2026 ) ; \"\" )");
  EXPECT_EQ(typeOf("$d"), fmx::kDate);
}

TEST_F(VariablesTest, ReadsAnUnknownVariableAsNothing) { EXPECT_EQ(eval("IsEmpty ( $nothing )"), "1"); }

TEST_F(VariablesTest, ForgetsAVariableThatIsEmptied) {
  eval("Let ( $a = 1 ; \"\" )");
  eval("Let ( $a = \"\" ; \"\" )");
  EXPECT_THAT(session.variableNames(), ElementsAre());
}

TEST_F(VariablesTest, CountsRepetitionsFromOne) {
  eval("Let ( [ $a = 1 ; $a[2] = 5 ] ; \"\" )");
  EXPECT_EQ(eval("$a[1] & $a[1 + 1] & $a[3]"), "15");
}

TEST_F(VariablesTest, LoopsWhileTheConditionHolds) {
  EXPECT_EQ(eval("While ( [ i = 0 ; out = \"\" ] ; i < 3 ; [ i = i + 1 ; out = List ( out ; i ) ] ; out )"), "1¶2¶3");
  EXPECT_EQ(eval("While ( i = 9 ; i < 3 ; i = i + 1 ; i )"), "9");
}

TEST_F(VariablesTest, SetsDollarVariablesInLoops) {
  EXPECT_EQ(eval("While ( [ i = 0 ] ; i < 3 ; [ i = i + 1 ; $last = i ] ; $last )"), "3");
}

TEST_F(VariablesTest, LeavesOuterNamesAsTheyWereAfterALoop) {
  EXPECT_EQ(eval("Let ( i = 7 ; While ( [ i = 0 ] ; i < 3 ; [ i = i + 1 ] ; i ) & i )"), "37");
}

TEST_F(VariablesTest, LoopsOverANameThatOnlyTheLogicSets) {
  EXPECT_EQ(eval("Let ( n = 10 ; While ( [ i = 0 ] ; i < 3 ; [ i = i + 1 ; n = n + 1 ] ; n ) & n )"), "1310");
}

}  // namespace
}  // namespace orlocal::host::calc
