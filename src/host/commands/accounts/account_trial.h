#pragma once

#include <optional>
#include <string>
#include <vector>

#include "accounts/adding.h"
#include "accounts/transport/secret.h"
#include "host/commands/command_line/command.h"

namespace orlocal::host {

/// Where an account's password comes from, as the command line says it: by one of these at most.
struct SecretWords {
  std::optional<std::string> passwordCommand, passwordFile, tokenCommand;
};

/// None where nothing is said.
std::optional<accounts::SecretSource> secretSourceIn(const SecretWords& words);

/// None where nobody can be asked, or nothing was typed.
std::optional<std::string> askPasswordOf(const accounts::Account& account, Streams& streams);

/// Looks for the account on its server, from its address on; what is found goes into its state. `typed` is a password
/// that is not kept yet. Needs an `Interruption`.
accounts::Answer<std::vector<accounts::RemoteCalendar>> lookedFor(accounts::Account& account,
                                                                  const accounts::SecretsFile& secrets,
                                                                  const std::optional<std::string>& typed,
                                                                  Streams& streams);

}  // namespace orlocal::host
