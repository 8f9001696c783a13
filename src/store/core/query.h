#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "store/model/model.h"

namespace orlocal::store {

/// Events that overlap the half-open range [from, to); one without length overlaps where it stands. An absent bound is
/// the distant past or future: a series without an end then goes on to the later of four years from now and `from` plus
/// four years. Only events of `calendars` are found, and with `event` only that one: a single event or a series, at the
/// cost of what it has itself.
struct EventQuery {
  std::optional<Moment> from, to;
  std::vector<CalendarId> calendars;
  std::optional<ItemId> event = std::nullopt;
};

/// Reminders of `calendars`. A bound leaves out open reminders that are not due at all.
struct ReminderQuery {
  enum class Status : std::uint8_t { kAny, kOpen, kCompleted };
  Status status = Status::kAny;
  /// Bounds [from, to) of the due moment (open) or of the completion (completed).
  std::optional<Moment> from, to;
  std::vector<CalendarId> calendars;
};

}  // namespace orlocal::store
