#pragma once

#include <string>

#include "store/time/time.h"

namespace orlocal::host {

/// The locale in which the user writes dates: LC_ALL, else LC_TIME, else LANG; "" when none is set.
std::string dateLocale();

/// The day with which weeks begin there: Sunday in "en_US". Monday (ISO 8601) where the locale names no region.
cctz::weekday firstWeekday();

/// The number of the week (ISO 8601) that `day` is in.
int weekNumber(store::LocalDay day);

}  // namespace orlocal::host
