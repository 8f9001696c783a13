#pragma once

#include <cerrno>
#include <string>

namespace orlocal::test {

/// What SQLite asks of the system for its files.
enum class FileCall { kOpen, kWrite, kSync, kTruncate, kSharedMemory };

/// Stands between SQLite and its files in this process for as long as it lives, so that calls fail as on a full or
/// broken disk. One at a time; what is open when it comes or goes must be closed before.
class FaultyFiles {
 public:
  struct Fault {
    FileCall call = FileCall::kWrite;
    int error = ENOSPC;
    std::string suffix = {};  ///< of the files that it is about ("-wal"); empty is all
    int after = 0;            ///< so many such calls still work
    bool once = false;        ///< later calls work again
    bool cutShort = false;    ///< a write leaves the first half of its bytes
  };

  FaultyFiles();
  ~FaultyFiles();
  FaultyFiles(const FaultyFiles&) = delete;
  FaultyFiles& operator=(const FaultyFiles&) = delete;

  /// From now on; further ones add to it.
  void fail(Fault fault);
  void heal();
  /// How many calls were made to fail since it was made.
  int failed() const;
};

}  // namespace orlocal::test
