#include <fstream>

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "durability/faulty_files.h"
#include "durability/saving_process.h"
#include "store/edited_items.h"
#include "store/export.h"
#include "store/salvage.h"

namespace orlocal::test {
namespace {

using testing::HasSubstr;
using testing::Not;

/// A store of one event, on a disk that then has no room left.
class FullDisk : public testing::Test {
 protected:
  /// The event, saved by a process that ends without letting go: what it saved is in the log alone.
  void givenALog() {
    openStore(folder.file());
    const pid_t child = fork();
    if (child == 0) {
      auto store = openStore(folder.file());
      store::Item event = newEvent(*store, "kept");
      _exit(store::saveEvent(*store, event, std::nullopt, store::Span::kThis) ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_EQ(status, 0);
    ASSERT_GT(std::filesystem::file_size(folder.file().string() + "-wal"), 0U);
    std::filesystem::remove(folder.file().string() + "-shm");
  }
  void givenNoLog() {
    auto store = openStore(folder.file());
    store::Item event = newEvent(*store, "kept");
    ASSERT_TRUE(store::saveEvent(*store, event, std::nullopt, store::Span::kThis));
    store->close();
    std::filesystem::remove(folder.file().string() + "-shm");
  }
  void noRoom() {
    files.fail({.call = FileCall::kSharedMemory});
    files.fail({.call = FileCall::kWrite});
  }
  static std::string textOf(store::CalendarStore& store) {
    std::string text;
    const auto calendars = store.calendars(store::CalendarKind::kEvents);
    if (!calendars) return calendars.error().message;
    const auto written = store::exportCalendars(store, *calendars, [&](std::string_view piece) -> store::Status {
      text += piece;
      return {};
    });
    return written ? text : written.error().message;
  }
  store::Result<std::unique_ptr<store::CalendarStore>> opened() const {
    store::StoreOptions options;
    options.file = folder.file();
    options.busyTimeout = std::chrono::milliseconds(200);
    return store::CalendarStore::open(options);
  }
  store::Status saved(store::CalendarStore& store) const {
    store::Item event = newEvent(store, "new");
    return store::saveEvent(store, event, std::nullopt, store::Span::kThis);
  }

  TemporaryStore folder;
  FaultyFiles files;
};

TEST_F(FullDisk, LeavesWhatIsInTheFileToBeRead) {
  givenNoLog();
  noRoom();
  auto store = opened();
  ASSERT_TRUE(store) << store.error().message;
  EXPECT_THAT(textOf(**store), HasSubstr("SUMMARY:kept"));
  EXPECT_GT(files.failed(), 0);
}

TEST_F(FullDisk, LeavesWhatIsInTheLogToBeRead) {
  givenALog();
  noRoom();
  auto store = opened();
  ASSERT_TRUE(store) << store.error().message;
  EXPECT_THAT(textOf(**store), HasSubstr("SUMMARY:kept"));
  EXPECT_GT(files.failed(), 0);
  (*store)->close();
  EXPECT_GT(std::filesystem::file_size(folder.file().string() + "-wal"), 0U) << "nothing of it can be written yet";
}

TEST_F(FullDisk, LeavesTheStoreToBeSalvaged) {
  givenALog();
  noRoom();
  std::string text;
  const auto report =
      store::salvage(folder.file(), {}, std::chrono::milliseconds(200), [&](std::string_view piece) -> store::Status {
        text += piece;
        return {};
      });
  ASSERT_TRUE(report) << report.error().message;
  EXPECT_THAT(text, HasSubstr("SUMMARY:kept"));
}

TEST_F(FullDisk, IsWhatARefusedSaveSpeaksOf) {
  for (const bool log : {false, true}) {
    log ? givenALog() : givenNoLog();
    noRoom();
    auto store = opened();
    ASSERT_TRUE(store) << store.error().message;
    const auto status = saved(**store);
    ASSERT_FALSE(status);
    EXPECT_EQ(status.error().code, store::ErrorCode::kFull) << status.error().message;
    EXPECT_THAT(status.error().message, HasSubstr("no room left"));
    files.heal();
  }
}

TEST_F(FullDisk, TakesSavesAgainOnceThereIsRoom) {
  for (const bool log : {false, true}) {
    log ? givenALog() : givenNoLog();
    noRoom();
    auto store = opened();
    ASSERT_TRUE(store) << store.error().message;
    EXPECT_THAT(textOf(**store), HasSubstr("SUMMARY:kept"));
    files.heal();
    const auto status = saved(**store);
    ASSERT_TRUE(status) << status.error().message;
    EXPECT_THAT(textOf(**store), HasSubstr("SUMMARY:new"));
    (*store)->close();
    EXPECT_EQ(integrityOf(folder.file()), "ok");
  }
}

TEST_F(FullDisk, LeavesALogToThoseWhoHaveItOpen) {
  givenALog();
  auto other = openStore(folder.file());
  EXPECT_THAT(textOf(*other), HasSubstr("SUMMARY:kept"));
  noRoom();
  // The index is there already: no room is needed to read.
  auto store = opened();
  ASSERT_TRUE(store) << store.error().message;
  EXPECT_THAT(textOf(**store), HasSubstr("SUMMARY:kept"));
  EXPECT_THAT(textOf(*other), HasSubstr("SUMMARY:kept"));
}

TEST_F(FullDisk, LeavesTheFileAsItWasWhenASaveIsCutShort) {
  for (int after = 0; after < 12; ++after) {
    givenNoLog();
    auto store = opened();
    ASSERT_TRUE(store) << store.error().message;
    const std::string before = textOf(**store);
    files.fail({.call = FileCall::kWrite, .suffix = "-wal", .after = after, .cutShort = true});
    const auto status = saved(**store);
    if (!status) {
      EXPECT_EQ(status.error().code, store::ErrorCode::kFull) << status.error().message;
      EXPECT_THAT(textOf(**store), testing::StrEq(before)) << after;
    }
    files.heal();
    store->reset();
    EXPECT_EQ(integrityOf(folder.file()), "ok") << after;
  }
}

}  // namespace
}  // namespace orlocal::test
