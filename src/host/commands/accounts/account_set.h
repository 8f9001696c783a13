#pragma once

#include <string>

#include "host/commands/accounts/account_trial.h"
#include "host/commands/command_line/command.h"

namespace orlocal::host {

/// `--every` as it is without one.
constexpr const char* kDefaultEvery = "default";

struct SetWords {
  std::string name, newName, caFile, every;
  SecretWords secret;
  bool asks = false;       ///< for the password
  bool unchecked = false;  ///< the server is not tried
};

/// Changes what the user says of an account. What has to do with signing in is kept only when the server takes it.
Result<ExitStatus> setAccount(const SetWords& words, CommandContext& context);

}  // namespace orlocal::host
