#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "store/calendar_store.h"
#include "store/model/remote.h"

namespace orlocal::store {

/// What the store keeps of servers, as it stands now; each call is a snapshot of its own. `ItemWriter::remotes` writes
/// it. See `RemoteRows` for what each gives.
class RemoteReader {
 public:
  /// The store is borrowed.
  explicit RemoteReader(CalendarStore& store) : m_store(store) {}

  Result<std::vector<Remote>> remotes();
  Result<std::vector<Mirror>> mirrors(SourceId source);
  Result<std::vector<Mirror>> allMirrors();
  Result<std::vector<Resource>> resources(MirrorId mirror);
  Result<std::optional<Resource>> resource(MirrorId mirror, std::string_view key);
  Result<std::optional<Resource>> resourceOf(ItemId item);
  Result<std::vector<ItemId>> parts(ResourceId resource);
  Result<std::vector<ItemId>> unsent();
  Result<std::int64_t> notedUpTo();
  Result<std::vector<Conflict>> conflicts();

 private:
  CalendarStore& m_store;
};

}  // namespace orlocal::store
