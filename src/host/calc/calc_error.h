#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <tl/expected.hpp>

namespace orlocal::host::calc {

/// Why a calculation cannot be used, and where.
struct CalcError {
  std::size_t offset = 0;  ///< byte in the UTF-8 source
  std::string message;     ///< one sentence without a full stop
};

template <class T>
using CalcResult = tl::expected<T, CalcError>;

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

/// Three lines: `1:17: message` (after the file's name when there is one), the source line, a caret below the place.
std::string describe(std::string_view source, const CalcError& error, const Origin& origin = {});

}  // namespace orlocal::host::calc
