#include "host/commands/words/when_words.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/translation.h"
#include "base/try.h"
#include "host/commands/words/date_words.h"
#include "host/commands/words/day_words.h"
#include "host/commands/words/repeat_words.h"

namespace orlocal::host {
namespace {

using store::LocalDay;
using store::LocalTime;

/// "10:00", "at 10".
Result<std::optional<TimeOfDay>> takeTimeBehindDay(WordCursor& words) {
  const std::size_t begin = words.at();
  const bool at = words.take(Term::kAt).has_value();
  ORLOCAL_TRY(const auto time, takeTime(words, at));
  if (!time) { words.moveTo(begin); }
  return time;
}

/// "monday", "on monday", "for monday", "2 nov to 5 nov", "from monday to friday", "from monday 10:00 to friday 18:00".
Result<bool> takeDays(WordCursor& words, When& when) {
  const std::size_t begin = words.at();
  const bool from = words.take(Term::kFrom).has_value();
  if (!from && !words.take(Term::kOn)) { words.take(Term::kFor); }
  ORLOCAL_TRY(const auto day, takeDay(words));
  if (!day) {
    words.moveTo(begin);
    return false;
  }
  const std::size_t behind = words.at();
  when.day = day;
  std::optional<TimeOfDay> start;
  if (!when.start) { ORLOCAL_TRY(start, takeTimeBehindDay(words)); }
  if (!words.take(Term::kTo)) {
    words.moveTo(behind);
    return true;
  }
  // A last day counts from the first one: "from friday to monday".
  WordsSetting then = words.setting();
  then.now = LocalTime(*day);
  WordCursor rest(words.text(), then);
  rest.moveTo(words.at());
  ORLOCAL_TRY(const auto last, takeDay(rest));
  if (!last) {
    words.moveTo(behind);
    return true;
  }
  if (*last < *day) { return words.refused(tr("The last day lies before the first one")); }
  if (start) {
    ORLOCAL_TRY(const auto end, takeTimeBehindDay(rest));
    if (!end) { return rest.refused(tr("There is a time to start at and none to end at")); }
    if (*last == *day && *end <= *start) { return words.refused(tr("It ends before it starts")); }
    when.start = start;
    when.end = end;
  }
  words.moveTo(rest.at());
  when.lastDay = last;
  return true;
}

/// "12:30", "at 9", "9-17", "from 9 to 17".
Result<bool> takeTimes(WordCursor& words, When& when) {
  const std::size_t begin = words.at();
  const bool at = words.take(Term::kAt).has_value();
  ORLOCAL_TRY(const auto range, takeRange(words));
  if (range) {
    when.start = range->start;
    when.end = range->end;
    return true;
  }
  ORLOCAL_TRY(when.start, takeTime(words, at));
  if (when.start) { return true; }
  words.moveTo(begin);
  return false;
}

Result<bool> takeLengthOf(WordCursor& words, When& when) {
  const std::size_t begin = words.at();
  words.take(Term::kFor);
  ORLOCAL_TRY(when.length, takeLength(words));
  if (!when.length) { words.moveTo(begin); }
  return when.length.has_value();
}

Result<bool> takeRepeatOf(WordCursor& words, When& when) {
  ORLOCAL_TRY(when.repeat, takeRepeat(words));
  return when.repeat.has_value();
}

Result<bool> takeAllDay(WordCursor& words, When& when) {
  when.allDay = words.take(Term::kAllDay).has_value();
  return when.allDay;
}

/// "1h" of one digit is a length wherever it stands; "14h" is one behind a time of day.
Result<bool> takePart(WordCursor& words, When& when) {
  if (!when.allDay) {
    ORLOCAL_TRY(const bool taken, takeAllDay(words, when));
    if (taken) { return true; }
  }
  if (!when.repeat) {
    ORLOCAL_TRY(const bool taken, takeRepeatOf(words, when));
    if (taken) { return true; }
  }
  if (!when.start) {
    ORLOCAL_TRY(const bool taken, takeTimes(words, when));
    if (taken) { return true; }
  }
  if (!when.day) {
    ORLOCAL_TRY(const bool taken, takeDays(words, when));
    if (taken) { return true; }
  }
  if (!when.length && !when.end) {
    ORLOCAL_TRY(const bool taken, takeLengthOf(words, when));
    if (taken) { return true; }
  }
  return false;
}

/// As many parts as there are from here on.
Result<When> takeWhen(WordCursor& words) {
  When when;
  for (bool taken = true; taken && !words.done();) { ORLOCAL_TRY(taken, takePart(words, when)); }
  return when;
}

/// As the text has it, without the quotes around single words.
std::string titleOf(const WordCursor& words, std::size_t count) {
  std::string title;
  for (std::size_t i = 0; i < count; ++i) {
    const WordCursor::Word& word = words.words()[i];
    std::string_view text = words.text().substr(word.begin, word.end - word.begin);
    if (word.quoted) { text = text.substr(1, text.size() - 2); }
    if (i + 1 == count && text.ends_with(',')) { text.remove_suffix(1); }
    title += (title.empty() ? "" : " ") + std::string(text);
  }
  return title;
}

std::string timesOnOneDay(const Times& times) {
  std::string from = clockTime(times.start);
  if (times.end == times.start) { return from; }
  const bool midnight = times.end == LocalTime(LocalDay(times.end)) && LocalDay(times.end) == LocalDay(times.start) + 1;
  return from + "–" + (midnight ? "24:00" : clockTime(times.end));
}

LocalTime endAfter(LocalTime start, const Length& length) {
  return LocalTime(LocalDay(start) + length.days) + (start - LocalTime(LocalDay(start))) + length.minutes.count() * 60;
}

LocalTime onDay(LocalDay day, TimeOfDay time) { return LocalTime(day) + time.count() * 60; }

Times wholeDays(const When& when, LocalDay first) {
  const int days = when.length && when.length->days > 0 ? when.length->days : 1;
  return {LocalTime(first), LocalTime(when.lastDay ? *when.lastDay + 1 : first + days), true};
}

LocalTime endOf(const When& when, LocalTime start, std::chrono::minutes usual) {
  if (when.end) {
    const LocalTime end = onDay(when.lastDay.value_or(LocalDay(start)), *when.end);
    return end > start || when.lastDay ? end : end + 86'400;
  }
  return endAfter(start, when.length.value_or(Length{0, usual}));
}

/// The first day from `day` on that a rule by weekdays comes on.
LocalDay firstOf(const std::optional<store::RecurrenceRule>& rule, LocalDay day) {
  constexpr int kLongest = 5 * 7;
  if (!rule || rule->byDay.empty()) { return day; }
  for (int i = 0; i <= kLongest; ++i) {
    const LocalDay at = day + i;
    const int weekDay = (static_cast<int>(cctz::get_weekday(at)) + 1) % 7;
    const bool met = std::any_of(rule->byDay.begin(), rule->byDay.end(), [&](const auto& each) {
      if (each.day != weekDay) { return false; }
      if (each.ordinal == 0) { return true; }
      if (each.ordinal > 0) { return (at.day() - 1) / 7 + 1 == each.ordinal; }
      const LocalDay nextMonth(cctz::civil_month(at) + 1);
      return static_cast<int>((nextMonth - at - 1) / 7) + 1 == -each.ordinal;
    });
    if (met) { return at; }
  }
  return day;
}

/// Whether what the word at `last` ends is shaped like a time or, with the word before it, like a day of a month.
bool endsLikeTime(const WordCursor& words, std::size_t last) {
  const auto& all = words.words();
  if (all[last].quoted) { return false; }
  if (isShapedLikeTime(all[last].folded)) { return true; }
  if (last == 0 || all[last - 1].quoted) { return false; }
  const auto isMonth = [&](std::size_t at) {
    return valueOf(all[at].folded, Term::kMonth, words.setting()).has_value();
  };
  const auto isNumber = [&](std::size_t at) {
    std::string_view word = all[at].folded;
    return takeNumber(word).has_value();
  };
  return (isNumber(last - 1) && isMonth(last)) || (isMonth(last - 1) && isNumber(last));
}

}  // namespace

Result<When> readWhen(std::string_view text, const WordsSetting& setting) {
  WordCursor words(text, setting);
  ORLOCAL_TRY(const When when, takeWhen(words));
  if (words.done() && !when.empty()) { return when; }
  return words.refused(tr("\"{}\" says no day or time; write something like: tomorrow 12:30 1h",
                          text.substr(std::min(words.place(), text.size()))));
}

Result<TitleAndWhen> readTitleAndWhen(std::string_view text, const WordsSetting& setting) {
  WordCursor words(text, setting);
  const auto& all = words.words();
  const auto dashes =
      std::find_if(all.begin(), all.end(), [](const WordCursor::Word& word) { return word.folded == "--"; });
  if (dashes != all.end()) {
    const auto count = static_cast<std::size_t>(dashes - all.begin());
    TitleAndWhen read{titleOf(words, count), {}};
    words.moveTo(count + 1);
    ORLOCAL_TRY(read.when, takeWhen(words));
    if (words.done()) { return read; }
    return words.refused(tr("What stands behind -- says when; this says no day or time"));
  }
  // The longest end that is time and nothing else. What fails there may be part of a title.
  for (std::size_t begin = 0; begin < all.size(); ++begin) {
    words.moveTo(begin);
    auto when = takeWhen(words);
    if (!when || !words.done() || when->empty()) { continue; }
    // "… 10:00 to" before it was meant to be more.
    const bool joined = begin > 1 && !all[begin - 1].quoted && valueOf(all[begin - 1].folded, Term::kTo, setting);
    const std::size_t before = begin - (joined ? 2 : 1);
    if (begin > 0 && endsLikeTime(words, before)) {
      return words.refusedAt(before,
                             tr("This was not understood together with what follows; put it in quotes if it is part "
                                "of the title"));
    }
    return TitleAndWhen{titleOf(words, begin), *std::move(when)};
  }
  if (!all.empty() && endsLikeTime(words, all.size() - 1)) {
    // Whoever wrote it meant a time: say what is wrong with it.
    for (std::size_t begin = all.size(); begin-- > 0;) {
      words.moveTo(begin);
      const auto when = takeWhen(words);
      if (!when) { return failure(when.error()); }
    }
    return words.refusedAt(all.size() - 1, tr("This is no day or time; put it in quotes if it is part of the title"));
  }
  return TitleAndWhen{titleOf(words, all.size()), {}};
}

Result<Times> timesOf(const When& when, const WordsSetting& setting) {
  if (!when.start) {
    if (when.length && when.length->minutes.count() > 0) {
      return failure(ErrorCode::kInvalid,
                     tr("There is a length and no time of day to start at; write one, as in 12:30 1h"));
    }
    if (!when.day && !when.allDay && !when.repeat && !when.length) {
      return failure(ErrorCode::kInvalid, tr("There is no day or time; write one at the end, as in: tomorrow 12:30"));
    }
    return wholeDays(when, firstOf(when.repeat, when.day.value_or(setting.today())));
  }
  LocalDay day = when.day.value_or(setting.today());
  if (!when.day) {
    // A time alone is the next one.
    if (onDay(day, *when.start) <= setting.now) { day = day + 1; }
  }
  day = firstOf(when.repeat, day);
  Times times;
  times.start = onDay(day, *when.start);
  times.end = endOf(when, times.start, std::chrono::hours(1));
  return times;
}

Result<Times> timesOf(const When& when, const Times& now) {
  const LocalDay day = when.day.value_or(LocalDay(now.start));
  const bool wantsDays = when.allDay || when.lastDay || (when.length && when.length->minutes.count() == 0);
  if (!when.start && (when.allDay || (now.allDay && !(when.length && when.length->minutes.count() > 0)))) {
    if (wantsDays) { return wholeDays(when, day); }
    return Times{LocalTime(day), LocalTime(day + (LocalDay(now.end) - LocalDay(now.start))), true};
  }
  if (now.allDay && !when.start) {
    return failure(ErrorCode::kInvalid, tr("It lasts whole days; write a time of day with the length, as in 12:30 1h"));
  }
  Times times;
  const TimeOfDay nowStart((now.start - LocalTime(LocalDay(now.start))) / 60);
  times.start = when.start ? onDay(day, *when.start) : onDay(day, nowStart);
  times.end = when.end || when.length ? endOf(when, times.start, {})
              : now.allDay            ? times.start + 3'600
                                      : times.start + (now.end - now.start);
  return times;
}

std::string timesInWords(const Times& times) {
  const LocalDay first(times.start);
  if (times.allDay) {
    const LocalDay last = std::max(first, LocalDay(times.end) - 1);
    if (last == first) { return tr("{}, all day", shortDay(first)); }
    return tr("{} – {}, {} days", shortDay(first), shortDay(last), last - first + 1);
  }
  const bool sameDay = LocalDay(times.end) == first || times.end == LocalTime(first + 1);
  if (sameDay) { return shortDay(first) + ' ' + timesOnOneDay(times); }
  return fmt::format("{} {} – {} {}", shortDay(first), clockTime(times.start), shortDay(LocalDay(times.end)),
                     clockTime(times.end));
}

}  // namespace orlocal::host
