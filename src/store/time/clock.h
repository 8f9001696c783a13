#pragma once

#include <optional>
#include <string_view>

#include "base/result.h"
#include "store/time/time.h"

namespace orlocal::store {

// The clock that everything here goes by. Any thread.

/// The current time: the system's clock, or the moment that it is pinned to. Unless `pinClock` has said so before,
/// `ORLOCAL_NOW` says at the first call whether it is; one that names no moment counts as none, with a line on standard
/// error.
Moment now();

/// Pins the clock of this process, or (none) lets it run.
void pinClock(std::optional<Moment> moment);

/// What `ORLOCAL_NOW` pins the clock to: none when it is not set or empty, a failure when it names no moment.
Result<std::optional<Moment>> momentPinnedByUser();

/// A moment from its text, written as "2026-11-02T08:00:00Z" and in no other way.
std::optional<Moment> parseMoment(std::string_view text);

}  // namespace orlocal::store
