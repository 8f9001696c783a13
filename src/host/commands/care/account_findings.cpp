#include "host/commands/care/account_findings.h"

#include <chrono>

#include <fmt/format.h>

#include "accounts/account_book.h"
#include "accounts/remedy.h"
#include "base/translation.h"
#include "base/try.h"
#include "host/commands/command_line/terminal_text.h"
#include "store/remote_reader.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

constexpr const char* kAccounts = translatable("accounts");
constexpr std::chrono::hours kLongAgo{24 * 3};

Result<Finding> accountFinding(accounts::AccountBook& book, const accounts::Account& account) {
  const std::string name = '"' + printable(account.name) + '"';
  ORLOCAL_TRY(const std::size_t unsent, book.unsentOf(account));
  const std::string waiting = unsent == 0 ? "" : tr(" {} changes wait to be sent.", unsent);
  if (account.settings.paused) {
    return note(kAccounts, tr("{} is paused.{}", name, waiting), tr("orlocal account resume goes on."));
  }
  if (!account.state.failure.empty()) {
    const std::string remedy = account.state.trouble ? accounts::remedyFor(*account.state.trouble) : "";
    return problem(kAccounts, tr("{} failed the last time: {}{}", name, account.state.failure, waiting),
                   remedy.empty() ? tr("orlocal sync tries again.") : remedy);
  }
  if (!account.state.lastSuccess || store::now() - *account.state.lastSuccess > kLongAgo) {
    return note(kAccounts, tr("{} was not synced for long.{}", name, waiting),
                tr("orlocal sync does it now; the service orlocal-sync does it always."));
  }
  return fine(kAccounts, tr("{} works.{}", name, waiting));
}

}  // namespace

Result<Findings> accountFindings(store::CalendarStore& store) {
  accounts::AccountBook book(store);
  ORLOCAL_TRY(const auto all, book.all());
  if (all.empty()) { return Findings{fine(kAccounts, tr("There is none."))}; }
  Findings findings;
  for (const auto& account : all) {
    ORLOCAL_TRY(Finding finding, accountFinding(book, account));
    findings.push_back(std::move(finding));
  }
  ORLOCAL_TRY(const auto conflicts, store::RemoteReader(store).conflicts());
  if (!conflicts.empty()) {
    findings.push_back(
        note(kAccounts, tr("{} changes could not be merged.", conflicts.size()), tr("orlocal conflicts lists them.")));
  }
  return findings;
}

}  // namespace orlocal::host
