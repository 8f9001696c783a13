#pragma once

#include <cstdint>

#include "store/recurrence/recurrence.h"
#include "store/time/civil_days.h"

namespace orlocal::store {

/// How rows and the timeline name the original start of a changed occurrence: seconds since 1970 in UTC or, for a
/// series of whole days or floating times, on the wall clock. `series` is compiled for UTC, so both are the same
/// number.
inline std::int64_t originalKey(const Series& series, const CalendarTime& recurrenceId) {
  return std::chrono::floor<std::chrono::seconds>(series.originalStart(recurrenceId)).time_since_epoch().count();
}

/// The same of an occurrence of `series`, compiled for whomever, by where its rule put it.
inline std::int64_t originalKeyAt(const Series& series, Moment original) {
  if (series.followsViewer()) { return localSeconds(series.recurrenceId(original).local); }
  return std::chrono::floor<std::chrono::seconds>(original).time_since_epoch().count();
}

}  // namespace orlocal::store
