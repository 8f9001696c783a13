#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"
#include "host/commands/words/time_words.h"
#include "store/model/model.h"

// When something is, in a sentence with its title or by itself; docs/words.md has the tables.
namespace orlocal::host {

/// What somebody said of when something is; what is not there was not said.
struct When {
  std::optional<store::LocalDay> day;
  std::optional<store::LocalDay> lastDay;  ///< of several whole days
  std::optional<TimeOfDay> start, end;     ///< an `end` that is not after `start` is on the next day
  std::optional<Length> length;
  bool allDay = false;
  std::optional<store::RecurrenceRule> repeat;

  bool empty() const { return !day && !start && !length && !allDay && !repeat; }
};

/// "tomorrow 12:30 1h", "mon 9-17", "from 2 nov to 5 nov", "every friday at noon". All of it is time; what is not fails
/// with its place.
Result<When> readWhen(std::string_view text, const WordsSetting& setting);

struct TitleAndWhen {
  std::string title;
  When when;
};

/// "Lunch with Grace tomorrow 12:30 1h": the words at the end that say when are no part of the title. Words in quotes
/// and what stands before "--" are title, whatever they say. A word before the end that is shaped like a time and is
/// none, as in "lunch at 25:00", is refused with its place.
Result<TitleAndWhen> readTitleAndWhen(std::string_view text, const WordsSetting& setting);

/// What was meant, complete: when it starts and ends on the wall clock.
struct Times {
  store::LocalTime start, end;  ///< of whole days: midnights, the end that after the last day
  bool allDay = false;
};

/// The times of something new. `kInvalid` where neither day nor time was said, or a length without a start.
Result<Times> timesOf(const When& when, const WordsSetting& setting);
/// The same where it is `now`, and what was not said stays.
Result<Times> timesOf(const When& when, const Times& now);

/// "Mon 2 Nov 2026 12:30–13:30", "Mon 2 Nov 2026, all day", "Mon 2 Nov 2026 – Wed 4 Nov 2026".
std::string timesInWords(const Times& times);

}  // namespace orlocal::host
