#include "host/fmwrapper/decimal.h"

#include <algorithm>

#include <boost/multiprecision/cpp_int.hpp>

#include "host/fmwrapper/number.h"

namespace orlocal::host {

using Integer = boost::multiprecision::number<boost::multiprecision::cpp_int_backend<>, boost::multiprecision::et_off>;

struct Decimal {
  Integer unscaled;
  std::int32_t decimals = 0;  ///< never negative
};

namespace {

/// Past this many decimals a number of 400 digits would be smaller than the smallest one.
constexpr std::int32_t kMaxDecimals = 2 * Number::kMaxPrecision;

Integer powerOfTen(std::int32_t exponent) {
  return boost::multiprecision::pow(Integer(10), static_cast<unsigned>(exponent));
}

std::int32_t digitCount(const Integer& value) {
  if (value.is_zero()) { return 1; }
  const Integer magnitude = boost::multiprecision::abs(value);
  // log10(2) bounds the count from below; at most one digit is missing.
  const auto bits = static_cast<double>(boost::multiprecision::msb(magnitude));
  auto count = static_cast<std::int32_t>(bits * 0.30102999566398) + 1;
  if (magnitude >= powerOfTen(count)) { ++count; }
  return count;
}

/// `dividend / divisor` as a whole number; the divisor is not zero.
Integer dividedBy(const Integer& dividend, const Integer& divisor, Rounding rounding) {
  Integer whole;
  Integer rest;
  boost::multiprecision::divide_qr(dividend, divisor, whole, rest);
  if (rest.is_zero()) { return whole; }
  const int sign = dividend.sign() * divisor.sign();
  switch (rounding) {
    case Rounding::kTowardsZero:
      return whole;
    case Rounding::kDown:
      return sign < 0 ? Integer(whole - 1) : whole;
    case Rounding::kUp:
      return sign > 0 ? Integer(whole + 1) : whole;
    case Rounding::kHalfAwayFromZero:
      break;
  }
  const bool atLeastHalf = 2 * boost::multiprecision::abs(rest) >= boost::multiprecision::abs(divisor);
  return atLeastHalf ? Integer(whole + sign) : whole;
}

/// Brings a result into the form that is kept: within the digits and the range, without trailing zeros.
DecimalPtr kept(Integer unscaled, std::int32_t decimals) {
  if (decimals < 0) {
    unscaled *= powerOfTen(-decimals);
    decimals = 0;
  }
  const std::int32_t excess =
      std::max(std::min(digitCount(unscaled) - Number::kMaxPrecision, decimals), decimals - kMaxDecimals);
  if (excess > 0) {
    unscaled = dividedBy(unscaled, powerOfTen(excess), Rounding::kHalfAwayFromZero);
    decimals -= excess;
  }
  if (digitCount(unscaled) - decimals > Number::kMaxPrecision) { return nullptr; }
  while (decimals > 0) {
    Integer shorter;
    Integer last;
    boost::multiprecision::divide_qr(unscaled, Integer(10), shorter, last);
    if (!last.is_zero()) { break; }
    unscaled = std::move(shorter);
    --decimals;
  }
  return std::make_shared<const Decimal>(Decimal{std::move(unscaled), decimals});
}

/// Decimals to keep of a value whose first digit stands `magnitude` places before the point.
std::int32_t decimalsToKeep(std::int32_t magnitude, std::int32_t precision) {
  return precision + std::max(0, -magnitude);
}

}  // namespace

DecimalPtr decimalOf(std::int64_t value) { return std::make_shared<const Decimal>(Decimal{Integer(value), 0}); }

DecimalPtr decimalOf(std::string_view digits, std::int32_t decimals, bool negative) {
  digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
  if (digits.empty()) { return decimalOf(0); }
  const auto count = static_cast<std::int64_t>(digits.size());
  if (count - decimals > Number::kMaxPrecision) { return nullptr; }
  if (count - decimals < -Number::kMaxPrecision) { return decimalOf(0); }
  // One digit more than is kept decides the rounding; what lies behind cannot make a half out of less than one.
  if (count > Number::kMaxPrecision + 1) {
    const auto dropped = static_cast<std::int32_t>(count - Number::kMaxPrecision - 1);
    digits.remove_suffix(static_cast<std::size_t>(dropped));
    decimals -= dropped;
  }
  Integer unscaled;
  unscaled.assign(std::string(digits));
  return kept(negative ? Integer(-unscaled) : unscaled, decimals);
}

DecimalDigits digitsOf(const Decimal& value) {
  return {Integer(boost::multiprecision::abs(value.unscaled)).str(), value.decimals, value.unscaled.sign() < 0};
}

std::optional<std::int64_t> wholeOf(const Decimal& value) {
  static const Integer kLowest(INT64_MIN);
  static const Integer kHighest(INT64_MAX);
  if (value.decimals != 0 || value.unscaled < kLowest || value.unscaled > kHighest) { return std::nullopt; }
  return static_cast<std::int64_t>(value.unscaled);
}

bool isWhole(const Decimal& value) { return value.decimals == 0; }

int signOf(const Decimal& value) { return value.unscaled.sign(); }

std::strong_ordering compare(const Decimal& left, const Decimal& right) {
  const std::int32_t decimals = std::max(left.decimals, right.decimals);
  const Integer scaledLeft = left.unscaled * powerOfTen(decimals - left.decimals);
  const Integer scaledRight = right.unscaled * powerOfTen(decimals - right.decimals);
  return scaledLeft.compare(scaledRight) <=> 0;
}

DecimalPtr negated(const Decimal& value) {
  return std::make_shared<const Decimal>(Decimal{-value.unscaled, value.decimals});
}

DecimalPtr sum(const Decimal& left, const Decimal& right) {
  const std::int32_t decimals = std::max(left.decimals, right.decimals);
  return kept(
      left.unscaled * powerOfTen(decimals - left.decimals) + right.unscaled * powerOfTen(decimals - right.decimals),
      decimals);
}

DecimalPtr product(const Decimal& left, const Decimal& right, std::int32_t precision) {
  const Integer unscaled = left.unscaled * right.unscaled;
  const std::int32_t decimals = left.decimals + right.decimals;
  const std::int32_t wanted = decimalsToKeep(digitCount(unscaled) - decimals, precision);
  if (decimals <= wanted) { return kept(unscaled, decimals); }
  return kept(dividedBy(unscaled, powerOfTen(decimals - wanted), Rounding::kHalfAwayFromZero), wanted);
}

DecimalPtr quotient(const Decimal& left, const Decimal& right, std::int32_t precision) {
  const std::int32_t magnitude =
      (digitCount(left.unscaled) - left.decimals) - (digitCount(right.unscaled) - right.decimals);
  const std::int32_t decimals = std::min(decimalsToKeep(magnitude, precision), kMaxDecimals);
  const std::int32_t shift = decimals - left.decimals + right.decimals;
  if (shift >= 0) {
    return kept(dividedBy(left.unscaled * powerOfTen(shift), right.unscaled, Rounding::kHalfAwayFromZero), decimals);
  }
  return kept(dividedBy(left.unscaled, right.unscaled * powerOfTen(-shift), Rounding::kHalfAwayFromZero), decimals);
}

DecimalPtr rounded(const Decimal& value, std::int32_t decimals, Rounding rounding) {
  if (decimals >= value.decimals) { return std::make_shared<const Decimal>(value); }
  decimals = std::max(decimals, -2 * Number::kMaxPrecision);
  return kept(dividedBy(value.unscaled, powerOfTen(value.decimals - decimals), rounding), decimals);
}

}  // namespace orlocal::host
