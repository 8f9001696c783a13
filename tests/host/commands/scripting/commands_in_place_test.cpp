#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/commands/command_line/child_process.h"
#include "host/commands/program_fixture.h"

namespace orlocal::host {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

/// Commands with a dot before them, typed into a console without a plug-in.
class DottedCommands : public ProgramTest {
 protected:
  std::string shownFor(const std::string& lines, std::vector<std::string> options = {}) {
    input = lines;
    status = run(std::move(options));
    return out.str();
  }
  ExitStatus status = ExitStatus::kDone;
};

TEST_F(DottedCommands, RunOnTheConsolesStore) {
  const std::string store = folder / "other.db";
  EXPECT_THAT(shownFor(".calendars new \"Work at home\"\n.calendars\n1 + 1\n", {"--store", store}),
              AllOf(HasSubstr("Work at home"), HasSubstr("2  (number)")));
  EXPECT_EQ(status, ExitStatus::kDone) << err.str();
  EXPECT_TRUE(std::filesystem::exists(store));
}

TEST_F(DottedCommands, MayNameAnotherStoreForThemselves) {
  const std::string first = folder / "first.db";
  const std::string second = folder / "second.db";
  const std::string shown =
      shownFor(".calendars new One\n.calendars new Two --store " + second + "\n.calendars\n", {"--store", first});
  EXPECT_THAT(shown, AllOf(HasSubstr("\nOne "), Not(HasSubstr("\nTwo "))));
  EXPECT_TRUE(std::filesystem::exists(second));
}

TEST_F(DottedCommands, KeepNothingOfTheWordsBefore) {
  const std::string store = folder / "a.db";
  EXPECT_THAT(shownFor(".calendars new A\n.agenda --from 2027-01-01 --to 2027-01-02\n.agenda\n", {"--store", store}),
              AllOf(HasSubstr("from 2027-01-01 to 2027-01-02"), HasSubstr("from 2026-11-02 to 2026-11-08")));
}

TEST_F(DottedCommands, SuggestTheNearestForAMistypedOne) {
  shownFor(".agendda\n");
  EXPECT_EQ(err.str(), "orlocal: There is no command \"agendda\"; did you mean \"agenda\"? See `orlocal --help`.\n");
  EXPECT_EQ(status, ExitStatus::kFailed);
}

TEST_F(DottedCommands, AreListedByHelp) {
  EXPECT_THAT(shownFor(".help\n"), AllOf(HasSubstr("agenda"), HasSubstr("export")));
  EXPECT_THAT(shownFor("help\n"), HasSubstr(".help"));
}

TEST_F(DottedCommands, SayThatAQuoteIsNotClosed) {
  shownFor(".calendars new \"Work\n");
  EXPECT_EQ(err.str(), "orlocal: a quote is not closed\n");
}

TEST_F(DottedCommands, LoadNoSecondPlugin) {
  shownFor(".eval 1\n");
  EXPECT_THAT(err.str(), HasSubstr("The plug-in is loaded in this process already"));
}

TEST_F(DottedCommands, LeaveNumbersToCalculations) { EXPECT_EQ(shownFor(".5 + 1\n"), "1.5  (number)\n"); }

/// With the plug-in, in a process of its own.
TEST_F(DottedCommands, StandBesideReasonsOfErrors) {
  const std::string file =
      write("typed.txt",
            "Orlo_OpenItemAt( \"nonsense\" ; 1 )\nOrlo_OpenItemAt( \"calendar\" ; 1 )\n.calendars\n"
            "help Orlo_OpenItemAt\n");
  const auto result = runProgram(
      {"/bin/sh", "-c", std::string(ORLOCAL_PROGRAM) + " --store " + (folder / "calendar.db").string() + " <" + file});
  ASSERT_TRUE(result);
  EXPECT_THAT(result->output, HasSubstr("!!ERROR!!  (text)  Invalid Parameter value(s) (-4)\n"));
  EXPECT_THAT(result->output, HasSubstr("TITLE "));
  EXPECT_THAT(result->output, HasSubstr("0  ("));
  EXPECT_THAT(result->output, HasSubstr("    Example: Orlo_OpenItemAt( \"calendar\" ; 1 )\n"));
}

}  // namespace
}  // namespace orlocal::host
