#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "host/commands/words/time_words.h"

// When an alarm goes off, as people write it; docs/words.md has the table.
namespace orlocal::host {

/// Beside the start of an event, or the due moment of a reminder.
struct AlarmWords {
  Length before;                  ///< so much earlier, where there is no `time`
  std::optional<TimeOfDay> time;  ///< at this time of day, `before.days` days earlier
};

/// "15m", "1h before", "at start", "9:00", "at 9:00 the day before", "2 days before at 18:00".
Result<AlarmWords> readAlarm(std::string_view text, const WordsSetting& setting);

/// Seconds from the start on; `start` is its time on the wall clock, midnight for whole days.
std::chrono::seconds offsetOf(const AlarmWords& alarm, store::LocalTime start);

}  // namespace orlocal::host
