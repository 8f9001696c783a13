#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <cctz/time_zone.h>

namespace orlocal::store {

/// What a zone's clock does, written out: an offset to begin with, and each change of it.
struct ZoneRules {
  struct Clock {
    int offset = 0;  ///< seconds east of Greenwich
    bool daylight = false;
    std::string abbreviation;

    friend bool operator==(const Clock&, const Clock&) = default;
  };
  struct Change {
    std::int64_t at = 0;  ///< seconds since 1970-01-01 00:00:00 UTC
    Clock clock;
  };
  Clock initial;
  std::vector<Change> changes;  ///< ascending
};

/// Rules that repeat for ever are written out up to this year; the last clock then stays.
constexpr int kLastZoneYear = 2500;

/// The rules of a POSIX TZ text (POSIX.1, 8.3): "EST5EDT,M3.2.0,M11.1.0", "<+0330>-3:30". None when it is not one.
std::optional<ZoneRules> rulesOfPosixText(std::string_view text);

/// Makes a zone of them, without a file. Each call adds a zone that stays for the life of the process.
std::optional<cctz::time_zone> zoneOfRules(const ZoneRules& rules);

}  // namespace orlocal::store
