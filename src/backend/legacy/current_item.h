#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "backend/current_items.h"
#include "platform/object_array.h"

namespace orlocal {

/// Makes the item at the 1-based `index` of `count` items current: 9002 outside, 9001 when nothing is there. `itemAt`
/// takes a 0-based index.
template <class T, class ItemAt>
std::int32_t openItemAt(std::int32_t index, std::size_t count, std::shared_ptr<T>& slot, ItemAt itemAt) {
  if (!isWithin(index, count)) { return failWith(kIndexOutOfBounds); }
  slot = itemAt(static_cast<std::size_t>(index) - 1);
  return slot ? 0 : failWith(kItemNotFound);
}

template <class T>
std::int32_t openItemAt(std::int32_t index, const std::vector<std::shared_ptr<T>>& items, std::shared_ptr<T>& slot) {
  return openItemAt(index, items.size(), slot, [&](std::size_t at) { return items[at]; });
}

/// A null result of a query has no items.
template <class T>
std::int32_t openItemAt(std::int32_t index, const std::shared_ptr<const ObjectArray<T>>& items,
                        std::shared_ptr<T>& slot) {
  return openItemAt(index, items ? items->count() : 0, slot, [&](std::size_t at) { return items->objectAtIndex(at); });
}

}  // namespace orlocal
