#include "accounts/sync/conflict_view.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <utility>

#include "accounts/sync/item_fields.h"
#include "store/icalendar/content_line.h"

namespace orlocal::accounts {
namespace {

using LinesByField = std::map<std::string, std::vector<std::string>>;

std::string upperCase(std::string_view name) {
  std::string upper(name);
  for (char& c : upper) { c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }
  return upper;
}

/// Texts are shown as people wrote them, everything else as the line has it.
std::string shown(const store::ContentLine& line) {
  const std::string name = upperCase(line.name);
  for (const std::string_view text : {"SUMMARY", "DESCRIPTION", "LOCATION"}) {
    if (name == text) { return store::unescapeText(line.value); }
  }
  return std::string(line.text);
}

LinesByField readFields(const std::string& text) {
  LinesByField all, component;
  std::string occurrence;
  std::vector<std::string> open;
  store::ContentLines lines(text);
  for (store::ContentLine line; lines.next(line);) {
    if (line.is("BEGIN")) {
      open.push_back(upperCase(line.value));
      continue;
    }
    const bool inItem = open.size() >= 2 && (open[1] == "VEVENT" || open[1] == "VTODO");
    if (line.is("END")) {
      if (open.empty()) { break; }
      open.pop_back();
      if (!inItem || open.size() != 1) { continue; }
      for (auto& [field, values] : component) {
        auto& target = all[occurrence.empty() ? field : field + " of " + occurrence];
        std::move(values.begin(), values.end(), std::back_inserter(target));
      }
      component.clear();
      occurrence.clear();
      continue;
    }
    if (!inItem) { continue; }
    const std::string name = upperCase(line.name);
    if (open.size() > 2) {
      component[open[2] == "VALARM" ? std::string(kAlarmsField) : open[2]].push_back(std::string(line.text));
    } else if (name == "RECURRENCE-ID") {
      occurrence = std::string(line.value);
    } else if (!isBookkeeping(name)) {
      component[std::string(fieldOf(name))].push_back(shown(line));
    }
  }
  for (auto& [field, values] : all) { std::sort(values.begin(), values.end()); }
  return all;
}

}  // namespace

std::vector<FieldVersions> differencesOf(const store::Conflict& conflict) {
  LinesByField mine = readFields(conflict.mine.value_or("")), theirs = readFields(conflict.theirs.value_or(""));
  std::set<std::string> names;
  for (const LinesByField* fields : {&mine, &theirs}) {
    for (const auto& [field, lines] : *fields) { names.insert(field); }
  }
  const std::vector<std::string> about = fieldsOf(conflict);
  // Times hang together with what is said of single occurrences.
  const bool whole = std::any_of(about.begin(), about.end(), [](const std::string& field) {
    return field == kTimeField ||
           std::find(std::begin(kWholeItem), std::end(kWholeItem), field) != std::end(kWholeItem);
  });
  std::vector<FieldVersions> differing;
  for (const std::string& name : names) {
    const bool isAbout = whole || std::find(about.begin(), about.end(), name) != about.end();
    if (isAbout && mine[name] != theirs[name]) {
      differing.push_back({name, std::move(mine[name]), std::move(theirs[name])});
    }
  }
  return differing;
}

std::vector<std::string> fieldsOf(const store::Conflict& conflict) {
  std::vector<std::string> fields;
  for (std::string_view rest = conflict.fields; !rest.empty();) {
    const std::size_t end = std::min(rest.find('\n'), rest.size());
    if (end > 0) { fields.emplace_back(rest.substr(0, end)); }
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return fields;
}

}  // namespace orlocal::accounts
