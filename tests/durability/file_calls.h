#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace orlocal::test {

/// What a process asks of the system for its files, in classes of calls that fail alike.
enum class FileCall { kOpen, kRead, kWrite, kSync, kTruncate, kRename, kRemove, kMakeFolder, kLook, kMap, kLock };
constexpr std::size_t kFileCallKinds = 11;

/// What becomes of a call.
struct Fate {
  enum class What {
    kWorks,
    kFails,         ///< with `error`, and nothing happens
    kIsCutShort,    ///< reads or writes the first half of the bytes, and says so
    kDies,          ///< the process is killed before the call
    kDiesHalfDone,  ///< the process is killed when the first half of the bytes is written
  };
  What what = What::kWorks;
  int error = 0;
};

/// What a call that worked has done.
struct FileDeed {
  enum class What { kMade, kOpened, kWritten, kCutOff, kSynced, kRenamed, kLinked, kRemoved, kFolderMade, kClosed };
  What what;
  int descriptor = -1;  ///< of the calls that have one
  std::string path = {};
  std::string second = {};      ///< the new name
  std::int64_t at = 0;          ///< where it was written; the new size of what was cut off
  std::string_view bytes = {};  ///< that were written
};

/// Is asked before each call and told after it. Its own calls are not watched.
class FileCallWatcher {
 public:
  virtual ~FileCallWatcher() = default;
  virtual Fate fateOf(FileCall, const std::string& /*path*/) { return {}; }
  virtual void happened(const FileDeed&) {}
};

/// Stands between this process, with all its libraries, and the system: while it lives, every call about a file in
/// `folder` goes by way of `watcher`. Of several the newest counts. One thread; what is open in the folder when one
/// comes or goes was opened under another.
///
/// No file that is watched is brought to the disk, however long that would take: what a disk has is what the watcher
/// was told.
class WatchFiles {
 public:
  WatchFiles(const std::filesystem::path& folder, FileCallWatcher& watcher);
  ~WatchFiles();
  WatchFiles(const WatchFiles&) = delete;
  WatchFiles& operator=(const WatchFiles&) = delete;

 private:
  std::string m_folder;
  FileCallWatcher* m_watcher;
  WatchFiles* m_before;
  friend struct WatchedCall;
};

}  // namespace orlocal::test
