#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/calendar_layout.h"
#include "store/content_line.h"
#include "store/model.h"
#include "store/tzid_table.h"

namespace orlocal::store {

/// An item read from its component.
struct ReadItem {
  Item item;
  /// Added occurrences with a length of their own (RDATE of periods): as changed occurrences.
  std::vector<Item> periods;
  std::shared_ptr<const Series> series;  ///< `item` compiled for UTC, when it repeats
  bool andFuture = false;                ///< changes the later occurrences, too (RANGE=THISANDFUTURE)
};

/// Reads a VEVENT or VTODO. None when it is refused; that and everything else worth telling goes to `problems`.
std::optional<ReadItem> readItem(std::string_view bytes, const ItemSpan& span, TzidTable& zones,
                                 ReadProblems& problems);

/// Reads the lines of a VALARM, without its BEGIN and END. None when the alarm cannot be understood.
std::optional<Alarm> readAlarm(const std::vector<std::string>& lines);

/// Reads ATTENDEE or ORGANIZER.
Attendee readAttendee(const ContentLine& line);

}  // namespace orlocal::store
