#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "store/icalendar/icalendar_reader.h"

namespace orlocal::store {

/// A stretch of a file's bytes.
struct FileSpan {
  std::size_t begin = 0, end = 0;
  int line = 0;

  std::string_view of(std::string_view bytes) const { return bytes.substr(begin, end - begin); }
};

/// An event or reminder, from its BEGIN to its END.
struct ItemSpan {
  FileSpan span;
  ItemKind kind = ItemKind::kEvent;
  bool utf8 = false;  ///< its bytes are known to be
  std::size_t calendar = 0;
  std::string uid;
  bool changed = false;  ///< has a RECURRENCE-ID
  bool repeats = false;  ///< has a rule or added dates
  bool partial = false;  ///< of a message that need not say when an event is (RFC 5546: REPLY, CANCEL, …)
  std::int64_t sequence = 0;
  std::string modified;  ///< LAST-MODIFIED or DTSTAMP as written, to tell the newer one of two
};

struct ZoneSpan {
  FileSpan span;
  std::size_t calendar = 0;
  std::string tzid;
};

/// Where a file's components lie.
struct CalendarLayout {
  std::vector<CalendarHead> calendars;
  std::vector<ItemSpan> items;
  std::vector<ZoneSpan> zones;
  ReadProblems problems;
  bool endsEarly = false;  ///< a component was open at the end
};

/// Finds the components; looks into them no further than this needs.
CalendarLayout layoutOf(std::string_view bytes);

/// Whether the text is one VTIMEZONE in which everything that is opened is closed.
bool isOneZone(std::string_view text);

}  // namespace orlocal::store
