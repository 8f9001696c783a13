#include "store/backup.h"

#include <atomic>
#include <fstream>
#include <sstream>
#include <thread>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "store/edits/item_writer.h"
#include "store/file/sqlite.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

class Copies : public StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    std::filesystem::create_directory(folder / "copies");
    copy = folder / "copies" / "copy.db";
  }

  std::vector<std::string> titles() { return titlesIn(*store); }
  std::vector<std::string> titlesOf(const std::filesystem::path& path) {
    StoreOptions other = options();
    other.file = path;
    return titlesIn(**CalendarStore::open(other));
  }
  Result<CopiedStore> backedUp(ExistingFile existing = ExistingFile::kIsRefused) {
    return backUpStore(file, copy, existing, 10s);
  }
  Result<RestoredStore> restored() { return restoreStore(options(), copy); }
  static std::string contentOf(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    std::stringstream content;
    content << stream.rdbuf();
    return content.str();
  }
  static std::vector<std::string> filesIn(const std::filesystem::path& path) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path)) { names.push_back(entry.path().filename()); }
    return names;
  }
  void damage(const std::filesystem::path& path, std::streamoff from, std::size_t bytes) {
    std::fstream stream(path, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(from);
    stream << std::string(bytes, '\x7f');
  }

  std::filesystem::path copy;
};

class Backup : public Copies {};

TEST_F(Backup, IsOneWholeFileWhileTheStoreIsOpen) {
  saved(plain("Review"));
  saved(reminder("Call"));
  const auto content = backedUp();
  ASSERT_TRUE(content) << content.error().message;
  EXPECT_EQ(content->events, 1);
  EXPECT_EQ(content->reminders, 1);
  EXPECT_EQ(content->bytes, std::filesystem::file_size(copy));
  EXPECT_THAT(filesIn(folder / "copies"), ElementsAre("copy.db"));
  EXPECT_THAT(titlesOf(copy), ElementsAre("Review"));
}

TEST_F(Backup, CanBeReadWhereNothingCanBeWritten) {
  saved(plain("Review"));
  ASSERT_TRUE(backedUp());
  // The header's two version numbers: 1 is a file that needs no log.
  EXPECT_EQ(contentOf(copy).substr(18, 2), std::string("\1\1"));
}

TEST_F(Backup, IsForTheUserAlone) {
  ASSERT_TRUE(backedUp());
  struct stat found {};
  ::stat(copy.c_str(), &found);
  EXPECT_EQ(found.st_mode & 0777U, 0600U);
}

TEST_F(Backup, HoldsOneMomentWhileOthersWrite) {
  // Each commit adds two events; a copy with an odd number was torn.
  std::atomic<bool> stop{false};
  std::atomic<int> commits{0};
  std::thread writer([&] {
    const auto mine = opened();
    for (int i = 0; !stop; ++i) {
      auto turn = mine->startWriting().value();
      for (const char* half : {"a", "b"}) {
        Item item = plain("pair");
        item.uid = std::to_string(i) + half;
        std::vector<Item> none;
        ASSERT_TRUE(turn->put(1, item, none));
      }
      ASSERT_TRUE(turn->commit());
      ++commits;
    }
  });
  for (int i = 0; i < 5; ++i) {
    const int before = commits;
    while (commits < before + 2) { std::this_thread::sleep_for(1ms); }
    const auto content = backUpStore(file, folder / "copies" / std::to_string(i), ExistingFile::kIsRefused, 10s);
    ASSERT_TRUE(content) << content.error().message;
    EXPECT_GE(content->events, 2 * before);
    EXPECT_EQ(content->events % 2, 0);
  }
  stop = true;
  writer.join();
}

TEST_F(Backup, RefusesAFileThatIsThere) {
  std::ofstream(copy) << "precious";
  const auto content = backedUp();
  ASSERT_FALSE(content);
  EXPECT_THAT(content.error().message, HasSubstr(copy.string()));
  EXPECT_EQ(contentOf(copy), "precious");
  EXPECT_THAT(filesIn(folder / "copies"), ElementsAre("copy.db"));
}

