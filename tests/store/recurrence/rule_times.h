#pragma once

#include <string>

#include "store/recurrence/recurrence_rule.h"
#include "store/time/time_text.h"

namespace orlocal::store {

/// Times on a rule's clock as iCalendar writes them: "20261102T090000".
inline LocalSeconds secondsOf(const std::string& text) { return localSeconds(parseTime(text)->local); }
inline std::string textOf(LocalSeconds time) { return timeText({CalendarTime::Kind::kFloating, localTime(time), ""}); }

}  // namespace orlocal::store
