#include "store/edits/undo_edits.h"

#include <algorithm>
#include <limits>
#include <set>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/edits/event_edits.h"
#include "store/recurrence/original_key.h"

namespace orlocal::store {
namespace {

bool isWithin(std::int64_t row, const std::vector<ChangeRange>& ranges) {
  return std::any_of(ranges.begin(), ranges.end(),
                     [row](const ChangeRange& range) { return range.first <= row && row <= range.last; });
}

Failed undoneAlready(const JournalEntry& entry) {
  return failure(ErrorCode::kRefused, tr("The command {} ({}) was undone already; `undo {}` does it again.",
                                         entry.number, entry.command.words, *entry.undoneBy));
}

}  // namespace

Result<JournalEntry> UndoEdits::undo(std::string_view person, std::optional<std::int64_t> number) {
  ORLOCAL_TRY(const JournalEntry wanted, chosen(person, number));
  m_core.recorder.begin({std::string(person), fmt::format("undo {}", wanted.command.words)}, wanted.number);
  auto undone = undoRecorded(person, wanted.number);
  m_core.recorder.end();
  return undone;
}

Result<JournalEntry> UndoEdits::undoRecorded(std::string_view person, std::int64_t number) {
  ORLOCAL_TRY(WriteTurn turn, m_core.beginWriting());
  // Another process may have taken it back meanwhile.
  ORLOCAL_TRY(const JournalEntry entry, chosen(person, number));
  ORLOCAL_TRY(const auto parts, m_journal.partsOf(entry.number));
  // What this turn does, and what it has taken back.
  std::vector<ChangeRange> own{{m_core.log.next(), std::numeric_limits<std::int64_t>::max()}};
  for (const JournalRows::Part& part : parts) {
    ORLOCAL_TRY(const ReplacedItems items, m_journal.itemsOf(part.id));
    ORLOCAL_TRY(auto cancelled, cancelledAfter(part.range.last));
    cancelled.insert(cancelled.end(), own.begin(), own.end());
    ORLOCAL_CHECK(checkUntouched(entry, part, items, cancelled));
    ORLOCAL_CHECK(checkCalendars(items));
    ORLOCAL_CHECK(putBack(items));
    own.push_back(part.range);
  }
  ORLOCAL_CHECK(m_core.recorder.finishCommit());
  ORLOCAL_CHECK(m_journal.markUndone(entry.number, m_core.recorder.number()));
  if (entry.undoes) { ORLOCAL_CHECK(m_journal.markUndone(*entry.undoes, std::nullopt)); }
  m_core.recorder.end();
  ORLOCAL_CHECK(turn.commit());
  return entry;
}

Result<JournalEntry> UndoEdits::chosen(std::string_view person, std::optional<std::int64_t> number) {
  ORLOCAL_TRY(const Transaction snapshot, m_core.beginReadingLog());
  ORLOCAL_TRY(const auto commands, m_journal.commands(person));
  for (const JournalEntry& entry : commands) {
    if (number ? entry.number != *number : entry.undoneBy || entry.undoes) { continue; }
    if (entry.undoneBy) { return undoneAlready(entry); }
    return entry;
  }
  if (!number) { return failure(ErrorCode::kNotFound, tr("There is no command of yours left to undo.")); }
  return failure(ErrorCode::kNotFound,
                 tr("There is no command {} of yours to undo; `undo --list` shows those that there are.", *number));
}

Result<std::vector<ChangeRange>> UndoEdits::cancelledAfter(std::int64_t row) {
  ORLOCAL_TRY(const auto all, m_journal.commands(std::nullopt));
  std::vector<ChangeRange> ranges;
  for (const JournalEntry& entry : all) {
    if (!entry.undoneBy) { continue; }
    ORLOCAL_TRY(const auto done, m_journal.partsOf(entry.number));
    ORLOCAL_TRY(const auto undone, m_journal.partsOf(*entry.undoneBy));
    const bool after =
        std::all_of(done.begin(), done.end(), [row](const JournalRows::Part& part) { return part.range.first > row; });
    // One alone does not cancel itself.
    if (!after || undone.empty()) { continue; }
    for (const auto* parts : {&done, &undone}) {
      for (const JournalRows::Part& part : *parts) { ranges.push_back(part.range); }
    }
  }
  return ranges;
}

Failure UndoEdits::touched(const JournalEntry& entry, const Item& item, std::int64_t row) {
  std::string by = tr("something else (another program, a sync, the plug-in)");
  std::string remedy = tr("change the item as it is now");
  if (const auto all = m_journal.commands(std::nullopt)) {
    for (const JournalEntry& other : *all) {
      const auto parts = m_journal.partsOf(other.number);
      if (!parts) { continue; }
      const bool here = std::any_of(parts->begin(), parts->end(), [row](const JournalRows::Part& part) {
        return part.range.first <= row && row <= part.range.last;
      });
      if (!here) { continue; }
      const bool own = other.command.person == entry.command.person;
      by = own ? tr("your command {} ({})", other.number, other.command.words)
               : tr("a command of {}", other.command.person);
      if (own) { remedy = tr("undo that first (orlocal undo {})", other.number); }
    }
  }
  return {ErrorCode::kRefused,
          tr("\"{}\" was changed since by {}, so the command {} ({}) cannot be undone; {}.",
             item.title.value_or(tr("An item without a title")), by, entry.number, entry.command.words, remedy)};
}

Status UndoEdits::checkUntouched(const JournalEntry& entry, const JournalRows::Part& part, const ReplacedItems& items,
                                 const std::vector<ChangeRange>& cancelled) {
  const std::int64_t last = part.range.last;
  ORLOCAL_TRY(const std::int64_t newest, m_core.log.newest());
  ORLOCAL_TRY(const std::int64_t oldest, m_core.log.oldest());
  if (last > newest || (last < newest && oldest > last + 1)) {
    return failure(ErrorCode::kRefused,
                   tr("The command {} ({}) cannot be undone: so much was changed since that the store no longer "
                      "knows whether its items were.",
                      entry.number, entry.command.words));
  }
  std::set<ItemId> mains;
  for (const auto& [id, item] : items) { mains.insert(item.main); }
  std::optional<LoggedChange> other;
  ORLOCAL_CHECK(m_core.log.visitAfter(last, [&](const LoggedChange& change) {
    if (change.subject != Subject::kEvent && change.subject != Subject::kReminder) { return; }
    if (mains.contains(change.series.value_or(change.row)) && !isWithin(change.seq, cancelled)) { other = change; }
  }));
  if (!other) { return {}; }
  ORLOCAL_TRY(const auto row, m_core.rows.read(other->series.value_or(other->row)));
  Item named = row != nullptr ? *row : Item();
  const auto noted = items.find(other->series.value_or(other->row));
  if (row == nullptr && noted != items.end() && noted->second.before) { named = *noted->second.before; }
  return failure(touched(entry, named, other->seq));
}

Status UndoEdits::checkCalendars(const ReplacedItems& items) {
  for (const auto& [id, item] : items) {
    ORLOCAL_TRY(const auto row, m_core.rows.read(id));
    if (row != nullptr) { ORLOCAL_CHECK(checkThatCalendarTakes(m_core, row->calendar, row->kind)); }
    if (item.before) { ORLOCAL_CHECK(checkThatCalendarTakes(m_core, item.before->calendar, item.before->kind)); }
  }
  return {};
}

Status UndoEdits::putBack(const ReplacedItems& items) {
  for (const bool changedOnes : {true, false}) {
    for (const auto& [id, item] : items) {
      if (item.before) { continue; }
      ORLOCAL_TRY(const auto row, m_core.rows.read(id));
      if (row != nullptr && row->series.has_value() == changedOnes) { ORLOCAL_CHECK(m_core.removeItem(*row)); }
    }
  }
  for (const auto& [id, item] : items) {
    if (item.before && !item.before->series) {
      ORLOCAL_CHECK(writeBack(*item.before, !item.before->recurrence.empty()));
    }
  }
  for (const auto& [id, item] : items) {
    if (item.before && item.before->series) { ORLOCAL_CHECK(writeBack(*item.before, false)); }
  }
  // The entry on the timeline says whether there are changed occurrences, and which stand there was not known before.
  for (const auto& [id, item] : items) {
    if (!item.before || item.before->series || !item.before->recurrence.empty()) { continue; }
    ORLOCAL_TRY(const auto changed, m_core.rows.changedOf(id));
    if (!changed.empty()) { ORLOCAL_CHECK(writeBack(*item.before, true)); }
  }
  return {};
}

Status UndoEdits::writeBack(const Item& item, bool repeats) {
  std::optional<Series> own;
  std::optional<std::int64_t> original;
  bool wall = false;
  if (item.series) {
    ORLOCAL_TRY(const auto main, m_core.rows.readNamed(*item.series));
    ORLOCAL_TRY(const Series series, Series::compile(*main, Zone()));
    original = originalKey(series, *item.recurrenceId);
    wall = series.followsViewer();
  } else if (item.recurrenceId) {
    original = Timeline::keyOf(*item.recurrenceId);
    wall = Timeline::isWall(*item.recurrenceId);
  } else if (repeats) {
    ORLOCAL_TRY(own, Series::compile(item, Zone()));
  }
  ORLOCAL_TRY(const auto row, m_core.rows.read(item.id));
  if (row != nullptr) { return m_core.updateItem(item, own ? &*own : nullptr, original, wall); }
  return m_core.reinsertItem(item, own ? &*own : nullptr, original, wall);
}

}  // namespace orlocal::store
