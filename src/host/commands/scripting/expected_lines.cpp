#include "host/commands/scripting/expected_lines.h"

#include <algorithm>
#include <cstddef>

#include "host/commands/scripting/calc_file.h"

namespace orlocal::host {

namespace {

constexpr std::string_view kAnything = "…";

/// The pieces of an expected line between its `…`, with backslashes resolved.
std::vector<std::string> piecesOf(std::string_view expected) {
  std::vector<std::string> pieces(1);
  bool first = true;
  while (!expected.empty()) {
    const bool escapes = expected.front() == '\\' && (first || expected.substr(1).starts_with(kAnything));
    if (escapes && expected.size() > 1) {
      const std::size_t width = expected.substr(1).starts_with(kAnything) ? kAnything.size() : 1;
      pieces.back() += expected.substr(1, width);
      expected.remove_prefix(1 + width);
    } else if (expected.starts_with(kAnything)) {
      pieces.emplace_back();
      expected.remove_prefix(kAnything.size());
    } else {
      pieces.back() += expected.front();
      expected.remove_prefix(1);
    }
    first = false;
  }
  return pieces;
}

}  // namespace

bool matchesLine(std::string_view expected, std::string_view printed) {
  const std::vector<std::string> pieces = piecesOf(expected);
  if (pieces.size() == 1) { return pieces.front() == printed; }
  if (!printed.starts_with(pieces.front())) { return false; }
  printed.remove_prefix(pieces.front().size());
  // The leftmost place for each piece leaves the most room for those after it.
  for (std::size_t i = 1; i + 1 < pieces.size(); ++i) {
    const std::size_t found = printed.find(pieces[i]);
    if (found == std::string_view::npos) { return false; }
    printed.remove_prefix(found + pieces[i].size());
  }
  return printed.ends_with(pieces.back());
}

bool matchesLines(const std::vector<std::string>& expected, const std::vector<std::string>& printed) {
  // An empty result needs no line; otherwise every printed line does.
  const std::size_t needed = printed.size() == 1 && printed.front().empty() ? 0 : printed.size();
  if (expected.size() < needed) { return false; }
  for (std::size_t i = 0; i < needed; ++i) {
    if (!matchesLine(expected[i], printed[i])) { return false; }
  }
  return std::all_of(expected.begin() + static_cast<std::ptrdiff_t>(needed), expected.end(),
                     [](const std::string& line) { return isBlank(line); });
}

}  // namespace orlocal::host
