#include "store/core/command_recorder.h"

#include <utility>

#include "base/try.h"
#include "store/time/clock.h"

namespace orlocal::store {

void CommandRecorder::begin(Command command, std::optional<std::int64_t> undoes) {
  m_command = std::move(command);
  m_undoes = undoes;
  m_number = 0;
}

void CommandRecorder::startCommit() {
  m_items.clear();
  m_first = m_log.next();
}

Status CommandRecorder::willChange(ItemId id) {
  if (!m_command || m_items.contains(id)) { return {}; }
  ORLOCAL_TRY(const auto row, m_rows.read(id));
  if (row != nullptr) { m_items.emplace(id, ReplacedItem{row->series.value_or(id), *row}); }
  return {};
}

void CommandRecorder::hasInserted(const Item& item) {
  // One that was there when the commit began, was removed and came back has been noted as it was then.
  if (m_command) { m_items.emplace(item.id, ReplacedItem{item.series.value_or(item.id), std::nullopt}); }
}

Status CommandRecorder::finishCommit() {
  if (!m_command || m_items.empty()) { return {}; }
  JournalRows journal(m_database);
  const JournalEntry entry{0, *m_command, now(), m_undoes, std::nullopt};
  ORLOCAL_TRY(m_number, journal.add(m_number, entry, {m_first, m_log.last()}, m_items));
  return journal.prune(m_command->person, entry.made);
}

}  // namespace orlocal::store
