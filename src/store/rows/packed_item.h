#pragma once

#include <cstddef>
#include <optional>
#include <span>

#include "store/model/model.h"
#include "store/rows/packing.h"

namespace orlocal::store {

/// All of an item in a fifth of its room, for memory and the journal. `out` is cleared first.
void packItem(const Item& item, PackedBytes& out);
/// None when the bytes are damaged.
std::optional<Item> unpackItem(std::span<const std::byte> bytes);

}  // namespace orlocal::store
