#include "accounts/adding.h"

#include <utility>

#include "accounts/dav/dav_server.h"
#include "accounts/transport/url.h"
#include "base/try.h"

namespace orlocal::accounts {

std::string usualNameFor(std::string_view address) {
  std::string host = hostOf(address);
  if (!host.empty()) { return host; }
  const std::size_t at = address.rfind('@');
  const std::string_view domain = at == address.npos ? address : address.substr(at + 1);
  return std::string(domain.substr(0, domain.find_first_of("/:?#")));
}

bool hasCredentials(std::string_view address) {
  const std::size_t scheme = address.find("://");
  if (scheme == address.npos) { return false; }
  const std::string_view rest = address.substr(scheme + 3);
  return rest.substr(0, rest.find_first_of("/?#")).find('@') != rest.npos;
}

Answer<std::vector<RemoteCalendar>> findCalendars(Transport& transport, Account& account, const ServiceLookup& lookup) {
  ORLOCAL_TRY(FoundAccount found, findAccount(transport, account.settings.address, lookup));
  std::vector<RemoteCalendar> calendars;
  DavServer server(transport);
  for (const std::string& home : found.homes) {
    auto there = server.calendars(home, Marks::kAll);
    if (!there && home == found.homes.front()) { return Refusal(std::move(there.error())); }
    if (!there) { continue; }
    for (RemoteCalendar& calendar : *there) { calendars.push_back(std::move(calendar)); }
  }
  account.state.principal = std::move(found.principal);
  account.state.homes = std::move(found.homes);
  account.state.schedules = found.schedules;
  return calendars;
}

}  // namespace orlocal::accounts
