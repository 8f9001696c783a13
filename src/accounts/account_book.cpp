#include "accounts/account_book.h"

#include <algorithm>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/try.h"
#include "store/edits/item_writer.h"
#include "store/remote_reader.h"

namespace orlocal::accounts {
namespace {

constexpr struct {
  AccountSettings::Kind kind;
  store::Source::Type type;
} kSourceTypes[] = {{AccountSettings::Kind::kCalDav, store::Source::Type::kCalDav},
                    {AccountSettings::Kind::kSubscription, store::Source::Type::kSubscription},
                    {AccountSettings::Kind::kBirthdays, store::Source::Type::kBirthday}};

store::Source::Type typeOf(AccountSettings::Kind kind) {
  const auto* found =
      std::find_if(std::begin(kSourceTypes), std::end(kSourceTypes), [&](const auto& row) { return row.kind == kind; });
  return found->type;
}

}  // namespace

Result<std::vector<Account>> AccountBook::all() {
  ORLOCAL_TRY(const auto sources, m_store.sources());
  ORLOCAL_TRY(const auto remotes, store::RemoteReader(m_store).remotes());
  std::vector<Account> accounts;
  for (const store::Remote& remote : remotes) {
    const auto source = std::find_if(sources.begin(), sources.end(),
                                     [&](const store::Source& each) { return each.id == remote.source; });
    // A subscription whose calendar was removed took its source along.
    if (source == sources.end()) { continue; }
    Account account;
    account.source = remote.source;
    account.identifier = source->identifier;
    account.name = source->title;
    ORLOCAL_TRY(account.settings, AccountSettings::ofText(remote.settings));
    ORLOCAL_TRY(account.state, AccountState::ofText(remote.state));
    accounts.push_back(std::move(account));
  }
  return accounts;
}

Result<Account> AccountBook::named(std::string_view name) {
  ORLOCAL_TRY(auto accounts, all());
  std::vector<std::string> known;
  for (Account& account : accounts) {
    if (account.name == name) { return std::move(account); }
    known.push_back('"' + account.name + '"');
  }
  if (known.empty()) {
    return failure(ErrorCode::kNotFound, fmt::format("There is no account \"{}\", and no other one either; add one "
                                                     "(orlocal account add).",
                                                     name));
  }
  return failure(ErrorCode::kNotFound,
                 fmt::format("There is no account \"{}\"; there are {}.", name, fmt::join(known, ", ")));
}

Status AccountBook::mustBeFree(std::string_view name, const std::vector<store::Remote>& remotes,
                               const std::vector<store::Source>& sources) {
  for (const store::Remote& remote : remotes) {
    const bool taken = std::any_of(sources.begin(), sources.end(), [&](const store::Source& source) {
      return source.id == remote.source && source.title == name;
    });
    if (taken) {
      return failure(ErrorCode::kRefused, fmt::format("There is an account or subscription \"{}\" already; choose "
                                                      "another name (--name).",
                                                      name));
    }
  }
  return {};
}

Status AccountBook::mustBeFree(std::string_view name) {
  ORLOCAL_TRY(const auto remotes, store::RemoteReader(m_store).remotes());
  ORLOCAL_TRY(const auto sources, m_store.sources());
  return mustBeFree(name, remotes, sources);
}

Status AccountBook::add(Account& account) {
  ORLOCAL_TRY(const auto writer, m_store.startWriting());
  ORLOCAL_TRY(const auto remotes, writer->remotes().remotes());
  ORLOCAL_TRY(const auto sources, writer->sources());
  ORLOCAL_CHECK(mustBeFree(account.name, remotes, sources));
  store::Source source{0, "", typeOf(account.settings.kind), account.name};
  ORLOCAL_CHECK(writer->makeSource(source));
  account.source = source.id;
  account.identifier = source.identifier;
  ORLOCAL_CHECK(writer->remotes().put(store::Remote{account.source, account.settings.text(), account.state.text()}));
  return writer->commit();
}

Status AccountBook::save(const Account& account) {
  ORLOCAL_TRY(const auto writer, m_store.startWriting());
  ORLOCAL_TRY(const auto remotes, writer->remotes().remotes());
  const bool there = std::any_of(remotes.begin(), remotes.end(),
                                 [&](const store::Remote& remote) { return remote.source == account.source; });
  if (!there) { return {}; }
  ORLOCAL_CHECK(writer->remotes().put(store::Remote{account.source, account.settings.text(), account.state.text()}));
  return writer->commit();
}

Status AccountBook::saveSettings(const Account& account) {
  // A sync may have learned something since the account was read.
  ORLOCAL_TRY(Account now, named(account.name));
  now.settings = account.settings;
  return save(now);
}

Status AccountBook::saveState(const Account& account) {
  ORLOCAL_TRY(Account now, named(account.name));
  now.state = account.state;
  return save(now);
}

Status AccountBook::remove(const Account& account) {
  ORLOCAL_TRY(const auto writer, m_store.startWriting());
  ORLOCAL_CHECK(writer->removeSource(account.source));
  return writer->commit();
}

Result<std::size_t> AccountBook::unsentOf(const Account& account) {
  store::RemoteReader reader(m_store);
  ORLOCAL_TRY(const auto unsent, reader.unsent());
  ORLOCAL_TRY(const auto mirrors, reader.mirrors(account.source));
  std::size_t count = 0;
  for (const store::ItemId item : unsent) {
    ORLOCAL_TRY(const auto resource, reader.resourceOf(item));
    ORLOCAL_TRY(const auto row, m_store.item(item));
    count += std::any_of(mirrors.begin(), mirrors.end(), [&](const store::Mirror& mirror) {
      return resource ? resource->mirror == mirror.id : row != nullptr && row->calendar == mirror.calendar;
    });
  }
  return count;
}

}  // namespace orlocal::accounts
