#include "store/file/schema.h"

#include <cerrno>
#include <cstring>
#include <iterator>
#include <span>
#include <system_error>
#include <thread>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/system_reason.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/file/file_state.h"
#include "store/file/schema_check.h"
#include "store/file/side_files.h"
#include "store/model/model.h"
#include "store/time/zone_data_version.h"

namespace orlocal::store {
namespace {

/// Each step brings the format one version forward; a new file takes all of them. A step that was released never
/// changes again.
constexpr const char* kSteps[] = {
    R"sql(
CREATE TABLE sources(
  id INTEGER PRIMARY KEY AUTOINCREMENT, uuid BLOB NOT NULL, type INTEGER NOT NULL, title TEXT NOT NULL);
CREATE TABLE calendars(
  id INTEGER PRIMARY KEY AUTOINCREMENT, uuid BLOB NOT NULL, kind INTEGER NOT NULL, source INTEGER NOT NULL,
  title TEXT NOT NULL, red REAL, green REAL, blue REAL, position INTEGER NOT NULL, read_only INTEGER NOT NULL,
  subscribed INTEGER NOT NULL, immutable INTEGER NOT NULL, notes TEXT);
CREATE TABLE items(
  id INTEGER PRIMARY KEY AUTOINCREMENT, kind INTEGER NOT NULL, calendar INTEGER NOT NULL, uuid BLOB NOT NULL,
  series INTEGER, slot INTEGER NOT NULL, slot_start INTEGER NOT NULL, "start" INTEGER, start_clock TEXT, "end" INTEGER,
  end_clock TEXT, recurrence BLOB, recurrence_id INTEGER, recurrence_id_clock TEXT, original INTEGER,
  uid_hash INTEGER NOT NULL, uid TEXT NOT NULL, priority INTEGER NOT NULL, sequence INTEGER NOT NULL, created INTEGER,
  modified INTEGER, completed INTEGER, title TEXT, location TEXT, url TEXT, alarms BLOB, attendees BLOB, notes TEXT,
  extra TEXT);
CREATE UNIQUE INDEX items_by_uuid ON items(uuid);
CREATE INDEX items_by_uid ON items(uid_hash, original);
CREATE INDEX items_by_series ON items(series, original) WHERE series IS NOT NULL;
CREATE TABLE timeline(
  slot INTEGER NOT NULL, "start" INTEGER NOT NULL, item INTEGER NOT NULL, "end" INTEGER NOT NULL,
  calendar INTEGER NOT NULL, flags INTEGER NOT NULL, series INTEGER, original INTEGER,
  PRIMARY KEY(slot, "start", item)) WITHOUT ROWID;
CREATE TABLE changes(
  seq INTEGER PRIMARY KEY, commit_no INTEGER NOT NULL, writer INTEGER NOT NULL, operation INTEGER NOT NULL,
  subject INTEGER NOT NULL, row INTEGER NOT NULL, series INTEGER, uuid BLOB);
CREATE TABLE properties(name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;
CREATE TABLE zones(name TEXT PRIMARY KEY, vtimezone TEXT NOT NULL) WITHOUT ROWID;
CREATE TABLE contacts(
  id INTEGER PRIMARY KEY AUTOINCREMENT, identifier TEXT NOT NULL UNIQUE, name TEXT NOT NULL, emails BLOB NOT NULL,
  address TEXT);
CREATE TABLE contact_emails(
  email TEXT NOT NULL, contact INTEGER NOT NULL, PRIMARY KEY(email, contact)) WITHOUT ROWID;
)sql",
    // Packed recurrences may hold rules of other calendars and rules of exceptions; those that do not stay as they are.
    "",
    // A save writes fewer pages. Items take their numbers from the log, which a row brings past those that were given;
    // with the highest of all in its place, the counter of the table is not written any more, and none is taken from
    // it. A UID that is the item's own identifier is found by that, and has no place in the index of UIDs.
    R"sql(
INSERT INTO changes(seq, commit_no, writer, operation, subject, row, uuid)
  SELECT given, (SELECT ifnull(max(commit_no), 0) + 1 FROM changes), 0, 1, 4, 0, zeroblob(16) FROM (
    SELECT max(ifnull((SELECT seq FROM sqlite_sequence WHERE name = 'items'), 0),
               ifnull((SELECT max(id) FROM items), 0)) AS given)
  WHERE given > (SELECT ifnull(max(seq), 0) FROM changes);
DELETE FROM sqlite_sequence WHERE name = 'items';
INSERT INTO sqlite_sequence(name, seq) VALUES('items', 9223372036854775807);
DROP INDEX items_by_uid;
CREATE INDEX items_by_uid ON items(uid_hash, original) WHERE uid_hash <> 0;
)sql",
    // Calendars that hold events and reminders both, and what lies on servers.
    R"sql(
CREATE TABLE remotes(source INTEGER PRIMARY KEY, settings TEXT NOT NULL, state TEXT NOT NULL);
CREATE TABLE mirrors(
  id INTEGER PRIMARY KEY AUTOINCREMENT, source INTEGER NOT NULL, calendar INTEGER NOT NULL, url TEXT NOT NULL,
  state TEXT NOT NULL);
CREATE TABLE resources(
  id INTEGER PRIMARY KEY AUTOINCREMENT, mirror INTEGER NOT NULL, url TEXT NOT NULL, key TEXT NOT NULL,
  etag TEXT NOT NULL, item INTEGER, uid TEXT NOT NULL, digest INTEGER NOT NULL, ours INTEGER NOT NULL,
  text TEXT NOT NULL, sent TEXT, trouble TEXT);
CREATE UNIQUE INDEX resources_by_key ON resources(mirror, key);
CREATE INDEX resources_by_item ON resources(item) WHERE item IS NOT NULL;
CREATE TABLE resource_parts(item INTEGER PRIMARY KEY, resource INTEGER NOT NULL);
CREATE INDEX resource_parts_by_resource ON resource_parts(resource);
CREATE TABLE unsent(item INTEGER NOT NULL UNIQUE);
CREATE TABLE conflicts(
  id INTEGER PRIMARY KEY AUTOINCREMENT, mirror INTEGER NOT NULL, key TEXT NOT NULL, item INTEGER, title TEXT NOT NULL,
  fields TEXT NOT NULL, mine TEXT, theirs TEXT, made INTEGER NOT NULL);
)sql",
    // What commands of people replaced, so that they can be undone. The words of items, and what the log has to say of
    // what is gone. What became of alarms.
    R"sql(
CREATE TABLE journal(
  id INTEGER PRIMARY KEY AUTOINCREMENT, command INTEGER NOT NULL, person TEXT NOT NULL, words TEXT NOT NULL,
  made INTEGER NOT NULL, first INTEGER NOT NULL, last INTEGER NOT NULL, undoes INTEGER, undone_by INTEGER);
CREATE TABLE journal_items(
  part INTEGER NOT NULL, item INTEGER NOT NULL, main INTEGER NOT NULL, before BLOB, PRIMARY KEY(part, item))
  WITHOUT ROWID;
CREATE VIRTUAL TABLE search USING fts5(words, detail=none, columnsize=0, tokenize='ascii');
ALTER TABLE changes ADD COLUMN made INTEGER;
ALTER TABLE changes ADD COLUMN title TEXT;
ALTER TABLE changes ADD COLUMN calendar INTEGER;
CREATE TABLE alarm_rings(
  item INTEGER NOT NULL, original INTEGER NOT NULL, moment INTEGER NOT NULL, number INTEGER NOT NULL, rung INTEGER,
  snoozed INTEGER, acknowledged INTEGER, PRIMARY KEY(item, original, moment, number)) WITHOUT ROWID;
)sql",
};

