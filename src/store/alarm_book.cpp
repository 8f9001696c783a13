#include "store/alarm_book.h"

#include "base/try.h"
#include "store/core/store_core.h"
#include "store/rows/alarm_rows.h"

namespace orlocal::store {

Result<std::vector<AlarmRecord>> AlarmBook::records() {
  ORLOCAL_TRY(const Transaction snapshot, m_store.m_core->beginReading());
  return AlarmRows(m_store.m_core->database).all();
}

Result<std::vector<AlarmRecord>> AlarmBook::snoozed() {
  ORLOCAL_TRY(const Transaction snapshot, m_store.m_core->beginReading());
  return AlarmRows(m_store.m_core->database).snoozed();
}

Result<std::vector<AlarmKey>> AlarmBook::unknown(std::span<const AlarmKey> keys) {
  ORLOCAL_TRY(const Transaction snapshot, m_store.m_core->beginReading());
  AlarmRows rows(m_store.m_core->database);
  std::vector<AlarmKey> unknown;
  for (const AlarmKey& key : keys) {
    ORLOCAL_TRY(const bool known, rows.has(key));
    if (!known) { unknown.push_back(key); }
  }
  return unknown;
}

Result<std::optional<Moment>> AlarmBook::toldUpTo() {
  ORLOCAL_TRY(const Transaction snapshot, m_store.m_core->beginReading());
  return AlarmRows(m_store.m_core->database).toldUpTo();
}

Result<AlarmBook::Claim> AlarmBook::claim(const Wanted& wanted, Moment now, Moment upTo) {
  ORLOCAL_TRY(WriteTurn turn, m_store.m_core->beginWriting());
  AlarmRows rows(m_store.m_core->database);
  Claim claimed;
  ORLOCAL_TRY(claimed.toldUpTo, rows.toldUpTo());
  for (const AlarmKey& key : wanted.due) {
    ORLOCAL_TRY(const bool own, rows.ring(key, now));
    if (own) { claimed.due.push_back(key); }
  }
  for (const AlarmKey& key : wanted.putOff) {
    ORLOCAL_TRY(const bool own, rows.ringAgain(key, now));
    if (own) { claimed.putOff.push_back(key); }
  }
  ORLOCAL_CHECK(rows.setToldUpTo(upTo));
  ORLOCAL_CHECK(rows.prune(now));
  ORLOCAL_CHECK(turn.commit());
  return claimed;
}

Status AlarmBook::snooze(std::span<const AlarmKey> keys, Moment until) {
  ORLOCAL_TRY(WriteTurn turn, m_store.m_core->beginWriting());
  AlarmRows rows(m_store.m_core->database);
  for (const AlarmKey& key : keys) { ORLOCAL_CHECK(rows.snooze(key, until)); }
  return turn.commit();
}

Status AlarmBook::acknowledge(std::span<const AlarmKey> keys, Moment now) {
  ORLOCAL_TRY(WriteTurn turn, m_store.m_core->beginWriting());
  AlarmRows rows(m_store.m_core->database);
  for (const AlarmKey& key : keys) { ORLOCAL_CHECK(rows.acknowledge(key, now)); }
  return turn.commit();
}

}  // namespace orlocal::store
