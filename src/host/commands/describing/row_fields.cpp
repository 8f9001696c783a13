#include "host/commands/describing/row_fields.h"

#include <algorithm>

namespace orlocal::host {
namespace {

constexpr RowField kPerson[] = {{"name"}, {"address"}, {"answer"}, {"role"}, {"type"}};

constexpr RowField kAlarmOfItem[] = {{"action"},   {"email"},         {"sound"}, {"url"},
                                     {"at", true}, {"offsetSeconds"}, {"from"}};

constexpr RowField kItem[] = {{"kind"},
                              {"identifier"},
                              {"itemIdentifier"},
                              {"uid"},
                              {"title"},
                              {"location"},
                              {"notes"},
                              {"url"},
                              {"calendar"},
                              {"list"},
                              {"calendarIdentifier"},
                              {"account"},
                              {"status"},
                              {"categories"},
                              {"priority"},
                              {"completed"},
                              {"completedAt", true},
                              {"created", true},
                              {"modified", true},
                              {"allDay"},
                              {"start", true},
                              {"end", true},
                              {"firstDay", true},
                              {"lastDay", true},
                              {"due", true},
                              {"originalStart", true},
                              {"zone"},
                              {"repeats"},
                              {"rules"},
                              {"exceptionRules"},
                              {"added", true},
                              {"excluded", true},
                              {"alarms", false, kAlarmOfItem},
                              {"attendees", false, kPerson},
                              {"organizer", false, kPerson}};

constexpr RowField kFound[] = {{"foundIn"}};

constexpr RowField kReminder[] = {{"block"}};

constexpr RowField kShown[] = {{"timeZone"}, {"ruleInWords"}, {"next", true}, {"changed", false, kItem},
                               {"unsent"},   {"conflicts"}};

constexpr RowField kRing[] = {{"rings", true}, {"state"}, {"alarm", true}, {"rung", true}, {"action"}};

constexpr RowField kCalendar[] = {{"title"}, {"identifier"}, {"holds"},   {"from"},     {"account"},
                                  {"notes"}, {"colour"},     {"default"}, {"readOnly"}, {"subscribed"}};

const RowField* named(std::span<const RowField> fields, std::string_view name) {
  const auto found =
      std::find_if(fields.begin(), fields.end(), [&](const RowField& each) { return each.name == name; });
  return found == fields.end() ? nullptr : &*found;
}

}  // namespace

const RowField* RowShape::field(std::string_view path) const {
  const std::size_t dot = path.find('.');
  const std::string_view name = path.substr(0, dot);
  const RowField* found = named(added, name);
  if (found == nullptr) { found = named(known, name); }
  if (found == nullptr || dot == std::string_view::npos) { return found; }
  return RowShape{found->members, {}}.field(path.substr(dot + 1));
}

std::vector<std::string> RowShape::paths() const {
  std::vector<std::string> all;
  for (const auto fields : {known, added}) {
    for (const RowField& each : fields) {
      all.emplace_back(each.name);
      for (const RowField& member : each.members) {
        if (each.members.data() != kItem) {
          all.push_back(all.back().substr(0, each.name.size()) + "." + std::string(member.name));
        }
      }
    }
  }
  return all;
}

RowShape shapeOf(RowKind kind) {
  switch (kind) {
    case RowKind::kItem:
      return {kItem, {}};
    case RowKind::kFound:
      return {kItem, kFound};
    case RowKind::kReminder:
      return {kItem, kReminder};
    case RowKind::kShown:
      return {kItem, kShown};
    case RowKind::kAlarm:
      return {kItem, kRing};
    case RowKind::kCalendar:
      return {{}, kCalendar};
  }
  return {};
}

}  // namespace orlocal::host
