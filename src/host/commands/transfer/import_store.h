#pragma once

#include <filesystem>
#include <memory>

#include "base/result.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// The store that is imported into, opened (or made) when the first file is there to be imported. Where nothing shall
/// be written and there is no store yet, an empty one in a temporary folder stands for it.
class ImportStore {
 public:
  explicit ImportStore(bool dryRun) : m_dryRun(dryRun) {}
  ~ImportStore();
  ImportStore(const ImportStore&) = delete;
  ImportStore& operator=(const ImportStore&) = delete;

  Result<store::CalendarStore*> get();

 private:
  Result<std::unique_ptr<store::CalendarStore>> open();

  const bool m_dryRun;
  std::unique_ptr<store::CalendarStore> m_store;
  std::filesystem::path m_temporary;  ///< folder; empty when there is none
};

}  // namespace orlocal::host
