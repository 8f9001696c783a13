#include "host/calc/rendering.h"

#include <algorithm>

#include "host/calc/text_tools.h"
#include "host/fmwrapper/unicode.h"

namespace orlocal::host::calc {

std::vector<std::string> linesOf(const Value& value) {
  std::vector<std::string> lines(1);
  const std::string text = value.utf8();
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' || text[i] == '\n') {
      if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') { ++i; }
      lines.emplace_back();
    } else {
      lines.back() += text[i];
    }
  }
  return lines;
}

std::string_view typeName(const Value& value) {
  if (!value.isValid()) { return "invalid"; }
  if (value.isEmpty()) { return "empty"; }
  switch (value.type()) {
    case fmx::kText:
      return "text";
    case fmx::kDate:
      return "date";
    case fmx::kTime:
      return "time";
    case fmx::kTimeStamp:
      return "timestamp";
    default:
      return "number";
  }
}

bool misleads(char32_t c) {
  struct Range {
    char32_t first, last;
  };
  constexpr Range kRanges[] = {
      {0x061C, 0x061C}, {0x180E, 0x180E}, {0x200E, 0x200F}, {0x2028, 0x202E},
      {0x2060, 0x206F}, {0xFEFF, 0xFEFF}, {0xFFF9, 0xFFFB}, {0xE0000, 0xE007F},
  };
  return std::ranges::any_of(kRanges, [c](const Range& range) { return c >= range.first && c <= range.last; });
}

std::string harmless(std::string_view text) {
  constexpr char32_t kDelete = 0x7F;
  constexpr char16_t kPictures = 0x2400;
  const std::u16string units = toUtf16(text);
  std::u16string result;
  for (std::size_t unit = 0; unit < units.size();) {
    const char32_t c = codePointAt(units, unit);
    unit += c > 0xFFFF ? 2 : 1;
    if (c < 0x20 && c != U'\t') {
      result += static_cast<char16_t>(kPictures + c);
    } else if (c == kDelete) {
      result += u'\u2421';
    } else if ((c > kDelete && c < 0xA0) || misleads(c)) {
      // U+0080 to U+009F are controls too, to terminals that take eight bits.
      result += u'\uFFFD';
    } else {
      result += fromCodePoint(c);
    }
  }
  return toUtf8(result);
}

std::string harmlessLines(std::string_view text) {
  std::string result;
  for (;;) {
    const std::size_t end = text.find('\n');
    result += harmless(text.substr(0, end));
    if (end == std::string_view::npos) { return result; }
    result += '\n';
    text.remove_prefix(end + 1);
  }
}

}  // namespace orlocal::host::calc
