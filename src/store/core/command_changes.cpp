#include "store/core/command_changes.h"

#include <map>
#include <set>

#include "base/try.h"
#include "store/rows/journal_rows.h"

namespace orlocal::store {
namespace {

/// What stood under a number before the command's first part that touched it.
struct Touched {
  bool known = false;  ///< false: only an occurrence of it is, so it was there
  std::optional<Item> before;
};

/// Which items the command left removed, by the log of changes as far back as that goes; before, what is not there now
/// counts.
Result<std::set<ItemId>> removedIn(StoreCore& core, const std::vector<JournalRows::Part>& parts,
                                   const std::map<ItemId, Touched>& touched) {
  std::set<ItemId> removed;
  ORLOCAL_TRY(const std::int64_t oldest, core.log.oldest());
  for (const JournalRows::Part& part : parts) {
    if (oldest > 0 && oldest <= part.range.first) {
      ORLOCAL_TRY(auto here, core.log.removedBetween(part.range.first, part.range.last));
      removed.merge(here);
      continue;
    }
    for (const auto& [id, was] : touched) {
      ORLOCAL_TRY(const auto row, core.rows.read(id));
      if (row == nullptr) { removed.insert(id); }
    }
  }
  return removed;
}

}  // namespace

Result<std::vector<CommandChange>> changesOfCommand(StoreCore& core, std::int64_t number) {
  JournalRows journal(core.database);
  ORLOCAL_TRY(const auto parts, journal.partsOf(number));
  std::map<ItemId, Touched> touched;
  for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
    ORLOCAL_TRY(ReplacedItems items, journal.itemsOf(part->id));
    for (auto& [id, item] : items) {
      // What becomes of an occurrence becomes of its series.
      Touched& one = touched[item.main];
      if (id == item.main && !one.known) { one = {true, std::move(item.before)}; }
    }
  }
  ORLOCAL_TRY(const auto removed, removedIn(core, parts, touched));
  std::vector<CommandChange> changes;
  for (auto& [id, was] : touched) {
    const bool made = was.known && !was.before;
    CommandChange change{CommandChange::What::kChanged, id, std::move(was.before)};
    if (made) {
      change.what = CommandChange::What::kMade;
    } else if (removed.contains(id)) {
      change.what = CommandChange::What::kRemoved;
    }
    if (!change.item) {
      ORLOCAL_TRY(const auto row, core.rows.read(id));
      if (row != nullptr) { change.item = *row; }
    }
    changes.push_back(std::move(change));
  }
  return changes;
}

}  // namespace orlocal::store
