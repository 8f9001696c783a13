#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/file/change_log.h"
#include "store/file/sqlite.h"
#include "store/file/uuid.h"
#include "store/rows/put_outcome.h"

namespace orlocal::store {

/// The rows of contacts. Made for one use: contacts are few and asked for rarely.
class ContactRows {
 public:
  explicit ContactRows(Database& database) : m_database(database) {}

  /// See `ItemWriter::putContact`; inside a write transaction.
  Result<PutOutcome> put(Contact& contact, UuidMaker& uuids, ChangeLog& log);
  /// All of them, by name and then as they came.
  Result<std::vector<Contact>> all();
  /// Of the oldest contact with that e-mail address that has one.
  Result<std::optional<std::string>> addressOf(std::string_view email);

 private:
  Database& m_database;
  LazyStatement m_find{"SELECT id, name, emails, address FROM contacts WHERE identifier = ?"};
  LazyStatement m_update{"UPDATE contacts SET name = ?1, emails = ?2, address = ?3 WHERE id = ?4"};
  LazyStatement m_insert{"INSERT INTO contacts(name, emails, address, identifier) VALUES(?, ?, ?, ?)"};
  LazyStatement m_clear{"DELETE FROM contact_emails WHERE email = ? AND contact = ?"};
  LazyStatement m_insertEmail{"INSERT OR IGNORE INTO contact_emails(email, contact) VALUES(?, ?)"};
};

}  // namespace orlocal::store
