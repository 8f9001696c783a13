#include "host/commands/words/date_locale.h"

#include <cstdlib>
#include <memory>

#include <unicode/calendar.h>

namespace orlocal::host {

std::string dateLocale() {
  for (const char* name : {"LC_ALL", "LC_TIME", "LANG"}) {
    const char* value = std::getenv(name);
    if (value != nullptr && *value != '\0') { return value; }
  }
  return {};
}

cctz::weekday firstWeekday() {
  const std::string locale = dateLocale();
  if (locale.find('_') == std::string::npos) { return cctz::weekday::monday; }
  UErrorCode error = U_ZERO_ERROR;
  const std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(icu::Locale(locale.c_str()), error));
  if (U_FAILURE(error) != 0) { return cctz::weekday::monday; }
  const UCalendarDaysOfWeek first = calendar->getFirstDayOfWeek(error);
  if (U_FAILURE(error) != 0) { return cctz::weekday::monday; }
  // They count from Sunday as 1, the calendar library from Monday as 0.
  return static_cast<cctz::weekday>((static_cast<int>(first) + 5) % 7);
}

int weekNumber(store::LocalDay day) {
  // The week is that of the year in which its Thursday lies.
  const store::LocalDay thursday = day + (3 - static_cast<int>(cctz::get_weekday(day)));
  return (cctz::get_yearday(thursday) - 1) / 7 + 1;
}

}  // namespace orlocal::host
