#include "store/rows/item_check.h"

#include <algorithm>
#include <limits>

#include <fmt/format.h>

#include "base/text.h"
#include "base/translation.h"
#include "store/file/checked_row.h"

namespace orlocal::store {
namespace {

/// As long as all of the years that there are.
constexpr std::chrono::seconds kLongestOffset{kLatestSecond - kEarliestSecond};
/// No part of a rule has a greater one: years of other calendars have up to 385 days.
constexpr int kHighestPart = 400;

bool areKept(const std::vector<CalendarTime>& times) {
  return std::all_of(times.begin(), times.end(), [](const CalendarTime& time) { return isKept(time); });
}

template <class Time>
bool isKeptOrNone(const std::optional<Time>& time) {
  return !time || isKept(*time);
}

bool areParts(const std::vector<int>& values) {
  return std::all_of(values.begin(), values.end(),
                     [](int value) { return value >= -kHighestPart && value <= kHighestPart; });
}

bool isSound(const RecurrenceRule& rule) {
  const auto isDay = [](int day) { return day >= 0 && day <= 6; };
  for (const auto* list : {&rule.bySecond, &rule.byMinute, &rule.byHour, &rule.byMonthDay, &rule.byYearDay,
                           &rule.byWeekNumber, &rule.byMonth, &rule.bySetPosition, &rule.byLeapMonth}) {
    if (!areParts(*list)) { return false; }
  }
  const bool days = std::all_of(rule.byDay.begin(), rule.byDay.end(), [&](const RecurrenceRule::WeekDay& day) {
    return isDay(day.day) && day.ordinal >= -kHighestPart && day.ordinal <= kHighestPart;
  });
  return days && rule.interval >= 1 && (!rule.count || *rule.count >= 1) && isKeptOrNone(rule.until) &&
         (!rule.weekStart || isDay(*rule.weekStart));
}

bool isSound(const Alarm& alarm) {
  const auto* relative = std::get_if<Alarm::Relative>(&alarm.trigger);
  if (relative == nullptr) { return isKept(std::get<Moment>(alarm.trigger)); }
  return relative->offset >= -kLongestOffset && relative->offset <= kLongestOffset;
}

bool hasTextsInUtf8(const Item& item) {
  const auto isText = [](const std::optional<std::string>& text) { return !text || isUtf8(*text); };
  const auto isClock = [](const std::optional<CalendarTime>& time) { return !time || isUtf8(time->zone); };
  for (const auto* text : {&item.title, &item.notes, &item.location, &item.url}) {
    if (!isText(*text)) { return false; }
  }
  if (!isUtf8(item.uid) || !isUtf8(item.extra)) { return false; }
  if (!isClock(item.start) || !isClock(item.endOrDue()) || !isClock(item.recurrenceId)) { return false; }
  for (const auto* times : {&item.recurrence.added, &item.recurrence.excluded}) {
    if (!std::all_of(times->begin(), times->end(), isClock)) { return false; }
  }
  for (const RecurrenceRule& rule : item.recurrence.rules) {
    if (!isUtf8(rule.scale) || !isClock(rule.until)) { return false; }
  }
  const bool alarms = std::all_of(item.alarms.begin(), item.alarms.end(), [&](const Alarm& alarm) {
    return isText(alarm.emailAddress) && isText(alarm.soundName) && isText(alarm.url) && isUtf8(alarm.extra);
  });
  return alarms && std::all_of(item.attendees.begin(), item.attendees.end(), [&](const Attendee& attendee) {
           return isUtf8(attendee.address) && isText(attendee.name) && isUtf8(attendee.extra);
         });
}

}  // namespace

bool isSound(const Recurrence& recurrence) {
  return std::all_of(recurrence.rules.begin(), recurrence.rules.end(),
                     [](const RecurrenceRule& rule) { return isSound(rule); }) &&
         areKept(recurrence.added) && areKept(recurrence.excluded) &&
         std::all_of(recurrence.exceptionRules.begin(), recurrence.exceptionRules.end(),
                     [](const ExceptionRule& exception) {
                       return isSound(exception.rule) && (!exception.start || isKept(*exception.start - LocalTime()));
                     });
}

bool isSound(const Item& item) {
  if (item.kind == ItemKind::kEvent && !item.start) { return false; }
  // A changed occurrence without the start it had stands nowhere.
  if (item.series && !item.recurrenceId) { return false; }
  return isKeptOrNone(item.start) && isKeptOrNone(item.endOrDue()) && isKeptOrNone(item.recurrenceId) &&
         isKeptOrNone(item.created) && isKeptOrNone(item.modified) && isKeptOrNone(item.stamped) &&
         isKeptOrNone(item.completed) && item.sequence >= -kHighestNumber && item.sequence <= kHighestNumber &&
         isSound(item.recurrence) &&
         std::all_of(item.alarms.begin(), item.alarms.end(), [](const Alarm& alarm) { return isSound(alarm); });
}

Status checkBeforeWriting(const Item& item) {
  const char* noun = item.kind == ItemKind::kEvent ? "event" : "reminder";
  if (!hasTextsInUtf8(item)) {
    return failure(ErrorCode::kRefused, tr("A text of the {} with the UID \"{}\" is not UTF-8; write it in UTF-8.",
                                           noun, isUtf8(item.uid) ? item.uid : "?"));
  }
  if (isSound(item)) { return {}; }
  return failure(ErrorCode::kRefused,
                 tr("The {} \"{}\" has a time outside the years 1 to 9999, or a number that makes no sense; "
                    "change it.",
                    noun, item.title.value_or("")));
}

}  // namespace orlocal::store
