#pragma once

#include <cstddef>
#include <span>

#include "store/model/model.h"
#include "store/rows/packing.h"

namespace orlocal::store {

/// All of an item in a fifth of its room. For memory alone: no file has it. `out` is cleared first.
void packItem(const Item& item, PackedBytes& out);
/// Of what this process packed.
Item unpackItem(std::span<const std::byte> bytes);

}  // namespace orlocal::store
