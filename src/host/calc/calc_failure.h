#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "base/result.h"

namespace orlocal::host::calc {

/// Why a calculation cannot be used: one sentence without a full stop, about the byte `offset` of the UTF-8 source.
Failed unreadable(std::size_t offset, std::string message, ErrorCode code = ErrorCode::kInvalid);

/// Line and column as people count them: from 1, columns in characters.
struct Place {
  std::size_t line = 1;
  std::size_t column = 1;

  friend bool operator==(const Place&, const Place&) = default;
};

Place placeOf(std::string_view source, std::size_t offset);

/// Where a calculation stands, for messages.
struct Origin {
  std::string file;           ///< empty: none, as on a command line
  std::size_t firstLine = 1;  ///< the file's line at which the calculation begins
};

/// Three lines: `1:17: message` (after the file's name when there is one), the source line, a caret below the place; a
/// failure without one is shown at the beginning.
std::string describe(std::string_view source, const Failure& why, const Origin& origin = {});

}  // namespace orlocal::host::calc
