#include "host/calc/calc_fixture.h"

namespace orlocal::host::calc {
namespace {

class ListFunctionsTest : public CalcTest {};

TEST_F(ListFunctionsTest, MakesListsWithoutEmptyValues) {
  EXPECT_EQ(eval("List ( \"a\" ; \"\" ; 2 )"), "a¶2");
  EXPECT_EQ(eval("List ( \"\" )"), "");
  EXPECT_EQ(eval("List ( \"a¶b\" ; \"c\" )"), "a¶b¶c");
}

TEST_F(ListFunctionsTest, CountsValuesByTheirReturns) {
  EXPECT_EQ(eval("ValueCount ( \"\" )"), "0");
  EXPECT_EQ(eval("ValueCount ( \"a\" )"), "1");
  EXPECT_EQ(eval("ValueCount ( \"a¶b¶\" )"), "2");
  EXPECT_EQ(eval("ValueCount ( \"a¶¶\" )"), "2");
}

TEST_F(ListFunctionsTest, EndsValuesAtLineFeedsToo) {
  EXPECT_EQ(eval("ValueCount ( \"a\" & Char ( 10 ) & \"b\" & Char ( 13 ) & Char ( 10 ) & \"c\" )"), "3");
}

TEST_F(ListFunctionsTest, GetsAValueByNumber) {
  EXPECT_EQ(eval("GetValue ( \"a¶b¶c\" ; 2 )"), "b");
  EXPECT_EQ(eval("GetValue ( \"a¶b\" ; 3 ) & GetValue ( \"a¶b\" ; 0 ) & GetValue ( \"a\" ; -1 )"), "");
}

TEST_F(ListFunctionsTest, EndsEveryValueOfAPartOfAListWithAReturn) {
  EXPECT_EQ(eval("LeftValues ( \"a¶b¶c\" ; 2 )"), "a¶b¶");
  EXPECT_EQ(eval("RightValues ( \"a¶b¶c\" ; 2 )"), "b¶c¶");
  EXPECT_EQ(eval("MiddleValues ( \"a¶b¶c\" ; 2 ; 1 )"), "b¶");
  EXPECT_EQ(eval("MiddleValues ( \"a¶b¶c\" ; 9 ; 1 )"), "");
}

TEST_F(ListFunctionsTest, FiltersValuesWithoutCase) {
  EXPECT_EQ(eval("FilterValues ( \"Work¶Home¶work\" ; \"WORK\" )"), "Work¶work¶");
}

TEST_F(ListFunctionsTest, SortsByTheGivenType) {
  EXPECT_EQ(eval("SortValues ( \"10¶9¶b¶A\" )"), "10¶9¶A¶b¶");
  EXPECT_EQ(eval("SortValues ( \"10¶9\" ; 2 )"), "9¶10¶");
  EXPECT_EQ(eval("SortValues ( \"9¶10\" ; -2 )"), "10¶9¶");
  EXPECT_EQ(eval("SortValues ( \"2026-11-02¶12/1/2025\" ; 3 )"), "12/1/2025¶2026-11-02¶");
}

TEST_F(ListFunctionsTest, SortsWhatCannotBeReadToTheEnd) {
  EXPECT_EQ(eval("SortValues ( \"soon¶2026-11-02¶later¶2025-01-01\" ; 3 )"), "2025-01-01¶2026-11-02¶later¶soon¶");
}

TEST_F(ListFunctionsTest, KeepsTheFirstOfEqualValues) {
  EXPECT_EQ(eval("UniqueValues ( \"b¶a¶B¶a\" )"), "b¶a¶");
  EXPECT_EQ(eval("UniqueValues ( \"1¶1.0¶2\" ; 2 )"), "1¶2¶");
}

}  // namespace
}  // namespace orlocal::host::calc
