#include "store/file/change_log.h"

#include "store/file/schema.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

class LengthOfTheLog : public testing::Test {
 protected:
  LengthOfTheLog() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-length-XXXXXX").string();
    m_folder = mkdtemp(pattern.data());
    m_database = openStoreFile(m_folder / "calendar.db", std::chrono::seconds(10), m_uuids).value();
  }
  ~LengthOfTheLog() override { std::filesystem::remove_all(m_folder); }

  void commit(std::int64_t rows) {
    auto transaction = Transaction::write(m_database).value();
    ASSERT_TRUE(m_log.startCommit());
    for (std::int64_t row = 1; row <= rows; ++row) {
      ASSERT_TRUE(m_log.record(Operation::kUpdated, Subject::kEvent, row, std::nullopt, Uuid()));
    }
    ASSERT_TRUE(m_log.finishCommit());
    ASSERT_TRUE(transaction.commit());
    EXPECT_EQ(m_log.newest(), m_log.last());
  }
  std::int64_t length() { return *m_log.newest() - *m_log.oldest() + 1; }

 private:
  UuidMaker m_uuids;
  std::filesystem::path m_folder;
  Database m_database;

 protected:
  ChangeLog m_log{m_database, 7};
};

TEST_F(LengthOfTheLog, HoldsAtLeastWhatIsPromisedAndLittleMore) {
  for (int i = 0; i < 6; ++i) { commit(30'000); }
  EXPECT_GE(length(), ChangeLog::kKept);
  EXPECT_LE(length(), ChangeLog::kKept + 1'000);
}

TEST_F(LengthOfTheLog, HoldsTheWholeOfALargeCommit) {
  commit(10);
  commit(ChangeLog::kKept + 20'000);
  EXPECT_EQ(length(), ChangeLog::kKept + 20'000);
}

TEST_F(LengthOfTheLog, ShrinksAfterALargeCommitBySmallSteps) {
  commit(ChangeLog::kKept + 20'000);
  std::int64_t before = *m_log.oldest();
  for (int i = 0; i < 60; ++i) {
    commit(100);
    const std::int64_t oldest = *m_log.oldest();
    EXPECT_LE(oldest - before, 1'000);
    before = oldest;
  }
  EXPECT_GE(before, 10'000);
  // What comes makes room for twice as much.
  commit(30'000);
  EXPECT_LE(length(), ChangeLog::kKept + 1'000);
}

TEST_F(LengthOfTheLog, KnowsWhenEachCommitWasMade) {
  const Moment before = *parseMoment("2026-11-02T08:00:00Z");
  pinClock(before);
  commit(2);
  pinClock(before + std::chrono::hours(1));
  commit(3);
  pinClock(momentPinnedByUser().value());
  EXPECT_EQ(*m_log.newestBefore(before), 0);
  EXPECT_EQ(*m_log.newestBefore(before + std::chrono::microseconds(1)), 2);
  EXPECT_EQ(*m_log.newestBefore(before + std::chrono::hours(1)), 2);
  EXPECT_EQ(*m_log.newestBefore(before + std::chrono::hours(2)), 5);
}

}  // namespace
}  // namespace orlocal::store
