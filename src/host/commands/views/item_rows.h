#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "base/try.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// Calls `take(index, item)` for each of `ids` that is still there, reading rows in batches.
template <class Take>
Status readRows(store::CalendarStore& store, const std::vector<store::ItemId>& ids, Take take) {
  constexpr std::size_t kBatch = 256;
  for (std::size_t i = 0; i < ids.size(); ++i) {
    if (i % kBatch == 0) { store.prefetch(std::span(ids).subspan(i, std::min(kBatch, ids.size() - i))); }
    ORLOCAL_TRY(auto item, store.item(ids[i]));
    if (item) { take(i, std::move(item)); }
  }
  return {};
}

}  // namespace orlocal::host
