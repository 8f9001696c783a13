#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/result.h"

struct sqlite3;
struct sqlite3_stmt;

namespace orlocal::store {

/// A prepared statement. Belongs to one `Database`, which outlives it. Parameters count from 1, columns from 0.
///
/// Bound texts and blobs are borrowed until the next `reset`; texts and blobs read are valid until the next `step`.
class Statement {
 public:
  Statement() = default;
  Statement(Statement&& other) noexcept
      : m_handle(std::exchange(other.m_handle, nullptr)), m_failure(std::move(other.m_failure)) {}
  Statement& operator=(Statement&& other) noexcept {
    std::swap(m_handle, other.m_handle);
    std::swap(m_failure, other.m_failure);
    return *this;
  }
  ~Statement();

  bool prepared() const { return m_handle != nullptr; }

  Statement& bind(int parameter, std::int64_t value);
  Statement& bind(int parameter, double value);
  Statement& bind(int parameter, std::string_view text);
  Statement& bindBlob(int parameter, std::span<const std::byte> bytes);
  Statement& bindNull(int parameter);

  /// True when there is a row. After false or a failure the statement is reset.
  Result<bool> step();
  /// Runs a statement that gives no rows, and resets it.
  Status run();
  void reset();

  enum class Type { kInteger, kReal, kText, kBlob, kNull };
  /// As it stands in the file; before the column is read as anything.
  Type type(int column) const;
  bool isNull(int column) const { return type(column) == Type::kNull; }
  std::int64_t integer(int column) const;
  double real(int column) const;
  std::string_view text(int column) const;
  std::span<const std::byte> blob(int column) const;

 private:
  friend class Database;
  friend class LazyStatement;
  explicit Statement(sqlite3_stmt* handle) : m_handle(handle) {}

  sqlite3_stmt* m_handle = nullptr;
  std::unique_ptr<Failure> m_failure;  ///< of preparing it; each step then gives it
};

/// Resets a statement when a scope is left, so that it holds no lock.
class ResetAtExit {
 public:
  explicit ResetAtExit(Statement& statement) : m_statement(statement) {}
  ~ResetAtExit() { m_statement.reset(); }
  ResetAtExit(const ResetAtExit&) = delete;
  ResetAtExit& operator=(const ResetAtExit&) = delete;

 private:
  Statement& m_statement;
};

class LazyStatement;

/// An open SQLite file. One thread at a time. Errors come as sentences that name the file.
class Database {
 public:
  /// `kReadOnly` makes nothing beside a file without a log, and with one takes part as a reader. `kReadOnlyImmutable`
  /// takes no part at all: it never sees a change, and others must not change the file while it reads. `kReadAlone`
  /// keeps the index of a log to itself where none can be made beside it, and the file from all others.
  enum class Access { kReadWrite, kReadOnly, kReadOnlyImmutable, kReadAlone };

  Database() = default;
  Database(Database&& other) noexcept { swap(other); }
  Database& operator=(Database&& other) noexcept {
    swap(other);
    return *this;
  }
  ~Database();

  /// Opens an existing file; a file that may not be written is opened for reading.
  static Result<Database> open(const std::filesystem::path& file, std::chrono::milliseconds busyTimeout,
                               Access access = Access::kReadWrite);

  bool isOpen() const { return m_handle != nullptr; }
  /// Lets go of the file. Statements that are kept ready end; those of `prepare` must be gone.
  void close();
  /// Brings what the write-ahead log holds into the file, as far as nobody reads or writes at this moment.
  void emptyLog();

  Result<Statement> prepare(std::string_view sql);
  /// Runs statements that give no rows.
  Status execute(const char* sql);
  /// The same where the tables that SQLite keeps an index of words in may be written.
  Status executeOnIndex(const char* sql);
  Result<std::int64_t> integerOf(const char* sql);

  bool readOnly() const;
  /// Says why a file that could be written is only read; a write then fails with this.
  void onlyReads(Failure why) { m_whyOnlyRead = std::move(why); }
  const std::optional<Failure>& whyOnlyRead() const { return m_whyOnlyRead; }
  bool immutable() const { return m_immutable; }
  bool inTransaction() const;
  /// Whether the file was removed or replaced since it was opened: what is written now would be lost.
  bool moved() const;
  std::int64_t lastInsertId() const;
  std::int64_t changedRows() const;
  const std::filesystem::path& file() const { return m_file; }

  /// The write-ahead log's shared index as other processes see it; null when there is none. It begins with a header
  /// that every commit changes (https://sqlite.org/walformat.html, 2.2). Valid while the database is open.
  const std::uint32_t* walIndex();

  /// Copies the whole file into `target`, which is taken alone for writing meanwhile. `beforeCommit` runs when nobody
  /// else can write `target` any more and nothing of it has changed yet; its failure ends the copy, and `target` stays
  /// as it was.
  Status copyInto(Database& target, const std::function<Status()>& beforeCommit = {});

 private:
  friend class LazyStatement;
  friend class Transaction;
  /// How transactions begin and end. These statements are kept: to parse one costs more than to run it.
  enum class Turn { kRead, kWrite, kCommit, kRollBack };
  Status take(Turn turn);
  void swap(Database& other) noexcept;

  sqlite3* m_handle = nullptr;
  std::filesystem::path m_file;
  bool m_immutable = false;
  std::optional<Failure> m_whyOnlyRead;
  std::vector<LazyStatement*> m_kept;  ///< prepared on this
  std::array<Statement, 4> m_turns;    ///< by `Turn`
};

/// A statement that is prepared when it is first needed, and kept until its database is closed. A failure to prepare it
/// shows when it is stepped.
class LazyStatement {
 public:
  /// `sql` lives as long as this.
  explicit LazyStatement(const char* sql) : m_sql(sql) {}
  ~LazyStatement();
  LazyStatement(const LazyStatement&) = delete;
  LazyStatement& operator=(const LazyStatement&) = delete;

  /// Reset and ready to be bound; what is not bound is NULL. Always with the same database.
  Statement& in(Database& database);

 private:
  friend class Database;

  const char* m_sql;
  Statement m_statement;
  Database* m_database = nullptr;  ///< on which it is prepared
};

/// A transaction that is rolled back unless committed.
class Transaction {
 public:
  /// Waits for the turn to write, at most for the busy time.
  static Result<Transaction> write(Database& database);
  /// One snapshot for several reads. Inside another transaction it does nothing.
  static Result<Transaction> read(Database& database);

  Transaction(Transaction&& other) noexcept : m_database(std::exchange(other.m_database, nullptr)) {}
  Transaction& operator=(Transaction&&) = delete;
  ~Transaction();

  /// On disk when it returns without a failure; rolled back when it fails.
  Status commit();

 private:
  explicit Transaction(Database* database) : m_database(database) {}

  Database* m_database = nullptr;
};

}  // namespace orlocal::store
