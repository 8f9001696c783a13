#include "host/fmwrapper/number.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <new>
#include <optional>

#include "base/text.h"
#include "host/fmwrapper/decimal.h"

namespace orlocal::host {

/// Makes numbers of decimals and back.
struct NumberAccess {
  /// Whole numbers that fit return to the integer, so that one value has one form.
  static Number numberOf(DecimalPtr decimal, std::int32_t precision) {
    Number number;
    number.m_precision = precision;
    if (!decimal) {
      number.m_kind = Number::Kind::kNone;
    } else if (const auto whole = wholeOf(*decimal)) {
      number.m_small = *whole;
    } else {
      number.m_decimal = std::move(decimal);
      number.m_kind = Number::Kind::kDecimal;
    }
    return number;
  }

  static Number numberOf(std::int64_t value, std::int32_t precision) {
    Number number(value);
    number.m_precision = precision;
    return number;
  }

  static bool isSmall(const Number& number) { return number.m_kind == Number::Kind::kSmall; }
  static std::int64_t small(const Number& number) { return number.m_small; }
  static DecimalPtr decimal(const Number& number) {
    return isSmall(number) ? decimalOf(number.m_small) : number.m_decimal;
  }
};

namespace {

using Access = NumberAccess;

bool isDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }

/// A number's characters: digits with the place of the point among them, and the power of ten behind an "e".
struct Literal {
  std::string digits;
  std::int32_t decimals = 0;
  bool negative = false;

  Number number() const {
    constexpr std::size_t kSafeDigits = 18;
    if (decimals == 0 && digits.size() <= kSafeDigits) {
      std::int64_t value = 0;
      std::from_chars(digits.data(), digits.data() + digits.size(), value);
      return Number(negative ? -value : value);
    }
    return Access::numberOf(decimalOf(digits, decimals, negative), Number::kDefaultPrecision);
  }
};

/// Takes what counts of `text` and leaves the rest out.
Literal gather(std::u16string_view text) {
  Literal literal;
  bool pointSeen = false;
  for (const char16_t unit : text) {
    if (isDigit(unit)) {
      literal.digits.push_back(static_cast<char>(unit));
      if (pointSeen) { ++literal.decimals; }
    } else if (unit == u'.') {
      pointSeen = true;
    } else if (unit == u'-' && literal.digits.empty()) {
      literal.negative = true;
    }
  }
  return literal;
}

/// The exponent of a text that is a literal with one throughout, and where its "e" stands.
struct Exponent {
  std::size_t at;
  std::int32_t value;
};

std::optional<Exponent> exponentOf(std::u16string_view text) {
  const auto at = text.find_first_of(u"eE");
  if (at == std::u16string_view::npos || at == 0) { return std::nullopt; }
  std::size_t begin = text[0] == u'-' || text[0] == u'+' ? 1 : 0;
  const auto mantissa = text.substr(begin, at - begin);
  const bool plain = std::all_of(mantissa.begin(), mantissa.end(), [](char16_t u) { return isDigit(u) || u == u'.'; });
  if (!plain || std::count(mantissa.begin(), mantissa.end(), u'.') > 1) { return std::nullopt; }
  if (std::none_of(mantissa.begin(), mantissa.end(), isDigit)) { return std::nullopt; }
  begin = at + 1;
  const bool negative = begin < text.size() && text[begin] == u'-';
  if (begin < text.size() && (text[begin] == u'-' || text[begin] == u'+')) { ++begin; }
  if (begin == text.size() || !std::all_of(text.begin() + static_cast<std::ptrdiff_t>(begin), text.end(), isDigit)) {
    return std::nullopt;
  }
  constexpr std::int32_t kBeyond = 1'000'000;
  std::int32_t value = 0;
  for (const char16_t unit : text.substr(begin)) { value = std::min(value * 10 + (unit - u'0'), kBeyond); }
  return Exponent{at, negative ? -value : value};
}

template <class Small, class Large>
Number combined(const Number& left, const Number& right, Small small, Large large) {
  const std::int32_t precision = std::max(left.precision(), right.precision());
  if (Access::isSmall(left) && Access::isSmall(right)) {
    std::int64_t result = 0;
    if (small(Access::small(left), Access::small(right), &result)) { return Access::numberOf(result, precision); }
  }
  if (!left.isNumber() || !right.isNumber()) { return Number::notANumber(); }
  return Access::numberOf(large(*Access::decimal(left), *Access::decimal(right), precision), precision);
}

Number roundedTo(const Number& value, std::int32_t decimals, Rounding rounding) {
  if (!value.isNumber() || (Access::isSmall(value) && decimals >= 0)) { return value; }
  return Access::numberOf(rounded(*Access::decimal(value), decimals, rounding), value.precision());
}

}  // namespace

Number Number::notANumber() {
  Number number;
  number.m_kind = Kind::kNone;
  return number;
}

Number Number::fromDouble(double value) {
  if (!std::isfinite(value)) { return notANumber(); }
  std::array<char, 64> buffer{};
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::scientific);
  return parse(std::u16string(buffer.data(), end.ptr));
}

Number Number::parse(std::u16string_view text) {
  const auto whole = trimmed(text, u" \t\r\n");
  if (const auto exponent = exponentOf(whole)) {
    Literal literal = gather(whole.substr(0, exponent->at));
    literal.decimals -= exponent->value;
    return literal.number();
  }
  return gather(whole).number();
}

