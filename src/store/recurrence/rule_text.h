#pragma once

#include <string>
#include <string_view>

#include "base/result.h"
#include "store/model/model.h"

// Rules as calendar files write them (RFC 5545, 3.3.10; RFC 7529).
namespace orlocal::store {

/// The value of RRULE. Fails with the reason: `kInvalid` when it is no rule, `kUnsupported` when it is one that cannot
/// be followed.
Result<RecurrenceRule> parseRule(std::string_view text);
std::string ruleText(const RecurrenceRule& rule);

}  // namespace orlocal::store
