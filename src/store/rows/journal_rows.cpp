#include "store/rows/journal_rows.h"

#include <chrono>
#include <string>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/file/checked_row.h"
#include "store/rows/packed_item.h"

namespace orlocal::store {
Result<std::int64_t> JournalRows::add(std::int64_t number, const JournalEntry& entry, const ChangeRange& range,
                                      const ReplacedItems& items) {
  Statement& insert = m_insert.in(m_database).bind(1, number);
  insert.bind(2, std::string_view(entry.command.person)).bind(3, std::string_view(entry.command.words));
  insert.bind(4, static_cast<std::int64_t>(entry.made.time_since_epoch().count()));
  insert.bind(5, range.first).bind(6, range.last);
  if (entry.undoes) { insert.bind(7, *entry.undoes); }
  ORLOCAL_CHECK(insert.run());
  const std::int64_t part = m_database.lastInsertId();
  if (number == 0) { ORLOCAL_CHECK(m_own.in(m_database).bind(1, part).run()); }
  PackedBytes packed;
  for (const auto& [id, item] : items) {
    Statement& one = m_insertItem.in(m_database).bind(1, part).bind(2, id).bind(3, item.main);
    if (item.before) {
      packItem(*item.before, packed);
      one.bindBlob(4, packed);
    }
    ORLOCAL_CHECK(one.run());
  }
  return number == 0 ? part : number;
}

Status JournalRows::markUndone(std::int64_t number, std::optional<std::int64_t> by) {
  Statement& mark = m_markUndone.in(m_database);
  if (by) { mark.bind(1, *by); }
  return mark.bind(2, number).run();
}

Status JournalRows::prune(std::string_view person, Moment now) {
  const Moment oldest = now - std::chrono::days(kDaysKept);
  Statement& tooOld = m_tooOld.in(m_database).bind(1, static_cast<std::int64_t>(oldest.time_since_epoch().count()));
  tooOld.bind(2, person).bind(3, std::int64_t{kCommandsKept});
  std::vector<std::int64_t> parts;
  {
    const ResetAtExit reset(tooOld);
    for (;;) {
      ORLOCAL_TRY(const bool found, tooOld.step());
      if (!found) { break; }
      parts.push_back(tooOld.integer(0));
    }
  }
  // One by one: a command may have replaced tens of thousands of items, which the others should not go through.
  for (const std::int64_t part : parts) {
    ORLOCAL_CHECK(m_pruneItems.in(m_database).bind(1, part).run());
    ORLOCAL_CHECK(m_prune.in(m_database).bind(1, part).run());
  }
  return {};
}

Result<std::vector<JournalEntry>> JournalRows::commands(std::optional<std::string_view> person) {
  Statement& read = m_commands.in(m_database);
  if (person) { read.bind(1, *person); }
  const ResetAtExit reset(read);
  std::vector<JournalEntry> commands;
  for (;;) {
    ORLOCAL_TRY(const bool found, read.step());
    if (!found) { return commands; }
    CheckedRow row(read);
    JournalEntry entry;
    entry.number = row.id(0);
    entry.command = {std::string(row.text(1)), std::string(row.text(2))};
    entry.made = row.optionalMoment(3).value_or(Moment());
    entry.undoes = row.optionalId(4);
    entry.undoneBy = row.optionalId(5);
    if (!row.sound()) { return damaged(m_database, tr("The command {} in the journal", read.integer(0))); }
    commands.push_back(std::move(entry));
  }
}

Result<std::vector<JournalRows::Part>> JournalRows::partsOf(std::int64_t number) {
  Statement& read = m_parts.in(m_database).bind(1, number);
  const ResetAtExit reset(read);
  std::vector<Part> parts;
  for (;;) {
    ORLOCAL_TRY(const bool found, read.step());
    if (!found) { return parts; }
    CheckedRow row(read);
    const Part part{row.id(0), {row.id(1), row.id(2)}};
    if (!row.sound()) { return damaged(m_database, tr("The command {} in the journal", number)); }
    parts.push_back(part);
  }
}

Result<ReplacedItems> JournalRows::itemsOf(std::int64_t part) {
  Statement& read = m_items.in(m_database).bind(1, part);
  const ResetAtExit reset(read);
  ReplacedItems items;
  for (;;) {
    ORLOCAL_TRY(const bool found, read.step());
    if (!found) { return items; }
    CheckedRow row(read);
    const ItemId id = row.id(0);
    ReplacedItem item{row.id(1), std::nullopt};
    if (!row.isNull(2)) { item.before = unpackItem(row.blob(2)); }
    const bool whole = row.isNull(2) || (item.before && item.before->id == id);
    if (!row.sound() || !whole) { return damaged(m_database, tr("Part {} of the journal", part)); }
    items.emplace(id, std::move(item));
  }
}

}  // namespace orlocal::store
