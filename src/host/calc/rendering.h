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

/// What turns the order of letters around (bidirectional marks), breaks a line unseen, or is seen nowhere and carries
/// text all the same. Joiners and variation selectors are not among them: scripts and emoji need them.
bool misleads(char32_t character);

/// The text with control characters shown as their pictures (U+2400 and following), tabs left, and with U+FFFD for what
/// misleads: what a calendar holds must not command the terminal, nor read there as something else.
std::string harmless(std::string_view text);

/// The same for a text of several lines, whose line feeds stay.
std::string harmlessLines(std::string_view text);

}  // namespace orlocal::host::calc
