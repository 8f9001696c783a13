#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/commands/views/grid_entries.h"

namespace orlocal::host {

/// How a month or week is drawn.
struct GridSetting {
  std::size_t width = 80;  ///< cells in a line
  std::size_t lines = 6;   ///< of a month's days; what does not fit is counted
  cctz::weekday firstWeekday = cctz::weekday::monday;
  store::LocalDay today;
  Ink ink{false};
};

/// The first day of the week that `day` is in.
store::LocalDay weekStart(store::LocalDay day, cctz::weekday firstWeekday);

/// The lines of the weeks that the month of `day` has days in: each day's number, "◂" behind today's, then what is on
/// it. No line is longer than `setting.width` cells where that has at least five for a day.
std::vector<std::string> monthGrid(store::LocalDay day, const std::vector<GridEntry>& entries,
                                   const GridSetting& setting);

/// The lines of a week with its hours: what takes whole days first, then a column of half hours for each day, side by
/// side what overlaps. A mark stands for hours between them in which nothing lies.
std::vector<std::string> weekGrid(store::LocalDay day, const std::vector<GridEntry>& entries,
                                  const GridSetting& setting);

}  // namespace orlocal::host
