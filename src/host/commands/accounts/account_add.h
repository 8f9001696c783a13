#pragma once

#include <optional>
#include <string>

#include "host/commands/command_line/command.h"

namespace orlocal::host {

struct AddWords {
  std::string address, user, name, caFile;
  std::optional<std::string> passwordCommand, passwordFile, tokenCommand;
};

/// Finds the account on its server, and puts it into the store.
Result<ExitStatus> addAccount(const AddWords& words, CommandContext& context);

}  // namespace orlocal::host
