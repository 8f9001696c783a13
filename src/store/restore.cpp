#include <algorithm>
#include <cerrno>
#include <string>
#include <system_error>

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/system_reason.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/backup.h"
#include "store/core/store_core.h"
#include "store/file/change_signal.h"
#include "store/file/checked_row.h"
#include "store/file/file_draft.h"
#include "store/file/file_state.h"
#include "store/file/schema.h"
#include "store/file/side_files.h"
#include "store/file/store_file.h"

namespace orlocal::store {
namespace {

/// "calendar.db.before-restore-20261102T080000Z".
std::filesystem::path keptNameOf(const std::filesystem::path& store) {
  const auto second = std::chrono::floor<std::chrono::seconds>(now()).time_since_epoch().count();
  const LocalTime time = LocalTime() + second;
  const std::string name =
      fmt::format("{}.before-restore-{:04}{:02}{:02}T{:02}{:02}{:02}Z", store.string(), time.year(), time.month(),
                  time.day(), time.hour(), time.minute(), time.second());
  std::error_code error;
  std::string free = name;
  for (int i = 2; std::filesystem::exists(std::filesystem::symlink_status(free, error)); ++i) {
    free = fmt::format("{}-{}", name, i);
  }
  return free;
}

/// The same permissions and owner as the store that was there.
void likeTheOneBefore(const std::filesystem::path& file, const std::filesystem::path& before) {
  struct stat found {};
  if (::stat(before.c_str(), &found) != 0) { return; }
  if (::geteuid() == 0) { static_cast<void>(!::chown(file.c_str(), found.st_uid, found.st_gid)); }
  ::chmod(file.c_str(), found.st_mode & 0666U);
}

/// Numbers past that were never given: the file that has them is damaged, and going on from them would end at once.
bool isGiven(std::int64_t number) { return number >= 0 && number <= kHighestNumber - 1'000'000; }

class Restoring {
 public:
  Restoring(const StoreOptions& options, const std::filesystem::path& backup)
      : m_options(options), m_backup(backup), m_store(options.file) {
    std::error_code missing;
    if (auto resolved = std::filesystem::canonical(m_store, missing); !missing) { m_store = std::move(resolved); }
  }

  Result<RestoredStore> run() {
    ORLOCAL_CHECK(checkBackup());
    ORLOCAL_CHECK(makeStoreFolder(m_store));
    ORLOCAL_TRY(FileDraft draft, FileDraft::beside(m_store));
    ORLOCAL_TRY(m_result.content, prepare(draft));
    if (!FileState::of(m_store)) {
      ORLOCAL_CHECK(putInPlace(draft));
      return m_result;
    }
    ORLOCAL_TRY(const bool readable, hasReadableHeader());
    auto present = readable ? openPresent() : Result<Database>(failure(ErrorCode::kCorrupt, ""));
    if (present) {
      ORLOCAL_CHECK(copyInto(*present, draft));
    } else if (present.error().code == ErrorCode::kCorrupt) {
      ORLOCAL_CHECK(putInPlace(draft));
    } else {
      return failure(present.error());
    }
    return m_result;
  }

 private:
  Status checkBackup() const {
    const auto state = FileState::of(m_backup);
    if (!state) {
      return failure(ErrorCode::kNotFound, tr("There is no backup at \"{}\"; nothing was changed.", m_backup.string()));
    }
    const auto present = FileState::of(m_store);
    if (!present || !present->isSameFileAs(*state)) { return {}; }
    return failure(ErrorCode::kInvalid,
                   tr("\"{}\" is the calendar store itself; name a backup of it.", m_backup.string()));
  }

  /// A whole store of this program's version in `draft`.
  Result<CopiedStore> prepare(const FileDraft& draft) {
    ORLOCAL_TRY(Database source, openStoreAsItIs(m_backup, m_options.busyTimeout));
    ORLOCAL_TRY(const CopiedStore content, copyChecked(source, draft.file(), m_options.busyTimeout));
    StoreOptions options = m_options;
    options.file = draft.file();
    // Brings an older format forward, and the timeline to this system's zones.
    ORLOCAL_TRY(const auto opened, StoreCore::open(options));
    return content;
  }

