#include "host/commands/guide/completed_values.h"

#include <algorithm>
#include <iterator>

namespace orlocal::host {

namespace {

struct NamedKind {
  std::string_view name;
  ValueKind kind;
};
/// By the option, or by the program's name for a word in its place.
constexpr NamedKind kByName[] = {
    {"--account", ValueKind::kAccount}, {"--calendar", ValueKind::kCalendar},  {"--list", ValueKind::kCalendar},
    {"account", ValueKind::kAccount},   {"accounts", ValueKind::kAccount},     {"calendar", ValueKind::kCalendar},
    {"file", ValueKind::kFile},         {"files", ValueKind::kFile},           {"item", ValueKind::kItem},
    {"items", ValueKind::kItem},        {"subscription", ValueKind::kAccount}, {"topic", ValueKind::kCommand},
    {"what", ValueKind::kItem},         {"--in", ValueKind::kCalendar},
};

/// By what help calls the value, or its beginning: "FILE.ics".
constexpr NamedKind kByValue[] = {{"FILE", ValueKind::kFile},
                                  {"URL|FILE", ValueKind::kFile},
                                  {"FOLDER", ValueKind::kFolder},
                                  {"DIR", ValueKind::kFolder}};

}  // namespace

ValueKind valueKindOf(const WordGuide& word) {
  if (!word.choices.empty()) { return ValueKind::kChoice; }
  for (const NamedKind& row : kByName) {
    if (std::find(word.names.begin(), word.names.end(), row.name) != word.names.end()) { return row.kind; }
  }
  const auto* const found = std::find_if(std::begin(kByValue), std::end(kByValue),
                                         [&](const NamedKind& row) { return word.value.starts_with(row.name); });
  return found != std::end(kByValue) ? found->kind : ValueKind::kAnything;
}

std::vector<std::string> fixedValues(const CommandGuide& program, const WordGuide& word) {
  std::vector<std::string> values = word.choices;
  if (valueKindOf(word) == ValueKind::kCommand) {
    for (const CommandGuide& command : program.words) { values.push_back(command.name()); }
  }
  return values;
}

std::string_view askedWord(ValueKind kind) {
  switch (kind) {
    case ValueKind::kCalendar:
      return "calendars";
    case ValueKind::kAccount:
      return "accounts";
    case ValueKind::kItem:
      return "items";
    default:
      return "";
  }
}

}  // namespace orlocal::host
