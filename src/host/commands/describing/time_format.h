#pragma once

#include <string>
#include <string_view>

#include "base/result.h"

namespace orlocal::host {

/// Whether `format` is one for `formattedTime`: "%d.%m. %H:%M".
Status checkTimeFormat(std::string_view format);

/// A day or a moment, "2026-11-02" or "2026-11-02T09:00:00+01:00", written as strftime does, on the clock that it is
/// on; of a day the time is midnight. Names are those of the user's language. What is neither comes back as it is.
std::string formattedTime(std::string_view time, std::string_view format);

}  // namespace orlocal::host
