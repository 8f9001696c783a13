#include <algorithm>
#include <cstdint>
#include <string>

#include <boost/multiprecision/cpp_dec_float.hpp>

#include "host/fmwrapper/number.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host {

namespace {

/// Twenty digits more than are promised, so that the last ones promised are right.
using Float = boost::multiprecision::number<boost::multiprecision::cpp_dec_float<100>, boost::multiprecision::et_off>;
constexpr std::int32_t kGoodDigits = 80;

Float floatOf(const Number& value) { return Float(toUtf8(value.text())); }

Number numberOf(const Float& value, std::int32_t precision) {
  if (!boost::multiprecision::isfinite(value)) { return Number::notANumber(); }
  Number one = 1;
  one.setPrecision(precision);
  return Number::parse(toUtf16(value.str(kGoodDigits, std::ios_base::scientific))) * one;
}

/// Repeated squaring; `exponent` is not negative. The digits kept are those of the numbers themselves.
Number wholePower(Number base, std::int64_t exponent) {
  Number result = 1;
  base.setPrecision(Number::kMaxPrecision);
  while (exponent > 0 && result.isNumber()) {
    if (exponent % 2 != 0) { result = result * base; }
    exponent /= 2;
    if (exponent > 0) { base = base * base; }
  }
  return result;
}

}  // namespace

Number power(const Number& base, const Number& exponent) {
  const std::int32_t precision = std::max(base.precision(), exponent.precision());
  if (!base.isNumber() || !exponent.isNumber()) { return Number::notANumber(); }
  if (base.isZero() && exponent.isNegative()) { return Number::notANumber(); }
  if (exponent.isInteger()) {
    constexpr std::int64_t kLargest = 1'000'000'000;
    if (absolute(exponent) > Number(kLargest)) {
      const Number magnitude = absolute(base);
      if (magnitude == Number(1)) { return modulo(exponent, 2).isZero() ? magnitude : base; }
      return (magnitude < Number(1)) == exponent.isNegative() ? Number::notANumber() : Number(0);
    }
    const std::int64_t whole = exponent.toInt64();
    Number result = wholePower(base, whole < 0 ? -whole : whole);
    result.setPrecision(precision);
    if (whole >= 0) { return result * Number(1); }
    return result.isNumber() ? Number(1) / result : Number(0);
  }
  if (base.isNegative()) { return Number::notANumber(); }
  if (base.isZero()) { return 0; }
  return numberOf(boost::multiprecision::pow(floatOf(base), floatOf(exponent)), precision);
}

Number squareRoot(const Number& value) {
  if (!value.isNumber() || value.isNegative()) { return Number::notANumber(); }
  return numberOf(boost::multiprecision::sqrt(floatOf(value)), value.precision());
}

Number naturalLogarithm(const Number& value) {
  if (!value.isNumber() || value.isNegative() || value.isZero()) { return Number::notANumber(); }
  return numberOf(boost::multiprecision::log(floatOf(value)), value.precision());
}

Number exponential(const Number& value) {
  constexpr std::int64_t kLargest = 1000;
  if (!value.isNumber() || value > Number(kLargest)) { return Number::notANumber(); }
  if (value < Number(-kLargest)) { return 0; }
  return numberOf(boost::multiprecision::exp(floatOf(value)), value.precision());
}

}  // namespace orlocal::host
