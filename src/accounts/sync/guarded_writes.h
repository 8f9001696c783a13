#pragma once

#include <string>

#include "accounts/dav/calendar_server.h"
#include "accounts/sync/account_state.h"

namespace orlocal::accounts {

/// Writes that happen only where the server has what we know, also on servers that pass over conditions. Which those
/// are is found out with the first write of an account: it is tried once under a condition that cannot hold.
class GuardedWrites {
 public:
  /// Both are borrowed; what is found out goes into `account`.
  GuardedWrites(CalendarServer& server, AccountState& account) : m_server(server), m_account(account) {}

  /// Under a name that nobody else can have.
  Answer<Written> create(const std::string& url, const std::string& text);
  /// `kPrecondition` when the server has another state than the one with that ETag, `kNotFound` when it has none.
  Answer<Written> update(const std::string& url, const std::string& text, const std::string& etag);
  Answer<void> remove(const std::string& url, const std::string& etag);

 private:
  /// The same by asking first: between question and write there is a moment in which others can come.
  Answer<void> checkByAsking(const std::string& url, const std::string& etag);

  CalendarServer& m_server;
  AccountState& m_account;
};

}  // namespace orlocal::accounts
