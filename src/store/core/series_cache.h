#pragma once

#include <optional>
#include <unordered_map>

#include "store/recurrence/recurrence.h"
#include "store/rows/item_rows.h"

namespace orlocal::store {

/// Series made ready for expansion, kept until they change.
class SeriesCache {
 public:
  SeriesCache(ItemRows& rows, Zone viewer) : m_rows(rows), m_viewer(viewer) {}

  /// Null when there is no such row. Valid until the next call of any kind.
  Result<const Series*> of(ItemId id);
  /// The same, made anew and not kept.
  Result<std::optional<Series>> compiled(ItemId id);
  void keep(ItemId id, Series series);
  void forget(ItemId id) { m_series.erase(id); }
  void forgetAll() { m_series.clear(); }

 private:
  Result<std::optional<Series>> compiled(const Item& item, bool mayHaveChanged);

  ItemRows& m_rows;
  Zone m_viewer;
  std::unordered_map<ItemId, Series> m_series;
};

}  // namespace orlocal::store
