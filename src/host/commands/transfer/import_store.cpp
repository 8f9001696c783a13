#include "host/commands/transfer/import_store.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "base/system_reason.h"
#include "base/try.h"
#include "host/commands/command_line/store_session.h"
#include "store/location.h"

namespace orlocal::host {

ImportStore::~ImportStore() {
  m_store.reset();
  std::error_code ignored;
  if (!m_temporary.empty()) { std::filesystem::remove_all(m_temporary, ignored); }
}

Result<store::CalendarStore*> ImportStore::get() {
  if (m_store == nullptr) { ORLOCAL_TRY(m_store, open()); }
  return m_store.get();
}

Result<std::unique_ptr<store::CalendarStore>> ImportStore::open() {
  if (!m_dryRun) { return openOrMakeUserStore(); }
  auto known = openUserStore();
  if (known || known.error().code != ErrorCode::kNotFound) { return known; }
  std::error_code error;
  std::string folder = (std::filesystem::temp_directory_path(error) / "orlocal-XXXXXX").string();
  if (error || ::mkdtemp(folder.data()) == nullptr) {
    return failure(ErrorCode::kIo, fmt::format("There is no room for a trial in {}: {}", folder, systemReason(errno)));
  }
  m_temporary = folder;
  ORLOCAL_TRY(store::StoreOptions options, store::userStoreOptions(store::Zone::ofUser()));
  options.file = m_temporary / "calendar.db";
  return store::CalendarStore::open(std::move(options));
}

}  // namespace orlocal::host
