#pragma once

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "accounts/account_book.h"
#include "accounts/sync/sync_fixture.h"
#include "store/store_fixture.h"

namespace orlocal::accounts {

/// An account that was never synced.
inline Account accountNamed(const std::string& name, AccountSettings::Kind kind = AccountSettings::Kind::kCalDav) {
  Account account;
  account.name = name;
  account.settings.kind = kind;
  account.settings.address = "https://dav.example/";
  account.settings.user = "ann";
  account.settings.secret = "none";
  return account;
}

}  // namespace orlocal::accounts
