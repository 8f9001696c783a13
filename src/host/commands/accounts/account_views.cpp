#include "host/commands/accounts/account_views.h"

#include <algorithm>
#include <ostream>

#include <fmt/format.h>

#include "accounts/remedy.h"
#include "accounts/sync/local_changes.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/accounts/account_words.h"
#include "host/commands/accounts/duration_words.h"
#include "host/commands/command_line/json_text.h"
#include "host/commands/command_line/store_session.h"
#include "host/commands/command_line/terminal_text.h"
#include "host/commands/words/day_words.h"
#include "store/remote_reader.h"

namespace orlocal::host {
namespace {

using accounts::Account;
using Json = nlohmann::json;

std::string remedyOf(const Account& account) {
  return account.state.trouble ? accounts::remedyFor(*account.state.trouble) : "";
}

std::string lastSyncOf(const Account& account) {
  return account.state.lastSuccess ? minuteText(*account.state.lastSuccess) : tr("never");
}

/// What was changed since the last sync counts, too. A store that may only be read says what it knows.
Result<std::size_t> waitingOf(store::CalendarStore& store, const Account& account) {
  if (isSubscription(account)) { return 0; }
  (void)accounts::noteLocalChanges(store);
  return accounts::AccountBook(store).unsentOf(account);
}

Json asJson(const Account& account, std::size_t waiting) {
  const auto& last = account.state.lastSuccess;
  const auto& every = account.settings.every;
  const auto remedy = remedyOf(account);
  const bool failed = !account.state.failure.empty();
  return {{"name", account.name},
          {"kind", isSubscription(account) ? "subscription" : "CalDAV"},
          {"address", addressOf(account)},
          {"user", account.settings.user},
          {"state", stateOf(account)},
          {"lastSync", last ? Json(isoMoment(*last, store::Zone::ofUser())) : Json(nullptr)},
          {"every", every ? Json(every->count()) : Json(nullptr)},
          {"waiting", waiting},
          {"failure", failed ? Json(account.state.failure) : Json(nullptr)},
          {"remedy", failed && !remedy.empty() ? Json(remedy) : Json(nullptr)}};
}

void printFailure(const Account& account, std::ostream& out) {
  if (account.state.failure.empty()) { return; }
  out << fmt::format("{}: {}", printable(account.name), printable(account.state.failure));
  const auto remedy = remedyOf(account);
  out << (remedy.empty() ? "" : " ") << remedy << '\n';
}

/// Something that is not as it should be.
struct ItemTrouble {
  std::string item, message;
};

/// A calendar of an account.
struct ShownCalendar {
  std::string title;
  bool writable = true;
  bool onServer = false;
  std::string trouble;
  std::vector<ItemTrouble> items;
};

class AccountView {
 public:
  AccountView(store::CalendarStore& store, const Account& account) : m_store(store), m_account(account) {}

  Status read() {
    store::RemoteReader reader(m_store);
    ORLOCAL_TRY(const auto all, allCalendars(m_store));
    ORLOCAL_TRY(const auto mirrors, reader.mirrors(m_account.source));
    ORLOCAL_TRY(const auto open, reader.conflicts());
    for (const store::Calendar& calendar : all) {
      if (calendar.source != m_account.source) { continue; }
      ShownCalendar shown{calendar.title, !calendar.readOnly, isSubscription(m_account), "", {}};
      for (const store::Mirror& mirror : mirrors) {
        if (mirror.calendar == calendar.id) { ORLOCAL_CHECK(addMirror(reader, mirror, shown)); }
      }
      calendars.push_back(std::move(shown));
    }
    for (const store::Mirror& mirror : mirrors) {
      conflicts += static_cast<std::size_t>(std::count_if(
          open.begin(), open.end(), [&](const store::Conflict& each) { return each.mirror == mirror.id; }));
      const bool here = std::any_of(all.begin(), all.end(),
                                    [&](const store::Calendar& calendar) { return calendar.id == mirror.calendar; });
      if (!here) { ++leaving; }
    }
    return {};
  }

  std::vector<ShownCalendar> calendars;
  std::size_t conflicts = 0;
  std::size_t leaving = 0;  ///< calendars that were removed here and are still to be removed there

