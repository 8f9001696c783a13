#include <chrono>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <stdexcept>

#include <CLI/CLI.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/commands/command_line/command.h"
#include "host/fmwrapper/date_time.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// A command line with one command, `show [NAME]`, that keeps what it was given.
class CommandLineTest : public ::testing::Test {
 protected:
  CommandLineTest() {
    CLI::App& show = line.add("show", "Shows a thing.", [this](CommandContext& context) -> Result<ExitStatus> {
      ++runs;
      seen = context.options;
      if (fault) { throw std::runtime_error(*fault); }
      if (refusal) { return failure(*refusal); }
      return status;
    });
    show.add_option("name", name);
  }
  ~CommandLineTest() override {
    ::unsetenv("ORLOCAL_STORE");
    ::unsetenv("ORLOCAL_SYSTEM_MINOR");
  }

  ExitStatus run(const std::vector<std::string>& words) { return line.run("orlocal", words); }

  std::istringstream in;
  std::ostringstream out, err;
  CommandLine line{Streams{in, out, err}};
  int runs = 0;
  GlobalOptions seen;
  std::string name;
  std::optional<std::string> fault;
  std::optional<Failure> refusal;
  ExitStatus status = ExitStatus::kDone;
};

TEST_F(CommandLineTest, RunsTheNamedCommandWithItsArguments) {
  EXPECT_EQ(run({"show", "Work"}), ExitStatus::kDone);
  EXPECT_EQ(runs, 1);
  EXPECT_EQ(name, "Work");
}

TEST_F(CommandLineTest, TakesGlobalOptionsBeforeAndAfterTheCommand) {
  EXPECT_EQ(run({"--json", "show", "--host-version", "56", "--plugin", "a.fmx"}), ExitStatus::kDone);
  EXPECT_TRUE(seen.json);
  EXPECT_EQ(seen.hostVersion, 56);
  EXPECT_EQ(seen.plugin, "a.fmx");
}

TEST_F(CommandLineTest, AnnouncesVersion62UnlessTold) {
  run({"show"});
  EXPECT_EQ(seen.hostVersion, 62);
}

TEST_F(CommandLineTest, PutsStoreAndSystemVersionIntoTheEnvironment) {
  run({"show", "--store", "/tmp/a.db", "--system-minor", "7"});
  EXPECT_STREQ(::getenv("ORLOCAL_STORE"), "/tmp/a.db");
  EXPECT_STREQ(::getenv("ORLOCAL_SYSTEM_MINOR"), "7");
}

TEST_F(CommandLineTest, EndsWithTheCommandsStatus) {
  status = ExitStatus::kFailed;
  EXPECT_EQ(run({"show"}), ExitStatus::kFailed);
}

TEST_F(CommandLineTest, TellsWhyACommandFailed) {
  refusal = Failure{ErrorCode::kFull, "the disk is full"};
  EXPECT_EQ(run({"show"}), ExitStatus::kFailed);
  EXPECT_EQ(err.str(), "orlocal: the disk is full\n");
}

TEST_F(CommandLineTest, ReportsWhatACommandThrowsAsAFailure) {
  fault = "the disk is full";
  EXPECT_EQ(run({"show"}), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr("the disk is full"));
}

TEST_F(CommandLineTest, TellsUnknownWordsFromFailedWork) {
  EXPECT_EQ(run({"show", "--colour"}), ExitStatus::kUsage);
  EXPECT_EQ(runs, 0);
  EXPECT_THAT(err.str(), HasSubstr("--colour"));
}

TEST_F(CommandLineTest, RefusesAHostVersionThatIsNoNumber) {
  EXPECT_EQ(run({"show", "--host-version", "new"}), ExitStatus::kUsage);
  EXPECT_EQ(runs, 0);
}

TEST_F(CommandLineTest, ShowsHelpOnTheOutputAndIsDone) {
  EXPECT_EQ(run({"--help"}), ExitStatus::kDone);
  EXPECT_THAT(out.str(), HasSubstr("show"));
  EXPECT_THAT(err.str(), IsEmpty());
}

TEST_F(CommandLineTest, WithoutACommandRunsTheDefault) {
  int defaults = 0;
  line.setDefault([&](CommandContext&) {
    ++defaults;
    return ExitStatus::kDone;
  });
  EXPECT_EQ(run({}), ExitStatus::kDone);
  EXPECT_EQ(defaults, 1);
}

TEST_F(CommandLineTest, WithoutACommandOrADefaultShowsHelpAsAUsageError) {
  EXPECT_EQ(run({}), ExitStatus::kUsage);
  EXPECT_THAT(err.str(), HasSubstr("show"));
}

/// What the user's setting makes of the clocks of program and language.
class ClockOfTheProgram : public CommandLineTest {
 protected:
  ~ClockOfTheProgram() override { runWith("2026-11-02T08:00:00Z"); }

  void runWith(const char* setting) {
    ::setenv("ORLOCAL_NOW", setting, 1);
    run({"show"});
  }
};

TEST_F(ClockOfTheProgram, IsOne) {
  runWith("2026-03-02T08:00:00Z");
  EXPECT_EQ(store::now().time_since_epoch(), std::chrono::seconds(1'772'438'400));
  EXPECT_EQ(DateTime::currentMoment(), std::chrono::seconds(1'772'438'400));
  EXPECT_THAT(err.str(), IsEmpty());
}

TEST_F(ClockOfTheProgram, IsTheSystemsWhenTheSettingIsNoMoment) {
  for (const char* setting : {"2026-03-02T08:00:00", "2026-03-02 08:00:00Z", "1/2/26", "soon"}) {
    err.str("");
    runWith(setting);
    EXPECT_EQ(err.str(), "orlocal: ORLOCAL_NOW is \"" + std::string(setting) +
                             "\", which is no moment such as 2026-11-02T08:00:00Z; the system's clock is used.\n");
    EXPECT_EQ(std::getenv("ORLOCAL_NOW"), nullptr) << "the plug-in need not say it again";
    const auto system = std::chrono::system_clock::now().time_since_epoch();
    EXPECT_LT(system - DateTime::currentMoment(), std::chrono::hours(1)) << setting;
    EXPECT_LT(system - store::now().time_since_epoch(), std::chrono::hours(1)) << setting;
  }
}

}  // namespace
}  // namespace orlocal::host
