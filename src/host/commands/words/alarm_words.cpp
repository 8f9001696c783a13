#include "host/commands/words/alarm_words.h"

#include <algorithm>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/translation.h"
#include "base/try.h"

namespace orlocal::host {
namespace {

constexpr const char* kAlarmExamples = translatable("write 15m, 1h before, at start, 9:00, or at 9:00 the day before");

/// "the day before", "2 days before", "on the day".
Result<std::optional<int>> takeDaysBefore(WordCursor& words) {
  if (words.take(Term::kDayBefore)) { return 1; }
  if (words.take(Term::kSameDay)) { return 0; }
  const std::size_t begin = words.at();
  ORLOCAL_TRY(const auto length, takeLength(words));
  if (length && length->minutes.count() == 0 && words.take(Term::kBefore)) { return length->days; }
  words.moveTo(begin);
  return std::nullopt;
}

Result<std::optional<AlarmWords>> takeAlarm(WordCursor& words) {
  if (words.take(Term::kAtStart)) { return AlarmWords(); }
  const std::size_t begin = words.at();
  AlarmWords alarm;
  // By the time of day, with the day before or behind it.
  ORLOCAL_TRY(auto days, takeDaysBefore(words));
  const bool marked = words.take(Term::kAt).has_value();
  ORLOCAL_TRY(alarm.time, takeTime(words, marked));
  if (alarm.time) {
    if (!days) { ORLOCAL_TRY(days, takeDaysBefore(words)); }
    alarm.before.days = days.value_or(0);
    return alarm;
  }
  // By how much earlier.
  words.moveTo(begin);
  if (words.take(Term::kDayBefore)) {
    alarm.before.days = 1;
    return alarm;
  }
  ORLOCAL_TRY(const auto length, takeLength(words));
  if (!length) { return std::nullopt; }
  words.take(Term::kBefore);
  alarm.before = *length;
  return alarm;
}

}  // namespace

Result<AlarmWords> readAlarm(std::string_view text, const WordsSetting& setting) {
  WordCursor words(text, setting);
  ORLOCAL_TRY(const auto alarm, takeAlarm(words));
  if (alarm && words.done()) { return *alarm; }
  return words.refused(
      tr("\"{}\" is no alarm; {}", text.substr(std::min(words.place(), text.size())), translated(kAlarmExamples)));
}

std::chrono::seconds offsetOf(const AlarmWords& alarm, store::LocalTime start) {
  const std::chrono::seconds days = std::chrono::days(alarm.before.days);
  if (!alarm.time) { return -(days + alarm.before.minutes); }
  const std::chrono::seconds timeOfStart(start - store::LocalTime(store::LocalDay(start)));
  return *alarm.time - days - timeOfStart;
}

}  // namespace orlocal::host
