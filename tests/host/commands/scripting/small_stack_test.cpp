#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "host/commands/program_fixture.h"
#include "host/commands/running_program.h"

namespace orlocal::host {
namespace {

/// The program with a stack of so many KiB.
class SmallStack : public ProgramTest {
 protected:
  RunningProgram started(const std::string& kilobytes, std::vector<std::string> words) {
    words.insert(words.begin(), {"/bin/sh", "-c", "ulimit -s " + kilobytes + R"( && exec "$0" "$@")", program,
                                 "--plugin", "none", "eval"});
    return RunningProgram(std::move(words));
  }

  static std::string repeated(std::string_view text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) { result += text; }
    return result;
  }
};

TEST_F(SmallStack, EndsAnEvaluationOfItselfWithAReason) {
  RunningProgram orlocal = started("512", {"Let ( $self = \"1 & ( Evaluate ( $self ) )\" ; Evaluate ( $self ) )"});
  EXPECT_THAT(orlocal.errorLine(), ::testing::HasSubstr("for the stack of this process"));
  EXPECT_GE(orlocal.finish(), 0);
}

TEST_F(SmallStack, RefusesNestingThatDoesNotFit) {
  for (const char* level : {"(", "Abs (", "1 or 1 and 1 = 1 & 1 + 1 * 1 ^ ("}) {
    RunningProgram orlocal = started("512", {repeated(level, 490) + "1" + repeated(")", 490)});
    EXPECT_GE(orlocal.finish(), 0) << level;
  }
  RunningProgram orlocal =
      started("256", {repeated("1 or 1 and 1 = 1 & 1 + 1 * 1 ^ (", 490) + "1" + repeated(")", 490)});
  EXPECT_THAT(orlocal.errorLine(), ::testing::HasSubstr("for the stack of this process"));
  EXPECT_EQ(orlocal.finish(), 1);
}

TEST_F(SmallStack, CalculatesWhatFits) {
  RunningProgram orlocal = started("512", {repeated("(", 20) + "1 + 1" + repeated(")", 20)});
  EXPECT_EQ(orlocal.line(), "2");
  EXPECT_EQ(orlocal.finish(), 0);
}

}  // namespace
}  // namespace orlocal::host
