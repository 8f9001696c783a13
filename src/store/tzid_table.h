#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/calendar_layout.h"

namespace orlocal::store {

/// What the TZIDs of one file mean. A definition in the same VCALENDAR counts before one elsewhere in the file.
class TzidTable {
 public:
  /// Both are borrowed.
  TzidTable(std::string_view bytes, const std::vector<ZoneSpan>& zones) : m_bytes(bytes), m_zones(zones) {}

  /// The zone's name here; none when nothing explains the TZID, which is told once, with `line`.
  const std::optional<std::string>& zoneOf(std::string_view tzid, std::size_t calendar, int line,
                                           ReadProblems& problems);

  /// The private zones in use: name and VTIMEZONE text.
  const std::map<std::string, std::string>& privateZones() const { return m_private; }

 private:
  std::optional<std::string> find(std::string_view tzid, std::size_t calendar, int line, ReadProblems& problems);

  std::string_view m_bytes;
  const std::vector<ZoneSpan>& m_zones;
  std::vector<std::map<std::string, std::optional<std::string>, std::less<>>> m_known;  // by calendar
  std::map<std::string, std::string> m_private;
};

}  // namespace orlocal::store
