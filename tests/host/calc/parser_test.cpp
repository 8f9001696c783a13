#include "host/calc/parser.h"

#include <gmock/gmock.h>

#include "host/calc/calc_fixture.h"

namespace orlocal::host::calc {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class ParserTest : public CalcTest {
 protected:
  ParserTest() {
    library.add({"Orlo_GetLastError", "Orlo_GetLastError( {type} )", "", 0, 1},
                [](auto) { return Value::ofUtf8("Success"); });
  }
};

TEST_F(ParserTest, EvaluatesAnEmptyCalculationToNothing) {
  EXPECT_EQ(eval(""), "");
  EXPECT_EQ(eval("// only a comment"), "");
}

TEST_F(ParserTest, JoinsByRank) {
  EXPECT_EQ(eval("2 + 3 * 4"), "14");
  EXPECT_EQ(eval("2 * 3 ^ 2"), "18");
  EXPECT_EQ(eval("1 + 1 & 2 + 2"), "24");
  EXPECT_EQ(eval("\"a\" & \"b\" = \"ab\""), "1");
  EXPECT_EQ(eval("1 = 1 and 2 = 3"), "0");
  EXPECT_EQ(eval("1 or 1 and 0"), "1");
  EXPECT_EQ(eval("( 2 + 3 ) * 4"), "20");
}

TEST_F(ParserTest, JoinsEqualRanksFromTheLeft) {
  EXPECT_EQ(eval("10 - 4 - 3"), "3");
  EXPECT_EQ(eval("100 / 10 / 2"), "5");
  EXPECT_EQ(eval("2 ^ 3 ^ 2"), "64");
}

TEST_F(ParserTest, BindsUnaryOperatorsTightest) {
  EXPECT_EQ(eval("-2 ^ 2"), "4");
  EXPECT_EQ(eval("2 ^ -1"), ".5");
  EXPECT_EQ(eval("not 0 = 1"), "1");
  EXPECT_EQ(eval("3 - - 2"), "5");
}

TEST_F(ParserTest, FindsFunctionsWithoutCase) { EXPECT_EQ(eval("LENGTH ( \"abc\" ) & lEfT ( \"abc\" ; 1 )"), "3a"); }

TEST_F(ParserTest, CallsALibraryFunctionWithAndWithoutParentheses) {
  EXPECT_EQ(eval("Orlo_GetLastError"), "Success");
  EXPECT_EQ(eval("orlo_getlasterror ( )"), "Success");
  EXPECT_EQ(eval("Orlo_GetLastError( \"text\" ) & \"!\""), "Success!");
}

TEST_F(ParserTest, LetsAVariableHideAFunctionOfItsName) { EXPECT_EQ(eval("Let ( [ length = 7 ] ; length )"), "7"); }

TEST_F(ParserTest, StillCallsTheFunctionBesideAVariableOfItsName) {
  EXPECT_EQ(eval("Let ( length = 7 ; Length ( \"ab\" ) )"), "2");
}

struct Fault {
  const char* calculation;
  const char* error;
};

TEST_F(ParserTest, PointsAtWhatIsWrong) {
  constexpr Fault kFaults[] = {
      {"1 +", "1:4: a value is expected here, not the end"},
      {"1 2", "1:3: an operator is missing before 2"},
      {"( 1", "1:4: ) is expected here, not the end"},
      {"1 )", "1:3: an operator is missing before )"},
      {"Let ( [ a = 1 ; b ] ; a )", "1:19: = is expected here, not ]"},
      {"Let ( [ 1 = 1 ] ; a )", "1:9: a variable is expected here, not 1"},
      {"Foo ( 1 )", "1:1: there is no function named Foo"},
      {"1 + Foo", "1:5: there is no function or variable named Foo"},
      {"Table::Field", "1:1: Table::Field would be a field, and there are none here"},
      {"Get ( Nonsense )", "1:7: Get does not know Nonsense"},
      {"Left ( \"a\" )", "1:1: Left has too few arguments: Left ( text ; numberOfCharacters )"},
      {"Left ( \"a\" ; 1 ; 2 )", "1:1: Left has too many arguments: Left ( text ; numberOfCharacters )"},
      {"Orlo_GetLastError( 1 ; 2 )", "1:1: Orlo_GetLastError has too many arguments: Orlo_GetLastError( {type} )"},
      {"Length", "1:1: Length has too few arguments: Length ( text )"},
      {"Substitute ( \"a\" ; [ \"b\" ] )", "1:26: ; is expected here, not ]"},
      {"1 = = 2", "1:5: a value is expected here, not ="},
      {"1 ≠ ≠ 2", "1:5: a value is expected here, not ≠"},
      {"$a[1", "1:5: ] is expected here, not the end"},
      {"Left ( \"a\" 1 )", "1:12: ; or ) is expected here, not 1"},
      {"1 +\n  \"abc", "2:3: this text has no end; close it with \""},
  };
  for (const Fault& fault : kFaults) { EXPECT_EQ(errorOf(fault.calculation), fault.error) << fault.calculation; }
}

TEST_F(ParserTest, ForgetsVariablesOfLetAfterItsEnd) {
  EXPECT_THAT(errorOf("Let ( a = 1 ; a ) + a"), HasSubstr("no function or variable named a"));
}

TEST_F(ParserTest, TakesLongChainsOfOperators) {
  std::string calculation = "0";
  for (int i = 0; i < 20'000; ++i) { calculation += " + 1"; }
  EXPECT_EQ(eval(calculation), "20000");
}

TEST_F(ParserTest, RefusesNestingWithoutEnd) {
  for (const char* level : {"(", "-", "Left(", "Let(a=", "If(1;"}) {
    std::string calculation;
    for (int i = 0; i < 100'000; ++i) { calculation += level; }
    // An instrumented build has the larger frames, and meets the end of its stack first.
    EXPECT_THAT(errorOf(calculation),
                AnyOf(HasSubstr("nested more than 500 levels"), HasSubstr("nested too deeply for the stack")))
        << level;
  }
}

TEST_F(ParserTest, TakesNestingUpToTheLimit) {
  const std::string calculation = std::string(kMaximumNesting - 1, '(') + "1" + std::string(kMaximumNesting - 1, ')');
  EXPECT_EQ(eval(calculation), "1");
}

TEST_F(ParserTest, RefusesANumberBeyondAllBounds) {
  EXPECT_THAT(errorOf("1e500"), StartsWith("1:1: this number is beyond"));
}

TEST_F(ParserTest, DoesNothingOfACalculationThatItCannotRead) {
  int calls = 0;
  library.add({"Orlo_Act", "Orlo_Act", "", 0, 0}, [&](auto) {
    ++calls;
    return Value::ofNumber(0);
  });
  errorOf("Orlo_Act & Left ( 1 )");
  EXPECT_EQ(calls, 0);
}

TEST_F(ParserTest, ChecksACalculationWithoutDoingIt) {
  EXPECT_TRUE(session.check("Orlo_GetLastError"));
  ASSERT_FALSE(session.check("1 +"));
  EXPECT_EQ(session.check("1 +").error().place, 3U);
}

}  // namespace
}  // namespace orlocal::host::calc
