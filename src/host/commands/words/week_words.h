#pragma once

#include <bitset>
#include <cstddef>
#include <string>
#include <string_view>

#include "base/result.h"
#include "host/commands/words/time_words.h"

// Which part of a week is meant; docs/words.md has the tables.
namespace orlocal::host {

/// 0 Sunday to 6 Saturday.
using WeekDays = std::bitset<7>;

/// The place of the day's name in `WeekDays`.
std::size_t placeInWeek(store::LocalDay day);

/// "mon-fri", "mon,wed and fri", "weekdays", "sat-sun".
Result<WeekDays> readWeekDays(std::string_view text, const WordsSetting& setting);

/// "9-17", "9:00 to 12:30", "22-6": the last is past midnight.
Result<TimeRange> readHours(std::string_view text, const WordsSetting& setting);

/// "Mon–Fri", "Mon, Wed".
std::string weekDaysInWords(WeekDays days);

}  // namespace orlocal::host
