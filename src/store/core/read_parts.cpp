#include "store/core/read_parts.h"

#include <algorithm>
#include <iterator>

namespace orlocal::store {

std::vector<ReadParts::Part> ReadParts::missing(Part part) const {
  std::vector<Part> missing;
  auto next = m_parts.upper_bound(part.from);
  if (next != m_parts.begin()) { part.from = std::max(part.from, std::prev(next)->second); }
  for (; part.from < part.to; ++next) {
    const bool isLast = next == m_parts.end() || next->first >= part.to;
    missing.push_back({part.from, isLast ? part.to : next->first});
    if (isLast) { break; }
    part.from = next->second;
  }
  return missing;
}

void ReadParts::add(Part part) {
  if (part.from >= part.to) { return; }
  auto next = m_parts.upper_bound(part.from);
  if (next != m_parts.begin() && std::prev(next)->second >= part.from) { part.from = (--next)->first; }
  while (next != m_parts.end() && next->first <= part.to) {
    part.to = std::max(part.to, next->second);
    next = m_parts.erase(next);
  }
  m_parts.emplace(part.from, part.to);
}

}  // namespace orlocal::store
