#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/cal_framework.h"

namespace orlocal {

/// What a caller says about a rule. Absent lists do not narrow it.
struct RecurrenceWishes {
  int interval = 1;
  std::optional<std::vector<long>> daysOfTheWeek;
  std::optional<std::vector<long>> daysOfTheMonth;
  int dayOfTheWeek = 0;    ///< 1 Sunday to 7 Saturday; 0 for none
  int weekOfTheMonth = 0;  ///< 1 to 5, -1 for the last; counts only beside a day of the week
  std::optional<std::vector<long>> monthsOfTheYear;
  std::shared_ptr<CalRecurrenceEnd> end;
};

/// The rule of that `kind` ("weekly", "monthly" or "yearly"; daily for any other word) which the wishes ask for. Null
/// when the platform makes none.
std::shared_ptr<CalRecurrenceRule> makeRecurrenceRule(CalFramework& framework, std::string_view kind,
                                                      const RecurrenceWishes& wishes);

}  // namespace orlocal
