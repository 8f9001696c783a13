#include "host/commands/accounts/account_fixture.h"

namespace orlocal::host {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

/// Commands that are taken back, before and after a server has heard of them.
class UndoOnAccounts : public AccountCommand {
 protected:
  void SetUp() override {
    added("Work");
    synced();
    importedInto("Team", meeting("Meeting"));
    synced();
    ASSERT_EQ(served().size(), 1U);
  }
  /// What the server has, by name.
  std::vector<std::string> served() {
    std::vector<std::string> texts;
    for (const auto& [name, item] : server.content().calendarAt(team).items) { texts.push_back(item.text); }
    return texts;
  }
  void done(const std::vector<std::string>& words) { ASSERT_EQ(run(words), ExitStatus::kDone) << err; }
};

TEST_F(UndoOnAccounts, NeedsNoServerThatHasNotHeardOfTheCommand) {
  const auto before = served();
  done({"remove", "Meeting"});
  done({"undo"});
  synced();
  EXPECT_EQ(served(), before);
}

TEST_F(UndoOnAccounts, GivesTheServerBackWhatItLost) {
  done({"remove", "Meeting"});
  synced();
  ASSERT_THAT(served(), IsEmpty());
  done({"undo"});
  synced();
  ASSERT_EQ(served().size(), 1U);
  EXPECT_THAT(served()[0], HasSubstr("SUMMARY:Meeting"));
}

TEST_F(UndoOnAccounts, TakesFromTheServerWhatWasMade) {
  done({"new", "Lunch tomorrow 12:30", "--calendar", "Team"});
  synced();
  ASSERT_EQ(served().size(), 2U);
  done({"undo"});
  synced();
  EXPECT_EQ(served().size(), 1U);
}

TEST_F(UndoOnAccounts, BringsWhatWasMovedBackToTheServer) {
  done({"move", "Meeting", "--to", "Calendar"});
  synced();
  ASSERT_THAT(served(), IsEmpty());
  done({"undo"});
  synced();
  EXPECT_EQ(served().size(), 1U);
  done({"edit", "Meeting", "--location", "Roof"});
  synced();
  done({"undo"});
  synced();
  EXPECT_THAT(served()[0], HasSubstr("LOCATION:Room 1"));
}

TEST_F(UndoOnAccounts, GivesTheServerBackWhatWasPurged) {
  importedInto("Team", event("old", "Kick-off", "DTSTART:20260304T090000Z\r\nDTEND:20260304T100000Z\r\n"));
  synced();
  ASSERT_EQ(served().size(), 2U);
  EXPECT_EQ(run({"purge", "--before", "today"}), ExitStatus::kUsage);
  EXPECT_THAT(err, HasSubstr("Remove 1 event that was over before Mon 2 Nov 2026? It is removed from the server of "
                             "\"Work\", too."));
  done({"purge", "--before", "today", "--yes"});
  synced();
  EXPECT_EQ(served().size(), 1U);
  done({"undo"});
  synced();
  EXPECT_EQ(served().size(), 2U);
}

}  // namespace
}  // namespace orlocal::host
