#include "host/commands/scripting/calc_file.h"

#include <utility>

#include "host/calc/lexer.h"
#include "host/calc/line_joiner.h"

namespace orlocal::host {

namespace {

constexpr std::string_view kByteOrderMark = "\uFEFF";
constexpr std::string_view kBlanks = " \t";

bool isComment(std::string_view line) {
  const std::size_t first = line.find_first_not_of(kBlanks);
  return first != std::string_view::npos && line[first] == '#';
}

bool holdsOnlyComments(std::string_view calculation) {
  const auto first = calc::TokenReader(calculation).next();
  return first && first->kind == calc::TokenKind::kEnd;
}

}  // namespace

bool isBlank(std::string_view line) { return line.find_first_not_of(kBlanks) == std::string_view::npos; }

std::vector<std::string_view> splitLines(std::string_view text) {
  if (text.starts_with(kByteOrderMark)) { text.remove_prefix(kByteOrderMark.size()); }
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = text.find_first_of("\r\n");
    lines.push_back(text.substr(0, end));
    if (end == std::string_view::npos) { break; }
    text.remove_prefix(end + (text.substr(end).starts_with("\r\n") ? 2 : 1));
  }
  return lines;
}

std::string joinCalculation(const std::vector<std::string_view>& lines, std::size_t first, std::size_t& next) {
  calc::LineJoiner calculation;
  next = first;
  do {
    calculation.add(lines[next++]);
  } while (next < lines.size() && calculation.completeness() == calc::Completeness::kOpen);
  return calculation.take();
}

std::vector<Calculation> readCalculations(std::string_view text) {
  std::vector<Calculation> calculations;
  const std::vector<std::string_view> lines = splitLines(text);
  for (std::size_t at = 0; at < lines.size();) {
    const std::size_t first = at;
    if (isBlank(lines[at]) || isComment(lines[at])) {
      ++at;
      continue;
    }
    std::string calculation = joinCalculation(lines, first, at);
    if (!holdsOnlyComments(calculation)) { calculations.push_back({std::move(calculation), first + 1}); }
  }
  return calculations;
}

}  // namespace orlocal::host
