#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "host/fmwrapper/value.h"

namespace orlocal::host::calc {

/// The lines that a result is printed as, in UTF-8: it is cut at every return and line feed. One that ends with a
/// return has an empty last line. There is always at least one line.
std::vector<std::string> linesOf(const Value& value);

/// "text", "number", "date", "time", "timestamp"; "empty" for nothing, "invalid" for "?".
std::string_view typeName(const Value& value);

/// The text with control characters shown as their pictures (U+2400 and following), tabs left: what a calendar holds
/// must not command the terminal.
std::string harmless(std::string_view text);

}  // namespace orlocal::host::calc
