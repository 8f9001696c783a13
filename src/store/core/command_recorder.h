#pragma once

#include <cstdint>
#include <optional>

#include "store/file/change_log.h"
#include "store/model/command.h"
#include "store/rows/item_rows.h"
#include "store/rows/journal_rows.h"

namespace orlocal::store {

/// While a person's command runs: notes what each row was before the first change of a commit, and writes it into the
/// journal with the commit. Without a command it does nothing.
class CommandRecorder {
 public:
  CommandRecorder(Database& database, ChangeLog& log, ItemRows& rows)
      : m_database(database), m_log(log), m_rows(rows) {}

  /// From now on; `undoes`: the number of the command that this one takes back.
  void begin(Command command, std::optional<std::int64_t> undoes = std::nullopt);
  void end() { m_command.reset(); }
  /// The number that the command got with its first commit; 0 before.
  std::int64_t number() const { return m_number; }

  /// After the turn to write was taken.
  void startCommit();
  /// Before a row is changed or removed.
  Status willChange(ItemId id);
  void hasInserted(const Item& item);
  /// Before the log is finished.
  Status finishCommit();

 private:
  Database& m_database;
  ChangeLog& m_log;
  ItemRows& m_rows;
  std::optional<Command> m_command;
  std::optional<std::int64_t> m_undoes;
  std::int64_t m_number = 0;
  std::int64_t m_first = 0;  ///< row of the log
  ReplacedItems m_items;
};

}  // namespace orlocal::store
