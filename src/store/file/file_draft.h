#pragma once

#include <filesystem>

#include "base/result.h"
#include "store/file/draft_entry.h"

namespace orlocal::store {

/// A database in the making: a draft that SQLite writes by its name, and what SQLite leaves beside it.
class FileDraft {
 public:
  /// What SQLite and we put beside a database: its name, and one of these behind it.
  static constexpr const char* kBeside[] = {"-wal", "-shm", "-journal", "-bell"};

  static Result<FileDraft> beside(const std::filesystem::path& target);

  FileDraft(FileDraft&& other) noexcept : m_entry(std::move(other.m_entry)), m_file(std::move(other.m_file)) {
    other.m_file.clear();
  }
  FileDraft& operator=(FileDraft&&) = delete;
  ~FileDraft();

  const std::filesystem::path& file() const { return m_file; }

  /// Writes it through to the disk and lets it appear as `target`, which is in the same folder; fails where something
  /// is there already. Nobody has it open.
  Status publish(const std::filesystem::path& target);
  /// The same in place of what is there.
  Status publishInPlaceOf(const std::filesystem::path& target);

 private:
  FileDraft(DraftEntry entry, std::filesystem::path file) : m_entry(std::move(entry)), m_file(std::move(file)) {}
  Status moveTo(const std::filesystem::path& target, DraftEntry::Existing existing);
  void removeWhatIsBeside() const;

  DraftEntry m_entry;
  std::filesystem::path m_file;  ///< empty once it is published
};

}  // namespace orlocal::store
