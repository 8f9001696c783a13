#include "accounts/connection.h"

#include "accounts/transport/url.h"
#include "base/try.h"

namespace orlocal::accounts {

std::unique_ptr<Transport> connectionFor(const Account& account, const SecretsFile& secrets,
                                         const std::atomic<bool>* stop) {
  TransportOptions options;
  options.user = account.settings.user;
  const std::string& known = account.state.principal.empty() ? account.settings.address : account.state.principal;
  options.origin = originOf(known).value_or("");
  if (!account.settings.caFile.empty()) { options.caFile = account.settings.caFile; }
  options.stop = stop;
  options.secret = [source = account.settings.secret, identifier = account.identifier, name = account.name, secrets,
                    stop](bool) -> Result<Secret> {
    ORLOCAL_TRY(const SecretSource where, secretSourceOf(source));
    return secretOf(where, identifier, name, secrets, stop);
  };
  return std::make_unique<CurlTransport>(std::move(options));
}

}  // namespace orlocal::accounts
