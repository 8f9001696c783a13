#include "store/file/schema.h"

#include <fstream>
#include <sstream>

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "store/edits/item_writer.h"
#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::string contentOf(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::stringstream content;
  content << stream.rdbuf();
  return content.str();
}

mode_t modeOf(const std::filesystem::path& path) {
  struct stat status = {};
  stat(path.c_str(), &status);
  return status.st_mode & 0777;
}

class SchemaOfAFile : public StoreTest {
 protected:
  Failure refusal() {
    auto result = CalendarStore::open(options());
    EXPECT_FALSE(result);
    return result ? Failure() : result.error();
  }
  void change(const char* sql) {
    store.reset();
    auto database = Database::open(file, std::chrono::seconds(1));
    ASSERT_TRUE(database->execute(sql));
  }
};

TEST_F(SchemaOfAFile, IsMadeForTheUserAlone) {
  store.reset();
  file = folder / "deep" / "down" / "calendar.db";
  store = opened();
  EXPECT_EQ(modeOf(file), 0600u);
  EXPECT_EQ(modeOf(folder / "deep"), 0700u);
  EXPECT_EQ(modeOf(folder / "deep" / "down"), 0700u);
}

TEST_F(SchemaOfAFile, BeginsWithOneCalendarAndOneReminderList) {
  const auto calendars = *store->calendars(CalendarKind::kEvents);
  const auto lists = *store->calendars(CalendarKind::kReminders);
  ASSERT_EQ(calendars.size(), 1u);
  ASSERT_EQ(lists.size(), 1u);
  EXPECT_EQ(calendars[0].title, "Calendar");
  EXPECT_EQ(lists[0].title, "Reminders");
  EXPECT_EQ(calendars[0].source, (*store->sources()).front().id);
  EXPECT_EQ(defaultCalendar(CalendarKind::kReminders), lists[0].id);
}

TEST_F(SchemaOfAFile, KeepsItsCalendarsWhenItIsOpenedAgain) {
  const std::string identifier = (*store->calendars(CalendarKind::kEvents))[0].identifier;
  store = opened();
  ASSERT_EQ((*store->calendars(CalendarKind::kEvents)).size(), 1u);
  EXPECT_EQ((*store->calendars(CalendarKind::kEvents))[0].identifier, identifier);
}

TEST_F(SchemaOfAFile, WaitsForTheDiskAtEachCommit) {
  UuidMaker uuids;
  auto database = openStoreFile(file, std::chrono::seconds(1), uuids);
  EXPECT_EQ(*database->integerOf("PRAGMA synchronous"), 2);
  auto mode = database->prepare("PRAGMA journal_mode");
  ASSERT_TRUE(*mode->step());
  EXPECT_EQ(mode->text(0), "wal");
}

