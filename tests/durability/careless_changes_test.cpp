#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "base/try.h"
#include "durability/trials.h"
#include "store/file/sqlite.h"

// What the trials are good for: changes made as nobody should make them are noticed.
namespace orlocal::test {
namespace {

Status titled(Session& session, const char* pragma, const char* title) {
  ORLOCAL_TRY(auto database, store::Database::open(session.file(), std::chrono::seconds(1)));
  ORLOCAL_CHECK(database.execute(pragma));
  const std::string sql = std::string("UPDATE items SET title = '") + title + "', notes = hex(zeroblob(300))";
  return database.execute(sql.c_str());
}

Status inTwoCommits(Session& session) {
  ORLOCAL_CHECK(titled(session, "PRAGMA synchronous=FULL", "half"));
  return titled(session, "PRAGMA synchronous=FULL", "whole");
}
Status withoutWaiting(Session& session) { return titled(session, "PRAGMA synchronous=OFF", "whole"); }
Status withoutJournal(Session& session) { return titled(session, "PRAGMA journal_mode=MEMORY", "whole"); }
Status withoutListening(Session& session) {
  static_cast<void>(titled(session, "PRAGMA synchronous=FULL", "whole"));
  return {};
}

Status writtenBeforeItIsOnDisk(Session& session) {
  const int file = ::open(session.in("draft").c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  const std::string text(5000, 'x');
  const bool written = ::write(file, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  ::close(file);
  if (!written || ::rename(session.in("draft").c_str(), session.in("old.ics").c_str()) != 0) {
    return failure(ErrorCode::kIo, "It cannot be written.");
  }
  return {};
}

/// Of the trials of one trouble.
constexpr std::size_t kEnough = 30;

struct Careless {
  const char* name;
  Change change;
  const char* trouble;  ///< that shows it
};

constexpr Careless kCareless[] = {
    {"InTwoCommits", {"in two commits", Given::kStore, &inTwoCommits}, "killed"},
    {"WithoutWaitingForTheDisk", {"without waiting", Given::kStore, &withoutWaiting}, "power cut"},
    {"WithoutAJournal", {"without a journal", Given::kStore, &withoutJournal}, "killed"},
    {"WithoutListeningToTheAnswer",
     {"without listening", Given::kStore, &withoutListening},
     "write, no room, until it was told"},
    {"WhoseBytesAreNotOnDiskBeforeTheirName",
     {"written before it is on disk", Given::kStore, &writtenBeforeItIsOnDisk},
     "power cut"},
};

class AChange : public testing::TestWithParam<Careless> {};

TEST_P(AChange, IsFoundOut) {
  Trials trials;
  for (const Trouble& trouble : troubles()) {
    if (trouble.name != GetParam().trouble) { continue; }
    const Outcome outcome = trials.run(GetParam().change, trouble, {.most = kEnough});
    EXPECT_GT(outcome.tried, 0U);
    EXPECT_LT(outcome.survived, outcome.tried);
    ASSERT_FALSE(outcome.losses.empty());
    EXPECT_TRUE(
        outcome.losses.front().trial.starts_with(std::string(GetParam().change.name) + " / " + trouble.name + " / "));
  }
}

INSTANTIATE_TEST_SUITE_P(Made, AChange, testing::ValuesIn(kCareless),
                         [](const auto& tested) { return std::string(tested.param.name); });

}  // namespace
}  // namespace orlocal::test
