#include <gmock/gmock.h>

#include "host/commands/program_fixture.h"

namespace orlocal::host {
namespace {

using ::testing::HasSubstr;

class ListingCommandsTest : public ProgramTest {};

TEST_F(ListingCommandsTest, NeedsAPlugin) {
  EXPECT_EQ(run({"functions"}), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr("needs a plug-in"));
  EXPECT_EQ(run({"steps"}), ExitStatus::kFailed);
}

TEST_F(ListingCommandsTest, SaysThatANamedPluginIsNotThere) {
  EXPECT_EQ(runAsTyped({"functions", "--plugin", "/no/such.fmx"}), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr("there is no plug-in /no/such.fmx"));
}

TEST_F(ListingCommandsTest, SaysThatAFileIsNoPlugin) {
  EXPECT_EQ(runAsTyped({"functions", "--plugin", write("a.fmx", "not a library")}), ExitStatus::kFailed);
  EXPECT_THAT(err.str(), HasSubstr("a.fmx"));
}

}  // namespace
}  // namespace orlocal::host