 private:
  Status addMirror(store::RemoteReader& reader, const store::Mirror& mirror, ShownCalendar& shown) {
    ORLOCAL_TRY(const auto state, accounts::MirrorState::ofText(mirror.state));
    shown.onServer = !mirror.url.empty() && !state.unmade;
    shown.trouble = state.trouble;
    ORLOCAL_TRY(const auto resources, reader.resources(mirror.id));
    for (const store::Resource& resource : resources) {
      if (!resource.trouble) { continue; }
      std::string title = resource.uid;
      if (resource.item) {
        ORLOCAL_TRY(const auto item, m_store.item(*resource.item));
        if (item != nullptr && item->title) { title = *item->title; }
      }
      shown.items.push_back({std::move(title), *resource.trouble});
    }
    return {};
  }

  store::CalendarStore& m_store;
  const Account& m_account;
};

Json asJson(const AccountView& view) {
  Json list = Json::array();
  for (const ShownCalendar& calendar : view.calendars) {
    Json items = Json::array();
    for (const ItemTrouble& each : calendar.items) {
      items.push_back({{"item", each.item}, {"message", each.message}});
    }
    list.push_back({{"title", calendar.title},
                    {"writable", calendar.writable},
                    {"onServer", calendar.onServer},
                    {"trouble", calendar.trouble.empty() ? Json(nullptr) : Json(calendar.trouble)},
                    {"troubles", std::move(items)}});
  }
  return list;
}

void print(const Account& account, std::size_t waiting, const AccountView& view, std::ostream& out) {
  const auto row = [&out](const std::string& label, const std::string& value) {
    constexpr std::size_t kLabelWidth = 9;
    out << "  " << padded(label, kLabelWidth) << "  " << value << '\n';
  };
  out << fmt::format("{} ({})\n", printable(account.name), translated(stateOf(account)));
  row(tr("address"), printable(addressOf(account)));
  if (!account.settings.user.empty()) { row(tr("user"), printable(account.settings.user)); }
  if (account.settings.every) { row(tr("every"), durationText(*account.settings.every)); }
  row(tr("last sync"), lastSyncOf(account));
  if (!isSubscription(account)) {
    row(tr("waiting"), trn("{} change", "{} changes", waiting, waiting));
    row(tr("conflicts"), std::to_string(view.conflicts));
  }
  printFailure(account, out);
  for (const ShownCalendar& calendar : view.calendars) {
    out << fmt::format("{}{}{}\n", printable(calendar.title), calendar.writable ? "" : tr(", read-only"),
                       calendar.onServer ? "" : tr(", not on the server yet"));
    if (!calendar.trouble.empty()) { out << "  " << printable(calendar.trouble) << '\n'; }
    for (const ItemTrouble& each : calendar.items) {
      out << fmt::format("  {}: {}\n", printable(each.item), printable(each.message));
    }
  }
  if (view.leaving > 0) {
    out << trn("{} calendar still to be removed on the server.\n", "{} calendars still to be removed on the server.\n",
               view.leaving, view.leaving);
  }
}

}  // namespace

Result<ExitStatus> listAccounts(CommandContext& context) {
  ORLOCAL_TRY(const auto store, openUserStore());
  ORLOCAL_TRY(const auto all, accounts::AccountBook(*store).all());
  Json list = Json::array();
  std::vector<std::vector<std::string>> rows{
      {tr("NAME"), tr("ADDRESS"), tr("USER"), tr("STATE"), tr("LAST SYNC"), tr("WAITING")}};
  for (const Account& account : all) {
    ORLOCAL_TRY(const std::size_t waiting, waitingOf(*store, account));
    list.push_back(asJson(account, waiting));
    rows.push_back({account.name, addressOf(account), account.settings.user, translated(stateOf(account)),
                    lastSyncOf(account), std::to_string(waiting)});
  }
  std::ostream& out = context.streams.out;
  if (context.options.json) {
    printJson(list, out);
  } else if (all.empty()) {
    out << tr("There is no account and no subscription; orlocal account add and orlocal subscribe make one.\n");
  } else {
    printColumns(rows, context.streams);
    for (const Account& account : all) { printFailure(account, out); }
  }
  return ExitStatus::kDone;
}

Result<ExitStatus> showAccount(const std::string& name, CommandContext& context) {
  ORLOCAL_TRY(const auto store, openUserStore());
  ORLOCAL_TRY(const Account account, accounts::AccountBook(*store).named(name));
  ORLOCAL_TRY(const std::size_t waiting, waitingOf(*store, account));
  AccountView view(*store, account);
  ORLOCAL_CHECK(view.read());
  if (context.options.json) {
    Json shown = asJson(account, waiting);
    shown["calendars"] = asJson(view);
    shown["conflicts"] = view.conflicts;
    printJson(shown, context.streams.out);
  } else {
    print(account, waiting, view, context.streams.out);
  }
  return ExitStatus::kDone;
}

}  // namespace orlocal::host
