#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "durability/file_calls.h"

namespace orlocal::test {

/// Which file an entry of a folder leads to, by the entry's path below the traced folder.
using FolderEntries = std::map<std::string, int>;

/// Everything that was done to the files of a folder, in its order, with the bytes.
class DiskTrace : public FileCallWatcher {
 public:
  struct Step {
    enum class Kind { kEntry, kNoEntry, kRename, kFolder, kWrite, kSize, kSync, kSyncFolder };
    Kind kind;
    int file = -1;
    std::string path = {};    ///< of the entry or folder; for a rename the old one
    std::string second = {};  ///< of a rename: the new one
    std::int64_t at = 0;      ///< where was written; the size
    std::string bytes = {};
  };

  /// What is in the folder now is on the disk.
  explicit DiskTrace(std::filesystem::path folder);

  void happened(const FileDeed& deed) override;
  /// What was traced so far has been reported as done.
  void markDone() { m_done = m_steps.size(); }

  const std::vector<Step>& steps() const { return m_steps; }
  /// The number of steps when it was reported as done; past the last step when it never was.
  std::size_t done() const { return m_done; }
  const FolderEntries& entriesBefore() const { return m_entriesBefore; }
  const std::set<std::string>& foldersBefore() const { return m_foldersBefore; }
  /// The content that file `i` had before; files that came later have numbers past these.
  const std::vector<std::string>& contentsBefore() const { return m_contentsBefore; }

 private:
  std::string below(const std::string& path) const;

  std::filesystem::path m_folder;
  FolderEntries m_entriesBefore, m_entries;
  std::set<std::string> m_foldersBefore, m_folders;
  std::vector<std::string> m_contentsBefore;
  std::map<int, int> m_open;  ///< file of each descriptor
  int m_files = 0;
  std::vector<Step> m_steps;
  std::size_t m_done = SIZE_MAX;
};

/// The folder that an entry is in.
std::string folderOf(const std::string& path);
std::string contentOfFile(const std::filesystem::path& file);

}  // namespace orlocal::test
