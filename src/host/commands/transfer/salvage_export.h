#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "host/commands/command_line/command.h"
#include "store/export.h"

namespace orlocal::host {

/// Writes what can still be read of the user's store to `sink`, and tells on `err` what cannot be read; ends as failed
/// when something is lost. Fails when nothing can be read or written.
Result<ExitStatus> salvageInto(const store::TextSink& sink, const std::vector<std::string>& calendars,
                               std::ostream& err);

}  // namespace orlocal::host