TEST_F(Backup, ReplacesARegularFileWhenItIsTold) {
  std::ofstream(copy) << "old";
  saved(plain("Review"));
  ASSERT_TRUE(backedUp(ExistingFile::kIsReplaced));
  EXPECT_THAT(titlesOf(copy), ElementsAre("Review"));
}

TEST_F(Backup, ReplacesNoLinkAndNoFolder) {
  std::ofstream(folder / "precious") << "precious";
  std::filesystem::create_symlink(folder / "precious", copy);
  EXPECT_FALSE(backedUp(ExistingFile::kIsReplaced));
  EXPECT_EQ(contentOf(folder / "precious"), "precious");
  std::filesystem::remove(copy);
  std::filesystem::create_directory(copy);
  EXPECT_FALSE(backedUp(ExistingFile::kIsReplaced));
  std::filesystem::remove(copy);
  std::filesystem::create_symlink(folder / "nowhere", copy);
  EXPECT_FALSE(backedUp());
  EXPECT_FALSE(std::filesystem::exists(folder / "nowhere"));
}

TEST_F(Backup, DoesNotReplaceTheStoreItself) {
  saved(plain("Review"));
  for (const char* own : {"", "-wal", "-shm", "-bell"}) {
    EXPECT_FALSE(backUpStore(file, file.string() + own, ExistingFile::kIsReplaced, 10s)) << own;
  }
  EXPECT_THAT(titles(), ElementsAre("Review"));
}

TEST_F(Backup, MakesNoStoreWhereThereIsNone) {
  const auto nowhere = folder / "none" / "calendar.db";
  const auto content = backUpStore(nowhere, copy, ExistingFile::kIsRefused, 10s);
  ASSERT_FALSE(content);
  EXPECT_THAT(content.error().message, HasSubstr("no calendar store at"));
  EXPECT_FALSE(std::filesystem::exists(folder / "none"));
  EXPECT_FALSE(std::filesystem::exists(copy));
}

