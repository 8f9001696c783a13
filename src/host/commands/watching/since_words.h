#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <variant>

#include "store/time/time.h"
#include "store/time/zone.h"

namespace orlocal::host {

/// From where on the past is told: a row of the log of changes, or a moment.
using Since = std::variant<std::int64_t, store::Moment>;

/// Reads a position ("4711", as `watch --json` gives it), a length of time before now ("90s", "30m", "2h", "3d", "1w"),
/// a moment ("2026-11-02 08:00" on the viewer's clock, "2026-11-02T08:00:00Z") or a day as `daysFromWords` does.
std::optional<Since> sinceFromWords(std::string_view words, store::Moment now, const store::Zone& viewer);

}  // namespace orlocal::host
