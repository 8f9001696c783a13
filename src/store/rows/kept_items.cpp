#include "store/rows/kept_items.h"

namespace orlocal::store {
namespace {

/// Of a kilobyte or so each.
constexpr std::size_t kKept = 12'288;
/// Room for the series that a store of a million events has in a year.
constexpr std::size_t kMostPackedBytes = 24U << 20;
/// What a packed item takes beside its bytes.
constexpr std::size_t kEntryBytes = 80;

}  // namespace

std::shared_ptr<const Item> KeptItems::find(ItemId id) {
  if (const auto found = m_recent.find(id); found != m_recent.end()) { return found->second; }
  if (const auto found = m_older.find(id); found != m_older.end()) {
    auto item = std::move(found->second);
    m_older.erase(found);
    keep(item);
    return item;
  }
  const auto packed = m_packed.find(id);
  return packed != m_packed.end() ? std::make_shared<const Item>(*unpackItem(packed->second)) : nullptr;
}

bool KeptItems::has(ItemId id) const { return m_recent.contains(id) || m_older.contains(id) || m_packed.contains(id); }

void KeptItems::keep(const std::shared_ptr<const Item>& item) {
  if (m_recent.size() >= kKept / 2) {
    for (const auto& [id, older] : m_older) {
      if (!older->recurrence.empty()) { pack(*older); }
    }
    m_older = std::move(m_recent);
    m_recent.clear();
  }
  m_recent.insert_or_assign(item->id, item);
}

void KeptItems::pack(const Item& item) {
  if (m_packed.contains(item.id)) { return; }
  packItem(item, m_buffer);
  m_packedBytes += m_buffer.size() + kEntryBytes;
  makeRoom();
  m_packed.emplace(item.id, PackedBytes(m_buffer.begin(), m_buffer.end()));
}

void KeptItems::dropPacked(Packed::iterator packed) {
  m_packedBytes -= packed->second.size() + kEntryBytes;
  m_packed.erase(packed);
}

// Any of them may go. The one met longest ago must not: in a walk through more than there is room for it is the one
// that comes next.
void KeptItems::makeRoom() {
  while (m_packedBytes > kMostPackedBytes && !m_packed.empty()) {
    m_dropNext = (m_dropNext + 1) % m_packed.bucket_count();
    const auto in = m_packed.begin(m_dropNext);
    if (in != m_packed.end(m_dropNext)) { dropPacked(m_packed.find(in->first)); }
  }
}

void KeptItems::forget(ItemId id) {
  m_recent.erase(id);
  m_older.erase(id);
  if (const auto packed = m_packed.find(id); packed != m_packed.end()) { dropPacked(packed); }
}

void KeptItems::forgetAll() {
  m_recent.clear();
  m_older.clear();
  m_packed.clear();
  m_packedBytes = 0;
}

}  // namespace orlocal::store
