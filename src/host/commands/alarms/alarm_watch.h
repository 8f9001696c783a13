#pragma once

#include <string>
#include <vector>

#include "base/result.h"
#include "host/commands/command_line/command.h"

namespace orlocal::host {

struct AlarmWatchWords {
  std::vector<std::string> command;  ///< to run for each alarm; without one each is printed
  bool once = false;                 ///< tells what is due, and ends
};

/// Tells alarms at their moments, until interrupted.
Result<ExitStatus> watchAlarms(const AlarmWatchWords& words, CommandContext& context);

}  // namespace orlocal::host