  /// Asked without taking part: SQLite would do away with a log that it cannot use, and it is to be kept.
  Result<bool> hasReadableHeader() const {
    ORLOCAL_TRY(Database probe, Database::open(m_store, m_options.busyTimeout, Database::Access::kReadOnlyImmutable));
    const auto application = probe.integerOf("PRAGMA application_id");
    const auto tables = probe.integerOf("SELECT count(*) FROM sqlite_schema");
    if (!application) { return false; }
    if (*application == kApplicationId || !tables || *tables == 0) { return true; }
    return failure(ErrorCode::kInvalid, tr("The file \"{}\" is a database, but no calendar store; it was left as "
                                           "it is. Choose another file.",
                                           m_store.string()));
  }

  Result<Database> openPresent() const {
    UuidMaker uuids;
    auto present = openStoreFile(m_store, m_options.busyTimeout, uuids, Missing::kIsAFailure);
    if (present || present.error().code != ErrorCode::kNewerFormat) { return present; }
    // Whatever its version, it can be kept and replaced.
    return Database::open(m_store, m_options.busyTimeout);
  }

  /// One commit for those who have the store open: nothing is moved, so no log can meet another file.
  Status copyInto(Database& present, const FileDraft& draft) {
    if (present.readOnly()) {
      return failure(ErrorCode::kNotPermitted,
                     tr("The calendar store \"{}\" may not be written; nothing was changed. Check the "
                        "permissions of the file and its folder.",
                        m_store.string()));
    }
    ORLOCAL_TRY(Database content, Database::open(draft.file(), m_options.busyTimeout));
    ORLOCAL_CHECK(content.execute("PRAGMA journal_mode=DELETE"));
    ORLOCAL_CHECK(likePagesOf(present, content));
    // A reader beside the writer: it sees what was committed last, and nothing can be committed any more.
    ORLOCAL_TRY(Database before, Database::open(m_store, m_options.busyTimeout));
    const Bell bell(m_store);
    const Status copied = content.copyInto(present, [&]() -> Status {
      ORLOCAL_CHECK(keep(before));
      return goOnCounting(content, before);
    });
    ORLOCAL_CHECK(copied);
    bell.ring();
    before.close();
    present.emptyLog();
    return {};
  }

  static Status likePagesOf(Database& present, Database& content) {
    ORLOCAL_TRY(const std::int64_t wanted, present.integerOf("PRAGMA page_size"));
    ORLOCAL_TRY(const std::int64_t actual, content.integerOf("PRAGMA page_size"));
    if (wanted == actual) { return {}; }
    return content.execute(fmt::format("PRAGMA page_size={}; VACUUM", wanted).c_str());
  }

  Status keep(Database& before) {
    ORLOCAL_TRY(FileDraft draft, FileDraft::beside(m_store));
    {
      ORLOCAL_TRY(Database copy, Database::open(draft.file(), m_options.busyTimeout));
      ORLOCAL_CHECK(before.copyInto(copy));
      ORLOCAL_CHECK(copy.execute("PRAGMA journal_mode=DELETE"));
    }
    likeTheOneBefore(draft.file(), m_store);
    const auto name = keptNameOf(m_store);
    ORLOCAL_CHECK(draft.publish(name));
    m_result.kept = name;
    return {};
  }

