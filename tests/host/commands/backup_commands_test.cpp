#include <filesystem>
#include <fstream>

#include "host/commands/store_command_fixture.h"

namespace orlocal::host {
namespace {

using testing::HasSubstr;
using testing::Not;

class BackupCommands : public StoreCommand {
 protected:
  void given(const std::string& title) {
    imported(calendar("Work", event(title, title, "DTSTART:20261102T090000\r\nDTEND:20261102T100000\r\n")));
  }
  std::string exported() {
    run({"export"});
    return out;
  }
  const std::string copy = (folder / "copy.db").string();
};

TEST_F(BackupCommands, BackUpAndRestore) {
  given("Review");
  ASSERT_EQ(run({"backup", copy}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, HasSubstr(copy + ": 1 event and 0 reminders of " + (folder / "calendar.db").string()));
  given("Talk");
  ASSERT_EQ(run({"restore", copy}), ExitStatus::kDone) << err;
  EXPECT_THAT(out, HasSubstr((folder / "calendar.db").string() + ": 1 event and 0 reminders from " + copy));
  EXPECT_THAT(out, HasSubstr("calendar.db.before-restore-20261102T080000Z\n"));
  EXPECT_THAT(exported(), HasSubstr("Review"));
  EXPECT_THAT(exported(), Not(HasSubstr("Talk")));
}

TEST_F(BackupCommands, ReplaceAFileOnlyWhenTheyAreTold) {
  given("Review");
  std::ofstream(copy) << "old";
  EXPECT_EQ(run({"backup", copy}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("--replace"));
  EXPECT_EQ(run({"backup", "--replace", copy}), ExitStatus::kDone) << err;
}

TEST_F(BackupCommands, MakeNoStore) {
  EXPECT_EQ(run({"backup", copy}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("no calendar store at"));
  EXPECT_FALSE(std::filesystem::exists(folder / "calendar.db"));
}

TEST_F(BackupCommands, NeedAFile) {
  EXPECT_EQ(run({"backup"}), ExitStatus::kUsage);
  EXPECT_EQ(run({"restore"}), ExitStatus::kUsage);
}

TEST_F(BackupCommands, FailToRestoreWhatIsNoStore) {
  given("Review");
  EXPECT_EQ(run({"restore", file("notes.txt", "no store")}), ExitStatus::kFailed);
  EXPECT_THAT(err, HasSubstr("notes.txt"));
  EXPECT_THAT(exported(), HasSubstr("Review"));
}

}  // namespace
}  // namespace orlocal::host
