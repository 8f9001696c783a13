#pragma once

#include <functional>
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

  /// None when it is gone.
  Result<std::optional<Account>> with(store::SourceId source);

  /// Fails when an account has that name already.
  Status mustBeFree(std::string_view name);
  /// Makes its source. `identifier` and `source` are filled in. A name that is taken is refused.
  Status add(Account& account);
  /// Gives it another name; one that is taken is refused.
  Status rename(store::SourceId source, const std::string& name);
  /// Changes what stands there now, so that two who set different things both keep theirs. Nothing happens when the
  /// account is gone; the same of `saveState`.
  Status changeSettings(store::SourceId source, const std::function<void(AccountSettings&)>& set);
  Status saveState(const Account& account);
  /// The account with its calendars and all that is known of the server; the server keeps its own.
  Status remove(const Account& account);
  /// How many items of the account still wait to be sent.
  Result<std::size_t> unsentOf(const Account& account);
  /// Whether one of these commits did something that the account's server is to be told, and that no sync has carried
  /// there since. What was unsent before, and what a sync of another account took in, does not count. Local changes
  /// must have been noted after the commits (`noteLocalChanges`).
  Result<bool> hasNews(const Account& account, const std::vector<store::OutsideCommit>& commits);

 private:
  static Status mustBeFree(std::string_view name, const std::vector<store::Remote>& remotes,
                           const std::vector<store::Source>& sources);
  Result<std::vector<store::ItemId>> unsentItemsOf(const Account& account);
  /// Whether a server lacks something of what these commits did to its calendars themselves.
  Result<bool> haveCalendarsNews(const Account& account, const std::vector<store::OutsideCommit>& commits);
  /// What stands of the account, as it is inside the transaction.
  Status change(store::SourceId source, const std::function<Status(store::Remote&)>& write);

  store::CalendarStore& m_store;
};

}  // namespace orlocal::accounts
