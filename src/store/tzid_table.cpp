#include "store/tzid_table.h"

#include <fmt/core.h>

#include "store/zone.h"
#include "store/zone_names.h"

namespace orlocal::store {

namespace {

constexpr std::size_t kLongestBlock = 1 << 20;

}  // namespace

const std::optional<std::string>& TzidTable::zoneOf(std::string_view tzid, std::size_t calendar, int line,
                                                    ReadProblems& problems) {
  if (m_known.size() <= calendar) m_known.resize(calendar + 1);
  auto& known = m_known[calendar];
  auto found = known.find(tzid);
  if (found == known.end()) found = known.emplace(std::string(tzid), find(tzid, calendar, line, problems)).first;
  return found->second;
}

std::optional<std::string> TzidTable::find(std::string_view tzid, std::size_t calendar, int line,
                                           ReadProblems& problems) {
  if (auto system = systemZoneOf(tzid)) return system;
  const ZoneSpan* block = nullptr;
  for (const ZoneSpan& zone : m_zones)
    if (zone.tzid == tzid && (block == nullptr || zone.calendar == calendar)) block = &zone;
  std::string reason = "names no known time zone and the file does not define it";
  if (block != nullptr && block->span.end - block->span.begin <= kLongestBlock) {
    const std::string_view text = block->span.of(m_bytes);
    if (auto system = systemZoneByRules(text)) return system;
    const auto made = privateZoneOf(tzid, text);
    const auto status =
        made ? Zone::registerPrivate(made->name, made->vtimezone) : Status(tl::unexpected(made.error()));
    if (status) return m_private.emplace(made->name, made->vtimezone).first->first;
    reason = fmt::format("is defined in line {}, which is of no use: {}", block->span.line, status.error().message);
  }
  problems.warnings.push_back({line, "", fmt::format("TZID \"{}\" {}; its times are read as floating", tzid, reason)});
  return std::nullopt;
}

}  // namespace orlocal::store
