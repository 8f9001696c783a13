#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "host/commands/command_line/child_process.h"
#include "host/commands/program_fixture.h"

namespace orlocal::host {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

class CalcCommandsTest : public ProgramTest {};

TEST_F(CalcCommandsTest, PrintsEachResultOnALine) {
  EXPECT_EQ(run({"eval", "1 + 1", "\"a\" & \"b\""}), ExitStatus::kDone);
  EXPECT_EQ(out.str(), "2\nab\n");
  EXPECT_THAT(err.str(), IsEmpty());
}

TEST_F(CalcCommandsTest, PrintsTheLinesOfAResultOneBelowTheOther) {
  run({"eval", "List ( 1 ; 2 )", "\"\""});
  EXPECT_EQ(out.str(), "1\n2\n\n");
}

TEST_F(CalcCommandsTest, KeepsVariablesFromWordToWord) {
  run({"eval", "Let ( $$a = 5 ; \"\" )", "$$a"});
  EXPECT_EQ(out.str(), "\n5\n");
}

TEST_F(CalcCommandsTest, TakesACalculationThatBeginsWithAMinus) {
  EXPECT_EQ(run({"eval", "--", "-1 + 2"}), ExitStatus::kDone);
  EXPECT_EQ(out.str(), "1\n");
}

TEST_F(CalcCommandsTest, PointsAtAFaultAndDoesNothing) {
  EXPECT_EQ(run({"eval", "1", "1 +"}), ExitStatus::kFailed);
  EXPECT_THAT(out.str(), IsEmpty());
  EXPECT_EQ(err.str(), "1:4: a value is expected here, not the end\n  1 +\n     ^\n");
}

TEST_F(CalcCommandsTest, PrintsAQuestionMarkWithTheReasonForAFailure) {
  EXPECT_EQ(run({"eval", "Evaluate ( \"1 +\" )", "2"}), ExitStatus::kFailed);
  EXPECT_EQ(out.str(), "?\n2\n");
  EXPECT_THAT(err.str(), HasSubstr("a value is expected here"));
}

TEST_F(CalcCommandsTest, ListsResultsAsJson) {
  EXPECT_EQ(run({"eval", "--json", "1 + 1", "Date ( 11 ; 2 ; 2026 )", "\"\xFF\""}), ExitStatus::kDone);
  const auto list = nlohmann::json::parse(out.str());
  ASSERT_EQ(list.size(), 3U);
  EXPECT_EQ(list[0]["calculation"], "1 + 1");
  EXPECT_EQ(list[0]["result"], "2");
  EXPECT_EQ(list[0]["type"], "number");
  EXPECT_EQ(list[1]["type"], "date");
  EXPECT_EQ(list[2]["result"], "\uFFFD");
}

TEST_F(CalcCommandsTest, NeedsACalculationAndAFile) {
  EXPECT_EQ(run({"eval"}), ExitStatus::kUsage);
  EXPECT_EQ(run({"run"}), ExitStatus::kUsage);
}

TEST_F(CalcCommandsTest, RunsAFileOfCalculations) {
  const std::string file = write("a.calc", "# sums\nLet ( $$a = 5 ;\n  \"\" )\n$$a + 1\n");
  EXPECT_EQ(run({"run", file}), ExitStatus::kDone);
  EXPECT_EQ(out.str(), "\n6\n");
}

TEST_F(CalcCommandsTest, RunsTheInput) {
  input = "1 + 1\n";
  EXPECT_EQ(run({"run", "-"}), ExitStatus::kDone);
  EXPECT_EQ(out.str(), "2\n");
}

TEST_F(CalcCommandsTest, NamesTheLineOfAFaultInAFile) {
  const std::string file = write("a.calc", "1\nList ( 1 ;\n  * )\n");
  EXPECT_EQ(run({"run", file}), ExitStatus::kFailed);
  EXPECT_THAT(out.str(), IsEmpty());
  EXPECT_THAT(err.str(), HasSubstr(file + ":3:3: a value is expected here, not *\n    * )\n    ^"));
}

TEST_F(CalcCommandsTest, NamesTheLineOfAFailureInAFile) {
  const std::string file = write("a.calc", "1\nEvaluate ( \"(\" )\n");
  EXPECT_EQ(run({"run", file}), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr(file + ":2: "));
}

TEST_F(CalcCommandsTest, FailsOnAFileThatCannotBeRead) {
  EXPECT_EQ(run({"run", (folder / "none.calc").string()}), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr("none.calc cannot be read: No such file or directory"));
  EXPECT_EQ(run({"run", folder.string()}), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr(folder.string() + " cannot be read: Is a directory"));
}

TEST_F(CalcCommandsTest, FailsOnAStandardInputThatCannotBeRead) {
  for (const char* from : {" <\"$1\" 2>&1", " <&- 2>&1"}) {
    const ChildResult result =
        runProgram({"/bin/sh", "-c", std::string("exec \"$0\" --plugin none run -") + from, program, folder.string()})
            .value();
    EXPECT_EQ(result.status, 1) << from;
    EXPECT_THAT(result.output, HasSubstr("standard input cannot be read: ")) << from;
  }
}

TEST_F(CalcCommandsTest, RunsTheConsoleOnAPipeWithoutACommand) {
  input = "1 + 1\nquit\n";
  EXPECT_EQ(run({}), ExitStatus::kDone);
  EXPECT_EQ(out.str(), "2  (number)\n");
}

TEST_F(CalcCommandsTest, TellsAPipeThatACalculationFailed) {
  input = "1 +\n";
  EXPECT_EQ(run({}), ExitStatus::kFailed);
}

/// With the plug-in, in processes of its own: one that a process has loaded stays as it began.
class StrictCalculations : public ProgramTest {
 protected:
  ChildResult runProgramWith(std::vector<std::string> words) {
    words.insert(words.begin(), {ORLOCAL_PROGRAM, "--store", folder / "calendar.db"});
    auto result = runProgram(words);
    EXPECT_TRUE(result);
    return result.value_or(ChildResult{});
  }
};

TEST_F(StrictCalculations, EndAsEverWithoutTheOption) {
  const ChildResult result = runProgramWith({"eval", "Orlo_OpenItemAt( \"nonsense\" ; 1 )"});
  EXPECT_EQ(result.output, "!!ERROR!!\n");
  EXPECT_EQ(result.status, 0);
}

TEST_F(StrictCalculations, TellWhyACallFailed) {
  const ChildResult result = runProgramWith({"eval", "--strict", "Orlo_OpenItemAt( \"nonsense\" ; 1 )"});
  EXPECT_THAT(result.output, HasSubstr("!!ERROR!!\n"));
  EXPECT_THAT(result.output,
              HasSubstr("orlocal: Orlo_OpenItemAt returned !!ERROR!!: Invalid Parameter value(s) (-4)\n"));
  EXPECT_EQ(result.status, 1);
}

TEST_F(StrictCalculations, SeeErrorsThatACalculationSwallows) {
  const ChildResult result =
      runProgramWith({"eval", "--strict",
                      "If ( Orlo_OpenItemAt( \"nonsense\" ; 1 ) = \"!!ERROR!!\" ; Orlo_GetLastError( \"number\" ) )"});
  EXPECT_THAT(result.output, HasSubstr("-4\n"));
  EXPECT_EQ(result.status, 1);
}

TEST_F(StrictCalculations, SucceedWhenEveryCallDid) {
  EXPECT_EQ(runProgramWith({"eval", "--strict", "Orlo_GetItemCountForType( \"calendar\" )"}).status, 0);
}

TEST_F(StrictCalculations, NameFileAndLine) {
  const std::string file = write("a.calc", "1 + 1\nOrlo_OpenItemAt( \"nonsense\" ; 1 )\n");
  EXPECT_THAT(runProgramWith({"run", "--strict", file}).output, HasSubstr(file + ":2: Orlo_OpenItemAt returned"));
}

using GivenVariables = StrictCalculations;

TEST_F(GivenVariables, HoldTheirTextToTheLetter) {
  EXPECT_EQ(runProgramWith({"eval", "--set", R"(room=Room "4" \ x = 1)", "$$room"}).output, "Room \"4\" \\ x = 1\n");
  EXPECT_EQ(runProgramWith({"eval", "--set", "a=1", "--set", "a=2", "--set", "b=", "$$a & \"!\" & $$b"}).output,
            "2!\n");
  const std::string file = write("b.calc", "$$a + 1\n");
  EXPECT_EQ(runProgramWith({"run", file, "--set", "a=41"}).output, "42\n");
}

TEST_F(GivenVariables, WantAName) {
  for (const char* words : {"room", "=4", "a b=4", "a;b=4"}) {
    const ChildResult result = runProgramWith({"eval", "--set", words, "1"});
    EXPECT_EQ(result.status, 2) << words;
    EXPECT_THAT(result.output, HasSubstr("sets no variable; write NAME=TEXT"));
  }
}

}  // namespace
}  // namespace orlocal::host
