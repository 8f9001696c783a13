#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/date.h"
#include "platform/text.h"

namespace orlocal {

// How values are written for callers, and read from them. Nothing here depends on the process's locale.

/// Stands for the result of a call that failed.
inline constexpr const char* kErrorText = "!!ERROR!!";

/// "True" or "False".
OptionalText booleanText(bool value);

/// As "%.*f" does.
std::string fixedText(double number, int decimals);

/// `date` in the platform's default calendar format, in the default zone with the offset in force at that moment.
OptionalText dateText(std::optional<Date> date);

/// Items between carriage returns; none follows the last.
std::string listText(const std::vector<std::string>& items);
std::string listText(const std::vector<long>& numbers);

/// "%ld,%ld"
std::string pairText(long first, long second);

/// The whole number that `text` starts with, after white space and a sign; 0 without digits, the nearest limit when it
/// does not fit.
std::int32_t integerValue(std::string_view text);

/// The number that `text` starts with, decimal or with an exponent; 0 without digits.
double doubleValue(std::string_view text);

/// The address that `text` names. Bytes that an address cannot carry are percent-encoded, so that nothing typed is
/// lost.
OptionalText urlWithString(const OptionalText& text);

}  // namespace orlocal
