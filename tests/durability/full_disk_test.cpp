#include <fstream>
#include <utility>

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "durability/file_calls.h"
#include "durability/saving_process.h"
#include "store/edits/edited_items.h"
#include "store/export.h"
#include "store/salvage.h"

namespace orlocal::test {
namespace {

using testing::HasSubstr;
using testing::Not;

/// Lets no more be written than it is told.
class Room : public FileCallWatcher {
 public:
  Fate fateOf(FileCall call, const std::string& path) override {
    if (!m_left || call != FileCall::kWrite || !path.ends_with(m_suffix)) { return {}; }
    if (*m_left > 0) {
      --*m_left;
      return {};
    }
    ++m_failed;
    // A disk takes what it has room for, and says at the next call that there is none.
    if (std::exchange(m_cutShort, false)) { return {Fate::What::kIsCutShort}; }
    return {Fate::What::kFails, ENOSPC};
  }
  void endNow() { m_left = 0; }
  /// After so many more writes to the log, within the next one.
  void endInLog(int writes) {
    m_suffix = "-wal";
    m_left = writes;
    m_cutShort = true;
  }
  void comesBack() { *this = Room(); }
  int failed() const { return m_failed; }

 private:
  std::string m_suffix;
  std::optional<int> m_left;  ///< none while there is room
  bool m_cutShort = false;
  int m_failed = 0;
};

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
  void noRoom() { room.endNow(); }
  static std::string textOf(store::CalendarStore& store) {
    std::string text;
    const auto calendars = store.calendars(store::CalendarKind::kEvents);
    if (!calendars) { return calendars.error().message; }
    const auto written = store::exportCalendars(store, *calendars, [&](std::string_view piece) -> Status {
      text += piece;
      return {};
    });
    return written ? text : written.error().message;
  }
  Result<std::unique_ptr<store::CalendarStore>> opened() const {
    store::StoreOptions options;
    options.file = folder.file();
    options.busyTimeout = std::chrono::milliseconds(200);
    return store::CalendarStore::open(options);
  }
  Status saved(store::CalendarStore& store) const {
    store::Item event = newEvent(store, "new");
    return store::saveEvent(store, event, std::nullopt, store::Span::kThis);
  }

  TemporaryStore folder;
  Room room;
  WatchFiles watch{folder.folder(), room};
};

TEST_F(FullDisk, LeavesWhatIsInTheFileToBeRead) {
  givenNoLog();
  noRoom();
  auto store = opened();
  ASSERT_TRUE(store) << store.error().message;
  EXPECT_THAT(textOf(**store), HasSubstr("SUMMARY:kept"));
  EXPECT_GT(room.failed(), 0);
}

TEST_F(FullDisk, LeavesWhatIsInTheLogToBeRead) {
  givenALog();
  noRoom();
  auto store = opened();
  ASSERT_TRUE(store) << store.error().message;
  EXPECT_THAT(textOf(**store), HasSubstr("SUMMARY:kept"));
  EXPECT_GT(room.failed(), 0);
  (*store)->close();
  EXPECT_GT(std::filesystem::file_size(folder.file().string() + "-wal"), 0U) << "nothing of it can be written yet";
}

TEST_F(FullDisk, LeavesTheStoreToBeSalvaged) {
  givenALog();
  noRoom();
  std::string text;
  const auto report =
      store::salvage(folder.file(), {}, std::chrono::milliseconds(200), [&](std::string_view piece) -> Status {
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
    EXPECT_EQ(status.error().code, ErrorCode::kFull) << status.error().message;
    EXPECT_THAT(status.error().message, HasSubstr("no room left"));
    room.comesBack();
  }
}

TEST_F(FullDisk, TakesSavesAgainOnceThereIsRoom) {
  for (const bool log : {false, true}) {
    log ? givenALog() : givenNoLog();
    noRoom();
    auto store = opened();
    ASSERT_TRUE(store) << store.error().message;
    EXPECT_THAT(textOf(**store), HasSubstr("SUMMARY:kept"));
    room.comesBack();
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
    room.endInLog(after);
    const auto status = saved(**store);
    if (!status) {
      EXPECT_EQ(status.error().code, ErrorCode::kFull) << status.error().message;
      EXPECT_THAT(textOf(**store), testing::StrEq(before)) << after;
    }
    room.comesBack();
    store->reset();
    EXPECT_EQ(integrityOf(folder.file()), "ok") << after;
  }
}

}  // namespace
}  // namespace orlocal::test
