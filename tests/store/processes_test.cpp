#include <set>

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "store/edits/item_writer.h"
#include "store/file/sqlite.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Processes : public StoreTest {
 protected:
  /// A child that runs `body` with a store of its own and ends with its result.
  template <class Body>
  pid_t started(const Body& body) {
    const pid_t child = fork();
    if (child == 0) { _exit(body()); }
    return child;
  }
  static int resultOf(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
};

TEST_F(Processes, LoseNothingWhenTheySaveAtOnce) {
  constexpr int kProcesses = 6, kSaves = 25;
  store.reset();
  std::vector<pid_t> children;
  for (int process = 0; process < kProcesses; ++process) {
    children.push_back(started([&] {
      auto mine = CalendarStore::open(options());
      if (!mine) { return 1; }
      for (int i = 0; i < kSaves; ++i) {
        Item item = plain(std::to_string(process) + "-" + std::to_string(i));
        if (!saveEvent(**mine, item, std::nullopt, Span::kThis)) { return 2; }
      }
      return 0;
    }));
  }
  for (const pid_t child : children) { EXPECT_EQ(resultOf(child), 0); }
  store = opened();
  std::set<std::string> titles, identifiers;
  for (const Occurrence& occurrence : occurrences(std::nullopt, std::nullopt)) {
    titles.insert(*read(occurrence.item).title);
    identifiers.insert(read(occurrence.item).identifier);
  }
  EXPECT_EQ(titles.size(), static_cast<std::size_t>(kProcesses * kSaves));
  EXPECT_EQ(identifiers.size(), titles.size());
}

TEST_F(Processes, KeepEveryAcknowledgedSaveWhenTheyAreKilled) {
  std::size_t acknowledged = 0;
  for (int round = 0; round < 30; ++round) {
    int channel[2];
    ASSERT_EQ(pipe(channel), 0);
    const pid_t child = started([&] {
      auto mine = CalendarStore::open(options());
      for (int i = 0;; ++i) {
        Item item = plain("saved");
        if (!saveEvent(**mine, item, std::nullopt, Span::kThis)) { return 1; }
        if (write(channel[1], &item.id, sizeof item.id) != sizeof item.id) { return 2; }
      }
    });
    close(channel[1]);
    usleep(static_cast<useconds_t>(3000 + round * 700));
    kill(child, SIGKILL);
    resultOf(child);
    ItemId id = 0;
    while (::read(channel[0], &id, sizeof id) == sizeof id) {
      ++acknowledged;
      EXPECT_EQ(read(id).title, "saved");
    }
    close(channel[0]);
  }
  EXPECT_GT(acknowledged, 0u);
  EXPECT_GE(occurrences(std::nullopt, std::nullopt).size(), acknowledged);
  store.reset();
  auto database = Database::open(file, std::chrono::seconds(1));
  auto check = database->prepare("PRAGMA integrity_check");
  ASSERT_TRUE(*check->step());
  EXPECT_EQ(check->text(0), "ok");
}

TEST_F(Processes, SeeEachOthersChanges) {
  const Item item = saved(plain("before"));
  const auto generation = store->generation();
  EXPECT_EQ(store->generation(), generation);
  EXPECT_EQ(read(item.id).title, "before");
  ASSERT_EQ(resultOf(started([&] {
              auto mine = CalendarStore::open(options());
              Item other = **(*mine)->item(item.id);
              other.title = "after";
              return saveEvent(**mine, other, std::nullopt, Span::kThis) ? 0 : 1;
            })),
            0);
  EXPECT_NE(store->generation(), generation);
  EXPECT_EQ(read(item.id).title, "after");
}

TEST_F(Processes, SeeNoNewGenerationWhenNobodyWrites) {
  saved(plain("one"));
  const auto generation = store->generation();
  occurrences(std::nullopt, std::nullopt);
  auto other = opened();
  other->occurrences(range(std::nullopt, std::nullopt));
  EXPECT_EQ(store->generation(), generation);
}

TEST_F(Processes, FailWithAReasonWhenTheirTurnDoesNotCome) {
  auto writer = std::move(*store->startWriting());
  StoreOptions impatient = options();
  impatient.busyTimeout = std::chrono::milliseconds(50);
  auto other = CalendarStore::open(impatient);
  ASSERT_TRUE(other);
  Item item = plain("late");
  const auto status = saveEvent(**other, item, std::nullopt, Span::kThis);
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().code, ErrorCode::kBusy);
  EXPECT_EQ(item.id, 0);
}

TEST_F(Processes, ReadWhileAnotherWrites) {
  saved(plain("there"));
  auto writer = std::move(*store->startWriting());
  Item item = plain("not yet");
  item.uid = "x";
  std::vector<Item> none;
  ASSERT_TRUE(writer->put(1, item, none));
  auto other = opened();
  EXPECT_EQ(other->occurrences(EventQuery{std::nullopt, std::nullopt, {1}})->size(), 1u);
}

/// A full disk, as far as a test can make one: files may not grow.
TEST_F(Processes, KeepWhatWasSavedWhenThereIsNoMoreRoom) {
  store.reset();
  const int result = resultOf(started([&] {
    auto mine = CalendarStore::open(options());
    Item first = plain("first");
    if (!saveEvent(**mine, first, std::nullopt, Span::kThis)) { return 1; }
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{60'000, 60'000};
    setrlimit(RLIMIT_FSIZE, &limit);
    Item large = plain("large");
    large.notes = std::string(500'000, 'x');
    const auto status = saveEvent(**mine, large, std::nullopt, Span::kThis);
    if (status) { return 2; }
    if (status.error().code != ErrorCode::kFull && status.error().code != ErrorCode::kIo) { return 3; }
    return (*mine)->item(first.id).value() != nullptr ? 0 : 4;
  }));
  EXPECT_EQ(result, 0);
  store = opened();
  EXPECT_THAT(listed(std::nullopt, std::nullopt), ElementsAre("2026-11-02 09:00 first"));
}

}  // namespace
}  // namespace orlocal::store
