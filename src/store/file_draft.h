#pragma once

#include <filesystem>

#include "store/result.h"

namespace orlocal::store {

/// A file in the making, for the user alone, beside the place where it will stand, under a name that nobody can guess.
/// It is gone with this unless it was published.
class FileDraft {
 public:
  static Result<FileDraft> beside(const std::filesystem::path& target);

  FileDraft(FileDraft&& other) noexcept : m_file(std::move(other.m_file)) { other.m_file.clear(); }
  FileDraft& operator=(FileDraft&&) = delete;
  ~FileDraft();

  const std::filesystem::path& file() const { return m_file; }

  /// Writes it through to the disk and lets it appear as `target`; fails where something is there already.
  Status publish(const std::filesystem::path& target);
  /// The same in place of what is there.
  Status publishInPlaceOf(const std::filesystem::path& target);

 private:
  explicit FileDraft(std::filesystem::path file) : m_file(std::move(file)) {}
  Status moveTo(const std::filesystem::path& target, bool replace);

  std::filesystem::path m_file;
};

}  // namespace orlocal::store
