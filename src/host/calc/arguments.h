#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "host/fmwrapper/value.h"

namespace orlocal::host::calc {

using Arguments = std::span<const Value>;

inline Value truth(bool value) { return Value::ofNumber(value ? 1 : 0); }

/// A count of characters, values or words: whole, and at least 0.
inline std::size_t countAt(Arguments arguments, std::size_t index) {
  const std::int64_t count = arguments[index].asNumber().toInt64();
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

/// A whole number that fits an `int`; what does not is cut to the nearest that does.
inline std::int32_t smallAt(Arguments arguments, std::size_t index) {
  const std::int64_t value = arguments[index].asNumber().toInt64();
  constexpr std::int64_t kLimit = 1'000'000'000;
  return static_cast<std::int32_t>(value < -kLimit ? -kLimit : value > kLimit ? kLimit : value);
}

/// The part [first, first + count) of things numbered from 1, cut to those that there are; `first` may lie before 1.
struct Part {
  std::size_t first = 0;  ///< from 0
  std::size_t count = 0;
};

inline Part partAt(Arguments arguments, std::size_t firstIndex, std::size_t countIndex) {
  const std::int64_t first = arguments[firstIndex].asNumber().toInt64();
  std::size_t count = countAt(arguments, countIndex);
  if (first >= 1) { return {static_cast<std::size_t>(first) - 1, count}; }
  // Positions before the first character count, but hold nothing.
  const std::size_t before =
      first == INT64_MIN ? static_cast<std::size_t>(INT64_MAX) : static_cast<std::size_t>(1 - first);
  count = count > before ? count - before : 0;
  return {0, count};
}

}  // namespace orlocal::host::calc
