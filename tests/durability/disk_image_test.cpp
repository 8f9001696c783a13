#include "durability/disk_image.h"

#include <functional>
#include <set>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include "durability/saving_process.h"

namespace orlocal::test {
namespace {

using testing::Contains;
using testing::IsSubsetOf;
using testing::Not;

/// What a power cut leaves of a file "f" that something is done with.
class AfterAPowerCut : public testing::Test {
 protected:
  /// The contents that "f" can have; "-" where it is not there. `done` tells apart those from when it was reported.
  std::set<std::string> contents(const std::function<void()>& work, bool done = false) {
    DiskTrace trace(m_place.folder());
    {
      const WatchFiles watch(m_place.folder(), trace);
      work();
    }
    trace.markDone();
    std::set<std::string> found;
    forEachPowerCut(trace, 200, [&](const PowerCut& cut) {
      const auto file = cut.image.files.find("f");
      if (!done || cut.done) { found.insert(file == cut.image.files.end() ? "-" : file->second); }
      return true;
    });
    return found;
  }
  std::string in(const char* name) const { return m_place.folder() / name; }
  int opened(const char* name, int flags = 0) const {
    return ::open(in(name).c_str(), O_RDWR | O_CREAT | O_CLOEXEC | flags, 0600);
  }
  static void write(int file, const std::string& text) {
    ASSERT_EQ(::write(file, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  void syncFolder() const {
    const int folder = ::open(m_place.folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(::fsync(folder), 0);
    ::close(folder);
  }
  void givenFile(const std::string& text) {
    const int file = opened("f");
    write(file, text);
    ::close(file);
  }

 private:
  TemporaryStore m_place;
};

TEST_F(AfterAPowerCut, WhatWasSyncedWithItsFolderIsThere) {
  const auto left = contents(
      [&] {
        const int file = opened("f");
        write(file, "text");
        ASSERT_EQ(::fdatasync(file), 0);
        ::close(file);
        syncFolder();
      },
      true);
  EXPECT_EQ(left, std::set<std::string>{"text"});
}

TEST_F(AfterAPowerCut, ANewFileMayBeMissingWhereItsFolderWasNotSynced) {
  const auto left = contents(
      [&] {
        const int file = opened("f");
        write(file, "text");
        ASSERT_EQ(::fsync(file), 0);
        ::close(file);
      },
      true);
  EXPECT_EQ(left, (std::set<std::string>{"-", "text"}));
}

TEST_F(AfterAPowerCut, ANewNameMayHaveComeBeforeTheBytes) {
  givenFile("old");
  const auto left = contents([&] {
    const int file = opened("draft");
    write(file, "new");
    ::close(file);
    ASSERT_EQ(::rename(in("draft").c_str(), in("f").c_str()), 0);
    syncFolder();
  });
  EXPECT_EQ(left, (std::set<std::string>{"old", "", std::string(3, '\0'), "new"}));
}

TEST_F(AfterAPowerCut, ANameIsTheOldFileOrTheWholeNewOneWhenTheBytesWereSynced) {
  givenFile("old");
  const auto left = contents([&] {
    const int file = opened("draft");
    write(file, "new");
    ASSERT_EQ(::fsync(file), 0);
    ::close(file);
    ASSERT_EQ(::rename(in("draft").c_str(), in("f").c_str()), 0);
    syncFolder();
  });
  EXPECT_EQ(left, (std::set<std::string>{"old", "new"}));
}

TEST_F(AfterAPowerCut, AWriteIsTornAtSectorsOnly) {
  givenFile(std::string(1024, 'a'));
  const auto left = contents([&] {
    const int file = opened("f");
    write(file, std::string(1024, 'b'));
    ::close(file);
  });
  const std::string a(512, 'a'), b(512, 'b');
  EXPECT_EQ(left, (std::set<std::string>{a + a, a + b, b + a, b + b}));
}

TEST_F(AfterAPowerCut, LaterWritesMayComeWithoutEarlierOnes) {
  givenFile("..");
  const auto left = contents([&] {
    const int file = opened("f");
    ASSERT_EQ(::pwrite(file, "1", 1, 0), 1);
    ASSERT_EQ(::pwrite(file, "2", 1, 1), 1);
    ::close(file);
  });
  EXPECT_EQ(left, (std::set<std::string>{"..", "1.", ".2", "12"}));
}

TEST_F(AfterAPowerCut, ARemovedFileMayBeBack) {
  givenFile("old");
  EXPECT_EQ(contents([&] { ASSERT_EQ(::unlink(in("f").c_str()), 0); }, true), (std::set<std::string>{"-", "old"}));
}

TEST_F(AfterAPowerCut, AFileThatWasCutOffMayBeWhole) {
  givenFile("old");
  const auto left = contents([&] {
    const int file = opened("f");
    ASSERT_EQ(::ftruncate(file, 1), 0);
    ::close(file);
  });
  EXPECT_EQ(left, (std::set<std::string>{"old", "o"}));
}

}  // namespace
}  // namespace orlocal::test
