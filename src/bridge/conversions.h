#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "platform/date.h"
#include "platform/eventkit_items.h"
#include "platform/host/data.h"
#include "platform/text.h"

namespace orlocal {

// Arguments by position. An empty text counts as a missing argument.

OptionalText textArgument(const HostArguments& arguments, std::uint32_t position);
/// As the host converts it to 32 bits; 0 when it is missing.
std::int32_t numberArgument(const HostArguments& arguments, std::uint32_t position);
/// A wall-clock time in the default zone, with the offset in force on that day. None in zones whose offset is not a
/// whole number of hours.
std::optional<Date> dateArgument(const HostArguments& arguments, std::uint32_t position);

/// Stores a text as the result.
void AssignStringResult(std::string_view text, fmx::Data* result);

/// Days of the week, 1 Sunday to 7 Saturday, one on each line of a host list. A line that is no day is left out with a
/// line in the log. None for no text.
std::optional<std::vector<std::shared_ptr<EKRecurrenceDayOfWeek>>> NSStringToNSArrayDOW(const OptionalText& text);

/// Whole numbers, one on each line of a host list; a line that is no number is left out. None for no text.
std::optional<std::vector<long>> NSStringToNSArrayInts(const OptionalText& text);

}  // namespace orlocal
