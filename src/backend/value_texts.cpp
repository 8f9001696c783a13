#include "backend/value_texts.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

#include "platform/platform.h"
#include "platform/zone.h"

namespace orlocal {
namespace {

constexpr std::string_view kListSeparator = "\r";

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isHexDigit(char c) { return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

std::string_view withoutLeadingSpace(std::string_view text) {
  const auto start = text.find_first_not_of(" \t\n\v\f\r");
  return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

/// What a number that does not fit stands for: it is too small exactly when its exponent, or a whole part of zeros,
/// says so.
double beyondRange(std::string_view digits) {
  const auto exponent = digits.find_first_of("eE");
  const bool tiny = exponent != std::string_view::npos
                        ? digits.substr(exponent + 1, 1) == "-"
                        : digits.substr(0, digits.find('.')).find_first_not_of('0') == std::string_view::npos;
  return tiny ? 0.0 : std::numeric_limits<double>::infinity();
}

/// Letters, digits and the marks of RFC 3986, 2.2 and 2.3.
bool standsInUrl(char c) {
  return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
         std::string_view("-._~:/?#[]@!$&'()*+,;=").find(c) != std::string_view::npos;
}

}  // namespace

OptionalText booleanText(bool value) { return value ? "True" : "False"; }

std::string fixedText(double number, int decimals) {
  // The longest double has 309 digits before the point.
  std::array<char, 400> buffer;
  const auto end =
      std::to_chars(buffer.data(), buffer.data() + buffer.size(), number, std::chars_format::fixed, decimals);
  return std::string(buffer.data(), end.ptr);
}

OptionalText dateText(std::optional<Date> date) {
  if (!date) { return std::nullopt; }
  return formatDate(*date, platform().defaultTimeZone().secondsFromGMTForDate(*date));
}

std::string listText(const std::vector<std::string>& items) {
  std::string text;
  for (const auto& item : items) {
    if (&item != &items.front()) { text += kListSeparator; }
    text += item;
  }
  return text;
}

std::string listText(const std::vector<long>& numbers) {
  std::vector<std::string> items;
  items.reserve(numbers.size());
  for (const long number : numbers) { items.push_back(std::to_string(number)); }
  return listText(items);
}

std::string pairText(long first, long second) { return std::to_string(first) + "," + std::to_string(second); }

std::int32_t integerValue(std::string_view text) {
  text = withoutLeadingSpace(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) { text.remove_prefix(1); }
  std::int64_t value = 0;
  const std::int64_t limit = std::int64_t{std::numeric_limits<std::int32_t>::max()} + (negative ? 1 : 0);
  for (const char c : text) {
    if (!isDigit(c)) { break; }
    value = std::min(value * 10 + (c - '0'), limit);
  }
  return static_cast<std::int32_t>(negative ? -value : value);
}

double doubleValue(std::string_view text) {
  text = withoutLeadingSpace(text);
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) { text.remove_prefix(1); }
  // Words such as "inf" are no numbers here.
  if (text.empty() || !(isDigit(text.front()) || text.front() == '.')) { return 0; }
  double value = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), value);
  if (read.ec == std::errc::result_out_of_range) {
    value = beyondRange(text.substr(0, static_cast<std::size_t>(read.ptr - text.data())));
  }
  return negative ? -value : value;
}

OptionalText urlWithString(const OptionalText& text) {
  if (!text) { return std::nullopt; }
  constexpr std::string_view kHex = "0123456789ABCDEF";
  std::string url;
  url.reserve(text->size());
  for (std::size_t i = 0; i < text->size(); ++i) {
    const char c = (*text)[i];
    const bool escape = c == '%' && i + 2 < text->size() && isHexDigit((*text)[i + 1]) && isHexDigit((*text)[i + 2]);
    if (escape || standsInUrl(c)) {
      url += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      url += '%';
      url += kHex[byte >> 4];
      url += kHex[byte & 15];
    }
  }
  return url;
}

}  // namespace orlocal
