#include "store/file/change_log.h"

#include <algorithm>

#include "base/try.h"
#include "store/file/checked_row.h"
#include "store/time/clock.h"

namespace orlocal::store {
namespace {

constexpr const char* kLog = "The log of changes";
/// Past so many changes by others, forgetting everything costs less than looking at each.
constexpr std::int64_t kFew = 2'000;
/// Bytes of a title: what nobody would read to its end is not kept to its end.
constexpr std::size_t kLongestTitle = 300;

std::string_view beginningOf(std::string_view text) {
  if (text.size() <= kLongestTitle) { return text; }
  std::size_t end = kLongestTitle;
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) { --end; }
  return text.substr(0, end);
}

}  // namespace

Status ChangeLog::startCommit() {
  m_recorded.clear();  // what a commit that did not come about left
  Statement& newest = m_newest.in(m_database);
  const ResetAtExit reset(newest);
  ORLOCAL_TRY(const bool found, newest.step());
  CheckedRow row(newest);
  m_last = found ? row.id(0) : 0;
  m_firstOfCommit = m_last + 1;
  m_commit = (found ? row.number(1) : 0) + 1;
  if (!row.sound()) { return damaged(m_database, kLog); }
  m_made = std::chrono::floor<std::chrono::seconds>(now()).time_since_epoch().count();
  return {};
}

Status ChangeLog::record(Operation operation, Subject subject, std::int64_t row, std::optional<ItemId> series,
                         const Uuid& uuid, Departed departed) {
  m_recorded.push_back({operation, subject, row, series, uuid, std::move(departed)});
  ++m_last;
  return m_recorded.size() < kRowsAtOnce ? Status() : writeRecorded();
}

Status ChangeLog::writeRecorded() {
  const auto bind = [this](Statement& insert, int before, const Recorded& change) {
    insert.bind(before + 1, m_commit).bind(before + 2, m_writer);
    insert.bind(before + 3, static_cast<std::int64_t>(change.operation));
    insert.bind(before + 4, static_cast<std::int64_t>(change.subject)).bind(before + 5, change.row);
    change.series ? insert.bind(before + 6, *change.series) : insert.bindNull(before + 6);
    insert.bindBlob(before + 7, change.uuid.bytes()).bind(before + 8, m_made);
    const auto& [title, calendar] = change.departed;
    title ? insert.bind(before + 9, beginningOf(*title)) : insert.bindNull(before + 9);
    calendar != 0 ? insert.bind(before + 10, calendar) : insert.bindNull(before + 10);
  };
  ORLOCAL_CHECK(m_insert.write(m_database, std::span<const Recorded>(m_recorded), bind));
  m_recorded.clear();
  return {};
}

Status ChangeLog::finishCommit() {
  ORLOCAL_CHECK(writeRecorded());
  // Dropping in lots keeps most commits from paying for it; twice as many as come make up for large commits.
  constexpr std::int64_t kEvery = 500, kDropped = 2 * kEvery;
  const std::int64_t times = m_last / kEvery - (m_firstOfCommit - 1) / kEvery;
  if (times == 0) { return {}; }
  ORLOCAL_TRY(const std::int64_t first, oldest());
  const std::int64_t kept = std::min({m_last - kKept + 1, m_firstOfCommit, first + times * kDropped});
  return kept > first ? m_prune.in(m_database).bind(1, kept).run() : Status();
}

Result<std::int64_t> ChangeLog::newest() {
  Statement& newest = m_newest.in(m_database);
  const ResetAtExit reset(newest);
  ORLOCAL_TRY(const bool found, newest.step());
  CheckedRow row(newest);
  const std::int64_t seq = found ? row.id(0) : 0;
  if (!row.sound()) { return damaged(m_database, kLog); }
  return seq;
}

Result<std::int64_t> ChangeLog::oldest() {
  Statement& oldest = m_oldest.in(m_database);
  const ResetAtExit reset(oldest);
  ORLOCAL_TRY(const bool found, oldest.step());
  CheckedRow row(oldest);
  const std::int64_t seq = found ? row.id(0) : 0;
  if (!row.sound()) { return damaged(m_database, kLog); }
  return seq;
}

Result<bool> ChangeLog::fewBetween(std::int64_t seen, std::int64_t newest) {
  if (newest < seen || newest - seen > kFew) { return false; }
  ORLOCAL_TRY(const std::int64_t first, oldest());
  return first <= seen + 1;
}

Result<std::int64_t> ChangeLog::newestBefore(Moment moment) {
  const auto seconds = std::chrono::ceil<std::chrono::seconds>(moment).time_since_epoch().count();
  Statement& before = m_before.in(m_database).bind(1, std::int64_t{seconds});
  const ResetAtExit reset(before);
  ORLOCAL_TRY(const bool found, before.step());
  CheckedRow row(before);
  const std::int64_t seq = found && !row.isNull(0) ? row.id(0) : 0;
  if (!row.sound()) { return damaged(m_database, kLog); }
  return seq;
}

Status ChangeLog::visitAfter(std::int64_t seq, const std::function<void(const LoggedChange&)>& visit) {
  Statement& after = m_after.in(m_database);
  const ResetAtExit reset(after);
  after.bind(1, seq);
  for (std::int64_t last = seq;;) {
    ORLOCAL_TRY(const bool found, after.step());
    if (!found) { return {}; }
    CheckedRow row(after);
    LoggedChange change;
    change.seq = row.id(0);
    change.commit = row.number(1);
    change.writer = row.number(2, INT64_MIN, INT64_MAX);
    change.operation = row.oneOf(3, Operation::kDeleted);
    change.subject = row.oneOf(4, Subject::kContact);
    change.row = row.number(5);
    change.series = row.optionalId(6);
    if (!row.isNull(7)) { change.uuid = row.uuid(7); }
    if (!row.isNull(8)) { change.made = Moment(std::chrono::seconds(row.seconds(8))); }
    change.departed.title = row.optionalText(9);
    change.departed.calendar = row.optionalId(10).value_or(0);
    if (!row.sound() || change.seq <= last) { return damaged(m_database, kLog); }
    last = change.seq;
    visit(change);
  }
}

}  // namespace orlocal::store
