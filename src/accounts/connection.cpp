#include "accounts/connection.h"

#include "accounts/transport/url.h"
#include "base/try.h"

namespace orlocal::accounts {

std::unique_ptr<Transport> connectionFor(const Account& account, const SecretsFile& secrets,
                                         const std::atomic<bool>* stop, const std::optional<std::string>& typed) {
  TransportOptions options;
  options.user = account.settings.user;
  // Calendars may lie on another host than the principal. While the account is being found, finding it decides.
  if (!account.state.homes.empty()) { options.origin = originOf(account.state.homes.front()).value_or("none"); }
  if (!account.settings.caFile.empty()) { options.caFile = account.settings.caFile; }
  options.stop = stop;
  options.secret = [source = account.settings.secret, identifier = account.identifier, name = account.name, secrets,
                    stop, typed](bool) -> Result<Secret> {
    if (typed) { return Secret{*typed, false}; }
    ORLOCAL_TRY(const SecretSource where, secretSourceOf(source));
    return secretOf(where, identifier, name, secrets, stop);
  };
  return std::make_unique<CurlTransport>(std::move(options));
}

}  // namespace orlocal::accounts
