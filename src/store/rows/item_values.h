#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "store/file/row_values.h"
#include "store/file/sqlite.h"
#include "store/model/model.h"

namespace orlocal::store {

/// What a row holds beyond the item itself.
struct RowPlace {
  std::int64_t shelf = 0;  ///< of its timeline entry
  std::int64_t shelfStart = 0;
  /// Original start of a changed occurrence: seconds in UTC, or on the wall clock when its series (or, without one, its
  /// recurrence id) runs there.
  std::optional<std::int64_t> original;
};

/// The same of a row as it stands, and what else its indexes have.
struct StoredPlace : RowPlace {
  std::optional<ItemId> series;
  std::int64_t uidHash = 0;
};

/// How an item stands in the columns of its row: the statements whose columns are counted on, and both directions.
class ItemValues {
 public:
  static const char* const kReadById;  ///< parameter 1: id
  /// Parameters: hash, calendar, kind, UID; the columns below are more of it.
  static const char* const kReadByUid;
  /// The same of a UID that is the item's own identifier. Parameters: this, calendar, kind.
  static const char* const kReadByOwnUid;
  static const char *const kIdWithUid, *const kIdWithOwnUid;  ///< the ids of these
  static const char* const kReadForExpansion;
  static const char* const kUpdate;  ///< parameter `kIdParameter`: id
  /// The same where series, original start and UID stay: the indexes are not touched.
  static const char* const kUpdateInPlace;
  /// Before VALUES, of rows of `kInserted` parameters.
  static const char* const kInsert;
  static constexpr int kIdParameter = 28, kUuidParameter = 29, kInserted = 29;

  static constexpr int kHasChanged = 27;  ///< whether there are changed occurrences of it
  static constexpr int kShelf = 28, kShelfStart = 29;

  /// The item in a row of the first three statements.
  static Result<Item> read(const Statement& row, const Database& database);
  /// What a row of the fourth has: enough to expand a series, and whether it has changed occurrences.
  static Result<Item> readForExpansion(const Statement& row, const Database& database, bool& hasChanged);

  /// Binds all parameters but the row's id and its identifier.
  static void bind(RowValues& values, const Item& item, const RowPlace& place);

  /// `contentHash`, as SQLite keeps numbers; never 0.
  static std::int64_t hashOf(std::string_view uid);
  /// The same of the item's UID; 0 of one that is the item's own identifier, and is found by that.
  static std::int64_t uidHashOf(const Item& item);
};

}  // namespace orlocal::store