TEST_F(Backup, IsNotMadeOfADamagedStore) {
  for (int i = 0; i < 200; ++i) { saved(plain("Review")); }
  store.reset();
  damage(file, 5 * 4096, 40'000);
  const auto content = backedUp();
  ASSERT_FALSE(content);
  EXPECT_EQ(content.error().code, ErrorCode::kCorrupt);
  EXPECT_THAT(filesIn(folder / "copies"), IsEmpty());
}

class Restore : public Copies {};

TEST_F(Restore, PutsTheBackupInPlaceAndKeepsWhatWasThere) {
  saved(plain("Before"));
  ASSERT_TRUE(backedUp());
  saved(plain("Later"));
  store.reset();
  const auto done = restored();
  ASSERT_TRUE(done) << done.error().message;
  EXPECT_EQ(done->content.events, 1);
  EXPECT_THAT(titlesOf(file), ElementsAre("Before"));
  ASSERT_TRUE(done->kept);
  EXPECT_FALSE(done->keptUnread);
  EXPECT_EQ(done->kept->string(), file.string() + ".before-restore-20261102T080000Z");
  EXPECT_FALSE(std::filesystem::exists(done->kept->string() + "-wal"));
  EXPECT_THAT(titlesOf(*done->kept), ElementsAre("Before", "Later"));
}

TEST_F(Restore, ShowsToThoseWhoHaveTheStoreOpen) {
  const Item item = saved(plain("Before"));
  ASSERT_TRUE(backedUp());
  Item changed = read(item.id);
  changed.title = "Changed";
  saved(changed);
  saved(plain("Later"));
  EXPECT_THAT(titles(), ElementsAre("Changed", "Later"));
  const auto generation = store->generation();
  const auto done = restored();
  ASSERT_TRUE(done) << done.error().message;
  EXPECT_NE(store->generation(), generation);
  EXPECT_THAT(titles(), ElementsAre("Before"));
  EXPECT_EQ(read(item.id).title, "Before");
  EXPECT_THAT(titlesOf(*done->kept), ElementsAre("Changed", "Later")) << "with what lay in the log only";
  saved(plain("Next"));
  EXPECT_THAT(titlesOf(file), ElementsAre("Before", "Next"));
}

TEST_F(Restore, GivesNoNumberTwice) {
  saved(plain("Before"));
  ASSERT_TRUE(backedUp());
  const Item gone = saved(plain("Later"));
  ASSERT_TRUE(restored());
  const Item next = saved(plain("Next"));
  EXPECT_GT(next.id, gone.id);
  EXPECT_NE(next.identifier, gone.identifier);
  const auto item = store->item(gone.id);
  ASSERT_TRUE(item);
  EXPECT_EQ(*item, nullptr);
}

TEST_F(Restore, LetsListenersBeginAnew) {
  saved(plain("Before"));
  ASSERT_TRUE(backedUp());
  const auto listener = opened();
  auto position = *listener->newestChange();
  for (int i = 0; i < 3; ++i) { saved(plain("Untold")); }
  ASSERT_TRUE(restored());
  EXPECT_THAT(listener->outsideCommits(position).value(), IsEmpty());
  const Item next = saved(plain("Next"));
  const auto commits = listener->outsideCommits(position).value();
  ASSERT_THAT(commits, SizeIs(1));
  EXPECT_THAT(commits[0].events.inserted, ElementsAre(next.identifier));
}

TEST_F(Restore, IsNotConfusedByALogOfTheSameLength) {
  const Item one = saved(plain("One"));
  ASSERT_TRUE(backedUp());
  auto other = opened();
  EXPECT_THAT(titlesIn(*other), ElementsAre("One"));
  // What `other` keeps in memory stands at the number that a plain copy would have.
  Item changed = read(one.id);
  changed.title = "Two";
  saved(changed);
  EXPECT_THAT(titlesIn(*other), ElementsAre("Two"));
  ASSERT_TRUE(restored());
  EXPECT_THAT(titlesIn(*other), ElementsAre("One"));
}

TEST_F(Restore, LosesNoSaveOfOthersUnseen) {
  saved(plain("Before"));
  ASSERT_TRUE(backedUp());
  // Somebody saves all the while: what was acknowledged is in the kept file or in the store.
  std::atomic<bool> stop{false};
  std::vector<std::string> acknowledged;
  std::thread writer([&] {
    const auto mine = opened();
    for (int i = 0; !stop; ++i) {
      Item item = plain("w" + std::to_string(i));
      if (saveEvent(*mine, item, std::nullopt, Span::kThis)) { acknowledged.push_back(*item.title); }
    }
  });
  std::this_thread::sleep_for(100ms);
  const auto done = restored();
  std::this_thread::sleep_for(100ms);
  stop = true;
  writer.join();
  ASSERT_TRUE(done) << done.error().message;
  auto all = titlesOf(*done->kept);
  for (const std::string& title : titles()) { all.push_back(title); }
  for (const std::string& title : acknowledged) { EXPECT_THAT(all, Contains(title)); }
  EXPECT_THAT(acknowledged, Not(IsEmpty()));
}

TEST_F(Restore, RefusesWhatIsNoWholeStoreAndTouchesNothing) {
  for (int i = 0; i < 200; ++i) { saved(plain("Before")); }
  ASSERT_TRUE(backedUp());
  store.reset();
  const std::string before = contentOf(file);
  const auto refused = [&](const char* what, ErrorCode code) {
    SCOPED_TRACE(what);
    const auto done = restored();
    ASSERT_FALSE(done);
    EXPECT_EQ(done.error().code, code) << done.error().message;
    EXPECT_EQ(contentOf(file), before);
    EXPECT_THAT(filesIn(folder), Not(Contains(HasSubstr("before-restore"))));
    EXPECT_THAT(filesIn(folder), Not(Contains(HasSubstr(".part"))));
  };
  damage(copy, 5 * 4096, 40'000);
  refused("damaged", ErrorCode::kCorrupt);
  std::ofstream(copy, std::ios::trunc) << std::string(9000, 'x');
  refused("no database", ErrorCode::kCorrupt);
  std::ofstream(copy, std::ios::trunc).close();
  refused("empty", ErrorCode::kCorrupt);
  {
    auto other = Database::open(copy, 1s);
    ASSERT_TRUE(other->execute("CREATE TABLE precious(a)"));
  }
  refused("another database", ErrorCode::kCorrupt);
  std::filesystem::remove(copy);
  refused("nothing", ErrorCode::kNotFound);
  ASSERT_TRUE(backedUp());
  ASSERT_TRUE(Database::open(copy, 1s)->execute("PRAGMA user_version = 99"));
  refused("newer", ErrorCode::kNewerFormat);
  EXPECT_FALSE(restoreStore(options(), file)) << "the store itself";
}

TEST_F(Restore, LeavesTheBackupAsItWas) {
  saved(plain("Before"));
  ASSERT_TRUE(backedUp());
  const std::string before = contentOf(copy);
  ASSERT_TRUE(restored());
  EXPECT_EQ(contentOf(copy), before);
  EXPECT_THAT(filesIn(folder / "copies"), ElementsAre("copy.db"));
}

TEST_F(Restore, MakesAStoreWhereThereIsNone) {
  saved(plain("Before"));
  ASSERT_TRUE(backedUp());
  store.reset();
  StoreOptions elsewhere = options();
  elsewhere.file = folder / "deep" / "down" / "calendar.db";
  const auto done = restoreStore(elsewhere, copy);
  ASSERT_TRUE(done) << done.error().message;
  EXPECT_FALSE(done->kept);
  EXPECT_THAT(titlesOf(elsewhere.file), ElementsAre("Before"));
}

TEST_F(Restore, MovesAsideWhatCannotBeReadWithItsLog) {
  saved(plain("Before"));
  ASSERT_TRUE(backedUp());
  store.reset();
  std::ofstream(file, std::ios::trunc) << std::string(9000, 'x');
  std::ofstream(file.string() + "-wal") << "a log";
  const auto done = restored();
  ASSERT_TRUE(done) << done.error().message;
  EXPECT_TRUE(done->keptUnread);
  EXPECT_EQ(contentOf(*done->kept), std::string(9000, 'x'));
  EXPECT_EQ(contentOf(done->kept->string() + "-wal"), "a log");
  EXPECT_THAT(titlesOf(file), ElementsAre("Before"));
}

TEST_F(Restore, LeavesAnotherProgramsDatabaseAlone) {
  ASSERT_TRUE(backedUp());
  store.reset();
  std::filesystem::remove(file);
  std::ofstream(file).close();
  {
    auto other = Database::open(file, 1s);
    ASSERT_TRUE(other->execute("CREATE TABLE precious(a)"));
  }
  const std::string before = contentOf(file);
  EXPECT_FALSE(restored());
  EXPECT_EQ(contentOf(file), before);
}

TEST_F(Restore, IsSeenByThoseWhoHadAStoreOpenThatBroke) {
  saved(plain("Before"));
  ASSERT_TRUE(backedUp());
  saved(plain("Later"));
  store->close();
  const auto witness = opened();
  EXPECT_THAT(titlesIn(*witness), ElementsAre("Before", "Later"));
  damage(file, 0, 100);
  const auto done = restored();
  ASSERT_TRUE(done) << done.error().message;
  EXPECT_THAT(titles(), ElementsAre("Before"));
  Item next = plain("Next");
  ASSERT_TRUE(saveEvent(*witness, next, std::nullopt, Span::kThis));
  EXPECT_THAT(titlesOf(file), ElementsAre("Before", "Next"));
}

TEST_F(Restore, KeepsTheStoresPermissions) {
  ASSERT_TRUE(backedUp());
  store.reset();
  std::filesystem::permissions(file, std::filesystem::perms(0640));
  damage(file, 0, 100);
  const auto done = restored();
  ASSERT_TRUE(done) << done.error().message;
  EXPECT_EQ(std::filesystem::status(file).permissions(), std::filesystem::perms(0640));
}

}  // namespace
}  // namespace orlocal::store
