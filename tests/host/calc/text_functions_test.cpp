#include "host/calc/calc_fixture.h"

namespace orlocal::host::calc {
namespace {

class TextFunctionsTest : public CalcTest {};

TEST_F(TextFunctionsTest, CutsTextsAtBothEndsAndInside) {
  EXPECT_EQ(eval("Left ( \"Calendar\" ; 3 )"), "Cal");
  EXPECT_EQ(eval("Right ( \"Calendar\" ; 3 )"), "dar");
  EXPECT_EQ(eval("Middle ( \"Calendar\" ; 4 ; 3 )"), "end");
}

TEST_F(TextFunctionsTest, CutsNoMoreThanThereIs) {
  EXPECT_EQ(eval("Left ( \"ab\" ; 5 ) & Right ( \"ab\" ; 5 ) & Middle ( \"ab\" ; 2 ; 9 )"), "ababb");
  EXPECT_EQ(eval("Left ( \"ab\" ; -1 ) & Right ( \"ab\" ; 0 ) & Middle ( \"ab\" ; 3 ; 1 )"), "");
  EXPECT_EQ(eval("Left ( \"ab\" ; 1e300 )"), "ab");
}

TEST_F(TextFunctionsTest, CountsPositionsBeforeTheFirstCharacterAsEmpty) {
  EXPECT_EQ(eval("Middle ( \"abc\" ; 0 ; 2 )"), "a");
  EXPECT_EQ(eval("Middle ( \"abc\" ; -5 ; 2 )"), "");
}

TEST_F(TextFunctionsTest, NeverCutsACharacterInTwo) {
  EXPECT_EQ(eval("Length ( \"a😀b\" )"), "3");
  EXPECT_EQ(eval("Left ( \"😀b\" ; 1 )"), "😀");
  EXPECT_EQ(eval("Right ( \"a😀\" ; 1 )"), "😀");
  EXPECT_EQ(eval("Position ( \"😀b\" ; \"b\" ; 1 ; 1 )"), "2");
}

TEST_F(TextFunctionsTest, ReadsNumbersAsTheirTexts) {
  EXPECT_EQ(eval("Length ( 1234 )"), "4");
  EXPECT_EQ(eval("Left ( 1234 ; 2 )"), "12");
}

TEST_F(TextFunctionsTest, FindsPositionsWithoutCase) {
  EXPECT_EQ(eval("Position ( \"Monday\" ; \"DAY\" ; 1 ; 1 )"), "4");
  EXPECT_EQ(eval("Position ( \"abcabc\" ; \"b\" ; 3 ; 1 )"), "5");
  EXPECT_EQ(eval("Position ( \"abcabc\" ; \"b\" ; 1 ; 2 )"), "5");
  EXPECT_EQ(eval("Position ( \"abcabc\" ; \"b\" ; 1 ; 3 )"), "0");
  EXPECT_EQ(eval("Position ( \"abc\" ; \"\" ; 1 ; 1 )"), "0");
}

TEST_F(TextFunctionsTest, SearchesBackwardsForANegativeOccurrence) {
  EXPECT_EQ(eval("Position ( \"abcabc\" ; \"b\" ; 6 ; -1 )"), "5");
  EXPECT_EQ(eval("Position ( \"abcabc\" ; \"b\" ; 6 ; -2 )"), "2");
  EXPECT_EQ(eval("Position ( \"abcabc\" ; \"a\" ; 6 ; -3 )"), "0");
  EXPECT_EQ(eval("Position ( \"abc\" ; \"a\" ; 1 ; 0 )"), "0");
}

TEST_F(TextFunctionsTest, CountsPatternsWithoutCaseAndWithoutOverlap) {
  EXPECT_EQ(eval("PatternCount ( \"Mississippi\" ; \"SS\" )"), "2");
  EXPECT_EQ(eval("PatternCount ( \"aaaa\" ; \"aa\" )"), "2");
  EXPECT_EQ(eval("PatternCount ( \"a\" ; \"\" )"), "0");
}

TEST_F(TextFunctionsTest, SubstitutesInTheSameCase) {
  EXPECT_EQ(eval("Substitute ( \"aAa\" ; \"a\" ; \"x\" )"), "xAx");
  EXPECT_EQ(eval("Substitute ( \"abc\" ; \"\" ; \"x\" )"), "abc");
}

TEST_F(TextFunctionsTest, SubstitutesPairAfterPair) {
  EXPECT_EQ(eval("Substitute ( \"abc\" ; [ \"a\" ; \"b\" ] ; [ \"b\" ; \"c\" ] )"), "ccc");
  EXPECT_EQ(eval("Substitute ( List ( 1 ; 2 ) ; [ ¶ ; \", \" ] )"), "1, 2");
}

TEST_F(TextFunctionsTest, ReplacesByPosition) {
  EXPECT_EQ(eval("Replace ( \"abcdef\" ; 2 ; 3 ; \"X\" )"), "aXef");
  EXPECT_EQ(eval("Replace ( \"abc\" ; 9 ; 1 ; \"X\" )"), "abcX");
}

TEST_F(TextFunctionsTest, ChangesCase) {
  EXPECT_EQ(eval("Upper ( \"straße\" ) & Lower ( \"ÄB\" )"), "STRASSEäb");
  EXPECT_EQ(eval("Proper ( \"ADA lovelace's CODE\" )"), "Ada Lovelace's Code");
}

TEST_F(TextFunctionsTest, TrimsBlanksOnly) {
  EXPECT_EQ(eval("Trim ( \"  a b  \" )"), "a b");
  EXPECT_EQ(eval("Trim ( \"   \" )"), "");
  EXPECT_EQ(eval("Trim ( \"¶a\" )"), "¶a");
}

TEST_F(TextFunctionsTest, FiltersCharacters) {
  EXPECT_EQ(eval("Filter ( \"(030) 12-34\" ; \"0123456789\" )"), "0301234");
}

TEST_F(TextFunctionsTest, TellsCaseInExact) {
  EXPECT_EQ(eval("Exact ( \"a\" ; \"A\" )"), "0");
  EXPECT_EQ(eval("Exact ( \"a\" ; \"a\" )"), "1");
}

TEST_F(TextFunctionsTest, QuotesSoThatEvaluationGivesTheTextBack) {
  EXPECT_EQ(eval(R"(Quote ( "say \"hi\"" ))"), R"("say \"hi\"")");
  EXPECT_EQ(eval(R"(Let ( t = "a\\b\"c" & ¶ & "\¶" ; Exact ( Evaluate ( Quote ( t ) ) ; t ) ))"), "1");
}

TEST_F(TextFunctionsTest, TurnsCodesIntoCharactersAndBack) {
  EXPECT_EQ(eval("Char ( 65 )"), "A");
  EXPECT_EQ(eval("Char ( 13 )"), "¶");
  EXPECT_EQ(eval("Char ( 128512 )"), "😀");
  EXPECT_EQ(eval("Char ( 0 )"), "");
  EXPECT_EQ(eval("Char ( -1 )"), "?");
  EXPECT_EQ(eval("Char ( 55296 )"), "?");
  EXPECT_EQ(eval("Code ( \"A\" )"), "65");
  EXPECT_EQ(eval("Code ( \"\" )"), "");
}

TEST_F(TextFunctionsTest, PutsSeveralCharactersIntoOneCodeFiveDigitsEach) {
  EXPECT_EQ(eval("Code ( \"ab\" )"), "9800097");
  EXPECT_EQ(eval("Char ( 9800097 )"), "ab");
}

TEST_F(TextFunctionsTest, CountsAndCutsWords) {
  EXPECT_EQ(eval("WordCount ( \"The quick, brown fox\" )"), "4");
  EXPECT_EQ(eval("LeftWords ( \"The quick, brown fox\" ; 2 )"), "The quick");
  EXPECT_EQ(eval("RightWords ( \"The quick, brown fox.\" ; 2 )"), "brown fox");
  EXPECT_EQ(eval("MiddleWords ( \"The quick, brown fox\" ; 2 ; 2 )"), "quick, brown");
  EXPECT_EQ(eval("LeftWords ( \"\" ; 1 )"), "");
  EXPECT_EQ(eval("MiddleWords ( \"one\" ; 5 ; 1 )"), "");
}

}  // namespace
}  // namespace orlocal::host::calc
