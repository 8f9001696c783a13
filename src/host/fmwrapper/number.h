#pragma once

#include <compare>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/fmwrapper/export.h"

namespace orlocal::host {

struct Decimal;

/// A number as the host has it: decimal, exact where decimals are exact, never a binary fraction.
///
/// Whole numbers of 64 bits are held in place; anything else is an unscaled integer with a count of decimals, shared
/// between copies and never changed. At most 400 significant digits are kept, and the magnitude stays below 10^400:
/// what leaves that range, and a division by zero, gives "not a number", shown as "?". It spreads through arithmetic,
/// equals nothing, and counts as 0 where a whole number is asked for.
class ORLOCAL_HOST_API Number {
 public:
  /// Decimals that a division keeps by default, and the most that can be asked for.
  static constexpr std::int32_t kDefaultPrecision = 16;
  static constexpr std::int32_t kMaxPrecision = 400;

  Number() noexcept = default;
  Number(std::int64_t value) noexcept : m_small(value) {}  // NOLINT: whole numbers are numbers

  /// The shortest decimal that reads back as the same double.
  static Number fromDouble(double value);

  /// Reads the number that stands in a text as the host does: digits, the first decimal point and a minus before the
  /// first digit are kept, all else is ignored ("abc12x3" is 123, "-$1,200.50" is -1200.5, "" is 0). A text that is
  /// wholly a literal with an exponent ("1.5e3") is read as one. Digits of other scripts are not digits.
  static Number parse(std::u16string_view text);

  static Number notANumber();

  bool isNumber() const noexcept { return m_kind != Kind::kNone; }
  bool isZero() const noexcept;
  bool isInteger() const noexcept;
  bool isNegative() const noexcept;

  /// As the host writes it: no trailing zeros, no zero before the point, no exponent. One half is ".5".
  std::u16string text() const;

  /// The whole part, cut towards zero; saturates at the limits of 64 bits.
  std::int64_t toInt64() const noexcept;
  double toDouble() const;

  /// Decimals (and at least as many significant digits) that a division or product keeps: 16 to 400. An operation
  /// works with the larger precision of its operands. Changing it does not change the value.
  std::int32_t precision() const noexcept { return m_precision; }
  void setPrecision(std::int32_t precision) noexcept;

  Number operator-() const;
  friend ORLOCAL_HOST_API Number operator+(const Number& left, const Number& right);
  friend ORLOCAL_HOST_API Number operator-(const Number& left, const Number& right);
  friend ORLOCAL_HOST_API Number operator*(const Number& left, const Number& right);
  friend ORLOCAL_HOST_API Number operator/(const Number& left, const Number& right);

  /// By value; precision plays no part. "Not a number" is unordered.
  friend ORLOCAL_HOST_API std::partial_ordering operator<=>(const Number& left, const Number& right);
  friend bool operator==(const Number& left, const Number& right) {
    return (left <=> right) == std::partial_ordering::equivalent;
  }

 private:
  friend struct NumberAccess;
  enum class Kind : std::uint8_t { kSmall, kDecimal, kNone };

  std::int64_t m_small = 0;
  std::shared_ptr<const Decimal> m_decimal;
  std::int32_t m_precision = kDefaultPrecision;
  Kind m_kind = Kind::kSmall;
};

/// The largest whole number that is not above `value`: -1.5 gives -2.
ORLOCAL_HOST_API Number floor(const Number& value);
/// The smallest whole number that is not below `value`.
ORLOCAL_HOST_API Number ceiling(const Number& value);
/// Cut towards zero after `decimals` decimals; a negative count cuts before the point (1234 to -2 gives 1200).
ORLOCAL_HOST_API Number truncate(const Number& value, std::int32_t decimals = 0);
/// Rounded to `decimals` decimals, halves away from zero; a negative count rounds before the point.
ORLOCAL_HOST_API Number round(const Number& value, std::int32_t decimals = 0);
ORLOCAL_HOST_API Number absolute(const Number& value);
/// `left - right * floor(left / right)`: takes the sign of `right`.
ORLOCAL_HOST_API Number modulo(const Number& left, const Number& right);
/// Exact for whole exponents as far as precision allows; others, and those below, are right to 80 digits.
ORLOCAL_HOST_API Number power(const Number& base, const Number& exponent);
ORLOCAL_HOST_API Number squareRoot(const Number& value);
ORLOCAL_HOST_API Number naturalLogarithm(const Number& value);
ORLOCAL_HOST_API Number exponential(const Number& value);

}  // namespace orlocal::host
