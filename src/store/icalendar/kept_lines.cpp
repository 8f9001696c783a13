#include "store/icalendar/kept_lines.h"

#include <algorithm>

#include "base/text.h"
#include "store/icalendar/content_line.h"

namespace orlocal::store {
namespace {

/// Calls `take(line, depth)` for each line; a component within begins and ends one deeper.
template <class Take>
void walk(std::string_view kept, Take take) {
  int depth = 0;
  while (!kept.empty()) {
    const std::string_view line = kept.substr(0, kept.find('\n'));
    kept.remove_prefix(std::min(line.size() + 1, kept.size()));
    if (equalsNoCase(line.substr(0, 6), "BEGIN:")) { ++depth; }
    take(line, depth);
    if (equalsNoCase(line.substr(0, 4), "END:") && depth > 0) { --depth; }
  }
}

bool hasParameters(std::string_view line) { return line.starts_with('@'); }

bool isOf(std::string_view property, std::string_view line, int depth) {
  const std::string_view text = line.substr(hasParameters(line) ? 1 : 0);
  return depth == 0 && equalsNoCase(text.substr(0, text.find_first_of(";:")), property);
}

/// The lines for which `wanted(line, depth)` holds.
template <class Wanted>
std::string filtered(std::string_view kept, Wanted wanted) {
  std::string rest;
  walk(kept, [&](std::string_view line, int depth) {
    if (wanted(line, depth)) { rest.append(line).append("\n"); }
  });
  return rest;
}

}  // namespace

std::string withoutParametersOf(std::string_view property, std::string_view kept) {
  return filtered(kept, [&](std::string_view line, int depth) {
    return !hasParameters(line) || !isOf(property, line, depth);
  });
}

std::string withoutLinesOf(std::string_view property, std::string_view kept) {
  return filtered(kept, [&](std::string_view line, int depth) { return !isOf(property, line, depth); });
}

std::string withLinesOf(std::string_view property, std::string_view kept, std::string_view other) {
  return withoutLinesOf(property, kept) +
         filtered(other, [&](std::string_view line, int depth) { return isOf(property, line, depth); });
}

std::vector<std::string_view> keptValues(std::string_view property, std::string_view kept) {
  std::vector<std::string_view> values;
  walk(kept, [&](std::string_view text, int depth) {
    if (depth > 0) { return; }
    const auto line = splitContentLine(text, 0);
    if (line && line->is(property)) { values.push_back(line->value); }
  });
  return values;
}

}  // namespace orlocal::store
