#include "store/file/sqlite.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>

#include <fcntl.h>
#include <fmt/format.h>
#include <sqlite3.h>
#include <unistd.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/file/file_state.h"
#include "store/file/side_files.h"

namespace orlocal::store {
namespace {

struct Explanation {
  int sqliteCode;
  ErrorCode code;
  const char* sentence;  ///< {} is the file
};

constexpr Explanation kExplanations[] = {
    {SQLITE_BUSY, ErrorCode::kBusy,
     translatable(
         "The calendar store {} is being written by another process and did not become free in time; try again.")},
    {SQLITE_LOCKED, ErrorCode::kBusy,
     translatable("The calendar store {} is in use by another connection; try again.")},
    {SQLITE_FULL, ErrorCode::kFull,
     translatable(
         "There is no room left on the disk that holds the calendar store {}; nothing was written. Free some space.")},
    {SQLITE_READONLY, ErrorCode::kNotPermitted,
     translatable("The calendar store {} may not be written; check the permissions of the file and its folder.")},
    {SQLITE_PERM, ErrorCode::kNotPermitted,
     translatable("The permissions of the calendar store {} forbid this; check file and folder.")},
    {SQLITE_AUTH, ErrorCode::kNotPermitted,
     translatable("The permissions of the calendar store {} forbid this; check file and folder.")},
    {SQLITE_NOTADB, ErrorCode::kCorrupt, translatable("The file {} is no calendar store; choose another file.")},
    {SQLITE_CORRUPT, ErrorCode::kCorrupt,
     translatable("The calendar store {} is damaged; write out what can still be read (orlocal export --salvage), or "
                  "put a backup "
                  "in "
                  "its place (orlocal restore).")},
    {SQLITE_CANTOPEN, ErrorCode::kIo,
     translatable("The calendar store {} cannot be opened; check that the file and its folder exist and may be read.")},
    {SQLITE_INTERRUPT, ErrorCode::kInterrupted,
     translatable("Work on the calendar store {} was stopped; nothing was written.")},
    {SQLITE_NOMEM, ErrorCode::kIo, translatable("There is not enough memory to work on the calendar store {}.")},
};

/// On a full disk a file or an index that cannot be made fails in other ways than one that cannot be written.
bool isForWantOfRoom(int result, sqlite3* handle) {
  if (result == SQLITE_IOERR_SHMSIZE) { return true; }
  const int plain = result & 0xff;
  if (handle == nullptr || (plain != SQLITE_IOERR && plain != SQLITE_CANTOPEN)) { return false; }
  const int error = sqlite3_system_errno(handle);
  return error == ENOSPC || error == EDQUOT;
}

/// An index of words that does not know its own kind fails like a statement that nobody could run.
bool isOfADamagedIndex(int result, sqlite3* handle) {
  if (result != SQLITE_ERROR || handle == nullptr) { return false; }
  const std::string_view message = sqlite3_errmsg(handle);
  return message.find("fts5") != message.npos || message.starts_with("vtable constructor failed");
}

Failed sqliteFailure(int result, const std::string& file, sqlite3* handle) {
  if (isForWantOfRoom(result, handle)) { result = SQLITE_FULL; }
  if (isOfADamagedIndex(result, handle)) { result = SQLITE_CORRUPT; }
  const std::string quoted = fmt::format("\"{}\"", file);
  for (const Explanation& explanation : kExplanations) {
    if (explanation.sqliteCode == (result & 0xff)) {
      return failure(explanation.code, translation::put(explanation.sentence, fmt::make_format_args(quoted)));
    }
  }
  return failure(ErrorCode::kIo, tr("The calendar store {} failed: {}.", quoted,
                                    handle != nullptr ? sqlite3_errmsg(handle) : sqlite3_errstr(result)));
}

Failed sqliteFailure(int result, sqlite3* handle) {
  const char* file = handle != nullptr ? sqlite3_db_filename(handle, "main") : nullptr;
  return sqliteFailure(result, file != nullptr ? file : "", handle);
}

/// The file may have been made by anybody: what it defines runs nothing that does something, and nothing that is
/// written damages what SQLite relies on.
int defend(sqlite3* handle) {
  sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  return sqlite3_exec(handle, "PRAGMA cell_size_check=ON", nullptr, nullptr, nullptr);
}

/// The file itself, links followed, by a name that means nothing else: SQLite takes some names for a database that is
/// kept nowhere.
std::filesystem::path wholeNameOf(const std::filesystem::path& file) {
  std::error_code error;
  auto whole = std::filesystem::canonical(file, error);
  return error ? wholePath(file) : whole;
}

/// `file` is a whole path.
std::string uriOf(const std::filesystem::path& file) {
  std::string uri = "file:";
  for (const char c : file.string()) {
    if (c == '%' || c == '?' || c == '#') {
      uri += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    } else {
      uri += c;
    }
  }
  return uri + "?immutable=1";
}

}  // namespace

Statement::~Statement() { sqlite3_finalize(m_handle); }

Statement& Statement::bind(int parameter, std::int64_t value) {
  sqlite3_bind_int64(m_handle, parameter, value);
  return *this;
}

Statement& Statement::bind(int parameter, double value) {
  sqlite3_bind_double(m_handle, parameter, value);
  return *this;
}

Statement& Statement::bind(int parameter, std::string_view text) {
  // A view without a place would be bound as NULL.
  const char* data = text.data() != nullptr ? text.data() : "";
  sqlite3_bind_text64(m_handle, parameter, data, text.size(), SQLITE_STATIC, SQLITE_UTF8);
  return *this;
}

Statement& Statement::bindBlob(int parameter, std::span<const std::byte> bytes) {
  if (bytes.empty()) {
    sqlite3_bind_zeroblob(m_handle, parameter, 0);
  } else {
    sqlite3_bind_blob64(m_handle, parameter, bytes.data(), bytes.size(), SQLITE_STATIC);
  }
  return *this;
}

Statement& Statement::bindNull(int parameter) {
  sqlite3_bind_null(m_handle, parameter);
  return *this;
}

Result<bool> Statement::step() {
  if (m_failure != nullptr) { return failure(*m_failure); }
  const int result = sqlite3_step(m_handle);
  if (result == SQLITE_ROW) { return true; }
  if (result == SQLITE_DONE) {
    sqlite3_reset(m_handle);
    return false;
  }
  auto error = sqliteFailure(result, sqlite3_db_handle(m_handle));
  sqlite3_reset(m_handle);
  return error;
}

Status Statement::run() {
  ORLOCAL_CHECK(step());
  reset();
  return {};
}

void Statement::reset() {
  if (m_handle != nullptr) { sqlite3_reset(m_handle); }
}

Statement::Type Statement::type(int column) const {
  switch (sqlite3_column_type(m_handle, column)) {
    case SQLITE_INTEGER:
      return Type::kInteger;
    case SQLITE_FLOAT:
      return Type::kReal;
    case SQLITE_TEXT:
      return Type::kText;
    case SQLITE_BLOB:
      return Type::kBlob;
    default:
      return Type::kNull;
  }
}

std::int64_t Statement::integer(int column) const { return sqlite3_column_int64(m_handle, column); }
double Statement::real(int column) const { return sqlite3_column_double(m_handle, column); }

std::string_view Statement::text(int column) const {
  const auto* data = reinterpret_cast<const char*>(sqlite3_column_text(m_handle, column));
  return data == nullptr ? std::string_view()
                         : std::string_view(data, static_cast<std::size_t>(sqlite3_column_bytes(m_handle, column)));
}

std::span<const std::byte> Statement::blob(int column) const {
  const auto* data = static_cast<const std::byte*>(sqlite3_column_blob(m_handle, column));
  return {data, data == nullptr ? 0 : static_cast<std::size_t>(sqlite3_column_bytes(m_handle, column))};
}

LazyStatement::~LazyStatement() {
  if (m_database != nullptr) { std::erase(m_database->m_kept, this); }
}

Statement& LazyStatement::in(Database& database) {
  if (m_statement.prepared()) {
    m_statement.reset();
    sqlite3_clear_bindings(m_statement.m_handle);
    return m_statement;
  }
  auto prepared = database.prepare(m_sql);
  if (prepared) {
    m_statement = std::move(*prepared);
    m_database = &database;
    database.m_kept.push_back(this);
  } else {
    m_statement.m_failure = std::make_unique<Failure>(std::move(prepared.error()));
  }
  return m_statement;
}

Database::~Database() { close(); }

void Database::swap(Database& other) noexcept {
  std::swap(m_handle, other.m_handle);
  std::swap(m_file, other.m_file);
  std::swap(m_immutable, other.m_immutable);
  std::swap(m_whyOnlyRead, other.m_whyOnlyRead);
  std::swap(m_turns, other.m_turns);
  std::swap(m_kept, other.m_kept);
  for (LazyStatement* kept : m_kept) { kept->m_database = this; }
  for (LazyStatement* kept : other.m_kept) { kept->m_database = &other; }
}

void Database::close() {
  for (LazyStatement* kept : m_kept) {
    kept->m_statement = Statement();
    kept->m_database = nullptr;
  }
  m_kept.clear();
  m_turns = {};
  sqlite3_close_v2(std::exchange(m_handle, nullptr));
}

void Database::emptyLog() {
  if (m_handle == nullptr || readOnly()) { return; }
  // Who is at work now will do it later.
  sqlite3_busy_timeout(m_handle, 0);
  sqlite3_wal_checkpoint_v2(m_handle, "main", SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr);
}

Result<Database> Database::open(const std::filesystem::path& file, std::chrono::milliseconds busyTimeout,
                                Access access) {
  Database database;
  database.m_file = file;
  database.m_immutable = access == Access::kReadOnlyImmutable;
  if (file.empty()) {
    return failure(ErrorCode::kInvalid, tr("A calendar store needs a name; set ORLOCAL_STORE to a file."));
  }
  const auto whole = wholeNameOf(file);
  ORLOCAL_CHECK(checkStoreFiles(whole));
  const std::string name = database.m_immutable ? uriOf(whole) : whole.string();
  const bool alone = access == Access::kReadAlone;  // which takes a lock that is a writer's
  const int flags = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE |
                    (access == Access::kReadWrite || alone ? SQLITE_OPEN_READWRITE : SQLITE_OPEN_READONLY) |
                    (database.m_immutable ? SQLITE_OPEN_URI : 0);
  const int result = sqlite3_open_v2(name.c_str(), &database.m_handle, flags, nullptr);
  if (result != SQLITE_OK) { return sqliteFailure(result, file.string(), database.m_handle); }
  // When a file does not open for writing, SQLite opens it for reading, whatever the reason was: where it may be
  // written, a passing want of descriptors would leave a store that takes no change for as long as it is open.
  if (access == Access::kReadWrite && sqlite3_db_readonly(database.m_handle, "main") == 1 &&
      ::faccessat(AT_FDCWD, whole.c_str(), W_OK, AT_EACCESS) == 0) {
    return sqliteFailure(SQLITE_CANTOPEN, file.string(), nullptr);
  }
  if (const int defended = defend(database.m_handle); defended != SQLITE_OK) {
    return sqliteFailure(defended, file.string(), database.m_handle);
  }
  sqlite3_busy_timeout(database.m_handle, static_cast<int>(busyTimeout.count()));
  if (alone) {
    sqlite3_db_config(database.m_handle, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    ORLOCAL_CHECK(database.execute("PRAGMA locking_mode=EXCLUSIVE; PRAGMA query_only=ON"));
  }
  return database;
}

Result<Statement> Database::prepare(std::string_view sql) {
  sqlite3_stmt* handle = nullptr;
  const int result = sqlite3_prepare_v3(m_handle, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                                        &handle, nullptr);
  if (result != SQLITE_OK) { return sqliteFailure(result, m_file.string(), m_handle); }
  return Statement(handle);
}

Status Database::execute(const char* sql) {
  const int result = sqlite3_exec(m_handle, sql, nullptr, nullptr, nullptr);
  if (result != SQLITE_OK) { return sqliteFailure(result, m_file.string(), m_handle); }
  return {};
}

Status Database::executeOnIndex(const char* sql) {
  sqlite3_db_config(m_handle, SQLITE_DBCONFIG_DEFENSIVE, 0, nullptr);
  auto status = execute(sql);
  sqlite3_db_config(m_handle, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  return status;
}

Status Database::take(Turn turn) {
  constexpr std::array kWords{"BEGIN", "BEGIN IMMEDIATE", "COMMIT", "ROLLBACK"};
  const auto index = static_cast<std::size_t>(turn);
  Statement& statement = m_turns[index];
  if (!statement.prepared()) { ORLOCAL_TRY(statement, prepare(kWords[index])); }
  return statement.run();
}

Result<std::int64_t> Database::integerOf(const char* sql) {
  ORLOCAL_TRY(Statement statement, prepare(sql));
  ORLOCAL_TRY(const bool found, statement.step());
  return found ? statement.integer(0) : 0;
}

bool Database::readOnly() const { return m_whyOnlyRead || sqlite3_db_readonly(m_handle, "main") == 1; }
bool Database::inTransaction() const { return m_handle != nullptr && sqlite3_get_autocommit(m_handle) == 0; }

bool Database::moved() const {
  int moved = 0;
  sqlite3_file_control(m_handle, "main", SQLITE_FCNTL_HAS_MOVED, &moved);
  return moved != 0;
}

std::int64_t Database::lastInsertId() const { return sqlite3_last_insert_rowid(m_handle); }
std::int64_t Database::changedRows() const { return sqlite3_changes64(m_handle); }

const std::uint32_t* Database::walIndex() {
  // Asked of a file without a log, SQLite would make an index and never let go of it.
  auto mode = prepare("PRAGMA journal_mode");
  if (!mode || !mode->step().value_or(false) || mode->text(0) != "wal") { return nullptr; }
  constexpr int kRegionBytes = 32 * 1024;  // fixed by the log's format
  sqlite3_file* file = nullptr;
  if (sqlite3_file_control(m_handle, "main", SQLITE_FCNTL_FILE_POINTER, &file) != SQLITE_OK || file == nullptr) {
    return nullptr;
  }
  if (file->pMethods == nullptr || file->pMethods->iVersion < 2 || file->pMethods->xShmMap == nullptr) {
    return nullptr;
  }
  // The region is mapped already once a transaction has run; asking for it again gives the same place.
  void volatile* region = nullptr;
  if (file->pMethods->xShmMap(file, 0, kRegionBytes, 0, &region) != SQLITE_OK) { return nullptr; }
  return static_cast<const std::uint32_t*>(const_cast<void*>(region));
}

Status Database::copyInto(Database& target, const std::function<Status()>& beforeCommit) {
  const auto failed = [&](int result) {
    const int plain = result & 0xff;
    const bool unreadable = plain == SQLITE_CORRUPT || plain == SQLITE_NOTADB || result == SQLITE_IOERR_READ ||
                            result == SQLITE_IOERR_SHORT_READ;
    Database& at = unreadable ? *this : target;
    return sqliteFailure(result, at.m_file.string(), at.m_handle);
  };
  sqlite3_backup* copy = sqlite3_backup_init(target.m_handle, "main", m_handle, "main");
  if (copy == nullptr) { return failed(sqlite3_extended_errcode(target.m_handle)); }
  // A step of no pages takes hold of both sides.
  int result = sqlite3_backup_step(copy, 0);
  Status agreed;
  if (result == SQLITE_OK && beforeCommit) { agreed = beforeCommit(); }
  while (result == SQLITE_OK && agreed) { result = sqlite3_backup_step(copy, -1); }
  const int finished = sqlite3_backup_finish(copy);
  if (!agreed) { return agreed; }
  if (result != SQLITE_DONE) { return failed(result); }
  if (finished != SQLITE_OK) { return failed(finished); }
  return {};
}

Result<Transaction> Transaction::write(Database& database) {
  if (database.moved()) {
    return failure(ErrorCode::kIo, tr("The calendar store \"{}\" was removed or replaced while it was in use; "
                                      "nothing was written. Put it back, or open the store anew.",
                                      database.file().string()));
  }
  if (database.whyOnlyRead()) { return failure(*database.whyOnlyRead()); }
  ORLOCAL_CHECK(database.take(Database::Turn::kWrite));
  return Transaction(&database);
}

Result<Transaction> Transaction::read(Database& database) {
  if (database.inTransaction()) { return Transaction(nullptr); }
  ORLOCAL_CHECK(database.take(Database::Turn::kRead));
  return Transaction(&database);
}

Transaction::~Transaction() {
  if (m_database != nullptr && m_database->inTransaction()) { (void)m_database->take(Database::Turn::kRollBack); }
}

Status Transaction::commit() {
  if (m_database == nullptr) { return {}; }
  auto committed = m_database->take(Database::Turn::kCommit);
  // A failed COMMIT may leave the transaction open; the destructor then rolls it back.
  if (committed) { m_database = nullptr; }
  return committed;
}

}  // namespace orlocal::store
