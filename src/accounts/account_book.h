#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "accounts/discovery/discovery.h"
#include "accounts/sync/account_state.h"
#include "base/result.h"
#include "store/calendar_store.h"
#include "store/model/remote.h"

namespace orlocal::accounts {

/// An account or a subscription of a store.
struct Account {
  store::SourceId source = 0;
  std::string identifier;  ///< what its password is kept under; no other account ever has it
  std::string name;        ///< the title of its source; no two have the same
  AccountSettings settings;
  AccountState state;
};

/// The accounts and subscriptions of a store, in the order in which they were added.
class AccountBook {
 public:
  /// The store is borrowed.
  explicit AccountBook(store::CalendarStore& store) : m_store(store) {}

  Result<std::vector<Account>> all();
  /// `kNotFound`, naming those that there are, when there is none of that name.
  Result<Account> named(std::string_view name);

  /// Fails when an account has that name already.
  Status mustBeFree(std::string_view name);
  /// Makes its source. `identifier` and `source` are filled in. A name that is taken is refused.
  Status add(Account& account);
  Status saveSettings(const Account& account);
  Status saveState(const Account& account);
  /// The account with its calendars and all that is known of the server; the server keeps its own.
  Status remove(const Account& account);
  /// How many items of the account still wait to be sent.
  Result<std::size_t> unsentOf(const Account& account);

 private:
  static Status mustBeFree(std::string_view name, const std::vector<store::Remote>& remotes,
                           const std::vector<store::Source>& sources);
  Status save(const Account& account);

  store::CalendarStore& m_store;
};

}  // namespace orlocal::accounts
