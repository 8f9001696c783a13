#include "host/commands/command_line/output_file.h"

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "host/commands/program_fixture.h"
#include "host/commands/running_program.h"

namespace {

std::vector<std::string>* g_synced = nullptr;

}  // namespace

/// Stands before the system's own, to note what is brought to the disk.
extern "C" int fsync(int descriptor) {
  struct stat found {};
  if (g_synced != nullptr && ::fstat(descriptor, &found) == 0) {
    g_synced->push_back(S_ISDIR(found.st_mode) ? "folder" : "file of " + std::to_string(found.st_size));
  }
  return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

namespace orlocal::host {
namespace {

namespace fs = std::filesystem;

/// Files of this process can hold no more than this; longer writes fail as they do on a full disk.
class LargestFile {
 public:
  explicit LargestFile(rlim_t bytes) : m_before(std::signal(SIGXFSZ, SIG_IGN)) {
    ::getrlimit(RLIMIT_FSIZE, &m_limit);
    rlimit small = m_limit;
    small.rlim_cur = bytes;
    ::setrlimit(RLIMIT_FSIZE, &small);
  }
  ~LargestFile() {
    ::setrlimit(RLIMIT_FSIZE, &m_limit);
    std::signal(SIGXFSZ, m_before);
  }
  LargestFile(const LargestFile&) = delete;
  LargestFile& operator=(const LargestFile&) = delete;

 private:
  rlimit m_limit{};
  void (*m_before)(int);
};

class OutputFileTest : public ProgramTest {
 protected:
  static std::string textOf(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  static Status written(const fs::path& path, const std::string& text) {
    auto file = OutputFile::open(path);
    if (!file) { return failure(file.error()); }
    if (auto status = (*file)->write(text); !status) { return status; }
    return (*file)->finish();
  }
  static mode_t modeOf(const fs::path& path) {
    struct stat found {};
    ::stat(path.c_str(), &found);
    return found.st_mode & 07777;
  }
  std::size_t filesInFolder() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
  }
  fs::path fifo() const {
    const fs::path path = folder / "fifo";
    EXPECT_EQ(::mkfifo(path.c_str(), 0600), 0);
    return path;
  }
};

TEST_F(OutputFileTest, MakesANewFileForTheUserAlone) {
  const mode_t before = ::umask(0);
  EXPECT_TRUE(written(folder / "new", "text"));
  ::umask(before);
  EXPECT_EQ(textOf(folder / "new"), "text");
  EXPECT_EQ(modeOf(folder / "new"), 0600U);
}

TEST_F(OutputFileTest, KeepsTheModeOfTheFileItReplaces) {
  for (const mode_t mode : {mode_t{0600}, mode_t{0644}, mode_t{0664}}) {
    const auto path = write("old", "old");
    ::chmod(path.c_str(), mode);
    EXPECT_TRUE(written(path, "new"));
    EXPECT_EQ(textOf(path), "new");
    EXPECT_EQ(modeOf(path), mode);
  }
}

TEST_F(OutputFileTest, KeepsTheOwnerOfTheFileItReplaces) {
  if (::geteuid() != 0) { GTEST_SKIP() << "only the system's administrator can give files away"; }
  const auto path = write("old", "old");
  ASSERT_EQ(::chown(path.c_str(), 1, 2), 0);
  EXPECT_TRUE(written(path, "new"));
  struct stat found {};
  ASSERT_EQ(::stat(path.c_str(), &found), 0);
  EXPECT_EQ(found.st_uid, 1U);
  EXPECT_EQ(found.st_gid, 2U);
  EXPECT_EQ(textOf(path), "new");
}

TEST_F(OutputFileTest, LeavesTheOldFileUntilAllIsWritten) {
  const auto path = write("old", "old");
  {
    const auto file = OutputFile::open(path);
    ASSERT_TRUE(file);
    EXPECT_TRUE((*file)->write("new"));
    EXPECT_EQ(textOf(path), "old");
    EXPECT_EQ(filesInFolder(), 2U);
  }
  EXPECT_EQ(textOf(path), "old");
  EXPECT_EQ(filesInFolder(), 1U);
}

TEST_F(OutputFileTest, KeepsItsDraftFromOthers) {
  const auto file = OutputFile::open(folder / "new");
  ASSERT_TRUE(file);
  const fs::path draft = fs::directory_iterator(folder)->path();
  EXPECT_EQ(modeOf(draft), 0600U);
  const auto other = OutputFile::open(folder / "new");
  ASSERT_TRUE(other);
  EXPECT_EQ(filesInFolder(), 2U);
}

TEST_F(OutputFileTest, FollowsLinks) {
  const auto path = write("deep/target", "old");
  fs::create_symlink("deep/target", folder / "second");
  fs::create_symlink(folder / "second", folder / "first");
  EXPECT_TRUE(written(folder / "first", "new"));
  EXPECT_EQ(textOf(path), "new");
  EXPECT_TRUE(fs::is_symlink(folder / "first"));
  EXPECT_TRUE(fs::is_symlink(folder / "second"));
}

TEST_F(OutputFileTest, MakesTheFileThatALinkNames) {
  fs::create_symlink("later", folder / "link");
  EXPECT_TRUE(written(folder / "link", "text"));
  EXPECT_TRUE(fs::is_symlink(folder / "link"));
  EXPECT_EQ(textOf(folder / "later"), "text");
}

TEST_F(OutputFileTest, RefusesLinksThatLeadNowhere) {
  fs::create_symlink("second", folder / "first");
  fs::create_symlink("first", folder / "second");
  EXPECT_FALSE(written(folder / "first", "text"));
  EXPECT_TRUE(fs::is_symlink(folder / "first"));
}

TEST_F(OutputFileTest, WritesIntoAPipe) {
  const auto path = fifo();
  std::string read;
  std::thread reader([&] { read = textOf(path); });
  EXPECT_TRUE(written(path, "text"));
  reader.join();
  EXPECT_EQ(read, "text");
  EXPECT_TRUE(fs::is_fifo(path));
}

TEST_F(OutputFileTest, WritesIntoAPipeBehindALink) {
  const auto path = fifo();
  fs::create_symlink(path, folder / "link");
  std::string read;
  std::thread reader([&] { read = textOf(path); });
  EXPECT_TRUE(written(folder / "link", "text"));
  reader.join();
  EXPECT_EQ(read, "text");
  EXPECT_TRUE(fs::is_symlink(folder / "link"));
}

TEST_F(OutputFileTest, WritesToATerminal) {
  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_GE(terminal, 0);
  ASSERT_EQ(::grantpt(terminal), 0);
  ASSERT_EQ(::unlockpt(terminal), 0);
  const fs::path path = ::ptsname(terminal);
  EXPECT_TRUE(written(path, "text"));
  EXPECT_TRUE(fs::is_character_file(path));
  std::string read(4, '\0');
  EXPECT_EQ(::read(terminal, read.data(), read.size()), 4);
  EXPECT_EQ(read, "text");
  ::close(terminal);
}

TEST_F(OutputFileTest, AddsToAFileThatIsOpenAlready) {
  const auto path = write("log", "before\n");
  const int log = ::open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
  ASSERT_GE(log, 0);
  EXPECT_TRUE(written("/proc/self/fd/" + std::to_string(log), "text"));
  ::close(log);
  EXPECT_EQ(textOf(path), "before\ntext");
}

TEST_F(OutputFileTest, WritesEveryNameOfAFile) {
  const auto path = write("one", "a longer old text");
  fs::create_hard_link(path, folder / "other");
  EXPECT_TRUE(written(path, "new"));
  EXPECT_EQ(textOf(folder / "other"), "new");
  EXPECT_EQ(filesInFolder(), 2U);
}

TEST_F(OutputFileTest, KeepsTheAccessListOfAFile) {
  const auto path = write("old", "a longer old text");
  // Its owner writes, user 1 reads, nobody else does.
  constexpr std::uint32_t kVersion = 2, kNobody = 0xFFFFFFFF;
  struct Entry {
    std::uint16_t tag, permissions;
    std::uint32_t id;
  };
  constexpr Entry kEntries[] = {{1, 6, kNobody}, {2, 4, 1}, {4, 0, kNobody}, {16, 4, kNobody}, {32, 0, kNobody}};
  std::string list(reinterpret_cast<const char*>(&kVersion), sizeof kVersion);
  list.append(reinterpret_cast<const char*>(kEntries), sizeof kEntries);
  constexpr const char* kName = "system.posix_acl_access";
  if (::setxattr(path.c_str(), kName, list.data(), list.size(), 0) != 0) { GTEST_SKIP() << "no access lists here"; }
  EXPECT_TRUE(written(path, "new"));
  EXPECT_EQ(textOf(path), "new");
  EXPECT_EQ(::getxattr(path.c_str(), kName, nullptr, 0), static_cast<ssize_t>(list.size()));
}

TEST_F(OutputFileTest, BringsFileAndFolderToTheDiskBeforeItIsDone) {
  std::vector<std::string> synced;
  g_synced = &synced;
  EXPECT_TRUE(written(folder / "new", "text"));
  g_synced = nullptr;
  EXPECT_EQ(synced, (std::vector<std::string>{"file of 4", "folder"}));
}

TEST_F(OutputFileTest, SaysThatADiskIsFullAndLeavesTheOldFile) {
  const auto path = write("old", "old");
  Status status;
  {
    const LargestFile limit(1000);
    status = written(path, std::string(5000, 'x'));
  }
  ASSERT_FALSE(status);
  EXPECT_EQ(status.error().code, ErrorCode::kFull);
  EXPECT_NE(status.error().message.find(path), std::string::npos);
  EXPECT_EQ(textOf(path), "old");
  EXPECT_EQ(filesInFolder(), 1U);
}

TEST_F(OutputFileTest, LeavesTheOldFileWhereNoNewOneCanBeMade) {
  const auto path = write("old", "old");
  // Room for the folder's descriptor alone.
  const int next = ::open("/", O_PATH | O_CLOEXEC);
  ::close(next);
  rlimit before{};
  ::getrlimit(RLIMIT_NOFILE, &before);
  rlimit few = before;
  few.rlim_cur = static_cast<rlim_t>(next) + 1;
  ::setrlimit(RLIMIT_NOFILE, &few);
  const auto status = written(path, "new");
  ::setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_FALSE(status);
  EXPECT_EQ(textOf(path), "old");
  EXPECT_EQ(filesInFolder(), 1U);
}

TEST_F(OutputFileTest, SaysThatNobodyReadsAPipeAnyMore) {
  const auto path = fifo();
  const auto before = std::signal(SIGPIPE, SIG_IGN);
  const int reader = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  const auto file = OutputFile::open(path);
  ::close(reader);
  ASSERT_TRUE(file);
  EXPECT_FALSE((*file)->write("text"));
  std::signal(SIGPIPE, before);
}

TEST_F(OutputFileTest, SaysThatAFolderIsNoFile) {
  const auto status = written(folder, "text");
  ASSERT_FALSE(status);
  EXPECT_NE(status.error().message.find(folder.string()), std::string::npos);
}

TEST_F(OutputFileTest, LeavesNoDraftAfterCtrlC) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    const auto path = write("old", "old");
    {
      const auto file = OutputFile::open(path);
      ASSERT_TRUE(file);
      EXPECT_TRUE((*file)->write("some"));
      ::raise(signal);
      const auto status = (*file)->write("more");
      ASSERT_FALSE(status);
      EXPECT_EQ(status.error().code, ErrorCode::kInterrupted);
    }
    EXPECT_EQ(textOf(path), "old");
    EXPECT_EQ(filesInFolder(), 1U);
  }
}

TEST_F(OutputFileTest, ReplacesNothingAfterCtrlC) {
  const auto path = write("old", "old");
  {
    const auto file = OutputFile::open(path);
    ASSERT_TRUE(file);
    EXPECT_TRUE((*file)->write("all of it"));
    ::raise(SIGINT);
    EXPECT_FALSE((*file)->finish());
  }
  EXPECT_EQ(textOf(path), "old");
}

TEST_F(OutputFileTest, LeavesIgnoredSignalsIgnored) {
  const auto before = std::signal(SIGHUP, SIG_IGN);
  const auto file = OutputFile::open(folder / "new");
  ASSERT_TRUE(file);
  ::raise(SIGHUP);
  EXPECT_TRUE((*file)->write("text"));
  EXPECT_TRUE((*file)->finish());
  std::signal(SIGHUP, before);
}

/// The built program, writing more than a disk or a reader takes.
class ExportedFar : public OutputFileTest {
 protected:
  ExportedFar() {
    std::string events = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\n";
    for (int i = 0; i < 2000; ++i) {
      events += "BEGIN:VEVENT\r\nUID:" + std::to_string(i) + "\r\nSUMMARY:Event\r\nDTSTART:20261102T090000\r\n";
      events += "END:VEVENT\r\n";
    }
    ::setenv("ORLOCAL_STORE", (folder / "calendar.db").c_str(), 1);
    EXPECT_EQ(run({"import", write("given.ics", events + "END:VCALENDAR\r\n")}), ExitStatus::kDone) << err.str();
  }
};

TEST_F(ExportedFar, FailsWhenTheStandardOutputIsFull) {
  const auto path = write("out.ics", "");
  const LargestFile limit(65536);
  RunningProgram running({"/bin/sh", "-c", "exec \"$0\" export -o - >\"$1\"", ORLOCAL_PROGRAM, path});
  EXPECT_NE(running.errorLine().find("standard output"), std::string::npos);
  EXPECT_EQ(running.finish(), 1);
}

TEST_F(ExportedFar, FailsWhenAListingDoesNotReachItsReader) {
  RunningProgram running({"/bin/sh", "-c", "exec \"$0\" calendars >&-", ORLOCAL_PROGRAM});
  EXPECT_NE(running.errorLine().find("standard output"), std::string::npos);
  EXPECT_EQ(running.finish(), 1);
}

TEST_F(ExportedFar, WritesToTheStandardOutputForADash) {
  EXPECT_EQ(run({"export", "-o", "-"}), ExitStatus::kDone);
  EXPECT_NE(out.str().find("BEGIN:VCALENDAR"), std::string::npos);
  EXPECT_FALSE(fs::exists("-"));
}

TEST_F(ExportedFar, KeepsAPrivateFilePrivate) {
  const auto path = write("out.ics", "old");
  ::chmod(path.c_str(), 0600);
  EXPECT_EQ(run({"export", "-o", path}), ExitStatus::kDone) << err.str();
  EXPECT_EQ(modeOf(path), 0600U);
  EXPECT_NE(textOf(path).find("SUMMARY:Event"), std::string::npos);
}

TEST_F(ExportedFar, LeavesALinkALink) {
  const auto path = write("out.ics", "old");
  fs::create_symlink(path, folder / "link.ics");
  EXPECT_EQ(run({"export", "-o", folder / "link.ics"}), ExitStatus::kDone) << err.str();
  EXPECT_TRUE(fs::is_symlink(folder / "link.ics"));
  EXPECT_NE(textOf(path).find("SUMMARY:Event"), std::string::npos);
}

}  // namespace
}  // namespace orlocal::host
