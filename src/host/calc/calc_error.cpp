#include "host/calc/calc_error.h"

#include <algorithm>

#include <fmt/format.h>

namespace orlocal::host::calc {

namespace {

bool startsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }

}  // namespace

Place placeOf(std::string_view source, std::size_t offset) {
  Place place;
  for (const char byte : source.substr(0, std::min(offset, source.size()))) {
    if (byte == '\n') {
      ++place.line;
      place.column = 1;
    } else if (startsCharacter(byte)) {
      ++place.column;
    }
  }
  return place;
}

std::string describe(std::string_view source, const CalcError& error, const Origin& origin) {
  const Place place = placeOf(source, error.offset);
  const std::size_t offset = std::min(error.offset, source.size());
  const std::size_t before = offset == 0 ? std::string_view::npos : source.rfind('\n', offset - 1);
  const std::size_t begin = before == std::string_view::npos ? 0 : before + 1;
  const std::size_t end = std::min(source.find('\n', offset), source.size());
  // Tabs stay tabs in the caret line, so that the caret stands right whatever the terminal's tab stops are.
  std::string indent;
  for (const char byte : source.substr(begin, offset - begin)) {
    if (startsCharacter(byte)) indent += byte == '\t' ? '\t' : ' ';
  }
  const std::string file = origin.file.empty() ? "" : origin.file + ":";
  return fmt::format("{}{}:{}: {}\n  {}\n  {}^", file, place.line + origin.firstLine - 1, place.column, error.message,
                     source.substr(begin, end - begin), indent);
}

}  // namespace orlocal::host::calc
