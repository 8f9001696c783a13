#include "host/check/odd_values.h"

#include <cstdint>
#include <iterator>
#include <limits>
#include <utility>

#include <fmt/format.h>

#include "host/fmwrapper/date_time.h"
#include "host/fmwrapper/number.h"

namespace orlocal::host::check {
namespace {

OddValue text(const char* words, std::u16string_view value) { return {words, Value::ofText(value)}; }

}  // namespace

std::vector<OddValue> oddTexts() {
  using namespace std::string_view_literals;
  return {text("an empty text", u""),
          text("a blank", u" "),
          text("a word", u"event"),
          text("a word in capitals", u"EVENT"),
          text("a question mark", u"?"),
          text("a number in words", u"-1"),
          text("a lone high surrogate", u"\xD800"),
          text("a lone low surrogate", u"\xDC00"),
          text("surrogates in the wrong order", u"a\xDC00\xD800z"),
          text("a character beyond the first plane", u"🗓"),
          text("a NUL within a text", u"a\0b"sv),
          text("a list with empty lines", u"\r\r1\r\r"),
          text("line ends of three kinds", u"a\rb\nc\r\nd"),
          text("a byte-order mark", u"\xFEFF\xFFFE"),
          text("marks that turn writing around", u"\u202E\u2066abc"),
          text("a format", u"%s%n%@{}{0}"),
          text("quotes and backslashes", u"'\"\\\\;--"),
          text("a path", u"../../../../etc/passwd"),
          text("a date that is none", u"2026-02-30"),
          text("text that is XML", u"<a>&amp;</b>")};
}

std::vector<OddValue> oddNumbers() {
  std::vector<OddValue> all;
  constexpr std::int64_t kWhole[] = {0,
                                     1,
                                     -1,
                                     std::numeric_limits<std::int16_t>::max(),
                                     std::numeric_limits<std::int32_t>::max(),
                                     std::numeric_limits<std::int32_t>::min(),
                                     std::int64_t{std::numeric_limits<std::uint32_t>::max()} + 1,
                                     std::numeric_limits<std::int64_t>::max(),
                                     std::numeric_limits<std::int64_t>::min()};
  for (const std::int64_t number : kWhole) {
    all.push_back({fmt::format("the number {}", number), Value::ofNumber(Number(number))});
  }
  all.push_back({"a fraction", Value::ofNumber(Number::fromDouble(-0.5))});
  all.push_back({"a number of 400 digits", Value::ofNumber(Number::parse(std::u16string(399, u'9')))});
  all.push_back({"no number", Value::ofNumber(Number::notANumber())});
  return all;
}

std::vector<OddValue> oddDates() {
  const auto date = [](std::int64_t year, std::int64_t month, std::int64_t day) {
    return DateTime::fromDate(year, month, day).value_or(DateTime());
  };
  const DateTime first = date(1, 1, 1), last = date(4000, 12, 31), usual = date(2026, 11, 2);
  const DateTime noon = DateTime::fromTime(12, 0, 0);
  return {{"the first date", Value::ofDate(first)},
          {"the last date", Value::ofDate(last)},
          {"a date", Value::ofDate(usual)},
          {"no date", Value::ofDate(DateTime())},
          {"a time", Value::ofTime(noon)},
          {"a time before midnight", Value::ofTime(DateTime::fromTime(-30, 0, 0))},
          {"a time of a thousand days", Value::ofTime(DateTime::fromTime(24'000, 59, 59, 999'999))},
          {"a timestamp", Value::ofTimestamp(DateTime::combine(usual, noon).value_or(DateTime()))},
          {"the first timestamp",
           Value::ofTimestamp(DateTime::combine(first, DateTime::fromTime(0, 0, 0)).value_or(DateTime()))},
          {"the last timestamp",
           Value::ofTimestamp(DateTime::combine(last, DateTime::fromTime(23, 59, 59, 999'999)).value_or(DateTime()))}};
}

std::vector<OddValue> oddKinds() {
  std::vector<OddValue> all{{"an empty value", Value()}, {"the invalid value", Value::invalid()}};
  for (std::int32_t type = fmx::kInvalid; type <= fmx::kBoolean; ++type) {
    Value value;
    value.clear(static_cast<fmx::NativeType>(type));
    all.push_back({fmt::format("an empty value of type {}", type), value});
  }
  Value truth;
  truth.setBoolean(true);
  all.push_back({"a boolean", truth});
  return all;
}

std::vector<OddValue> oddValues() {
  std::vector<OddValue> all;
  for (auto each : {oddTexts, oddNumbers, oddDates, oddKinds}) {
    auto some = each();
    all.insert(all.end(), std::make_move_iterator(some.begin()), std::make_move_iterator(some.end()));
  }
  return all;
}

}  // namespace orlocal::host::check