bool Number::isZero() const noexcept { return m_kind == Kind::kSmall && m_small == 0; }

bool Number::isInteger() const noexcept {
  return m_kind == Kind::kSmall || (m_kind == Kind::kDecimal && isWhole(*m_decimal));
}

bool Number::isNegative() const noexcept {
  return m_kind == Kind::kSmall ? m_small < 0 : m_kind == Kind::kDecimal && signOf(*m_decimal) < 0;
}

std::u16string Number::text() const {
  if (m_kind == Kind::kNone) { return u"?"; }
  if (m_kind == Kind::kSmall) {
    std::array<char, 24> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), m_small);
    return {buffer.data(), end.ptr};
  }
  const DecimalDigits parts = digitsOf(*m_decimal);
  const auto decimals = static_cast<std::size_t>(parts.decimals);
  const std::size_t count = parts.digits.size();
  std::u16string text = parts.negative ? u"-" : u"";
  if (decimals == 0) { return text.append(parts.digits.begin(), parts.digits.end()); }
  const auto split = parts.digits.begin() + static_cast<std::ptrdiff_t>(count > decimals ? count - decimals : 0);
  text.append(parts.digits.begin(), split);
  text.push_back(u'.');
  if (decimals > count) { text.append(decimals - count, u'0'); }
  return text.append(split, parts.digits.end());
}

std::int64_t Number::toInt64() const noexcept {
  if (m_kind != Kind::kDecimal) { return m_small; }
  try {
    if (const auto whole = wholeOf(*rounded(*m_decimal, 0, Rounding::kTowardsZero))) { return *whole; }
  } catch (const std::bad_alloc&) {
    // Without memory for the division only the sign is known; the limit of that side is answered.
  }
  return signOf(*m_decimal) < 0 ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
}

double Number::toDouble() const {
  if (m_kind == Kind::kNone) { return std::numeric_limits<double>::quiet_NaN(); }
  if (m_kind == Kind::kSmall) { return static_cast<double>(m_small); }
  const DecimalDigits parts = digitsOf(*m_decimal);
  const std::string literal = parts.digits + "e-" + std::to_string(parts.decimals);
  double value = 0;
  const auto read = std::from_chars(literal.data(), literal.data() + literal.size(), value);
  if (read.ec == std::errc::result_out_of_range) {
    const bool large = parts.digits.size() > static_cast<std::size_t>(parts.decimals);
    value = large ? std::numeric_limits<double>::infinity() : 0.0;
  }
  return parts.negative ? -value : value;
}

void Number::setPrecision(std::int32_t precision) noexcept {
  m_precision = std::clamp(precision, kDefaultPrecision, kMaxPrecision);
}

Number Number::operator-() const {
  if (m_kind == Kind::kNone) { return *this; }
  if (m_kind == Kind::kSmall && m_small != std::numeric_limits<std::int64_t>::min()) {
    return Access::numberOf(-m_small, m_precision);
  }
  return Access::numberOf(negated(*Access::decimal(*this)), m_precision);
}

Number operator+(const Number& left, const Number& right) {
  return combined(
      left, right, [](std::int64_t a, std::int64_t b, std::int64_t* r) { return !__builtin_add_overflow(a, b, r); },
      [](const Decimal& a, const Decimal& b, std::int32_t) { return sum(a, b); });
}

Number operator-(const Number& left, const Number& right) {
  return combined(
      left, right, [](std::int64_t a, std::int64_t b, std::int64_t* r) { return !__builtin_sub_overflow(a, b, r); },
      [](const Decimal& a, const Decimal& b, std::int32_t) { return sum(a, *negated(b)); });
}

Number operator*(const Number& left, const Number& right) {
  return combined(
      left, right, [](std::int64_t a, std::int64_t b, std::int64_t* r) { return !__builtin_mul_overflow(a, b, r); },
      [](const Decimal& a, const Decimal& b, std::int32_t precision) { return product(a, b, precision); });
}

Number operator/(const Number& left, const Number& right) {
  if (right.isZero()) { return Number::notANumber(); }
  return combined(
      left, right,
      [](std::int64_t a, std::int64_t b, std::int64_t* r) {
        // The one quotient that overflows goes the long way.
        if (b == -1 || a % b != 0) { return false; }
        *r = a / b;
        return true;
      },
      [](const Decimal& a, const Decimal& b, std::int32_t precision) { return quotient(a, b, precision); });
}

std::partial_ordering operator<=>(const Number& left, const Number& right) {
  if (Access::isSmall(left) && Access::isSmall(right)) { return Access::small(left) <=> Access::small(right); }
  if (!left.isNumber() || !right.isNumber()) { return std::partial_ordering::unordered; }
  return compare(*Access::decimal(left), *Access::decimal(right));
}

Number floor(const Number& value) { return roundedTo(value, 0, Rounding::kDown); }
Number ceiling(const Number& value) { return roundedTo(value, 0, Rounding::kUp); }
Number truncate(const Number& value, std::int32_t decimals) {
  return roundedTo(value, decimals, Rounding::kTowardsZero);
}
Number round(const Number& value, std::int32_t decimals) {
  return roundedTo(value, decimals, Rounding::kHalfAwayFromZero);
}
Number absolute(const Number& value) { return value.isNegative() ? -value : value; }
Number modulo(const Number& left, const Number& right) { return left - right * floor(left / right); }

}  // namespace orlocal::host
