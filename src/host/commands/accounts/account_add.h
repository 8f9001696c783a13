#pragma once

#include <string>

#include "host/commands/accounts/account_trial.h"
#include "host/commands/command_line/command.h"

namespace orlocal::host {

struct AddWords {
  std::string address, user, name, caFile, every;
  SecretWords secret;
};

/// Finds the account on its server, and puts it into the store.
Result<ExitStatus> addAccount(const AddWords& words, CommandContext& context);

}  // namespace orlocal::host
