#include "store/icalendar/kept_lines.h"

#include <algorithm>

#include "base/text.h"

namespace orlocal::store {
namespace {

std::string filtered(std::string_view kept, std::string_view property, bool lines) {
  std::string rest;
  int depth = 0;
  while (!kept.empty()) {
    const std::string_view line = kept.substr(0, kept.find('\n'));
    kept.remove_prefix(std::min(line.size() + 1, kept.size()));
    if (equalsNoCase(line.substr(0, 6), "BEGIN:")) { ++depth; }
    const bool parameters = line.starts_with('@');
    const std::string_view text = line.substr(parameters ? 1 : 0);
    const bool ofProperty = depth == 0 && equalsNoCase(text.substr(0, text.find_first_of(";:")), property);
    if (!ofProperty || !(parameters || lines)) { rest.append(line).append("\n"); }
    if (equalsNoCase(line.substr(0, 4), "END:") && depth > 0) { --depth; }
  }
  return rest;
}

}  // namespace

std::string withoutParametersOf(std::string_view property, std::string_view kept) {
  return filtered(kept, property, false);
}

std::string withoutLinesOf(std::string_view property, std::string_view kept) { return filtered(kept, property, true); }

}  // namespace orlocal::store
