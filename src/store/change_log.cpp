#include "store/change_log.h"

#include <algorithm>

#include "store/try.h"

namespace orlocal::store {

Status ChangeLog::startCommit() {
  Statement& newest = m_newest.in(m_database);
  ORLOCAL_TRY(const bool found, newest.step());
  m_firstOfCommit = (found ? newest.integer(0) : 0) + 1;
  m_commit = (found ? newest.integer(1) : 0) + 1;
  newest.reset();
  return {};
}

Status ChangeLog::record(Operation operation, Subject subject, std::int64_t row, std::optional<ItemId> series,
                         const Uuid& uuid) {
  Statement& insert = m_insert.in(m_database);
  insert.bind(1, m_commit).bind(2, m_writer).bind(3, static_cast<std::int64_t>(operation));
  insert.bind(4, static_cast<std::int64_t>(subject)).bind(5, row).bindBlob(7, uuid.bytes());
  if (series) {
    insert.bind(6, *series);
  } else {
    insert.bindNull(6);
  }
  return insert.run();
}

Status ChangeLog::prune() {
  ORLOCAL_TRY(const std::int64_t last, newest());
  // Dropping in lots keeps most commits from paying for it.
  constexpr std::int64_t kSlack = kKept / 10;
  ORLOCAL_TRY(const std::int64_t first, oldest());
  if (first == 0 || last - first < kKept + kSlack) return {};
  return m_prune.in(m_database).bind(1, std::min(last - kKept + 1, m_firstOfCommit)).run();
}

Result<std::int64_t> ChangeLog::newest() {
  Statement& newest = m_newest.in(m_database);
  const ResetAtExit reset(newest);
  ORLOCAL_TRY(const bool found, newest.step());
  return found ? newest.integer(0) : 0;
}

Result<std::int64_t> ChangeLog::oldest() {
  Statement& oldest = m_oldest.in(m_database);
  const ResetAtExit reset(oldest);
  ORLOCAL_TRY(const bool found, oldest.step());
  return found ? oldest.integer(0) : 0;
}

Status ChangeLog::visitAfter(std::int64_t seq, const std::function<void(const LoggedChange&)>& visit) {
  Statement& after = m_after.in(m_database);
  const ResetAtExit reset(after);
  after.bind(1, seq);
  for (;;) {
    ORLOCAL_TRY(const bool found, after.step());
    if (!found) return {};
    LoggedChange change;
    change.seq = after.integer(0);
    change.commit = after.integer(1);
    change.writer = after.integer(2);
    change.operation = static_cast<Operation>(after.integer(3));
    change.subject = static_cast<Subject>(after.integer(4));
    change.row = after.integer(5);
    if (!after.isNull(6)) change.series = after.integer(6);
    change.uuid = Uuid(after.blob(7));
    visit(change);
  }
}

}  // namespace orlocal::store
