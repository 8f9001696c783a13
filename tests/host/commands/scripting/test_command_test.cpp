#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "host/commands/program_fixture.h"
#include "host/commands/scripting/transcript_run.h"

namespace orlocal::host {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class TestCommandTest : public ProgramTest {};

TEST_F(TestCommandTest, CountsWhatPassed) {
  EXPECT_EQ(run({"test", write("a.txt", "> 1 + 1\n2\n> List ( 1 ; 2 )\n1\n2\n")}), ExitStatus::kDone);
  EXPECT_EQ(out.str(), "2 passed, 0 failed\n");
}

TEST_F(TestCommandTest, ReportsADifferenceWithItsPlace) {
  const std::string file = write("a.txt", "> 1 + 1\n2\n> List ( 1 ; 2 )\n1\n3\n");
  EXPECT_EQ(run({"test", file}), ExitStatus::kFailed);
  EXPECT_EQ(out.str(), file +
                           ":3: List ( 1 ; 2 )\n  expected  1\n  expected  3\n  printed   1\n  printed   2\n"
                           "1 passed, 1 failed\n");
}

TEST_F(TestCommandTest, ShowsFailuresAsLinesWithTheReason) {
  EXPECT_EQ(run({"test", write("a.txt",
                               "> 1 +\n! 1:4: a value is expected here, not the end\n"
                               "> Evaluate ( \"foo\" )\n! …no function or variable named foo\n")}),
            ExitStatus::kDone);
}

TEST_F(TestCommandTest, KeepsVariablesThroughATranscriptAndNoLonger) {
  const std::string first = write("a.txt", "> Let ( $$a = 5 ; \"\" )\n> $$a\n5\n");
  const std::string second = write("b.txt", "> $$a\n\n");
  EXPECT_EQ(run({"test", first, second}), ExitStatus::kDone);
  EXPECT_EQ(out.str(), "3 passed, 0 failed\n");
}

TEST_F(TestCommandTest, PinsClockAndZoneForOneTranscriptOnly) {
  const std::string pinned = write(
      "a.txt", "@timezone Asia/Tokyo\n@now 2030-01-01T00:00:00Z\n> Get ( CurrentTimestamp )\n2030-01-01 09:00:00\n");
  const std::string plain = write("b.txt", "> Get ( CurrentTimestamp )\n2026-11-02 09:00:00\n");
  EXPECT_EQ(run({"test", pinned, plain}), ExitStatus::kDone) << out.str();
}

TEST_F(TestCommandTest, RunsNoTranscriptThatRunsItself) {
  const std::string file =
      write("a.txt", "@outside test a.txt\n! test ended with status 1\n! …not run from within…\n! …\n");
  EXPECT_EQ(run({"test", file}), ExitStatus::kDone) << out.str();
}

TEST_F(TestCommandTest, RunsTheBlocksOfAMarkdownPage) {
  EXPECT_EQ(run({"test", write("a.md", "# T\n\n```transcript\n> 1\n1\n```\n")}), ExitStatus::kDone);
  EXPECT_EQ(out.str(), "1 passed, 0 failed\n");
}

TEST_F(TestCommandTest, CountsATranscriptThatCannotBeReadAsAFailure) {
  const std::string faulty = write("a.txt", "hello\n");
  EXPECT_EQ(
      run({"test", faulty, (folder / "none.txt").string(), write("b.txt", "# nothing\n"), write("c.txt", "> 1\n1\n")}),
      ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr(faulty + ":1: this line belongs to no calculation"));
  EXPECT_THAT(err.str(), HasSubstr("none.txt: it cannot be read: No such file or directory"));
  EXPECT_THAT(err.str(), HasSubstr("b.txt: it holds no calculation"));
  EXPECT_EQ(out.str(), "1 passed, 3 failed\n");
}

TEST_F(TestCommandTest, CountsAPluginThatDoesNotLoadAsAFailure) {
  EXPECT_EQ(run({"test", write("a.txt", "@plugin /no/such.fmx\n> 1\n1\n")}), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr("/no/such.fmx"));
  EXPECT_EQ(out.str(), "0 passed, 1 failed\n");
}

TEST_F(TestCommandTest, CountsAPreparationThatFailsAsAFailure) {
  const std::string file = write("a.txt", "@import /no/such.ics\n> 1\n1\n");
  EXPECT_EQ(run({"test", file}), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr("line 1: import ended with status"));
}

TEST_F(TestCommandTest, HandsPreparationsTheFilesNearTheTranscript) {
  write("data/a.ics", "");
  write("tell", "#!/bin/sh\necho \"$@\"\nexit 1\n");
  program = (folder / "tell").string();
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  const std::string file = write("inner/a.txt", "@import data/a.ics data/b.ics --calendar data/a.ics\n> 1\n1\n");
  EXPECT_EQ(run({"test", file}), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr("import " + (folder / "data/a.ics").string() + " data/b.ics --calendar data/a.ics"));
}

TEST_F(TestCommandTest, GivesEachTranscriptAStoreOfItsOwn) {
  write("tell", "#!/bin/sh\necho \"$ORLOCAL_STORE\"\nexit 1\n");
  program = (folder / "tell").string();
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  const std::string fresh = write("a.txt", "@store fresh\n@import x\n> 1\n1\n");
  const std::string named = write("b.txt", "@store b.db\n@import x\n> 1\n1\n");
  const std::string plain = write("c.txt", "@import x\n> 1\n1\n");
  write("b.db", "");

  run({"--store", "/users/own.db", "test", fresh});
  EXPECT_THAT(err.str(), Not(HasSubstr("/users/own.db")));
  EXPECT_THAT(err.str(), HasSubstr("orlocal-test-"));
  run({"test", named});
  EXPECT_THAT(err.str(), HasSubstr((folder / "b.db").string()));
  run({"test", plain});
  EXPECT_THAT(err.str(), HasSubstr("orlocal-test-"));
  run({"--store", "/users/own.db", "test", plain});
  EXPECT_THAT(err.str(), HasSubstr("/users/own.db"));
}

TEST_F(TestCommandTest, SaysWhyNothingCanBeRegistered) {
  EXPECT_EQ(run({"test", write("a.txt", "@register F S\n! there is no plug-in to register with\n")}), ExitStatus::kDone)
      << out.str();
}

TEST_F(TestCommandTest, HasAnotherProcessChangeTheStoreOfTheTranscript) {
  const std::string ics =
      "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VEVENT\r\nUID:a\r\nDTSTART:20261102T090000Z\r\nSUMMARY:A\r\nEND:"
      "VEVENT\r\n"
      "END:VCALENDAR\r\n";
  write("a.ics", ics);
  EXPECT_EQ(run({"test", write("a.txt", "@store fresh\n@outside import a.ics --calendar Work\n")}), ExitStatus::kDone)
      << out.str();
}

TEST_F(TestCommandTest, ShowsWhyAnotherProcessFailed) {
  EXPECT_EQ(run({"test", write("a.txt", "@outside import none.ics\n! import ended with status 1\n! …none.ics…\n")}),
            ExitStatus::kDone)
      << out.str();
}

TEST_F(TestCommandTest, TypesCommandsAndShowsWhatTheyPrintAndHowTheyEnd) {
  const std::string ics =
      "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nBEGIN:VEVENT\r\nUID:a\r\nDTSTART:20261102T090000Z\r\nSUMMARY:A "
      "b\r\nEND:VEVENT\r\nEND:VCALENDAR\r\n";
  write("a.ics", ics);
  const std::string file =
      write("a.txt",
            "@store fresh\n@timezone UTC\n$ orlocal import a.ics\n"
            "a.ics: 1 new, 0 updated, 0 unchanged, 0 refused\n\n"
            "$ orlocal agenda --from 2026-11-02 --to 2026-11-02 --calendar Calendar\n"
            "Monday, 2 November 2026 (today)\n  09:00        A b  Calendar\n"
            "$ orlocal agenda --from never\n…\"never\"…\n[2]\n"
            "$ orlocal export -o \"$FOLDER/b.ics\"\n"
            "$ orlocal import \"$FOLDER/b.ics\"\n…/b.ics: 0 new, 0 updated, 1 unchanged, 0 refused\n");
  EXPECT_EQ(run({"test", file}), ExitStatus::kDone) << out.str() << err.str();
  EXPECT_EQ(run({"test", write("b.txt", "@store fresh\n$ orlocal agenda --from never\n…\n")}), ExitStatus::kFailed)
      << "the status was not expected";
}

TEST_F(TestCommandTest, ListsExamplesAsJson) {
  const std::string file = write("a.txt", "> 1\n1\n> 2\n3\n");
  EXPECT_EQ(run({"test", "--json", file}), ExitStatus::kFailed);
  const auto report = nlohmann::json::parse(out.str());
  EXPECT_EQ(report["passed"], 1);
  EXPECT_EQ(report["failed"], 1);
  ASSERT_EQ(report["examples"].size(), 2U);
  EXPECT_EQ(report["examples"][1]["line"], 3);
  EXPECT_EQ(report["examples"][1]["printed"], nlohmann::json::array({"2"}));
  EXPECT_EQ(report["examples"][1]["passed"], false);
}

TEST(PrintedLinesTest, ShowsTheLinesOfAResult) {
  EXPECT_THAT(printedLines("x", calc::Outcome{Value::ofUtf8("a\rb"), {}}), ElementsAre("a", "b"));
}

TEST(PrintedLinesTest, ShowsEveryFailureInPlaceOfTheResult) {
  EXPECT_THAT(printedLines("x", calc::Outcome{Value::invalid(), {"one", "two\nmore"}}), ElementsAre("! one", "! two"));
}

}  // namespace
}  // namespace orlocal::host
