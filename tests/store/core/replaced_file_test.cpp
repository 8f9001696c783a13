#include <fstream>
#include <functional>
#include <thread>

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "store/edits/item_writer.h"
#include "store/file/sqlite.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class FileOfAStore : public StoreTest {
 protected:
  std::filesystem::path beside(const char* suffix) const { return file.string() + suffix; }
  /// What is in `path` without anything that lies beside it.
  std::vector<std::string> titlesOfCopy(const std::filesystem::path& path) {
    const auto copy = folder / "copied" / "calendar.db";
    std::filesystem::create_directories(copy.parent_path());
    std::filesystem::copy_file(path, copy, std::filesystem::copy_options::overwrite_existing);
    StoreOptions options = this->options();
    options.file = copy;
    const auto opened = CalendarStore::open(options);
    if (!opened) { return {"(" + opened.error().message + ")"}; }
    return titlesIn(**opened);
  }
  /// A store of its own with one event.
  std::filesystem::path otherFile(const std::string& title, int saves = 1) {
    StoreOptions options = this->options();
    options.file = folder / ("other-" + title + ".db");
    const auto other = CalendarStore::open(options).value();
    Item item = plain(title);
    for (int i = 0; i < saves; ++i) { EXPECT_TRUE(saveEvent(*other, item, std::nullopt, Span::kThis)); }
    return options.file;
  }
  static std::string integrityOf(const std::filesystem::path& path) {
    auto database = Database::open(path, 1s);
    auto check = database->prepare("PRAGMA integrity_check");
    return check && check->step().value_or(false) ? std::string(check->text(0)) : "cannot be read";
  }
  static bool comesTrue(const std::function<bool()>& what) {
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    while (!what()) {
      if (std::chrono::steady_clock::now() > deadline) { return false; }
      std::this_thread::sleep_for(1ms);
    }
    return true;
  }
};

TEST_F(FileOfAStore, IsWholeByItselfOnceTheStoreIsClosed) {
  saved(plain("Review"));
  store->close();
  EXPECT_FALSE(std::filesystem::exists(beside("-wal")));
  EXPECT_THAT(titlesOfCopy(file), ElementsAre("Review"));
}

TEST_F(FileOfAStore, IsWholeByItselfWhenTheLastOneGoes) {
  saved(plain("Review"));
  store.reset();
  EXPECT_FALSE(std::filesystem::exists(beside("-wal")));
  EXPECT_THAT(titlesOfCopy(file), ElementsAre("Review"));
}

TEST_F(FileOfAStore, IsWholeByItselfAlthoughAnotherHasItOpen) {
  const auto reader = opened();
  EXPECT_THAT(titlesIn(*reader), IsEmpty());
  saved(plain("Review"));
  store->close();
  EXPECT_THAT(titlesOfCopy(file), ElementsAre("Review"));
}

TEST_F(FileOfAStore, IsOpenedAgainByTheNextCall) {
  const Item item = saved(plain("Review"));
  store->close();
  EXPECT_EQ(read(item.id).title, "Review");
  store->close();
  EXPECT_THAT(titlesIn(*store), ElementsAre("Review"));
  store->close();
  saved(plain("Talk"));
  store->close();
  EXPECT_EQ(store->calendars(CalendarKind::kEvents)->size(), 1U);
  store->close();
  EXPECT_TRUE(store->startWriting());
  EXPECT_THAT(titlesIn(*store), ElementsAre("Review", "Talk"));
}

TEST_F(FileOfAStore, ShowsWhatOthersWroteWhileItWasClosed) {
  const Item item = saved(plain("Review"));
  const auto generation = store->generation();
  EXPECT_EQ(read(item.id).title, "Review");
  store->close();
  Item other = item;
  other.title = "Changed";
  ASSERT_TRUE(saveEvent(*opened(), other, std::nullopt, Span::kThis));
  EXPECT_NE(store->generation(), generation);
  EXPECT_EQ(read(item.id).title, "Changed");
}

TEST_F(FileOfAStore, KeepsAListenersPlaceWhileItIsClosed) {
  auto position = *store->newestChange();
  const Item own = saved(plain("Own"));
  store->close();
  Item theirs = plain("Theirs");
  ASSERT_TRUE(saveEvent(*opened(), theirs, std::nullopt, Span::kThis));
  const auto commits = store->outsideCommits(position).value();
  ASSERT_THAT(commits, SizeIs(1));
  EXPECT_THAT(commits[0].events.inserted, ElementsAre(theirs.identifier));
}