struct DefaultCalendar {
  CalendarKind kind;
  std::string_view title;
  Rgb color;
};

constexpr DefaultCalendar kDefaultCalendars[] = {
    {CalendarKind::kEvents, "Calendar", {0.25, 0.47, 0.85}},
    {CalendarKind::kReminders, "Reminders", {0.90, 0.55, 0.20}},
};

Status insertDefaults(Database& database, UuidMaker& uuids) {
  ORLOCAL_TRY(Statement zoneData, database.prepare("INSERT INTO properties(name, value) VALUES('zone_data', ?)"));
  const std::string version = zoneDataVersion();
  ORLOCAL_CHECK(zoneData.bind(1, std::string_view(version)).run());
  ORLOCAL_TRY(Statement source, database.prepare("INSERT INTO sources(uuid, type, title) VALUES(?, ?, 'Local')"));
  const Uuid sourceUuid = uuids.next();
  source.bindBlob(1, sourceUuid.bytes()).bind(2, static_cast<std::int64_t>(Source::Type::kLocal));
  ORLOCAL_CHECK(source.run());
  ORLOCAL_TRY(
      Statement calendar,
      database.prepare("INSERT INTO calendars(uuid, kind, source, title, red, green, blue, position, read_only, "
                       "subscribed, immutable) VALUES(?, ?, last_insert_rowid(), ?, ?, ?, ?, 0, 0, 0, 0)"));
  const std::int64_t local = database.lastInsertId();
  for (const DefaultCalendar& made : kDefaultCalendars) {
    const Uuid uuid = uuids.next();
    calendar.bindBlob(1, uuid.bytes()).bind(2, static_cast<std::int64_t>(made.kind)).bind(3, made.title);
    calendar.bind(4, made.color.red).bind(5, made.color.green).bind(6, made.color.blue);
    ORLOCAL_CHECK(calendar.run());
  }
  return database.execute(fmt::format("UPDATE calendars SET source = {}", local).c_str());
}

