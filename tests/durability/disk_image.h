#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <set>
#include <string>

#include "durability/disk_trace.h"

namespace orlocal::test {

/// What a disk holds below a folder.
struct DiskImage {
  std::map<std::string, std::string> files;  ///< contents by path
  std::set<std::string> folders;

  /// Into an empty folder.
  void writeTo(const std::filesystem::path& folder) const;
};

/// A disk after the power went off.
struct PowerCut {
  std::size_t number = 0;  ///< counts the cuts of one trace; the same trace has the same ones
  std::size_t steps = 0;   ///< so many had been taken
  bool done = false;       ///< it had been reported as done
  const char* left = "";   ///< what the disk had of the steps that nobody had synced
  DiskImage image;
};

/// Visits what the power can leave behind when it goes off after each step of the trace. What was synced is there; of
/// the rest nothing, everything, each part from the beginning (before each sync, where it was reported as done, at the
/// end), entries without bytes and bytes without entries, sizes without bytes, and `samples` parts in any order, down
/// to sectors of 512 bytes of each write. A file is in its folder for certain once the folder was synced. The same
/// image under the same promise comes once. A false of `visit` ends it.
void forEachPowerCut(const DiskTrace& trace, std::size_t samples, const std::function<bool(const PowerCut&)>& visit);

}  // namespace orlocal::test
