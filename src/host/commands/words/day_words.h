#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "store/time/time.h"
#include "store/time/zone.h"

namespace orlocal::host {

/// Reads a day as people type it: "2026-11-02", "today", "tomorrow", "yesterday", or days from today such as "+7".
std::optional<store::LocalDay> dayFromWords(std::string_view words, store::LocalDay today);

/// "2026-11-02".
std::string isoDay(store::LocalDay day);

/// "Monday, 2 November 2026", in the user's language (`DateNames`).
std::string longDay(store::LocalDay day);

/// "Mon 2 Nov 2026", in that language, too.
std::string shortDay(store::LocalDay day);

/// "2026-11-02T09:00:00+01:00".
std::string isoMoment(store::Moment moment, const store::Zone& zone);

/// "09:00".
std::string clockTime(store::LocalTime time);

}  // namespace orlocal::host
