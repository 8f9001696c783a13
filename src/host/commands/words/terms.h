#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "store/time/time.h"

// The words of which days, times and repetitions are made: one table a language (terms.cpp), and what they mean here.
namespace orlocal::host {

enum class Unit : std::uint8_t { kMinute, kHour, kDay, kWeek, kMonth, kYear };

inline constexpr int kDaysOfWeek = 7;

enum class Term : std::uint8_t {
  kDayFromToday,  ///< tomorrow: 1
  kWeekDay,       ///< 0 Sunday to 6 Saturday
  kMonth,         ///< 1 to 12
  kUnit,          ///< a `Unit`
  kNumber,        ///< one, two
  kTimeOfDay,     ///< noon: minutes after midnight
  kClock,         ///< uhr, o'clock
  kHalfOfDay,     ///< am: 0, pm: 12
  kNext,
  kThis,
  kIn,
  kOn,
  kAt,
  kFrom,
  kTo,
  kUntil,
  kFor,
  kAllDay,
  kEvery,
  kOther,
  kRepeats,   ///< daily: a `Unit`
  kWeekdays,  ///< Monday to Friday
  kOrdinal,   ///< first: 1, last: -1
  kOfMonth,   ///< of the month
  kTimes,     ///< 3 times
  kAnd,
  kBefore,
  kDayBefore,  ///< the day before
  kSameDay,    ///< on the day
  kAtStart,
  kNever,
};

struct TermWord {
  std::string_view text;  ///< case folded; may be several words
  Term term;
  int value = 0;
};

/// What days and times are read against. English is always understood.
struct WordsSetting {
  store::LocalTime now;  ///< on the reader's wall clock
  bool german = false;   ///< German words count, too
  /// Which of both comes first in "11/2", where that is known.
  enum class Slashes : std::uint8_t { kUnknown, kMonthFirst, kDayFirst };
  Slashes slashes = Slashes::kUnknown;

  store::LocalDay today() const { return store::LocalDay(now); }
};

/// As the user has it: `preferredLanguages` for words; `dateLocale` for the order of dates.
WordsSetting settingOfUser(store::LocalTime now);

/// The meaning of the case-folded `text` that is `term`; none when it has none.
std::optional<int> valueOf(std::string_view text, Term term, const WordsSetting& setting);
/// How many words the longest text of that term has.
int longestOf(Term term);

}  // namespace orlocal::host
