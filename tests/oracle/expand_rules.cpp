#include <algorithm>
#include <array>
#include <cstdlib>
#include <iostream>
#include <string>

#include "store/recurrence/recurrence.h"
#include "store/recurrence/rule_text.h"
#include "store/time/time_text.h"

// What the store makes of rules, for another expander to be held against. Each line of the input is
// ZONE, DTSTART, RRULE, FROM and TO, separated by tabs; FROM and TO are moments, such as "20261102T080000Z". A start
// that is a date or ends in Z belongs to no zone. Each line of the output has the occurrences of one rule that overlap
// [FROM, TO), as LOCAL=MOMENT separated by spaces, or "refused: " and the reason.

namespace orlocal::store {
namespace {

std::string answer(const std::array<std::string, 5>& question) {
  const auto& [zoneName, startText, ruleText, fromText, toText] = question;
  const auto zone = Zone::named(zoneName);
  auto start = parseTime(startText);
  const auto from = parseTime(fromText), to = parseTime(toText);
  if (!zone || !start || !from || !to) {
    std::cerr << "expand_rules: no such zone or time: " << zoneName << ' ' << startText << ' ' << fromText << ' '
              << toText << '\n';
    std::exit(2);
  }
  const auto refused = [](const Failure& error) { return "refused: " + error.message; };
  const auto rule = parseRule(ruleText);
  if (!rule) { return refused(rule.error()); }
  if (start->kind == CalendarTime::Kind::kFloating) {
    start->kind = CalendarTime::Kind::kZoned;
    start->zone = zoneName;
  }
  Item item;
  item.start = start;
  item.recurrence.rules.push_back(*rule);
  const auto series = Series::compile(item, *zone);
  if (!series) { return refused(series.error()); }
  std::string text;
  ExpansionBudget budget;
  const auto status = series->expand(momentOf(*from, *zone), momentOf(*to, *zone), budget, [&](const auto& instance) {
    if (!text.empty()) { text += ' '; }
    text += timeText({CalendarTime::Kind::kFloating, instance.local, ""});
    text += '=' + momentText(instance.start);
    return true;
  });
  return status ? text : refused(status.error());
}

}  // namespace
}  // namespace orlocal::store

int main() {
  std::ios::sync_with_stdio(false);
  std::string line;
  while (std::getline(std::cin, line)) {
    std::array<std::string, 5> question;
    std::size_t begin = 0;
    for (std::string& field : question) {
      const std::size_t end = std::min(line.find('\t', begin), line.size());
      field = line.substr(begin, end - begin);
      begin = std::min(end + 1, line.size());
    }
    std::cout << orlocal::store::answer(question) << '\n';
  }
  return std::cout.flush() ? EXIT_SUCCESS : EXIT_FAILURE;
}
