#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "store/icalendar/calendar_layout.h"

namespace orlocal::store {

/// What a TZID means to an item that is read.
class Tzids {
 public:
  virtual ~Tzids() = default;

  /// The zone's name here; none when nothing explains the TZID, which is told once, with `line`. Valid as long as this.
  virtual const std::optional<std::string>& zoneOf(std::string_view tzid, std::size_t calendar, int line,
                                                   ReadProblems& problems) = 0;
};

/// What the TZIDs of one file mean. A definition in the same VCALENDAR counts before one elsewhere in the file.
///
/// Limits: 1,000 different TZIDs a file, definitions of 64 KiB, and as much work on definitions as some 500 usual ones
/// take. Past them a TZID is one that nothing explains.
class TzidTable final : public Tzids {
 public:
  /// Both are borrowed.
  TzidTable(std::string_view bytes, const std::vector<ZoneSpan>& zones);

  const std::optional<std::string>& zoneOf(std::string_view tzid, std::size_t calendar, int line,
                                           ReadProblems& problems) override;

  /// What `zoneOf` said of the TZID before; null when it was not asked.
  const std::optional<std::string>* known(std::string_view tzid, std::size_t calendar) const;

  /// The private zones in use: name and VTIMEZONE text.
  const std::map<std::string, std::string>& privateZones() const { return m_private; }

 private:
  /// What a definition comes to.
  struct Meaning {
    std::optional<std::string> zone;
    std::string trouble;  ///< why there is none
  };

  std::optional<std::string> find(std::string_view tzid, std::size_t calendar, int line, ReadProblems& problems);
  const std::optional<std::string>& systemZone(std::string_view tzid);
  const Meaning& meaningOf(const ZoneSpan& block);
  Meaning work(const ZoneSpan& block, std::string_view text);

  std::string_view m_bytes;
  std::unordered_map<std::string_view, std::vector<const ZoneSpan*>> m_blocks;          ///< by TZID
  std::vector<std::map<std::string, std::optional<std::string>, std::less<>>> m_known;  ///< by calendar
  std::map<std::string, std::optional<std::string>, std::less<>> m_system;
  // Files that were put together of many have the same definition again and again.
  std::unordered_map<const ZoneSpan*, const Meaning*> m_meanings;
  std::unordered_map<std::string_view, Meaning> m_meaningsOfTexts;
  std::map<std::string, std::string> m_private;
  std::int64_t m_workLeft = 1'000'000;  ///< in changes of clocks that are worked out
};

/// Those of a table that were asked for before, for a thread of its own: the table must not be asked meanwhile. Of any
/// other it says nothing, and that it was asked.
class KnownTzids final : public Tzids {
 public:
  /// Borrowed.
  explicit KnownTzids(const TzidTable& table) : m_table(table) {}

  const std::optional<std::string>& zoneOf(std::string_view tzid, std::size_t calendar, int line,
                                           ReadProblems& problems) override;
  bool wasAskedForMore() const { return m_askedForMore; }

 private:
  const TzidTable& m_table;
  std::optional<std::string> m_none;
  bool m_askedForMore = false;
};

}  // namespace orlocal::store
