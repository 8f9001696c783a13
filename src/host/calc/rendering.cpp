#include "host/calc/rendering.h"

namespace orlocal::host::calc {

std::vector<std::string> linesOf(const Value& value) {
  std::vector<std::string> lines(1);
  const std::string text = value.utf8();
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' || text[i] == '\n') {
      if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
      lines.emplace_back();
    } else {
      lines.back() += text[i];
    }
  }
  return lines;
}

std::string_view typeName(const Value& value) {
  if (!value.isValid()) return "invalid";
  if (value.isEmpty()) return "empty";
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

std::string harmless(std::string_view text) {
  constexpr unsigned char kDelete = 0x7F;
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte < 0x20 && text[i] != '\t') {
      result += "\xE2\x90";
      result += static_cast<char>(0x80 + byte);
    } else if (byte == kDelete) {
      result += "\u2421";
    } else if (byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0) {
      // U+0080 to U+009F: controls too, to terminals that take eight bits.
      result += "\uFFFD";
      ++i;
    } else {
      result += text[i];
    }
  }
  return result;
}

}  // namespace orlocal::host::calc
