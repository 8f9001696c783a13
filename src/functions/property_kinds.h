#pragma once

#include <string_view>

namespace orlocal {

/// How a property's value is handed to the host.
enum class ValueKind { kText, kTimeStamp, kDate };

struct DatedProperty {
  std::string_view property;  ///< lower-case
  ValueKind kind;
  /// Whether a new value is read as a date, too; the others are set by the store alone.
  bool isSetAsDate;
};

/// The properties that are not texts.
inline constexpr DatedProperty kDatedProperties[] = {
    {"absolutetrigger", ValueKind::kTimeStamp, true}, {"enddate", ValueKind::kTimeStamp, true},
    {"modifieddate", ValueKind::kTimeStamp, false},   {"startdate", ValueKind::kTimeStamp, true},
    {"occurrence", ValueKind::kTimeStamp, true},      {"datestamp", ValueKind::kTimeStamp, false},
    {"completeddate", ValueKind::kDate, true},        {"duedate", ValueKind::kDate, true},
};

constexpr ValueKind kindOfProperty(std::string_view property) {
  for (const auto& row : kDatedProperties) {
    if (row.property == property) { return row.kind; }
  }
  return ValueKind::kText;
}

constexpr bool isSetAsDate(std::string_view property) {
  for (const auto& row : kDatedProperties) {
    if (row.property == property) { return row.isSetAsDate; }
  }
  return false;
}

}  // namespace orlocal
