#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "base/result.h"
#include "host/commands/command_line/command.h"
#include "host/commands/installing/file_owner.h"

namespace orlocal::host {

/// Loads the plug-in in a process of its own as a server would: as that account, with an environment that says
/// nothing. With a settings file it also asks the store that the file names, which makes one that is not there. Gives
/// the version that the plug-in tells; a failure says what `owner` could not do. What crashes is a failure, too.
Result<std::string> tryPlugin(const CommandContext& context, const std::filesystem::path& plugin,
                              const FileOwner& owner, const std::optional<std::filesystem::path>& settings);

}  // namespace orlocal::host
