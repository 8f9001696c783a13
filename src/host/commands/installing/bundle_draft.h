#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "base/result.h"
#include "host/commands/installing/file_owner.h"

namespace orlocal::host {

/// Whether anything has that name, were it a link to nothing.
bool standsThere(const std::filesystem::path& path);

/// What belongs to a plug-in file: itself (last), its folder of texts and, where it came with some, its folder of
/// libraries, all of which stand beside it.
std::vector<std::filesystem::path> bundleParts(const std::filesystem::path& plugin);

/// A folder in which one process at a time installs.
class FolderTurn {
 public:
  /// Refused while another process has it. What one that was killed left behind is taken away.
  static Result<FolderTurn> take(const std::filesystem::path& folder);

  FolderTurn(FolderTurn&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
  FolderTurn& operator=(FolderTurn&&) = delete;
  ~FolderTurn();

  /// Brings renamed entries to the disk.
  void finish() const;

 private:
  explicit FolderTurn(int descriptor) : m_descriptor(descriptor) {}

  int m_descriptor;
};

/// A bundle that is about to stand in a folder, in a hidden one below it. Whoever looks sees the former bundle or the
/// new one: parts change places by renames, the plug-in's file last, and what a process has loaded stays what it is.
///
/// Unless it was kept, everything is as it was before when this ends.
class BundleDraft {
 public:
  /// Copies the bundle of `plugin`; its files are `owner`'s, to be read by all.
  static Result<BundleDraft> copyOf(const std::filesystem::path& plugin, const std::filesystem::path& folder,
                                    const FileOwner& owner);
  /// Holds nothing: `putInPlace` takes away what stands in the folder under `plugin`'s name.
  static Result<BundleDraft> ofNothing(const std::filesystem::path& plugin, const std::filesystem::path& folder);

  BundleDraft(BundleDraft&& other) noexcept = default;
  BundleDraft& operator=(BundleDraft&&) = delete;
  ~BundleDraft();

  /// The new plug-in where it lies before `putInPlace`.
  std::filesystem::path plugin() const { return m_folder / m_name; }

  Status putInPlace();
  void keep() { m_swapped.clear(); }

 private:
  BundleDraft(std::filesystem::path folder, std::filesystem::path name)
      : m_folder(std::move(folder)), m_name(std::move(name)) {}

  std::filesystem::path m_folder;  ///< empty in one that was moved from
  std::filesystem::path m_name;
  std::vector<std::pair<std::filesystem::path, std::filesystem::path>> m_swapped;  ///< in order, ours and theirs
};

}  // namespace orlocal::host
