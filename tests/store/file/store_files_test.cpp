#include <algorithm>
#include <fstream>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "store/backup.h"
#include "store/file/change_signal.h"
#include "store/file/sqlite.h"
#include "store/salvage.h"
#include "store/store_fixture.h"

namespace {

/// What was brought to the disk, in this order: see `fsync` below.
std::vector<std::string> synced;

}  // namespace

/// In place of the system's for the whole test: it does the same and tells which file it was.
extern "C" int fsync(int descriptor) {
  char path[4096] = {};
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  if (readlink(link.c_str(), path, sizeof path - 1) > 0) { synced.emplace_back(path); }
  return static_cast<int>(syscall(SYS_fsync, descriptor));
}

namespace orlocal::store {
namespace {

using std::chrono::seconds;
using testing::Contains;
using testing::HasSubstr;

constexpr uid_t kSomebody = 65534;

class StoreFiles : public StoreTest {
 protected:
  /// Of a process that is not waited for longer than some seconds; what it cannot open it tells as this.
  std::string refusalWithin(unsigned limit) const {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    const pid_t child = fork();
    if (child == 0) {
      alarm(limit);
      const auto opened = CalendarStore::open(options());
      const std::string said = opened ? "" : opened.error().message;
      const bool told = write(ends[1], said.data(), said.size()) == static_cast<ssize_t>(said.size());
      _exit(told ? 0 : 1);
    }
    close(ends[1]);
    std::string said(4096, '\0');
    const ssize_t count = ::read(ends[0], said.data(), said.size());
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) { return "waits for ever"; }
    said.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return said;
  }
  static uid_t ownerOf(const std::filesystem::path& path) {
    struct stat found {};
    return stat(path.c_str(), &found) == 0 ? found.st_uid : 0;
  }
};

TEST_F(StoreFiles, KeepWhatIsSavedWhateverTheyAreNamed) {
  store.reset();
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder);
  for (const char* name : {":memory:", "file:calendar.db", "file:x?mode=memory"}) {
    file = name;
    store = opened();
    saved(event("kept", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")));
    store = opened();
    EXPECT_EQ(listed(std::nullopt, std::nullopt).size(), 1U) << name;
    store.reset();
    EXPECT_TRUE(std::filesystem::exists(folder / name));
    const auto copied = backUpStore(file, std::string("copy-of-") + std::to_string(file.string().size()),
                                    ExistingFile::kIsRefused, seconds(1));
    ASSERT_TRUE(copied) << copied.error().message;
    EXPECT_EQ(copied->events, 1) << name;
  }
  std::filesystem::current_path(before);
}

TEST_F(StoreFiles, WithoutANameAreNone) { EXPECT_FALSE(Database::open("", seconds(1))); }

TEST_F(StoreFiles, BesideTheStoreMayBeNoPipesLinksOrFolders) {
  store.reset();
  for (const char* suffix : {"-journal", "-wal", "-shm"}) {
    const std::string beside = file.string() + suffix;
    std::filesystem::remove(beside);
    ASSERT_EQ(mkfifo(beside.c_str(), 0600), 0);
    EXPECT_THAT(refusalWithin(5), HasSubstr(beside + "\" beside the calendar store is a pipe")) << suffix;
    EXPECT_THAT(refusalWithin(5), HasSubstr("move it away"));
    std::filesystem::remove(beside);
    std::filesystem::create_symlink(folder / "elsewhere", beside);
    EXPECT_THAT(refusalWithin(5), HasSubstr("is a link")) << suffix;
    EXPECT_FALSE(std::filesystem::exists(folder / "elsewhere"));
    std::filesystem::remove(beside);
    std::filesystem::create_directory(beside);
    EXPECT_THAT(refusalWithin(5), HasSubstr("is a folder")) << suffix;
    std::filesystem::remove(beside);
    std::ofstream(folder / "other") << "precious";
    std::filesystem::create_hard_link(folder / "other", beside);
    EXPECT_THAT(refusalWithin(5), HasSubstr("several names")) << suffix;
    std::filesystem::remove(beside);
  }
  EXPECT_EQ(refusalWithin(5), "");
}

TEST_F(StoreFiles, ReachedByALinkHaveTheirOthersBesideTheFileItself) {
  store.reset();
  const auto real = folder / "calendar.db";
  ASSERT_EQ(mkfifo((real.string() + "-journal").c_str(), 0600), 0);
  file = folder / "link.db";
  std::filesystem::create_symlink(real, file);
  EXPECT_THAT(refusalWithin(5), HasSubstr("calendar.db-journal"));
  const auto report = salvage(file, {}, seconds(1), [](std::string_view) -> Status { return {}; });
  ASSERT_FALSE(report);
  EXPECT_THAT(report.error().message, HasSubstr("calendar.db-journal"));
}

TEST_F(StoreFiles, AreFilesAndNothingElse) {
  store.reset();
  file = folder / "pipe.db";
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  EXPECT_THAT(refusalWithin(5), HasSubstr("is a pipe and no file"));
  file = "/dev/null";
  EXPECT_THAT(refusalWithin(5), HasSubstr("is a device and no file"));
}

TEST_F(StoreFiles, OfAnotherUserAreNotTakenForOurs) {
  if (geteuid() != 0) { GTEST_SKIP() << "needs to be root"; }
  store.reset();
  std::ofstream(file.string() + "-wal") << "forged";
  ASSERT_EQ(chown((file.string() + "-wal").c_str(), kSomebody, kSomebody), 0);
  EXPECT_THAT(refusalWithin(5), HasSubstr("file of another user"));
  // Who shares a store makes what stands beside it.
  std::filesystem::resize_file(file.string() + "-wal", 0);
  std::filesystem::permissions(file, std::filesystem::perms(0660));
  EXPECT_EQ(refusalWithin(5), "");
}

TEST_F(StoreFiles, RingNoBellThatIsNotOurs) {
  store.reset();
  const std::string bell = file.string() + "-bell";
  const auto victim = folder / "victim";
  std::ofstream(victim) << "precious";
  for (const char* kind : {"link", "hard link", "pipe", "folder"}) {
    std::filesystem::remove(bell);
    if (kind[0] == 'l') { std::filesystem::create_symlink(victim, bell); }
    if (kind[0] == 'h') { std::filesystem::create_hard_link(victim, bell); }
    if (kind[0] == 'p') { mkfifo(bell.c_str(), 0600); }
    if (kind[0] == 'f') { std::filesystem::create_directory(bell); }
    EXPECT_EQ(refusalWithin(5), "") << kind;
    store = opened();
    saved(event("kept", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")));
    store.reset();
    std::string content;
    std::getline(std::ifstream(victim), content);
    EXPECT_EQ(content, "precious") << kind;
  }
}

TEST_F(StoreFiles, AreInTheirFolderOnTheDiskBeforeTheFirstSave) {
  store.reset();
  synced.clear();
  file = folder / "deep" / "down" / "calendar.db";
  store = opened();
  for (const auto& place : {folder, folder / "deep", folder / "deep" / "down"}) {
    EXPECT_THAT(synced, Contains(place.string()));
  }
}

TEST_F(StoreFiles, ThatRootMakesInTheFolderOfSomebodyAreTheirs) {
  if (geteuid() != 0) { GTEST_SKIP() << "needs to be root"; }
  store.reset();
  ASSERT_EQ(chown(folder.c_str(), kSomebody, kSomebody), 0);
  file = folder / "deep" / "calendar.db";
  store = opened();
  saved(event("kept", berlin("2026-11-02 09:00"), berlin("2026-11-02 10:00")));
  EXPECT_EQ(ownerOf(folder / "deep"), kSomebody);
  for (const char* suffix : {"", "-wal", "-shm", "-bell"}) {
    EXPECT_EQ(ownerOf(file.string() + suffix), kSomebody) << suffix;
  }
}

}  // namespace
}  // namespace orlocal::store
