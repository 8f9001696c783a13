#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "host/commands/availability/asked_time.h"
#include "host/commands/command_line/terminal_text.h"

namespace orlocal::host {

/// A stretch of time with what is said of it behind it: "(3h)".
struct ToldSpan {
  TimeSpan span;
  std::string remark;  ///< on the day on which it begins
};

/// A line for each asked day with what of the spans lies on it, `nothing` where nothing does; in `width` cells.
void printDays(const AskedTime& asked, const std::vector<ToldSpan>& spans, const std::string& nothing, const Ink& ink,
               std::size_t width, std::ostream& out);

}  // namespace orlocal::host
