#pragma once

#include <compare>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace orlocal::host {

struct Decimal;

/// What a Number holds when a 64-bit integer does not do: an unscaled integer over a power of ten, without trailing
/// zeros after the point. Immutable. A null pointer stands for "outside the range of numbers".
using DecimalPtr = std::shared_ptr<const Decimal>;

/// A decimal taken apart: 1.25 is the digits "125" with 2 decimals.
struct DecimalDigits {
  std::string digits;  ///< no sign, no leading zeros; "0" for zero
  std::int32_t decimals = 0;
  bool negative = false;
};

enum class Rounding : std::uint8_t { kTowardsZero, kDown, kUp, kHalfAwayFromZero };

DecimalPtr decimalOf(std::int64_t value);
/// `decimals` may be negative: the digits then stand that many places before the point. Rounds to 400 significant
/// digits.
DecimalPtr decimalOf(std::string_view digits, std::int32_t decimals, bool negative);

DecimalDigits digitsOf(const Decimal& value);
/// The value when it is whole and fits.
std::optional<std::int64_t> wholeOf(const Decimal& value);
bool isWhole(const Decimal& value);
int signOf(const Decimal& value);
std::strong_ordering compare(const Decimal& left, const Decimal& right);

DecimalPtr negated(const Decimal& value);
DecimalPtr sum(const Decimal& left, const Decimal& right);
DecimalPtr product(const Decimal& left, const Decimal& right, std::int32_t precision);
/// `right` is not zero.
DecimalPtr quotient(const Decimal& left, const Decimal& right, std::int32_t precision);
DecimalPtr rounded(const Decimal& value, std::int32_t decimals, Rounding rounding);

}  // namespace orlocal::host
