#include <filesystem>
#include <string>
#include <vector>

#include "host/commands/store_command_fixture.h"

namespace orlocal::host {
namespace {

/// Commands that look at a store, or change what is in it.
class WithoutStore : public StoreCommand, public testing::WithParamInterface<std::vector<std::string>> {};

TEST_P(WithoutStore, FailsAndMakesNone) {
  EXPECT_EQ(run(GetParam()), ExitStatus::kFailed);
  EXPECT_THAT(err, testing::HasSubstr("o calendar store at " + (folder / "calendar.db").string()));
  EXPECT_EQ(out, "");
  EXPECT_TRUE(std::filesystem::is_empty(folder));
}

INSTANTIATE_TEST_SUITE_P(Commands, WithoutStore,
                         testing::Values(std::vector<std::string>{"agenda"}, std::vector<std::string>{"calendars"},
                                         std::vector<std::string>{"calendars", "--json"},
                                         std::vector<std::string>{"calendars", "rename", "A", "B"},
                                         std::vector<std::string>{"export"},
                                         std::vector<std::string>{"account", "list"},
                                         std::vector<std::string>{"conflicts"}),
                         [](const auto& asked) {
                           std::string name;
                           for (const std::string& word : asked.param) {
                             for (const char c : word) { name += c == '-' ? '_' : c; }
                           }
                           return name;
                         });

}  // namespace
}  // namespace orlocal::host
