#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/commands/command_line/command.h"

namespace orlocal::host {

/// Cells in a line: those of the terminal that the output goes to, 80 elsewhere.
std::size_t lineWidth(const Streams& streams);

/// The lines of `text`, printable, each in at most `width` cells where its words allow it: a word that is longer is
/// broken, as are letters of scripts without blanks. Blank lines stay.
std::vector<std::string> foldedText(std::string_view text, std::size_t width);

/// `text`, printable, in at most `width` cells, with "…" where something is left out.
std::string shortened(std::string_view text, std::size_t width);

}  // namespace orlocal::host
