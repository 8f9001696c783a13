#pragma once

#include <vector>

#include "store/core/queries.h"
#include "store/core/search_index.h"
#include "store/core/search_query.h"

namespace orlocal::store {

/// Finds items by their words.
class Search {
 public:
  Search(StoreCore& core, Queries& queries)
      : m_core(core), m_queries(queries), m_index(core.database, core.log, core.rows) {}

  Result<std::vector<SearchHit>> run(const SearchQuery& query);
  /// See `CalendarStore::rebuildSearch`.
  Status rebuild();

 private:
  /// Brings the index up to date where it is far behind and may be written.
  Status followLog();
  Status fill();
  Result<bool> isInRange(const Item& item, const SearchQuery& query);

  StoreCore& m_core;
  Queries& m_queries;
  SearchIndex m_index;
};

}  // namespace orlocal::store
