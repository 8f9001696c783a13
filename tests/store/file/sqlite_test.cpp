#include "store/file/sqlite.h"

#include <cstdlib>
#include <cstring>
#include <fstream>

#include <gtest/gtest.h>
#include <unistd.h>

namespace orlocal::store {
namespace {

using namespace std::chrono_literals;

class Sqlite : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "orlocal-sqlite-XXXXXX").string();
    folder = mkdtemp(pattern.data());
    file = folder / "test.db";
    std::ofstream(file).close();
  }
  void TearDown() override { std::filesystem::remove_all(folder); }

  Database opened() {
    auto database = Database::open(file, 50ms);
    EXPECT_TRUE(database) << database.error().message;
    return std::move(*database);
  }

  std::filesystem::path folder, file;
};

TEST_F(Sqlite, ReadsBackWhatWasBound) {
  Database database = opened();
  ASSERT_TRUE(database.execute("CREATE TABLE t(a, b, c, d, e)"));
  auto insert = database.prepare("INSERT INTO t VALUES(?, ?, ?, ?, ?)");
  const std::string text = "Grüße";
  const std::byte bytes[] = {std::byte{0}, std::byte{255}};
  insert->bind(1, std::int64_t{-7}).bind(2, 0.5).bind(3, std::string_view(text)).bindBlob(4, bytes).bindNull(5);
  ASSERT_TRUE(insert->run());

  auto select = database.prepare("SELECT * FROM t");
  ASSERT_TRUE(*select->step());
  EXPECT_EQ(select->integer(0), -7);
  EXPECT_EQ(select->real(1), 0.5);
  EXPECT_EQ(select->text(2), "Grüße");
  EXPECT_EQ(select->blob(3).size(), 2u);
  EXPECT_TRUE(select->isNull(4));
  EXPECT_FALSE(*select->step());
}

TEST_F(Sqlite, KeepsAnEmptyTextApartFromNone) {
  Database database = opened();
  auto select = database.prepare("SELECT ?");
  select->bind(1, std::string_view());
  ASSERT_TRUE(*select->step());
  EXPECT_FALSE(select->isNull(0));
}

TEST_F(Sqlite, RollsBackATransactionThatWasNotCommitted) {
  Database database = opened();
  ASSERT_TRUE(database.execute("CREATE TABLE t(a)"));
  {
    auto transaction = Transaction::write(database);
    ASSERT_TRUE(transaction);
    ASSERT_TRUE(database.execute("INSERT INTO t VALUES(1)"));
  }
  EXPECT_EQ(*database.integerOf("SELECT count(*) FROM t"), 0);
}

TEST_F(Sqlite, SaysThatAnotherProcessIsWriting) {
  Database first = opened(), second = opened();
  auto transaction = Transaction::write(first);
  ASSERT_TRUE(transaction);
  const auto refused = Transaction::write(second);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().code, ErrorCode::kBusy);
  EXPECT_NE(refused.error().message.find(file.string()), std::string::npos);
}

TEST_F(Sqlite, SaysThatAFileIsNoDatabase) {
  std::ofstream(file) << std::string(4096, 'x');
  Database database = opened();
  const auto read = database.integerOf("PRAGMA user_version");
  ASSERT_FALSE(read);
  EXPECT_EQ(read.error().code, ErrorCode::kCorrupt);
}

TEST_F(Sqlite, RefusesToWriteIntoAFileThatVanished) {
  Database database = opened();
  ASSERT_TRUE(database.execute("CREATE TABLE t(a)"));
  std::filesystem::remove(file);
  const auto refused = Transaction::write(database);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().code, ErrorCode::kIo);
}

TEST_F(Sqlite, ShowsEveryCommitInTheLogsIndex) {
  Database writer = opened();
  ASSERT_TRUE(writer.execute("PRAGMA journal_mode=WAL"));
  ASSERT_TRUE(writer.execute("CREATE TABLE t(a)"));
  Database reader = opened();
  ASSERT_TRUE(reader.integerOf("SELECT count(*) FROM t"));
  const std::uint32_t* index = reader.walIndex();
  ASSERT_NE(index, nullptr);
  std::uint32_t before[12];
  std::memcpy(before, index, sizeof before);
  ASSERT_TRUE(writer.execute("INSERT INTO t VALUES(1)"));
  EXPECT_NE(std::memcmp(before, index, sizeof before), 0);
}

TEST_F(Sqlite, HasNoSuchIndexWithoutALog) {
  Database database = opened();
  ASSERT_TRUE(database.execute("CREATE TABLE t(a)"));
  EXPECT_EQ(database.walIndex(), nullptr);
}

}  // namespace
}  // namespace orlocal::store
