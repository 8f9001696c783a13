#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orlocal::host {

// What a transcript expects, held against what was printed; see `parseTranscript` for what its lines may hold.

/// True when the printed line is what the expected one stands for.
bool matchesLine(std::string_view expected, std::string_view printed);

/// Line by line, with blank lines at the end of what is expected left out.
bool matchesLines(const std::vector<std::string>& expected, const std::vector<std::string>& printed);

}  // namespace orlocal::host
