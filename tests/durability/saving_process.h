#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "store/calendar_store.h"

namespace orlocal::test {

/// A store file in a folder of its own that goes with the object.
class TemporaryStore {
 public:
  TemporaryStore();
  ~TemporaryStore();
  TemporaryStore(const TemporaryStore&) = delete;
  TemporaryStore& operator=(const TemporaryStore&) = delete;

  std::filesystem::path file() const { return m_folder / "calendar.db"; }
  const std::filesystem::path& folder() const { return m_folder; }

 private:
  std::filesystem::path m_folder;
};

/// Opens the store or throws with the store's sentence.
std::unique_ptr<store::CalendarStore> openStore(const std::filesystem::path& file);

/// A new, unsaved one-hour event in the default calendar.
store::Item newEvent(store::CalendarStore& store, const std::string& title);

/// A forked process that does its work and tells, line by line through a pipe, what the store acknowledged.
class SavingProcess {
 public:
  /// Tells the parent one line. Returns only when the line is in the pipe.
  using Tell = std::function<void(const std::string& line)>;

  explicit SavingProcess(const std::function<void(const Tell&)>& work);
  ~SavingProcess();
  SavingProcess(const SavingProcess&) = delete;
  SavingProcess& operator=(const SavingProcess&) = delete;

  void kill();
  /// Reads until the process ends; returns all its whole lines. A line cut off by a kill does not count.
  std::vector<std::string> finish();
  /// Whether it ended by itself with success; after `finish`.
  bool succeeded() const { return m_succeeded; }

 private:
  pid_t m_child = -1;
  int m_end = -1;
  bool m_succeeded = false;
};

/// What SQLite's own check says of the file: "ok", or what is wrong.
std::string integrityOf(const std::filesystem::path& file);

}  // namespace orlocal::test
