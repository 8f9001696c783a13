#include "accounts/account_book.h"

#include <algorithm>
#include <map>
#include <set>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/translation.h"
#include "base/try.h"
#include "store/edits/item_writer.h"
#include "store/remote_reader.h"

namespace orlocal::accounts {
namespace {

constexpr struct {
  AccountSettings::Kind kind;
  store::Source::Type type;
} kSourceTypes[] = {{AccountSettings::Kind::kCalDav, store::Source::Type::kCalDav},
                    {AccountSettings::Kind::kSubscription, store::Source::Type::kSubscription}};

store::Source::Type typeOf(AccountSettings::Kind kind) {
  const auto* found =
      std::find_if(std::begin(kSourceTypes), std::end(kSourceTypes), [&](const auto& row) { return row.kind == kind; });
  return found->type;
}

/// What commits did to records of some kinds, all in all.
struct Touched {
  std::set<std::string> standing;  ///< identifiers of what came or changed
  bool removed = false;            ///< whether something went
};

Touched touchedBy(const std::vector<store::OutsideCommit>& commits,
                  std::initializer_list<store::ChangedRecords store::OutsideCommit::*> kinds) {
  Touched touched;
  for (const store::OutsideCommit& commit : commits) {
    for (const auto kind : kinds) {
      const store::ChangedRecords& records = commit.*kind;
      touched.standing.insert(records.inserted.begin(), records.inserted.end());
      touched.standing.insert(records.updated.begin(), records.updated.end());
      touched.removed = touched.removed || !records.deleted.empty();
    }
  }
  return touched;
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
    return failure(ErrorCode::kNotFound, tr("There is no account \"{}\", and no other one either; add one "
                                            "(orlocal account add).",
                                            name));
  }
  return failure(ErrorCode::kNotFound, tr("There is no account \"{}\"; there are {}.", name, fmt::join(known, ", ")));
}

Status AccountBook::mustBeFree(std::string_view name, const std::vector<store::Remote>& remotes,
                               const std::vector<store::Source>& sources) {
  for (const store::Remote& remote : remotes) {
    const bool taken = std::any_of(sources.begin(), sources.end(), [&](const store::Source& source) {
      return source.id == remote.source && source.title == name;
    });
    if (taken) {
      return failure(ErrorCode::kRefused, tr("There is an account or subscription \"{}\" already; choose "
                                             "another name (--name).",
                                             name));
    }
  }
  return {};
}

Result<std::optional<Account>> AccountBook::with(store::SourceId source) {
  ORLOCAL_TRY(auto accounts, all());
  for (Account& account : accounts) {
    if (account.source == source) { return std::move(account); }
  }
  return std::nullopt;
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

Status AccountBook::rename(store::SourceId source, const std::string& name) {
  ORLOCAL_TRY(const auto writer, m_store.startWriting());
  ORLOCAL_TRY(const auto remotes, writer->remotes().remotes());
  ORLOCAL_TRY(const auto sources, writer->sources());
  ORLOCAL_CHECK(mustBeFree(name, remotes, sources));
  ORLOCAL_CHECK(writer->renameSource(source, name));
  return writer->commit();
}

Status AccountBook::change(store::SourceId source, const std::function<Status(store::Remote&)>& write) {
  ORLOCAL_TRY(const auto writer, m_store.startWriting());
  ORLOCAL_TRY(auto remotes, writer->remotes().remotes());
  for (store::Remote& remote : remotes) {
    if (remote.source != source) { continue; }
    ORLOCAL_CHECK(write(remote));
    ORLOCAL_CHECK(writer->remotes().put(remote));
    return writer->commit();
  }
  return {};
}

Status AccountBook::changeSettings(store::SourceId source, const std::function<void(AccountSettings&)>& set) {
  return change(source, [&](store::Remote& remote) -> Status {
    ORLOCAL_TRY(AccountSettings settings, AccountSettings::ofText(remote.settings));
    set(settings);
    remote.settings = settings.text();
    return {};
  });
}

Status AccountBook::saveState(const Account& account) {
  return change(account.source, [&](store::Remote& remote) -> Status {
    remote.state = account.state.text();
    return {};
  });
}

Status AccountBook::remove(const Account& account) {
  ORLOCAL_TRY(const auto writer, m_store.startWriting());
  ORLOCAL_CHECK(writer->removeSource(account.source));
  return writer->commit();
}

Result<std::vector<store::ItemId>> AccountBook::unsentItemsOf(const Account& account) {
  store::RemoteReader reader(m_store);
  ORLOCAL_TRY(const auto unsent, reader.unsent());
  ORLOCAL_TRY(const auto mirrors, reader.mirrors(account.source));
  std::vector<store::ItemId> items;
  for (const store::ItemId item : unsent) {
    ORLOCAL_TRY(const auto resource, reader.resourceOf(item));
    ORLOCAL_TRY(const auto row, m_store.item(item));
    const bool ofAccount = std::any_of(mirrors.begin(), mirrors.end(), [&](const store::Mirror& mirror) {
      return resource ? resource->mirror == mirror.id : row != nullptr && row->calendar == mirror.calendar;
    });
    if (ofAccount) { items.push_back(item); }
  }
  return items;
}

Result<std::size_t> AccountBook::unsentOf(const Account& account) {
  ORLOCAL_TRY(const auto items, unsentItemsOf(account));
  return items.size();
}

Result<bool> AccountBook::hasNews(const Account& account, const std::vector<store::OutsideCommit>& commits) {
  const Touched items = touchedBy(commits, {&store::OutsideCommit::events, &store::OutsideCommit::reminders});
  if (!items.standing.empty() || items.removed) {
    ORLOCAL_TRY(const auto unsent, unsentItemsOf(account));
    for (const store::ItemId item : unsent) {
      ORLOCAL_TRY(const auto row, m_store.item(item));
      if (row == nullptr ? items.removed : items.standing.contains(row->identifier)) { return true; }
    }
  }
  return haveCalendarsNews(account, commits);
}

Result<bool> AccountBook::haveCalendarsNews(const Account& account, const std::vector<store::OutsideCommit>& commits) {
  const Touched calendars =
      touchedBy(commits, {&store::OutsideCommit::calendars, &store::OutsideCommit::reminderLists});
  if (calendars.standing.empty() && !calendars.removed) { return false; }
  std::map<store::CalendarId, store::Calendar> here;
  for (const auto kind : {store::CalendarKind::kEvents, store::CalendarKind::kReminders}) {
    ORLOCAL_TRY(const auto all, m_store.calendars(kind));
    for (const store::Calendar& calendar : all) {
      if (calendar.source == account.source) { here.emplace(calendar.id, calendar); }
    }
  }
  ORLOCAL_TRY(const auto mirrors, store::RemoteReader(m_store).mirrors(account.source));
  for (const store::Mirror& mirror : mirrors) {
    const auto calendar = here.find(mirror.calendar);
    if (calendar == here.end()) {
      if (calendars.removed) { return true; }
      continue;
    }
    ORLOCAL_TRY(const MirrorState state, MirrorState::ofText(mirror.state));
    if (calendars.standing.contains(calendar->second.identifier) && state.agreed != agreedOn(calendar->second)) {
      return true;
    }
    here.erase(calendar);
  }
  return std::any_of(here.begin(), here.end(),
                     [&](const auto& each) { return calendars.standing.contains(each.second.identifier); });
}

}  // namespace orlocal::accounts