TEST_F(SchemaOfAFile, IsMadeOnceWhenManyProcessesOpenItAtOnce) {
  store.reset();
  file = folder / "new" / "calendar.db";
  std::vector<pid_t> children;
  for (int i = 0; i < 8; ++i) {
    const pid_t child = fork();
    if (child == 0) {
      const auto made = CalendarStore::open(options());
      if (!made) { std::fprintf(stderr, "%s\n", made.error().message.c_str()); }
      _exit(made ? 0 : 1);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
  }
  store = opened();
  EXPECT_EQ((*store->calendars(CalendarKind::kEvents)).size(), 1u);
  EXPECT_EQ((*store->calendars(CalendarKind::kReminders)).size(), 1u);
}

/// One that a program of format 2 made; no table has changed between 1 and 2.
class SchemaOfAnOlderFile : public SchemaOfAFile, public testing::WithParamInterface<int> {
 protected:
  void SetUp() override {
    SchemaOfAFile::SetUp();
    store.reset();
    std::filesystem::remove(file);
    std::ofstream(file).close();
    change(contentOf(ORLOCAL_TEST_DATA "/data/format_2.sql").c_str());
    change(("PRAGMA user_version = " + std::to_string(GetParam())).c_str());
  }
  std::int64_t number(const char* sql) {
    auto database = Database::open(file, std::chrono::seconds(1));
    return database->integerOf(sql).value_or(-1);
  }
};

TEST_P(SchemaOfAnOlderFile, IsBroughtForwardWithWhatItHolds) {
  store = opened();
  EXPECT_THAT(titlesIn(*store), ElementsAre("Course"));
  EXPECT_EQ(occurrences(std::nullopt, std::nullopt).size(), 4u);
  EXPECT_TRUE(*store->event("01A19B45-B800-7000-8920-1903CEBC82AB"));
  store.reset();
  EXPECT_EQ(number("PRAGMA user_version"), formatVersion());
  EXPECT_EQ(formatVersion(), 5);
}

TEST_P(SchemaOfAnOlderFile, FindsTheUidsThatItGaveBefore) {
  store = opened();
  auto writer = *store->startWriting();
  std::vector<Item> none;
  Item course = plain("Course"), talk = plain("Talk");
  course.uid = "course@example";
  talk.uid = "01A19B45-B800-7000-8920-181B07AAD1C2";
  EXPECT_EQ(*writer->put(1, course, none), PutOutcome::kUpdated);
  EXPECT_EQ(*writer->put(1, talk, none), PutOutcome::kUpdated);
}

TEST_P(SchemaOfAnOlderFile, GivesNoNumberThatItGaveBefore) {
  store = opened();
  EXPECT_GT(saved(plain("new")).id, 4);
}

TEST_P(SchemaOfAnOlderFile, GivesNoNumberThatItGaveBeforeWhereItsLogIsShort) {
  change("DELETE FROM changes WHERE seq > 1");
  store = opened();
  EXPECT_GT(saved(plain("new")).id, 4);
}

INSTANTIATE_TEST_SUITE_P(Versions, SchemaOfAnOlderFile, testing::Values(1, 2));

TEST_F(SchemaOfAFile, OfTheVersionBeforeServersGetsRoomForThem) {
  saved(plain("Course"));
  change(backToVersion(3).c_str());
  store = opened();
  EXPECT_THAT(titlesIn(*store), ElementsAre("Course"));
  auto writer = *store->startWriting();
  EXPECT_TRUE(writer->remotes().noteUnsent(1));
  EXPECT_TRUE(writer->commit());
}

TEST_F(SchemaOfAFile, OfTheVersionBeforeTheJournalKeepsWhatCommandsReplace) {
  store.reset();
  std::filesystem::remove(file);
  std::ofstream(file).close();
  change(contentOf(ORLOCAL_TEST_DATA "/data/format_4.sql").c_str());
  store = opened();
  const auto before = occurrences(std::nullopt, std::nullopt);
  ASSERT_EQ(before.size(), 3u);
  const auto course = *store->item(before[0].event);
  store->beginCommand({"1000 grace", "remove Course"});
  ASSERT_TRUE(store->removeEvent(*course, std::nullopt, Span::kAll));
  EXPECT_EQ(occurrences(std::nullopt, std::nullopt).size(), 0u);
  ASSERT_TRUE(store->undo("1000 grace", std::nullopt));
  EXPECT_EQ(occurrences(std::nullopt, std::nullopt), before);
}

TEST_F(SchemaOfAFile, OfTheVersionBeforeSearchingKeepsItsContentAndIsSearched) {
  store.reset();
  std::filesystem::remove(file);
  std::ofstream(file).close();
  change(contentOf(ORLOCAL_TEST_DATA "/data/format_4.sql").c_str());
  store = opened();
  EXPECT_EQ(occurrences(std::nullopt, std::nullopt).size(), 3u);
  SearchQuery query;
  query.text = "zuri";
  query.calendars = {3, 4};
  const auto hits = store->search(query);
  ASSERT_TRUE(hits);
  ASSERT_EQ(hits->size(), 1u);
  EXPECT_EQ(read(hits->front().item).title, "Course");
  // What it deleted has no name there, and what is deleted from now on has.
  LogPosition begin{.row = 0, .file = 1};
  ASSERT_TRUE(store->removeReminder(read(5)));
  const auto commits = *opened()->outsideCommits(begin);
  ASSERT_EQ(commits.size(), 4u);
  EXPECT_EQ(commits[2].calendars.departed, std::vector{Departed()});
  EXPECT_EQ(commits[3].reminders.departed, (std::vector{Departed{"Report", 4}}));
  EXPECT_FALSE(commits[2].made);
  EXPECT_TRUE(commits[3].made);
}

TEST_F(SchemaOfAFile, GivesNoNumberTwice) {
  const Item first = saved(plain("first"));
  ASSERT_TRUE(store->removeEvent(first, std::nullopt, Span::kAll));
  // What is left of the log at least.
  change("DELETE FROM changes WHERE seq < (SELECT max(seq) FROM changes)");
  store = opened();
  EXPECT_GT(saved(plain("second")).id, first.id);
}

TEST_F(SchemaOfAFile, TakesNoItemWithoutANumber) {
  store.reset();
  auto database = Database::open(file, std::chrono::seconds(1));
  EXPECT_FALSE(
      database->execute("INSERT INTO items(kind, calendar, uuid, slot, slot_start, uid_hash, uid, priority, sequence) "
                        "VALUES(0, 1, x'00', 0, 0, 0, '', 0, 0)"));
}

TEST_F(SchemaOfAFile, OfANewerProgramIsRefusedUntouched) {
  change("PRAGMA user_version = 99; PRAGMA wal_checkpoint(TRUNCATE)");
  const std::string before = contentOf(file);
  const Failure error = refusal();
  EXPECT_EQ(error.code, ErrorCode::kNewerFormat);
  EXPECT_THAT(error.message, HasSubstr("99"));
  EXPECT_EQ(contentOf(file), before);
}

TEST_F(SchemaOfAFile, IsRefusedUntouchedWhenItIsAnotherDatabase) {
  store.reset();
  file = folder / "other.db";
  std::ofstream(file).close();
  {
    auto database = Database::open(file, std::chrono::seconds(1));
    ASSERT_TRUE(database->execute("CREATE TABLE precious(a); INSERT INTO precious VALUES(1)"));
  }
  const std::string before = contentOf(file);
  EXPECT_EQ(refusal().code, ErrorCode::kCorrupt);
  EXPECT_EQ(contentOf(file), before);
}

TEST_F(SchemaOfAFile, IsRefusedUntouchedWhenItIsNoDatabase) {
  store.reset();
  file = folder / "notes.txt";
  std::ofstream(file) << std::string(10'000, 'x');
  const Failure error = refusal();
  EXPECT_EQ(error.code, ErrorCode::kCorrupt);
  EXPECT_THAT(error.message, HasSubstr("notes.txt"));
  EXPECT_EQ(contentOf(file), std::string(10'000, 'x'));
}

TEST_F(SchemaOfAFile, MayNotBeAFolder) {
  store.reset();
  file = folder / "sub";
  std::filesystem::create_directory(file);
  EXPECT_THAT(refusal().message, HasSubstr("sub"));
}

TEST_F(SchemaOfAFile, MakesUpForACreationThatWasCutShort) {
  store.reset();
  file = folder / "cut.db";
  std::ofstream(file).close();
  {
    auto database = Database::open(file, std::chrono::seconds(1));
    ASSERT_TRUE(database->execute("PRAGMA journal_mode=WAL"));
  }
  store = opened();
  EXPECT_EQ((*store->calendars(CalendarKind::kEvents)).size(), 1u);
}

TEST_F(SchemaOfAFile, TellsThatItIsDamaged) {
  for (int i = 0; i < 200; ++i) {
    saved(event("event " + std::to_string(i), berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")));
  }
  change("PRAGMA wal_checkpoint(TRUNCATE)");
  {
    // Everything but the header and the table definitions.
    std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(4096);
    const auto size = static_cast<std::size_t>(std::filesystem::file_size(file)) - 4096;
    const std::string noise(size, '\x7f');
    stream.write(noise.data(), static_cast<std::streamsize>(noise.size()));
  }
  const Failure error = refusal();
  EXPECT_EQ(error.code, ErrorCode::kCorrupt);
  EXPECT_THAT(error.message, HasSubstr("damaged"));
}

TEST_F(SchemaOfAFile, RefusesToSaveWhenItsFolderVanished) {
  std::filesystem::rename(folder, folder.string() + "-gone");
  Item item;
  item.calendar = 1;
  item.start = berlin("2026-11-02 09:00");
  item.end = berlin("2026-11-02 10:00");
  const auto status = saveEvent(*store, item, std::nullopt, Span::kThis);
  std::filesystem::rename(folder.string() + "-gone", folder);
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().code, ErrorCode::kIo);
  EXPECT_EQ(item.id, 0);
}

/// Runs as a user whom permissions bind, as they do not bind root.
template <class Body>
int asOrdinaryUser(const Body& body) {
  const pid_t child = fork();
  if (child == 0) {
    if (geteuid() == 0 && (setgid(65534) != 0 || setuid(65534) != 0)) { _exit(99); }
    _exit(body());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 98;
}

TEST_F(SchemaOfAFile, CanBeReadButNotChangedWhenItIsReadOnly) {
  saved(event("kept", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")));
  store.reset();
  std::filesystem::permissions(folder, std::filesystem::perms(0555));
  std::filesystem::permissions(file, std::filesystem::perms(0444));
  const int result = asOrdinaryUser([&] {
    auto readOnly = CalendarStore::open(options());
    if (!readOnly) { return 1; }
    EventQuery query{at("2026-11-01 00:00"), at("2026-12-01 00:00"), {1}};
    const auto found = (*readOnly)->occurrences(query);
    if (!found || found->size() != 1) { return 2; }
    if ((*readOnly)->generation() != (*readOnly)->generation()) { return 5; }
    Item item = **(*readOnly)->item((*found)[0].item);
    item.title = "changed";
    const auto status = saveEvent(**readOnly, item, std::nullopt, Span::kThis);
    if (status) { return 3; }
    return status.error().code == ErrorCode::kNotPermitted ? 0 : 4;
  });
  std::filesystem::permissions(folder, std::filesystem::perms(0755));
  EXPECT_EQ(result, 0);
}

TEST_F(SchemaOfAFile, CannotBeMadeInAFolderThatMayNotBeWritten) {
  store.reset();
  std::filesystem::permissions(folder, std::filesystem::perms(0555));
  file = folder / "sub" / "calendar.db";
  const int result = asOrdinaryUser([&] {
    const auto made = CalendarStore::open(options());
    return !made && made.error().code == ErrorCode::kNotPermitted ? 0 : 1;
  });
  std::filesystem::permissions(folder, std::filesystem::perms(0755));
  EXPECT_EQ(result, 0);
}

TEST_F(SchemaOfAFile, IsRefusedInTheShapeOfAFolder) {
  store.reset();
  file = folder / "a folder";
  std::filesystem::create_directory(file);
  EXPECT_THAT(refusal().message, HasSubstr("\" is a folder; set ORLOCAL_STORE to a file."));
}

TEST_F(SchemaOfAFile, IsRefusedWithASentenceWhereAFolderMayNotBeSearched) {
  if (::geteuid() != 0) { GTEST_SKIP() << "only root can become another user"; }
  store.reset();
  ::chmod(folder.c_str(), 0755);
  const auto closed = folder / "closed";
  std::filesystem::create_directories(closed / "deep");
  ::chmod(closed.c_str(), 0700);
  const pid_t child = ::fork();
  if (child == 0) {
    constexpr uid_t kNobody = 65534;
    if (::setuid(kNobody) != 0) { ::_exit(3); }
    int failures = 0;
    for (const auto& inside :
         {closed / "calendar.db", closed / "deep" / "calendar.db", closed / "new" / "calendar.db"}) {
      file = inside;
      const Failure error = refusal();
      const bool worded = error.code == ErrorCode::kNotPermitted &&
                          error.message.find(closed.string()) != std::string::npos &&
                          error.message.find("Permission denied") != std::string::npos &&
                          error.message.find("ORLOCAL_STORE") != std::string::npos;
      if (!worded) { ++failures; }
    }
    ::_exit(failures);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

}  // namespace
}  // namespace orlocal::store
