#pragma once

#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include "host/commands/words/when_words.h"
#include "store/calendar_store.h"

namespace orlocal::host {

/// When the item is, on the viewer's wall clock; none of a reminder without a date.
std::optional<Times> shownTimesOf(const store::Item& item, const std::optional<store::Occurrence>& occurrence,
                                  const store::Zone& viewer);

/// `"Lunch" (1A2B3C4D): Tue 3 Nov 2026 12:30–13:30, every week, alarm 15 minutes before, in Work`.
std::string itemLine(const store::Item& item, const store::Calendar& calendar, const store::Zone& viewer,
                     const std::optional<store::Occurrence>& occurrence = std::nullopt);
/// `"Lunch"`, for what cannot have a line.
std::string quotedTitle(const store::Item& item);

nlohmann::json itemJson(const store::Item& item, const store::Calendar& calendar, const store::Zone& viewer,
                        const std::optional<store::Occurrence>& occurrence = std::nullopt);

}  // namespace orlocal::host