TEST_F(FileOfAStore, IsLeftAloneByAProcessThatWasForkedOff) {
  saved(plain("Review"));
  const pid_t child = fork();
  if (child == 0) {
    store->close();
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_GT(std::filesystem::file_size(beside("-wal")), 0U);
  saved(plain("Talk"));
  EXPECT_THAT(titlesIn(*opened()), ElementsAre("Review", "Talk"));
}

TEST_F(FileOfAStore, IsFollowedByReadersWhenAnotherTakesItsPlace) {
  const Item before = saved(plain("Before"));
  const auto generation = store->generation();
  EXPECT_EQ(read(before.id).title, "Before");
  std::filesystem::rename(otherFile("After"), file);
  EXPECT_TRUE(comesTrue([&] { return titlesIn(*store) == std::vector<std::string>{"After"}; }));
  EXPECT_NE(store->generation(), generation);
  EXPECT_EQ(read(before.id).title, "After") << "the same row number, and what was kept is forgotten";
}

TEST_F(FileOfAStore, IsFollowedByThoseWhoOnlyAskForTheGeneration) {
  saved(plain("Before"));
  const auto generation = store->generation();
  std::filesystem::rename(otherFile("After"), file);
  EXPECT_TRUE(comesTrue([&] { return store->generation() != generation; }));
  EXPECT_THAT(titlesIn(*store), ElementsAre("After"));
}

TEST_F(FileOfAStore, TakesTheNextSaveAtOnceWhenItTookThePlaceOfAnother) {
  saved(plain("Before"));
  std::filesystem::rename(otherFile("After"), file);
  saved(plain("Saved"));
  EXPECT_THAT(titlesIn(*opened()), ElementsAre("After", "Saved"));
  store.reset();
  EXPECT_THAT(titlesOfCopy(file), ElementsAre("After", "Saved"));
  EXPECT_EQ(integrityOf(file), "ok");
}

TEST_F(FileOfAStore, NeverMeetsTheLogOfTheOneBefore) {
  for (int i = 0; i < 50; ++i) { saved(plain("Before")); }
  ASSERT_GT(std::filesystem::file_size(beside("-wal")), 0U);
  std::filesystem::rename(otherFile("After"), file);
  EXPECT_TRUE(comesTrue([&] { return titlesIn(*store) == std::vector<std::string>{"After"}; }));
  EXPECT_THAT(titlesIn(*opened()), ElementsAre("After"));
  store.reset();
  EXPECT_EQ(integrityOf(file), "ok");
  EXPECT_THAT(titlesOfCopy(file), ElementsAre("After"));
}

TEST_F(FileOfAStore, TakesItsLogAlongWhenItIsMovedAway) {
  saved(plain("Before"));
  const auto away = folder / "away.db";
  const auto other = otherFile("After");
  std::filesystem::rename(file, away);
  std::filesystem::rename(other, file);
  saved(plain("Saved"));
  EXPECT_THAT(titlesOfCopy(away), ElementsAre("Before"));
  EXPECT_THAT(titlesIn(*store), ElementsAre("After", "Saved"));
}

TEST_F(FileOfAStore, IsFollowedByAllWhoHadTheOneBefore) {
  saved(plain("Before"));
  const auto second = opened(), third = opened();
  EXPECT_THAT(titlesIn(*second), ElementsAre("Before"));
  EXPECT_THAT(titlesIn(*third), ElementsAre("Before"));
  std::filesystem::rename(otherFile("After"), file);
  saved(plain("One"));
  Item two = plain("Two");
  ASSERT_TRUE(saveEvent(*second, two, std::nullopt, Span::kThis));
  EXPECT_TRUE(comesTrue([&] { return titlesIn(*third) == std::vector<std::string>{"After", "One", "Two"}; }));
  EXPECT_EQ(titlesIn(*store), titlesIn(*third));
  store.reset();
  EXPECT_EQ(integrityOf(file), "ok");
}

TEST_F(FileOfAStore, IsMissedWithAReasonAndFoundAgain) {
  saved(plain("Review"));
  std::filesystem::rename(file, folder / "away.db");
  EXPECT_TRUE(comesTrue([&] { return !store->calendars(CalendarKind::kEvents); }));
  Item item = plain("Lost");
  const auto status = saveEvent(*store, item, std::nullopt, Span::kThis);
  ASSERT_FALSE(status);
  EXPECT_THAT(status.error().message, testing::HasSubstr(file.string()));
  EXPECT_FALSE(std::filesystem::exists(file)) << "an empty store must not take its place";
  std::filesystem::rename(folder / "away.db", file);
  EXPECT_THAT(titlesIn(*store), ElementsAre("Review"));
}

TEST_F(FileOfAStore, IsWaitedForWhenWhatTookItsPlaceIsNoStore) {
  saved(plain("Review"));
  std::filesystem::rename(file, folder / "away.db");
  std::ofstream(file) << std::string(5000, 'x');
  EXPECT_TRUE(comesTrue([&] { return !store->calendars(CalendarKind::kEvents); }));
  std::filesystem::rename(folder / "away.db", file);
  EXPECT_TRUE(comesTrue([&] { return titlesIn(*store) == std::vector<std::string>{"Review"}; }));
}

TEST_F(FileOfAStore, BeginsAListenersLogAnewWhenItTookThePlaceOfAnother) {
  auto position = *store->newestChange();
  saved(plain("Before"));
  // A log of more rows, of as many and of fewer.
  for (const int saves : {5, 2, 1}) {
    SCOPED_TRACE(saves);
    std::filesystem::rename(otherFile("After", saves), file);
    const auto number = position.file;
    EXPECT_TRUE(comesTrue([&] {
      EXPECT_THAT(store->outsideCommits(position).value(), IsEmpty());
      return position.file != number;
    }));
    Item theirs = plain("Theirs");
    ASSERT_TRUE(saveEvent(*opened(), theirs, std::nullopt, Span::kThis));
    const auto commits = store->outsideCommits(position).value();
    ASSERT_THAT(commits, SizeIs(1));
    EXPECT_THAT(commits[0].events.inserted, ElementsAre(theirs.identifier));
  }
}

TEST_F(FileOfAStore, IsFollowedThroughALinkThatLeadsElsewhere) {
  saved(plain("Before"));
  store.reset();
  const auto link = folder / "link.db";
  std::filesystem::create_symlink(file, link);
  StoreOptions linked = options();
  linked.file = link;
  auto reader = CalendarStore::open(linked).value();
  EXPECT_THAT(titlesIn(*reader), ElementsAre("Before"));
  std::filesystem::create_symlink(otherFile("After"), folder / "new.db");
  std::filesystem::rename(folder / "new.db", link);
  EXPECT_TRUE(comesTrue([&] { return titlesIn(*reader) == std::vector<std::string>{"After"}; }));
  reader.reset();
  EXPECT_THAT(titlesOfCopy(file), ElementsAre("Before"));
}

/// Somebody who may read the store's file and folder, and not write them.
class ReaderOfAStore : public FileOfAStore {
 protected:
  void SetUp() override {
    FileOfAStore::SetUp();
    if (geteuid() != 0) { GTEST_SKIP() << "another user can only be tried as root"; }
    std::filesystem::permissions(folder, std::filesystem::perms(0755));
    std::filesystem::permissions(file, std::filesystem::perms(0644));
    // The bell is made for the same users as the file.
    std::filesystem::remove(beside("-bell"));
    store.reset();
    store = opened();
  }

  /// Runs `body` as nobody; it is told when to go on by `next`, and ends with 0.
  void asReader(const std::function<int(const std::function<void()>& next)>& body,
                const std::vector<std::function<void()>>& meanwhile) {
    int go[2], done[2];
    ASSERT_EQ(pipe(go) + pipe(done), 0);
    const pid_t child = fork();
    if (child == 0) {
      close(go[1]);
      close(done[0]);
      if (setgid(65534) != 0 || setuid(65534) != 0) { _exit(99); }
      _exit(body([&] {
        char sign = 0;
        if (write(done[1], "x", 1) != 1 || ::read(go[0], &sign, 1) != 1) { _exit(98); }
      }));
    }
    close(go[0]);
    close(done[1]);
    for (const auto& step : meanwhile) {
      char sign = 0;
      if (::read(done[0], &sign, 1) != 1) { break; }
      step();
      if (write(go[1], "x", 1) != 1) { break; }
    }
    close(go[1]);
    close(done[0]);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
  }

  bool sees(CalendarStore& reader, const std::vector<std::string>& titles) {
    return comesTrue([&] { return titlesIn(reader) == titles; });
  }
};

TEST_F(ReaderOfAStore, SeesNewerContentOfAFileThatNobodyHadOpen) {
  saved(plain("One"));
  store.reset();
  asReader(
      [&](const auto& next) {
        const auto reader = CalendarStore::open(options());
        if (!reader) { return 1; }
        if (!sees(**reader, {"One"})) { return 2; }
        const auto generation = (*reader)->generation();
        next();
        if (!comesTrue([&] { return (*reader)->generation() != generation; })) { return 3; }
        if (!sees(**reader, {"One", "Two"})) { return 4; }
        next();
        if (!sees(**reader, {"One", "Two", "Three"})) { return 5; }
        next();
        return sees(**reader, {"One", "Two", "Three", "Four"}) ? 0 : 6;
      },
      {[&] {
         store = opened();
         saved(plain("Two"));
       },
       [&] {
         saved(plain("Three"));
         store.reset();
       },
       [&] {
         store = opened();
         saved(plain("Four"));
         store.reset();
       }});
}

TEST_F(ReaderOfAStore, SeesWhatCameAndWasClosedAgainMeanwhile) {
  saved(plain("0"));
  store.reset();
  std::vector<std::function<void()>> steps;
  for (int i = 1; i <= 8; ++i) {
    steps.emplace_back([this, i] {
      store = opened();
      saved(plain(std::to_string(i)));
      store.reset();
    });
  }
  asReader(
      [&](const auto& next) {
        const auto reader = CalendarStore::open(options());
        if (!reader) { return 50; }
        std::vector<std::string> titles{"0"};
        for (int i = 1; i <= 8; ++i) {
          if (!sees(**reader, titles)) { return i; }
          next();
          titles.push_back(std::to_string(i));
        }
        return sees(**reader, titles) ? 0 : 9;
      },
      steps);
}

TEST_F(ReaderOfAStore, HearsWhatIsCommittedLater) {
  saved(plain("One"));
  store.reset();
  Item heard;
  asReader(
      [&](const auto& next) {
        const auto reader = CalendarStore::open(options());
        if (!reader || !(*reader)->listen()) { return 1; }
        auto position = *(*reader)->newestChange();
        next();
        std::vector<OutsideCommit> commits;
        if (!comesTrue([&] {
              commits = (*reader)->outsideCommits(position).value();
              return !commits.empty();
            })) {
          return 2;
        }
        return commits.size() == 1 && commits[0].events.inserted.size() == 1 ? 0 : 3;
      },
      {[&] {
        store = opened();
        heard = saved(plain("Two"));
      }});
}

TEST_F(ReaderOfAStore, LeavesTheFileWholeByItselfWhenTheWriterGoes) {
  saved(plain("One"));
  asReader(
      [&](const auto& next) {
        const auto reader = CalendarStore::open(options());
        if (!reader || !sees(**reader, {"One"})) { return 1; }
        next();
        if (!sees(**reader, {"One", "Two"})) { return 2; }
        next();
        return sees(**reader, {"One", "Two"}) ? 0 : 3;
      },
      {[&] { saved(plain("Two")); },
       [&] {
         store.reset();
         EXPECT_THAT(titlesOfCopy(file), ElementsAre("One", "Two"));
       }});
}

TEST_F(ReaderOfAStore, FollowsAFileThatTookThePlaceOfAnother) {
  saved(plain("Before"));
  store.reset();
  const auto other = otherFile("After");
  std::filesystem::permissions(other, std::filesystem::perms(0644));
  asReader(
      [&](const auto& next) {
        const auto reader = CalendarStore::open(options());
        if (!reader || !sees(**reader, {"Before"})) { return 1; }
        next();
        return sees(**reader, {"After"}) ? 0 : 2;
      },
      {[&] { std::filesystem::rename(other, file); }});
}

}  // namespace
}  // namespace orlocal::store
