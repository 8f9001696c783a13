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

class SalvagingExport : public StoreCommand {
 protected:
  /// A store of 400 events of which a part cannot be read.
  void givenADamagedStore() {
    std::string events;
    for (int i = 0; i < 400; ++i) {
      events += event("u" + std::to_string(i), "Event", "DTSTART:20261102T090000\r\nDTEND:20261102T100000\r\n");
    }
    imported(calendar("Work", events));
    // A page of rows: the identifiers that files bring stand nowhere else.
    const auto row = textOf(folder / "calendar.db").find("u200");
    ASSERT_NE(row, std::string::npos);
    std::fstream store(folder / "calendar.db", std::ios::in | std::ios::out | std::ios::binary);
    store.seekp(static_cast<std::streamoff>(row / 4096 * 4096));
    store << std::string(4096, '\x7f');
  }
  static std::size_t count(const std::string& text, const std::string& what) {
    std::size_t found = 0;
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) { ++found; }
    return found;
  }
};

TEST_F(SalvagingExport, WritesWhatIsLeftAndSaysWhatIsNot) {
  givenADamagedStore();
  EXPECT_EQ(run({"export", "--salvage"}), ExitStatus::kFailed);
  EXPECT_GT(count(out, "BEGIN:VEVENT"), 200U);
  EXPECT_LT(count(out, "BEGIN:VEVENT"), 400U);
  EXPECT_THAT(err, HasSubstr(std::to_string(count(out, "BEGIN:VEVENT")) + " items were written; not read: " +
                             std::to_string(400 - count(out, "BEGIN:VEVENT")) + " items"));
  const std::string onOutput = out;
  EXPECT_EQ(run({"export", "--salvage", "-o", (folder / "rest.ics").string()}), ExitStatus::kFailed);
  EXPECT_EQ(textOf(folder / "rest.ics"), onOutput);
}

TEST_F(SalvagingExport, EndsWellWhenNothingIsLost) {
  imported(calendar("Work", event("1", "Review", "DTSTART:20261102T090000\r\nDTEND:20261102T100000\r\n")));
  EXPECT_EQ(run({"export", "--salvage"}), ExitStatus::kDone);
  EXPECT_THAT(out, HasSubstr("Review"));
  EXPECT_THAT(err, HasSubstr("1 items were written; everything could be read"));
}

}  // namespace
}  // namespace orlocal::host
