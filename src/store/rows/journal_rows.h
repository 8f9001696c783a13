#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <vector>

#include "store/file/sqlite.h"
#include "store/model/command.h"
#include "store/model/model.h"

namespace orlocal::store {

/// What a command found where it wrote.
struct ReplacedItem {
  ItemId main = 0;             ///< the series of a changed occurrence; of any other item itself
  std::optional<Item> before;  ///< none where nothing was
};
using ReplacedItems = std::map<ItemId, ReplacedItem>;

/// Rows of the log of changes, both included.
struct ChangeRange {
  std::int64_t first = 0, last = 0;
};

/// The rows of the journal: what commands of people replaced. One command may have made several commits; each is a part
/// of it. Made for one use: commands are rare.
class JournalRows {
 public:
  /// A person's newest ones are kept, for so many days.
  static constexpr int kCommandsKept = 100;
  static constexpr int kDaysKept = 30;

  explicit JournalRows(Database& database) : m_database(database) {}

  /// Adds a part to the command `number`, to a new one when that is 0, and gives the command's number.
  Result<std::int64_t> add(std::int64_t number, const JournalEntry& entry, const ChangeRange& range,
                           const ReplacedItems& items);
  Status markUndone(std::int64_t number, std::optional<std::int64_t> by);
  /// Drops what is older than it is kept, seen from `now`.
  Status prune(std::string_view person, Moment now);

  /// The commands of a person, or of everybody, the newest first.
  Result<std::vector<JournalEntry>> commands(std::optional<std::string_view> person);
  struct Part {
    std::int64_t id = 0;
    ChangeRange range;
  };
  /// The newest first.
  Result<std::vector<Part>> partsOf(std::int64_t number);
  Result<ReplacedItems> itemsOf(std::int64_t part);

 private:
  Database& m_database;
  LazyStatement m_insert{
      "INSERT INTO journal(command, person, words, made, first, last, undoes) VALUES(?, ?, ?, ?, ?, ?, ?)"};
  LazyStatement m_own{"UPDATE journal SET command = id WHERE id = ?"};
  LazyStatement m_insertItem{"INSERT INTO journal_items(part, item, main, before) VALUES(?, ?, ?, ?)"};
  LazyStatement m_markUndone{"UPDATE journal SET undone_by = ? WHERE command = ?"};
  LazyStatement m_tooOld{
      "SELECT id FROM journal WHERE made < ?1 OR (person = ?2 AND command NOT IN (SELECT DISTINCT command FROM journal "
      "WHERE person = ?2 ORDER BY command DESC LIMIT ?3))"};
  LazyStatement m_prune{"DELETE FROM journal WHERE id = ?"};
  LazyStatement m_pruneItems{"DELETE FROM journal_items WHERE part = ?"};
  LazyStatement m_commands{
      "SELECT id, person, words, made, undoes, undone_by FROM journal WHERE id = command AND (?1 IS NULL OR person = "
      "?1) ORDER BY id DESC"};
  LazyStatement m_parts{"SELECT id, first, last FROM journal WHERE command = ? ORDER BY id DESC"};
  LazyStatement m_items{"SELECT item, main, before FROM journal_items WHERE part = ? ORDER BY item"};
};

}  // namespace orlocal::store
