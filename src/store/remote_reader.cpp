#include "store/remote_reader.h"

#include "base/try.h"
#include "store/core/store_core.h"
#include "store/rows/remote_rows.h"

namespace orlocal::store {
namespace {

template <class Read>
auto inSnapshot(StoreCore& core, const Read& read) -> decltype(read(std::declval<RemoteRows&>())) {
  ORLOCAL_TRY(const Transaction snapshot, core.beginReading());
  RemoteRows rows(core.database);
  return read(rows);
}

}  // namespace

Result<std::vector<Remote>> RemoteReader::remotes() {
  return inSnapshot(*m_store.m_core, [](RemoteRows& rows) { return rows.remotes(); });
}

Result<std::vector<Mirror>> RemoteReader::mirrors(SourceId source) {
  return inSnapshot(*m_store.m_core, [&](RemoteRows& rows) { return rows.mirrors(source); });
}

Result<std::vector<Mirror>> RemoteReader::allMirrors() {
  return inSnapshot(*m_store.m_core, [](RemoteRows& rows) { return rows.allMirrors(); });
}

Result<std::vector<Resource>> RemoteReader::resources(MirrorId mirror) {
  return inSnapshot(*m_store.m_core, [&](RemoteRows& rows) { return rows.resources(mirror); });
}

Result<std::optional<Resource>> RemoteReader::resource(MirrorId mirror, std::string_view key) {
  return inSnapshot(*m_store.m_core, [&](RemoteRows& rows) { return rows.resource(mirror, key); });
}

Result<std::optional<Resource>> RemoteReader::resourceOf(ItemId item) {
  return inSnapshot(*m_store.m_core, [&](RemoteRows& rows) { return rows.resourceOf(item); });
}

Result<std::vector<ItemId>> RemoteReader::parts(ResourceId resource) {
  return inSnapshot(*m_store.m_core, [&](RemoteRows& rows) { return rows.parts(resource); });
}

Result<std::vector<ItemId>> RemoteReader::unsent() {
  return inSnapshot(*m_store.m_core, [](RemoteRows& rows) { return rows.unsent(); });
}

Result<std::int64_t> RemoteReader::notedUpTo() {
  return inSnapshot(*m_store.m_core, [](RemoteRows& rows) { return rows.notedUpTo(); });
}

Result<std::vector<Conflict>> RemoteReader::conflicts() {
  return inSnapshot(*m_store.m_core, [](RemoteRows& rows) { return rows.conflicts(); });
}

}  // namespace orlocal::store