/// Brings the open file to this program's version, unless another process did so meanwhile.
Status migrate(Database& database, UuidMaker& uuids) {
  ORLOCAL_TRY(Transaction transaction, Transaction::write(database));
  ORLOCAL_TRY(const std::int64_t version, database.integerOf("PRAGMA user_version"));
  if (version >= formatVersion()) { return {}; }
  for (std::int64_t step = version; step < formatVersion(); ++step) { ORLOCAL_CHECK(database.execute(kSteps[step])); }
  if (version == 0) { ORLOCAL_CHECK(insertDefaults(database, uuids)); }
  ORLOCAL_CHECK(database.execute(
      fmt::format("PRAGMA application_id={}; PRAGMA user_version={}", kApplicationId, formatVersion()).c_str()));
  return transaction.commit();
}

ErrorCode codeOf(int systemError) {
  switch (systemError) {
    case EACCES:
    case EROFS:
    case EPERM:
      return ErrorCode::kNotPermitted;
    case ENOSPC:
      return ErrorCode::kFull;
    default:
      return ErrorCode::kIo;
  }
}

/// Makes the folders that are missing, only for the user.
Status makeFolder(const std::filesystem::path& folder) {
  std::error_code unknown;
  if (folder.empty() || std::filesystem::exists(folder, unknown)) { return {}; }
  int error = unknown.value();
  if (error == 0) {
    ORLOCAL_CHECK(makeFolder(folder.parent_path()));
    if (::mkdir(folder.c_str(), 0700) == 0) {
      const auto parent = wholePath(folder).parent_path();
      if (const int made = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); made >= 0) {
        giveToOwner(made, parent);
        ::close(made);
      }
      return syncFolder(parent);
    }
    if (errno == EEXIST) { return {}; }
    error = errno;
  }
  return failure(codeOf(error), tr("The folder \"{}\" for the calendar store cannot be made: {}. Make it for this "
                                   "user, or set ORLOCAL_STORE to a file in another folder.",
                                   folder.string(), systemReason(error)));
}

