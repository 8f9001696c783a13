#include "store/rows/alarm_rows.h"

#include <charconv>
#include <string>
#include <string_view>

#include "base/translation.h"
#include "base/try.h"
#include "store/file/checked_row.h"

namespace orlocal::store {
namespace {

std::int64_t microsecondsOf(Moment moment) { return moment.time_since_epoch().count(); }

Statement& bindKey(Statement& statement, const AlarmKey& key) {
  statement.bind(1, key.item).bind(2, microsecondsOf(key.original)).bind(3, microsecondsOf(key.moment));
  return statement.bind(4, static_cast<std::int64_t>(key.number));
}

}  // namespace

Result<std::vector<AlarmRecord>> AlarmRows::recordsOf(Statement& read) {
  const ResetAtExit reset(read);
  std::vector<AlarmRecord> records;
  for (;;) {
    ORLOCAL_TRY(const bool found, read.step());
    if (!found) { return records; }
    CheckedRow row(read);
    AlarmRecord record;
    record.key.item = row.id(0);
    const auto original = row.optionalMoment(1), moment = row.optionalMoment(2);
    record.key.original = original.value_or(Moment());
    record.key.moment = moment.value_or(Moment());
    record.key.number = static_cast<int>(row.number(3, 0, 1'000'000));
    record.rung = row.optionalMoment(4);
    record.snoozed = row.optionalMoment(5);
    record.acknowledged = row.optionalMoment(6);
    if (!row.sound() || !original || !moment) { return damaged(m_database, tr("The table of alarms that rang")); }
    records.push_back(record);
  }
}

Result<std::vector<AlarmRecord>> AlarmRows::all() { return recordsOf(m_all.in(m_database)); }
Result<std::vector<AlarmRecord>> AlarmRows::snoozed() { return recordsOf(m_snoozed.in(m_database)); }

Result<bool> AlarmRows::has(const AlarmKey& key) {
  Statement& find = bindKey(m_has.in(m_database), key);
  const ResetAtExit reset(find);
  return find.step();
}

Result<bool> AlarmRows::ring(const AlarmKey& key, Moment now) {
  ORLOCAL_CHECK(bindKey(m_ring.in(m_database), key).bind(5, microsecondsOf(now)).run());
  return m_database.changedRows() > 0;
}

Result<bool> AlarmRows::ringAgain(const AlarmKey& key, Moment now) {
  ORLOCAL_CHECK(bindKey(m_ringAgain.in(m_database), key).bind(5, microsecondsOf(now)).run());
  return m_database.changedRows() > 0;
}

Status AlarmRows::snooze(const AlarmKey& key, Moment until) {
  return bindKey(m_snooze.in(m_database), key).bind(5, microsecondsOf(until)).run();
}

Status AlarmRows::acknowledge(const AlarmKey& key, Moment now) {
  return bindKey(m_acknowledge.in(m_database), key).bind(5, microsecondsOf(now)).run();
}

Status AlarmRows::prune(Moment now) {
  return m_prune.in(m_database).bind(1, microsecondsOf(now - std::chrono::days(kDaysKept))).run();
}

Result<std::optional<Moment>> AlarmRows::toldUpTo() {
  Statement& read = m_toldUpTo.in(m_database);
  const ResetAtExit reset(read);
  ORLOCAL_TRY(const bool found, read.step());
  if (!found) { return std::nullopt; }
  CheckedRow row(read);
  const std::string_view text = row.text(0);
  std::int64_t microseconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), microseconds);
  const Moment moment{std::chrono::microseconds(microseconds)};
  if (!row.sound() || error != std::errc() || end != text.data() + text.size() || !isKept(moment)) {
    return damaged(m_database, tr("The moment up to which alarms were told"));
  }
  return moment;
}

Status AlarmRows::setToldUpTo(Moment moment) {
  const std::string text = std::to_string(microsecondsOf(moment));
  return m_setToldUpTo.in(m_database).bind(1, std::string_view(text)).run();
}

}  // namespace orlocal::store
