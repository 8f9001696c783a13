#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/result.h"
#include "store/file/change_log.h"
#include "store/file/sqlite.h"
#include "store/model/search_words.h"
#include "store/rows/item_rows.h"

namespace orlocal::store {

/// The index of the words of items. No save writes it: it follows the log of changes, which every commit writes anyhow,
/// and whoever searches brings it up to date when it has fallen far behind. See docs/decisions/0019-*.
///
/// A damaged index fails with a sentence that says how to make it anew; what the items hold is not touched by that.
class SearchIndex {
 public:
  SearchIndex(Database& database, ChangeLog& log, ItemRows& rows) : m_database(database), m_log(log), m_rows(rows) {}

  /// Whether so much is missing in the index that looking at all of it costs more than bringing it in. Inside a
  /// transaction.
  Result<bool> isFarBehind();
  /// Brings in a part of the backlog that does not keep others waiting for long; true when all is in. Inside a
  /// transaction that writes.
  Result<bool> catchUp();
  /// The rows that may hold what is looked for, in their order: what the index names, and what it does not know yet.
  Result<std::vector<ItemId>> candidates(const SearchTerms& terms);
  /// Empties the index, whatever it holds; it is filled by `catchUp`. Inside a transaction that writes.
  Status startAnew();

 private:
  static constexpr std::size_t kLookedAt = 500;
  static constexpr std::int64_t kRowsAtOnce = 10'000;

  /// What the index does not know yet.
  struct Backlog {
    std::vector<ItemId> touched;  ///< since it was brought up to date: each once, those that are gone, too
    ItemId missingFrom = 0;       ///< rows from this number on were never looked at; 0: there are none
  };
  Result<Backlog> backlog();
  Result<std::vector<ItemId>> rowsFrom(ItemId first, std::int64_t most);
  Status index(ItemId id);
  Result<std::int64_t> property(const char* name, std::int64_t highest);
  Status setProperty(const char* name, std::int64_t value);
  Status named(Status status) const;

  Database& m_database;
  ChangeLog& m_log;
  ItemRows& m_rows;
  LazyStatement m_property{"SELECT value FROM properties WHERE name = ?"};
  LazyStatement m_setProperty{"INSERT OR REPLACE INTO properties(name, value) VALUES(?, ?)"};
  LazyStatement m_rowsFrom{"SELECT id FROM items WHERE id >= ? ORDER BY id LIMIT ?"};
  LazyStatement m_put{"INSERT OR REPLACE INTO search(rowid, words) VALUES(?, ?)"};
  LazyStatement m_remove{"DELETE FROM search WHERE rowid = ?"};
  LazyStatement m_find{"SELECT rowid FROM search WHERE search MATCH ? ORDER BY rowid"};
};

}  // namespace orlocal::store
