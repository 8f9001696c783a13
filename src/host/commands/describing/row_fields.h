#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

// The members of the rows that commands print with --json, as docs/schema/output.json describes them.
namespace orlocal::host {

struct RowField {
  std::string_view name;
  bool isTime = false;                     ///< a day or a moment
  std::span<const RowField> members = {};  ///< of an object, or of each in an array of objects
};

/// The members of a row: those of an item, and those that the command adds.
struct RowShape {
  std::span<const RowField> known, added;

  /// The field of a dotted path: "title", "organizer.name". Null when there is none.
  const RowField* field(std::string_view path) const;
  /// All paths but those into items of items.
  std::vector<std::string> paths() const;
};

enum class RowKind { kItem, kFound, kReminder, kShown, kAlarm, kCalendar };
RowShape shapeOf(RowKind kind);

}  // namespace orlocal::host
