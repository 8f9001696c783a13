#include "durability/disk_trace.h"

#include <fstream>
#include <sstream>
#include <utility>

namespace orlocal::test {

std::string folderOf(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

std::string contentOfFile(const std::filesystem::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

DiskTrace::DiskTrace(std::filesystem::path folder) : m_folder(std::move(folder)) {
  for (const auto& entry : std::filesystem::recursive_directory_iterator(m_folder)) {
    const std::string path = below(entry.path().string());
    if (entry.is_directory()) {
      m_folders.insert(path);
    } else {
      m_entries.emplace(path, m_files++);
      m_contentsBefore.push_back(contentOfFile(entry.path()));
    }
  }
  m_entriesBefore = m_entries;
  m_foldersBefore = m_folders;
}

std::string DiskTrace::below(const std::string& path) const {
  const std::size_t all = m_folder.string().size();
  return path.size() <= all ? std::string() : path.substr(all + 1);
}

void DiskTrace::happened(const FileDeed& deed) {
  using What = FileDeed::What;
  const std::string path = below(deed.path);
  const auto open = m_open.find(deed.descriptor);
  switch (deed.what) {
    case What::kMade:
      m_entries[path] = m_files;
      m_steps.push_back({.kind = Step::Kind::kEntry, .file = m_files, .path = path});
      m_open[deed.descriptor] = m_files++;
      return;
    case What::kOpened:
      if (const auto known = m_entries.find(path); known != m_entries.end()) {
        m_open[deed.descriptor] = known->second;
      }
      return;
    case What::kClosed:
      m_open.erase(deed.descriptor);
      return;
    case What::kWritten:
      if (open == m_open.end()) { return; }
      m_steps.push_back(
          {.kind = Step::Kind::kWrite, .file = open->second, .at = deed.at, .bytes = std::string(deed.bytes)});
      return;
    case What::kCutOff:
      if (open == m_open.end()) { return; }
      m_steps.push_back({.kind = Step::Kind::kSize, .file = open->second, .at = deed.at});
      return;
    case What::kSynced:
      if (open != m_open.end()) {
        m_steps.push_back({.kind = Step::Kind::kSync, .file = open->second});
      } else {
        m_steps.push_back({.kind = Step::Kind::kSyncFolder, .path = path});
      }
      return;
    case What::kRenamed: {
      const std::string second = below(deed.second);
      const auto known = m_entries.find(path);
      if (known == m_entries.end()) { return; }
      const int file = known->second;
      m_entries.erase(known);
      m_entries[second] = file;
      m_steps.push_back({.kind = Step::Kind::kRename, .file = file, .path = path, .second = second});
      return;
    }
    case What::kLinked: {
      const std::string second = below(deed.second);
      const auto known = m_entries.find(path);
      if (known == m_entries.end()) { return; }
      m_entries[second] = known->second;
      m_steps.push_back({.kind = Step::Kind::kEntry, .file = known->second, .path = second});
      return;
    }
    case What::kRemoved:
      m_entries.erase(path);
      m_steps.push_back({.kind = Step::Kind::kNoEntry, .path = path});
      return;
    case What::kFolderMade:
      m_folders.insert(path);
      m_steps.push_back({.kind = Step::Kind::kFolder, .path = path});
      return;
  }
}

}  // namespace orlocal::test
