#include "store/core/zone_data.h"

#include "base/try.h"
#include "store/core/store_core.h"
#include "store/recurrence/original_key.h"

namespace orlocal::store {
namespace {

constexpr const char* kProperty = "zone_data";

Status move(StoreCore& core, ItemId id) {
  ORLOCAL_TRY(const auto item, core.rows.read(id));
  if (item == nullptr) { return {}; }
  std::optional<Series> own;
  std::optional<std::int64_t> original;
  bool originalIsWall = false;
  if (item->series) {
    ORLOCAL_TRY(const auto series, core.rows.read(*item->series));
    if (series == nullptr || !item->recurrenceId) { return {}; }
    ORLOCAL_TRY(const Series compiled, Series::compile(*series, Zone()));
    original = originalKey(compiled, *item->recurrenceId);
    originalIsWall = compiled.followsViewer();
  } else if (item->recurrenceId) {
    original = Timeline::keyOf(*item->recurrenceId);
    originalIsWall = Timeline::isWall(*item->recurrenceId);
  } else {
    ORLOCAL_TRY(const auto changed, core.rows.changedOf(id));
    if (!item->recurrence.empty() || !changed.empty()) { ORLOCAL_TRY(own, Series::compile(*item, Zone())); }
  }
  return core.replaceRow(*item, own ? &*own : nullptr, original, originalIsWall);
}

}  // namespace

Status followZoneData(StoreCore& core, const std::string& version) {
  ORLOCAL_TRY(Statement read, core.database.prepare("SELECT value FROM properties WHERE name = ?"));
  const auto known = [&]() -> Result<std::string> {
    const ResetAtExit reset(read);
    ORLOCAL_TRY(const bool found, read.bind(1, std::string_view(kProperty)).step());
    return found ? std::string(read.text(0)) : std::string();
  };
  ORLOCAL_TRY(const std::string before, known());
  // Versions grow as texts; of several systems that share a store the newest decides.
  if (version <= before || core.database.readOnly()) { return {}; }
  ORLOCAL_TRY(WriteTurn turn, core.beginWriting());
  ORLOCAL_TRY(const std::string meanwhile, known());
  if (version <= meanwhile) { return {}; }
  // Series first: the original starts of changed occurrences are read off them.
  ORLOCAL_TRY(const auto ids, core.rows.zonedIds());
  for (const ItemId id : ids) { ORLOCAL_CHECK(move(core, id)); }
  ORLOCAL_TRY(Statement write, core.database.prepare("INSERT OR REPLACE INTO properties(name, value) VALUES(?, ?)"));
  ORLOCAL_CHECK(write.bind(1, std::string_view(kProperty)).bind(2, std::string_view(version)).run());
  // The entries of the timeline may stand elsewhere now: who looked at them before has to look again.
  ORLOCAL_CHECK(core.log.record(Operation::kUpdated, Subject::kZone, 0, std::nullopt, Uuid()));
  return turn.commit();
}

}  // namespace orlocal::store
