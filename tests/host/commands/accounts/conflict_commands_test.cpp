#include "host/commands/accounts/account_fixture.h"

namespace orlocal::host {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ConflictCommand : public AccountCommand {
 protected:
  /// The place of the meeting is another one here and there.
  void inConflict() {
    added("Work");
    synced();
    importedInto("Team", meeting("Meeting", "Room 1"));
    synced();
    server.content().putAs(team + onServer().first, replaced(onServer().second, "Room 1", "Room 2"));
    importedInto("Team", meeting("Meeting", "Room 3"));
    ASSERT_EQ(run({"sync"}), ExitStatus::kFailed) << out << err;
    const auto list = listed({"conflicts"});
    ASSERT_EQ(list.size(), 1U);
    id = std::to_string(list[0]["id"].get<int>());
  }
  std::pair<std::string, std::string> onServer() {
    const auto& [name, item] = *server.content().calendarAt(team).items.begin();
    return {name, item.text};
  }
  static std::string replaced(std::string text, const std::string& from, const std::string& to) {
    return text.replace(text.find(from), from.size(), to);
  }
  std::string id;
};

TEST_F(ConflictCommand, ListsWhatDiffers) {
  inConflict();
  const auto list = listed({"conflicts"});
  const nlohmann::json& entry = list[0];
  EXPECT_EQ(entry.size(), 6U);
  EXPECT_EQ(entry["calendar"], "Team");
  EXPECT_EQ(entry["item"], "Meeting");
  EXPECT_EQ(entry["fields"], nlohmann::json::array({"location"}));
  EXPECT_THAT(entry["mine"].get<std::string>(), HasSubstr("Room 3"));
  EXPECT_THAT(entry["theirs"].get<std::string>(), HasSubstr("Room 2"));
  ASSERT_EQ(run({"conflicts", "show", id}), ExitStatus::kDone);
  EXPECT_THAT(out, HasSubstr("location\n  mine    Room 3\n  theirs  Room 2\n"));
}

TEST_F(ConflictCommand, KeepsMine) {
  inConflict();
  ASSERT_EQ(run({"conflicts", "keep", "mine", id}), ExitStatus::kDone) << err;
  EXPECT_THAT(listed({"conflicts"}), IsEmpty());
  synced();
  EXPECT_THAT(onServer().second, HasSubstr("Room 3"));
}

TEST_F(ConflictCommand, KeepsTheirs) {
  inConflict();
  ASSERT_EQ(run({"conflicts", "keep", "theirs", id}), ExitStatus::kDone) << err;
  synced();
  EXPECT_THAT(onServer().second, HasSubstr("Room 2"));
  EXPECT_THAT(listed({"conflicts"}), IsEmpty());
}

TEST_F(ConflictCommand, KeepsBoth) {
  inConflict();
  ASSERT_EQ(run({"conflicts", "keep", "both", id}), ExitStatus::kDone) << err;
  synced();
  EXPECT_EQ(server.content().calendarAt(team).items.size(), 2U);
}

TEST_F(ConflictCommand, SettlesNoneWhenOneIsUnknown) {
  inConflict();
  EXPECT_EQ(run({"conflicts", "keep", "mine", id, "999"}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("There is no conflict 999"));
  EXPECT_EQ(listed({"conflicts"}).size(), 1U);
}

TEST_F(ConflictCommand, WantsOneOfItsWords) {
  EXPECT_EQ(run({"conflicts", "keep", "all", "1"}), ExitStatus::kUsage);
  EXPECT_EQ(run({"conflicts", "keep", "mine"}), ExitStatus::kUsage);
  EXPECT_EQ(run({"conflicts", "keep", "mine", "one"}), ExitStatus::kUsage);
}

TEST_F(ConflictCommand, LeavesTheAccountInPlace) {
  inConflict();
  EXPECT_EQ(run({"account", "remove", "Work"}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("1 conflict that nobody has decided"));
}

TEST_F(ConflictCommand, HasNothingToListWithoutAccounts) {
  makeStore();
  EXPECT_EQ(run({"conflicts"}), ExitStatus::kDone);
  EXPECT_EQ(out, "There are no conflicts.\n");
  EXPECT_THAT(listed({"conflicts"}), IsEmpty());
}

}  // namespace
}  // namespace orlocal::host