Status makeFile(const std::filesystem::path& file) {
  std::error_code unknown;
  const auto found = std::filesystem::status(file, unknown).type();
  if (found == std::filesystem::file_type::directory) {
    return failure(ErrorCode::kIo,
                   tr("The calendar store \"{}\" is a folder; set ORLOCAL_STORE to a file.", file.string()));
  }
  // One that cannot be looked at is not there for us either; making it says why.
  if (found != std::filesystem::file_type::none && found != std::filesystem::file_type::not_found) { return {}; }
  ORLOCAL_CHECK(makeFolder(file.parent_path()));
  const int descriptor = ::open(file.c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
  if (descriptor >= 0) {
    const auto folder = std::filesystem::canonical(file, unknown).parent_path();
    giveToOwner(descriptor, folder);
    ::close(descriptor);
    return syncFolder(folder);
  }
  const int error = errno;
  return failure(codeOf(error), tr("The calendar store \"{}\" cannot be made or reached: {}. Check the "
                                   "permissions of its folder, or set ORLOCAL_STORE to another file.",
                                   file.string(), systemReason(error)));
}

/// Switching to the log asks for the file alone and does not wait by itself.
Status switchToLog(Database& database, std::chrono::milliseconds busyTimeout) {
  const auto deadline = std::chrono::steady_clock::now() + busyTimeout;
  for (;;) {
    auto switched = database.execute("PRAGMA journal_mode=WAL");
    if (switched || switched.error().code != ErrorCode::kBusy || std::chrono::steady_clock::now() >= deadline) {
      return switched;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
}

/// The steps that lead to a version.
std::span<const char* const> stepsTo(std::int64_t version) {
  return std::span(kSteps).first(static_cast<std::size_t>(version));
}

using CheckOfObjects = Status (*)(Database&, std::span<const char* const>);

/// The version; none for a file with nothing in it. What a store defines is held against what it should by `check`.
Result<std::optional<std::int64_t>> versionOf(Database& database, CheckOfObjects check = checkDefinitions) {
  // In one snapshot: another process may be making the file at this moment.
  ORLOCAL_TRY(const Transaction snapshot, Transaction::read(database));
  ORLOCAL_TRY(const std::int64_t application, database.integerOf("PRAGMA application_id"));
  ORLOCAL_TRY(const std::int64_t version, database.integerOf("PRAGMA user_version"));
  if (application == kApplicationId) {
    if (version >= 1 && version <= formatVersion()) {
      ORLOCAL_CHECK(check(database, stepsTo(version)));
      return version;
    }
    if (version < 1) {
      return failure(ErrorCode::kCorrupt,
                     tr("The calendar store \"{}\" is damaged: it names {} as its format, which never was. "
                        "Put a backup in its place (orlocal restore).",
                        database.file().string(), version));
    }
    return failure(ErrorCode::kNewerFormat,
                   tr("The calendar store \"{}\" has format {}, and this program knows formats up to {}; it was "
                      "left as it is. Use a newer program.",
                      database.file().string(), version, formatVersion()));
  }
  ORLOCAL_TRY(const std::int64_t objects, database.integerOf("SELECT count(*) FROM sqlite_schema"));
  if (application == 0 && version == 0 && objects == 0) { return std::nullopt; }
  return failure(ErrorCode::kCorrupt,
                 tr("The file \"{}\" is a database, but no calendar store; it was left as it is. Choose another "
                    "file.",
                    database.file().string()));
}

/// Where it cannot be looked at there may be one.
bool hasLog(const std::filesystem::path& file) {
  std::filesystem::path log = file;
  log += "-wal";
  std::error_code error;
  const auto size = std::filesystem::file_size(log, error);
  return error ? error != std::errc::no_such_file_or_directory : size > 0;
}

/// For a file that cannot be taken part in, for `reason`: a folder that may not be written, a disk without room.
Result<Database> openForReading(const std::filesystem::path& file, std::chrono::milliseconds busyTimeout,
                                CheckOfObjects check, Failure reason) {
  const bool full = reason.code == ErrorCode::kFull;
  // Beside a log that may hold newer content, the file alone would show old content.
  const bool log = hasLog(file);
  if (log && !full) { return failure(std::move(reason)); }
  auto database =
      Database::open(file, busyTimeout, log ? Database::Access::kReadAlone : Database::Access::kReadOnlyImmutable);
  if (!database) { return failure(std::move(reason)); }
  auto version = versionOf(*database, check);
  // Somebody else has it open, so that nothing here can be known of the log.
  if (!version && version.error().code == ErrorCode::kBusy) { return failure(std::move(reason)); }
  ORLOCAL_CHECK(version);
  if (!*version || (check == checkDefinitions && **version != formatVersion())) { return failure(std::move(reason)); }
  if (full) { database->onlyReads(std::move(reason)); }
  return database;
}

}  // namespace

Status makeStoreFolder(const std::filesystem::path& file) { return makeFolder(file.parent_path()); }

Result<Database> openStoreAsItIs(const std::filesystem::path& file, std::chrono::milliseconds busyTimeout) {
  // Where there is no log, nobody is about to change the file, and to take part would leave an index beside it.
  const auto access = hasLog(file) ? Database::Access::kReadOnly : Database::Access::kReadOnlyImmutable;
  ORLOCAL_TRY(Database database, Database::open(file, busyTimeout, access));
  auto known = versionOf(database, checkTables);
  if (!known && known.error().code == ErrorCode::kFull) {
    database.close();
    return openForReading(file, busyTimeout, checkTables, std::move(known.error()));
  }
  ORLOCAL_TRY(const auto version, std::move(known));
  if (version) { return database; }
  return failure(ErrorCode::kCorrupt, tr("The file \"{}\" is empty; choose another file.", file.string()));
}

std::int64_t formatVersion() { return static_cast<std::int64_t>(std::size(kSteps)); }

Result<Database> openStoreFile(const std::filesystem::path& file, std::chrono::milliseconds busyTimeout,
                               UuidMaker& uuids, Missing missing) {
  if (missing == Missing::kIsMade) { ORLOCAL_CHECK(makeFile(file)); }
  ORLOCAL_TRY(Database database, Database::open(file, busyTimeout));
  auto version = versionOf(database);
  const bool full = !version && version.error().code == ErrorCode::kFull;
  if (full || (!version && database.readOnly() && version.error().code != ErrorCode::kNewerFormat &&
               version.error().code != ErrorCode::kCorrupt)) {
    // A log cannot be read where its index cannot be made.
    database.close();
    return openForReading(file, busyTimeout, checkDefinitions, std::move(version.error()));
  }
  ORLOCAL_CHECK(version);
  ORLOCAL_CHECK(database.execute("PRAGMA cache_size=-8192"));
  const bool current = *version && **version == formatVersion();
  if (!database.readOnly()) {
    ORLOCAL_CHECK(switchToLog(database, busyTimeout));
    // Each commit reaches the disk before it is acknowledged.
    ORLOCAL_CHECK(database.execute("PRAGMA synchronous=FULL"));
    if (!current) { ORLOCAL_CHECK(migrate(database, uuids)); }
  } else if (!current) {
    return failure(ErrorCode::kNotPermitted,
                   tr("The calendar store \"{}\" has to be brought to a newer format and may not be written; "
                      "check the permissions of the file and its folder.",
                      file.string()));
  }
  return database;
}

}  // namespace orlocal::store
