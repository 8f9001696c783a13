#include "store/rows/contact_rows.h"

#include <algorithm>

#include <unicode/unistr.h>

#include "base/text.h"
#include "base/translation.h"
#include "base/try.h"
#include "store/file/checked_row.h"
#include "store/rows/packing.h"

namespace orlocal::store {
namespace {

/// E-mail addresses are compared without case.
std::string folded(std::string_view email) {
  std::string result;
  icu::UnicodeString::fromUTF8(icu::StringPiece(email.data(), static_cast<int32_t>(email.size())))
      .foldCase()
      .toUTF8String(result);
  return result;
}

}  // namespace

Result<PutOutcome> ContactRows::put(Contact& contact, UuidMaker& uuids, ChangeLog& log) {
  const auto& emails = contact.emails;
  if (!isUtf8(contact.identifier) || !isUtf8(contact.name) || !isUtf8(contact.address.value_or("")) ||
      !std::all_of(emails.begin(), emails.end(), [](const std::string& email) { return isUtf8(email); })) {
    return failure(ErrorCode::kRefused, tr("A text of the contact is not UTF-8; write it in UTF-8."));
  }
  if (contact.identifier.empty()) { contact.identifier = uuids.next().text(); }
  Statement& find = m_find.in(m_database);
  const ResetAtExit reset(find);
  find.bind(1, std::string_view(contact.identifier));
  ORLOCAL_TRY(const bool known, find.step());
  std::int64_t id = 0;
  std::vector<std::string> before;
  if (known) {
    id = find.integer(0);
    CheckedRow row(find);
    Contact stored{contact.identifier, std::string(row.text(1)), {}, row.optionalText(3)};
    auto storedEmails = unpackStrings(row.blob(2));
    if (!storedEmails || !row.sound()) { return damaged(m_database, "The contact \"" + contact.identifier + "\""); }
    stored.emails = *std::move(storedEmails);
    if (stored == contact) { return PutOutcome::kUnchanged; }
    before = std::move(stored.emails);
  }
  find.reset();
  Statement& write = (known ? m_update : m_insert).in(m_database);
  PackedBytes packed;
  packStrings(contact.emails, packed);
  write.bind(1, std::string_view(contact.name)).bindBlob(2, packed);
  contact.address ? write.bind(3, std::string_view(*contact.address)) : write.bindNull(3);
  known ? write.bind(4, id) : write.bind(4, std::string_view(contact.identifier));
  ORLOCAL_CHECK(write.run());
  if (!known) { id = m_database.lastInsertId(); }
  // One by one: by the contact alone every address of the store would be looked at.
  for (const std::string& email : before) {
    const std::string key = folded(email);
    ORLOCAL_CHECK(m_clear.in(m_database).bind(1, std::string_view(key)).bind(2, id).run());
  }
  for (const std::string& email : contact.emails) {
    const std::string key = folded(email);
    ORLOCAL_CHECK(m_insertEmail.in(m_database).bind(1, std::string_view(key)).bind(2, id).run());
  }
  ORLOCAL_CHECK(
      log.record(known ? Operation::kUpdated : Operation::kInserted, Subject::kContact, id, std::nullopt, Uuid()));
  return known ? PutOutcome::kUpdated : PutOutcome::kNew;
}

Result<std::vector<Contact>> ContactRows::all() {
  ORLOCAL_TRY(Statement read,
              m_database.prepare("SELECT identifier, name, emails, address FROM contacts ORDER BY name, id"));
  std::vector<Contact> contacts;
  for (;;) {
    ORLOCAL_TRY(const bool found, read.step());
    if (!found) { return contacts; }
    CheckedRow row(read);
    Contact contact{std::string(row.text(0)), std::string(row.text(1)), {}, row.optionalText(3)};
    auto emails = unpackStrings(row.blob(2));
    if (!emails || !row.sound()) { return damaged(m_database, "The contact \"" + contact.identifier + "\""); }
    contact.emails = *std::move(emails);
    contacts.push_back(std::move(contact));
  }
}

Result<std::optional<std::string>> ContactRows::addressOf(std::string_view email) {
  ORLOCAL_TRY(Statement find,
              m_database.prepare("SELECT c.address FROM contact_emails e JOIN contacts c ON c.id = e.contact "
                                 "WHERE e.email = ? AND c.address IS NOT NULL ORDER BY c.id LIMIT 1"));
  const std::string key = folded(email);
  find.bind(1, std::string_view(key));
  ORLOCAL_TRY(const bool found, find.step());
  if (!found) { return std::nullopt; }
  CheckedRow row(find);
  auto address = row.optionalText(0);
  if (!row.sound()) { return damaged(m_database, "The contact with the address " + std::string(email)); }
  return address;
}

}  // namespace orlocal::store
