#pragma once

#include <array>
#include <string>
#include <string_view>

#include "base/result.h"
#include "store/model/model.h"

// Rules as calendar files write them (RFC 5545, 3.3.10; RFC 7529).
namespace orlocal::store {

/// By the numbers of the days, 0 Sunday to 6 Saturday.
constexpr std::array<std::string_view, 7> kWeekDays{"SU", "MO", "TU", "WE", "TH", "FR", "SA"};

/// The value of RRULE. Fails with the reason: `kInvalid` when it is no rule, `kUnsupported` when it is one that cannot
/// be followed.
Result<RecurrenceRule> parseRule(std::string_view text);
std::string ruleText(const RecurrenceRule& rule);

}  // namespace orlocal::store
