#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace orlocal::store {

/// A file in the making, for the user alone, in the folder in which it will stand, under a name that nobody can guess,
/// so that nobody can have put a file or a link there. It is gone with this unless it was published.
///
/// What fails tells the system's number of the error; 0 is none.
class DraftEntry {
 public:
  enum class Existing { kStays, kIsReplaced };

  /// Whether a file of that name is one, or was when its program ended without a word.
  static bool isNameOfOne(std::string_view name);

  /// None, with errno, when it cannot be made.
  static std::optional<DraftEntry> in(const std::filesystem::path& folder);

  DraftEntry(DraftEntry&& other) noexcept
      : m_folder(std::exchange(other.m_folder, -1)),
        m_descriptor(std::exchange(other.m_descriptor, -1)),
        m_name(std::exchange(other.m_name, {})),
        m_onDisk(other.m_onDisk) {}
  DraftEntry& operator=(DraftEntry&&) = delete;
  ~DraftEntry();

  /// For writing; negative once it was let go of.
  int descriptor() const { return m_descriptor; }
  int folder() const { return m_folder; }
  const std::string& name() const { return m_name; }

  /// Closes the file without more ado, for who writes it by its name.
  int letGo();
  /// Brings what was written to the disk and closes the file.
  int finish();
  /// Lets it appear under that name of the same folder, on the disk with its entry. `EEXIST` where something is there
  /// that stays; then and whenever it fails it is a draft still. But where it has replaced something, and only the
  /// folder cannot be brought to the disk, it stands in its place for all that it fails.
  int publish(const std::string& name, Existing existing);

 private:
  DraftEntry(int folder, int descriptor, std::string name)
      : m_folder(folder), m_descriptor(descriptor), m_name(std::move(name)) {}

  int m_folder;
  int m_descriptor;
  std::string m_name;  ///< empty once it is published
  bool m_onDisk = false;
};

}  // namespace orlocal::store
