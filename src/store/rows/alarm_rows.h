#pragma once

#include <optional>
#include <vector>

#include "store/file/sqlite.h"
#include "store/model/alarm_key.h"

namespace orlocal::store {

/// The rows of what became of alarms. Made for one use: alarms are rare.
class AlarmRows {
 public:
  /// What rang and was neither put off nor touched since is kept for so many days.
  static constexpr int kDaysKept = 30;

  explicit AlarmRows(Database& database) : m_database(database) {}

  Result<std::vector<AlarmRecord>> all();
  Result<std::vector<AlarmRecord>> snoozed();

  Result<bool> has(const AlarmKey& key);
  /// Notes that it rang; false where it is known already.
  Result<bool> ring(const AlarmKey& key, Moment now);
  /// The same of one that was put off until now; false where it is not.
  Result<bool> ringAgain(const AlarmKey& key, Moment now);
  Status snooze(const AlarmKey& key, Moment until);
  Status acknowledge(const AlarmKey& key, Moment now);
  /// Drops what is older than it is kept.
  Status prune(Moment now);

  /// Up to when alarms were told; none before the first time.
  Result<std::optional<Moment>> toldUpTo();
  Status setToldUpTo(Moment moment);

 private:
  Result<std::vector<AlarmRecord>> recordsOf(Statement& read);

  Database& m_database;
#define ORLOCAL_ALARM_COLUMNS "SELECT item, original, moment, number, rung, snoozed, acknowledged FROM alarm_rings "
  LazyStatement m_all{ORLOCAL_ALARM_COLUMNS "ORDER BY moment, item, original, number"};
  LazyStatement m_snoozed{ORLOCAL_ALARM_COLUMNS
                          "WHERE snoozed IS NOT NULL ORDER BY snoozed, moment, item, original, number"};
#undef ORLOCAL_ALARM_COLUMNS
  LazyStatement m_has{"SELECT 1 FROM alarm_rings WHERE item = ?1 AND original = ?2 AND moment = ?3 AND number = ?4"};
  LazyStatement m_ring{
      "INSERT OR IGNORE INTO alarm_rings(item, original, moment, number, rung) VALUES(?1, ?2, ?3, ?4, ?5)"};
  LazyStatement m_ringAgain{
      "UPDATE alarm_rings SET rung = ?5, snoozed = NULL WHERE item = ?1 AND original = ?2 AND moment = ?3 AND number = "
      "?4 AND snoozed <= ?5"};
  LazyStatement m_snooze{
      "INSERT INTO alarm_rings(item, original, moment, number, snoozed) VALUES(?1, ?2, ?3, ?4, ?5) ON CONFLICT DO "
      "UPDATE SET snoozed = excluded.snoozed, acknowledged = NULL"};
  LazyStatement m_acknowledge{
      "INSERT INTO alarm_rings(item, original, moment, number, acknowledged) VALUES(?1, ?2, ?3, ?4, ?5) ON CONFLICT DO "
      "UPDATE SET snoozed = NULL, acknowledged = excluded.acknowledged"};
  LazyStatement m_prune{
      "DELETE FROM alarm_rings WHERE moment < ?1 AND ifnull(rung, 0) < ?1 AND ifnull(snoozed, 0) < ?1"};
  LazyStatement m_toldUpTo{"SELECT value FROM properties WHERE name = 'alarms_told_up_to'"};
  LazyStatement m_setToldUpTo{"INSERT OR REPLACE INTO properties(name, value) VALUES('alarms_told_up_to', ?)"};
};

}  // namespace orlocal::store
