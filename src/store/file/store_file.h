#pragma once

#include <chrono>
#include <filesystem>
#include <optional>

#include "base/result.h"
#include "store/file/file_state.h"
#include "store/file/schema.h"
#include "store/file/sqlite.h"
#include "store/file/uuid.h"

namespace orlocal::store {

/// The right to open a store's file, or to put another in its place; held for the blink of an eye. Whoever opens a file
/// while another one takes its place could join the new file with the old one's log.
class PlaceTurn {
 public:
  enum class Purpose { kOpen, kReplace };

  /// Waits while somebody else has it, at most for `patience`. To open, it does without where there is no bell yet, as
  /// nobody can have replaced anything then; a process that may not write there cannot replace anything either.
  static Result<PlaceTurn> take(const std::filesystem::path& file, Purpose purpose, std::chrono::milliseconds patience);

  PlaceTurn(PlaceTurn&& other) noexcept : m_descriptor(other.m_descriptor) { other.m_descriptor = -1; }
  PlaceTurn& operator=(PlaceTurn&&) = delete;
  ~PlaceTurn();

 private:
  explicit PlaceTurn(int descriptor) : m_descriptor(descriptor) {}

  int m_descriptor;
};

/// The file of an open store: notices when another file takes its place, and when a file that is read without taking
/// part was written.
class StoreFile {
 public:
  enum class News { kNone, kWritten, kReplaced };

  explicit StoreFile(const std::filesystem::path& path) : m_path(wholePath(path)) {}

  /// Opens what is there now.
  Result<Database> open(Missing missing, std::chrono::milliseconds busyTimeout, UuidMaker& uuids);
  /// What happened to the path since `open`. Fails when there is no file, for which a moment between two renames is
  /// enough.
  Result<News> look(const Database& open) const;
  /// Takes away the log of the file that was replaced, so that it is not read into the one that took its place. What it
  /// holds goes into its own file first, wherever that is now.
  Status partFromLog(Database& replaced, std::chrono::milliseconds patience) const;

  /// The file that was opened, links followed.
  const std::filesystem::path& file() const { return m_file; }
  /// Whether `open` found another file than the time before.
  bool opensAnother() const { return m_another; }

 private:
  void remember(const FileState& state);

  std::filesystem::path m_path;  ///< as it was given
  std::filesystem::path m_file;
  std::optional<FileState> m_state, m_log, m_index;  ///< of the file, and of what SQLite keeps beside it
  std::chrono::steady_clock::time_point m_opened;
  bool m_another = false;
  bool m_settled = false;  ///< what is written from now on changes the time of writing
};

}  // namespace orlocal::store
