#pragma once

#include <optional>
#include <string>

#include "store/model/model.h"
#include "store/time/zone.h"

namespace orlocal::host {

/// A rule in words: "every 2 weeks on Monday and Friday, until 18 December 2026". What it takes from the series' start,
/// such as the day of a weekly rule without one, is said when `start` is given.
std::string ruleWords(const store::RecurrenceRule& rule, std::optional<store::LocalDay> start,
                      const store::Zone& viewer);

/// How a series repeats: its rules, days that were added and days and rules that were taken out.
std::string recurrenceWords(const store::Recurrence& recurrence, std::optional<store::LocalDay> start,
                            const store::Zone& viewer);

}  // namespace orlocal::host
