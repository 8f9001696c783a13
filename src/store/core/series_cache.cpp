#include "store/core/series_cache.h"

#include <utility>
#include <vector>

#include "base/try.h"

namespace orlocal::store {
namespace {

/// Kept at most. Only those are asked for again and again that come several times a day, or by rare parts of rules.
constexpr std::size_t kKeptSeries = 50'000;

}  // namespace

Result<std::optional<Series>> SeriesCache::compiled(ItemId id) {
  if (const auto item = m_rows.kept(id)) { return compiled(*item, true); }
  ORLOCAL_TRY(const auto item, m_rows.readForExpansion(id));
  if (!item) { return std::nullopt; }
  return compiled(item->item, item->hasChanged);
}

Result<std::optional<Series>> SeriesCache::compiled(const Item& item, bool mayHaveChanged) {
  std::vector<CalendarTime> changed;
  if (mayHaveChanged) {
    ORLOCAL_TRY(const auto rows, m_rows.changedOf(item.id));
    changed.reserve(rows.size());
    for (const ItemRows::Changed& row : rows) { changed.push_back(row.recurrenceId); }
  }
  ORLOCAL_TRY(Series series, Series::compile(item, m_viewer, changed));
  return std::optional(std::move(series));
}

void SeriesCache::keep(ItemId id, Series series) {
  if (m_series.size() >= kKeptSeries) { m_series.clear(); }
  m_series.insert_or_assign(id, std::move(series));
}

Result<const Series*> SeriesCache::of(ItemId id) {
  if (const auto found = m_series.find(id); found != m_series.end()) { return &found->second; }
  ORLOCAL_TRY(auto series, compiled(id));
  if (!series) { return nullptr; }
  keep(id, std::move(*series));
  return &m_series.at(id);
}

}  // namespace orlocal::store
