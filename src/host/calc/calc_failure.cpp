#include "host/calc/calc_failure.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace orlocal::host::calc {

namespace {

/// Bytes of a long line that are shown around the place of an error.
constexpr std::size_t kShownBefore = 160;
constexpr std::size_t kShownBehind = 80;

bool startsCharacter(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }

}  // namespace

Failed unreadable(std::size_t offset, std::string message, ErrorCode code) {
  return failure({.code = code, .message = std::move(message), .place = offset});
}

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

std::string describe(std::string_view source, const Failure& why, const Origin& origin) {
  const std::size_t offset = std::min(why.place.value_or(0), source.size());
  const Place place = placeOf(source, offset);
  const std::size_t before = offset == 0 ? std::string_view::npos : source.rfind('\n', offset - 1);
  std::size_t begin = before == std::string_view::npos ? 0 : before + 1;
  std::size_t end = std::min(source.find('\n', offset), source.size());
  const bool cutBefore = offset - begin > kShownBefore;
  const bool cutBehind = end - offset > kShownBehind;
  if (cutBefore) { begin = offset - kShownBefore; }
  if (cutBehind) { end = offset + kShownBehind; }
  while (begin < offset && !startsCharacter(source[begin])) { ++begin; }
  while (end > offset && end < source.size() && !startsCharacter(source[end])) { --end; }
  // Tabs stay tabs in the caret line, so that the caret stands right whatever the terminal's tab stops are.
  std::string indent(cutBefore ? 1 : 0, ' ');
  for (const char byte : source.substr(begin, offset - begin)) {
    if (startsCharacter(byte)) { indent += byte == '\t' ? '\t' : ' '; }
  }
  const std::string file = origin.file.empty() ? "" : origin.file + ":";
  return fmt::format("{}{}:{}: {}\n  {}{}{}\n  {}^", file, place.line + origin.firstLine - 1, place.column, why.message,
                     cutBefore ? "…" : "", source.substr(begin, end - begin), cutBehind ? "…" : "", indent);
}

}  // namespace orlocal::host::calc
