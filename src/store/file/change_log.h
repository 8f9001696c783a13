#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "store/file/row_insert.h"
#include "store/file/sqlite.h"
#include "store/file/uuid.h"
#include "store/model/model.h"

namespace orlocal::store {

/// What was done, and to what.
enum class Operation : std::uint8_t { kInserted = 0, kUpdated = 1, kDeleted = 2 };
enum class Subject : std::uint8_t {
  kEvent = 0,
  kReminder = 1,
  kCalendar = 2,
  kReminderList = 3,
  kZone = 4,
  kContact = 5
};

/// What the log keeps of an item or a calendar that is gone, so that it can be told by its name.
struct Departed {
  std::optional<std::string> title;  ///< as much of it as names it
  CalendarId calendar = 0;           ///< of an item; 0 otherwise

  friend bool operator==(const Departed&, const Departed&) = default;
};

/// One row of the log.
struct LoggedChange {
  std::int64_t seq = 0;
  std::int64_t commit = 0;
  std::int64_t writer = 0;
  Operation operation = Operation::kUpdated;
  Subject subject = Subject::kEvent;
  std::int64_t row = 0;          ///< of the item, calendar or contact
  std::optional<ItemId> series;  ///< of a changed occurrence
  Uuid uuid;                     ///< public identifier; for a changed occurrence that of its series
  std::optional<Moment> made;    ///< to the second; none of what was written before version 5
  Departed departed;             ///< of what was deleted
};

/// The log of what every commit inserted, updated and deleted, and who did it. The newest `kKept` rows are kept, and
/// always the whole of the last commit; older ones go at the pace at which new ones come, so that no commit pays for
/// what a large one before it left.
class ChangeLog {
 public:
  static constexpr std::int64_t kKept = 100'000;

  /// `writer` marks the commits of this store object.
  ChangeLog(Database& database, std::int64_t writer) : m_database(database), m_writer(writer) {}

  std::int64_t writer() const { return m_writer; }

  /// Begins the rows of a commit; inside its transaction.
  Status startCommit();
  /// The row is written by `finishCommit` at the latest.
  Status record(Operation operation, Subject subject, std::int64_t row, std::optional<ItemId> series, const Uuid& uuid,
                Departed departed = {});
  /// Writes what was recorded and drops what is too old; before the commit.
  Status finishCommit();
  /// The newest row's number with what was recorded since `startCommit`.
  std::int64_t last() const { return m_last; }
  /// The number of the row that is recorded next: no row had it before, and none gets it again.
  std::int64_t next() const { return m_last + 1; }

  /// The newest row's number; 0 when there is none.
  Result<std::int64_t> newest();
  /// The oldest row's number still known; 0 when there is none.
  Result<std::int64_t> oldest();
  /// Whether what came after the row `seen` up to the `newest` is all known still, and so little that looking at each
  /// change costs less than forgetting everything.
  Result<bool> fewBetween(std::int64_t seen, std::int64_t newest);
  /// The newest row of what was committed before `moment`; 0 when the log does not reach back to any.
  Result<std::int64_t> newestBefore(Moment moment);
  /// Visits the rows after `seq` in their order.
  Status visitAfter(std::int64_t seq, const std::function<void(const LoggedChange&)>& visit);

 private:
  struct Recorded {
    Operation operation;
    Subject subject;
    std::int64_t row;
    std::optional<ItemId> series;
    Uuid uuid;
    Departed departed;
  };
  static constexpr int kRowsAtOnce = 16;

  Status writeRecorded();

  Database& m_database;
  std::int64_t m_writer;
  std::int64_t m_commit = 0;
  std::int64_t m_made = 0;  ///< seconds since 1970
  std::int64_t m_firstOfCommit = 0;
  std::int64_t m_last = 0;
  std::vector<Recorded> m_recorded;  ///< not written yet
  LazyStatement m_newest{"SELECT seq, commit_no FROM changes ORDER BY seq DESC LIMIT 1"};
  LazyStatement m_oldest{"SELECT seq FROM changes ORDER BY seq LIMIT 1"};
  RowInsert m_insert{
      "INSERT OR FAIL INTO changes(commit_no, writer, operation, subject, row, series, uuid, made, title, "
      "calendar)",
      10, kRowsAtOnce};
  LazyStatement m_before{"SELECT max(seq) FROM changes WHERE made < ?"};
  LazyStatement m_prune{"DELETE FROM changes WHERE seq < ?"};
  LazyStatement m_after{
      "SELECT seq, commit_no, writer, operation, subject, row, series, uuid, made, title, calendar FROM changes "
      "WHERE seq > ? ORDER BY seq"};
};

}  // namespace orlocal::store