  /// Numbers that were given in either history are not given again, and the log begins after both, with a gap before
  /// it: whoever knew the one before forgets all of it.
  static Status goOnCounting(Database& content, Database& before) {
    ORLOCAL_TRY(Statement numbers, before.prepare("SELECT name, seq FROM sqlite_sequence"));
    ORLOCAL_TRY(Statement raise, content.prepare("UPDATE sqlite_sequence SET seq = max(seq, ?2) WHERE name = ?1"));
    ORLOCAL_TRY(Statement insert,
                content.prepare("INSERT INTO sqlite_sequence(name, seq) SELECT ?1, ?2 WHERE NOT EXISTS "
                                "(SELECT 1 FROM sqlite_sequence WHERE name = ?1)"));
    ORLOCAL_TRY(Transaction transaction, Transaction::write(content));
    for (;;) {
      ORLOCAL_TRY(const bool found, numbers.step());
      if (!found) { break; }
      const std::string name(numbers.text(0));
      const std::int64_t number = numbers.integer(1);
      if (!isGiven(number)) { continue; }
      ORLOCAL_CHECK(raise.bind(1, std::string_view(name)).bind(2, number).run());
      ORLOCAL_CHECK(insert.bind(1, std::string_view(name)).bind(2, number).run());
    }
    std::int64_t row = 0, commit = 0;
    for (Database* each : {&before, &content}) {
      ORLOCAL_TRY(const std::int64_t lastRow, each->integerOf("SELECT max(seq) FROM changes"));
      ORLOCAL_TRY(const std::int64_t lastCommit, each->integerOf("SELECT max(commit_no) FROM changes"));
      if (isGiven(lastRow)) { row = std::max(row, lastRow); }
      if (isGiven(lastCommit)) { commit = std::max(commit, lastCommit); }
    }
    constexpr std::int64_t kGap = 2;
    UuidMaker random;
    ORLOCAL_CHECK(content.execute("DELETE FROM changes"));
    ORLOCAL_TRY(Statement first,
                content.prepare("INSERT INTO changes(seq, commit_no, writer, operation, subject, row, uuid) "
                                "VALUES(?, ?, ?, ?, ?, 0, zeroblob(16))"));
    first.bind(1, row + kGap).bind(2, commit + kGap).bind(3, random.randomNumber());
    first.bind(4, static_cast<std::int64_t>(Operation::kUpdated)).bind(5, static_cast<std::int64_t>(Subject::kZone));
    ORLOCAL_CHECK(first.run());
    return transaction.commit();
  }

  /// For a place where no store can be opened: what is there is moved aside as it is, with its log, before the new file
  /// stands in its place.
  Status putInPlace(FileDraft& draft) {
    {
      ORLOCAL_TRY(Database content, Database::open(draft.file(), m_options.busyTimeout));
      ORLOCAL_CHECK(content.execute("PRAGMA journal_mode=DELETE"));
    }
    ORLOCAL_TRY(const PlaceTurn turn, PlaceTurn::take(m_store, PlaceTurn::Purpose::kReplace, m_options.busyTimeout));
    const auto name = keptNameOf(m_store);
    std::error_code ignored;
    likeTheOneBefore(draft.file(), m_store);
    // A second name first: there is no moment without a file in which somebody could make an empty store. It is tried
    // and not asked for, as a disk that fails to answer would lose what is there.
    bool kept = ::link(m_store.c_str(), name.c_str()) == 0;
    if (!kept && errno != ENOENT) {
      if (::rename(m_store.c_str(), name.c_str()) != 0) {
        return failure(ErrorCode::kIo, tr("\"{}\" cannot be kept as \"{}\": {}; nothing was changed.", m_store.string(),
                                          name.string(), systemReason(errno)));
      }
      kept = true;
    }
    const std::string log = m_store.string() + "-wal";
    if (std::filesystem::exists(log, ignored)) {
      std::error_code error;
      std::filesystem::rename(log, name.string() + "-wal", error);
      if (error) {
        return failure(ErrorCode::kIo,
                       tr("\"{}\" cannot be moved aside: {}; nothing was changed.", log, error.message()));
      }
      kept = true;
    }
    std::filesystem::remove(m_store.string() + "-shm", ignored);
    // The new file may be on the disk before what was kept, and beside a log that is not its own.
    if (kept) { ORLOCAL_CHECK(syncFolder(m_store.parent_path())); }
    if (kept) { m_result.kept = name; }
    m_result.keptUnread = kept;
    ORLOCAL_CHECK(draft.publishInPlaceOf(m_store));
    Bell(m_store).ring();
    return {};
  }

  const StoreOptions& m_options;
  const std::filesystem::path& m_backup;
  std::filesystem::path m_store;
  RestoredStore m_result;
};

}  // namespace

Result<RestoredStore> restoreStore(const StoreOptions& store, const std::filesystem::path& backup) {
  return Restoring(store, backup).run();
}

}  // namespace orlocal::store
