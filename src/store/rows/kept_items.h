#pragma once

#include <cstddef>
#include <memory>
#include <unordered_map>

#include "store/model/model.h"
#include "store/rows/packed_item.h"

namespace orlocal::store {

/// The items last read, up to a bound; and, packed into a fifth of the room, the series among those that had to make
/// way. A walk over a year meets the series of a large store again and again, each after thousands of others, and what
/// is packed is at hand in a fraction of the time that its row takes to be read.
class KeptItems {
 public:
  /// Null when it is not at hand. One that is packed is made anew each time: those who meet it do so once in a while.
  std::shared_ptr<const Item> find(ItemId id);
  bool has(ItemId id) const;
  void keep(const std::shared_ptr<const Item>& item);
  void forget(ItemId id);
  void forgetAll();

 private:
  using Items = std::unordered_map<ItemId, std::shared_ptr<const Item>>;

  using Packed = std::unordered_map<ItemId, PackedBytes>;

  void pack(const Item& item);
  void dropPacked(Packed::iterator packed);
  void makeRoom();

  Items m_recent, m_older;  ///< what is asked for moves to `m_recent`; when that is full, `m_older` makes way
  Packed m_packed;
  std::size_t m_packedBytes = 0;
  std::size_t m_dropNext = 0;  ///< bucket
  PackedBytes m_buffer;
};

}  // namespace orlocal::store
