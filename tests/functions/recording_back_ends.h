#pragma once

#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "backend/error_codes.h"
#include "backend/eventkit/ical_ek_functions.h"
#include "backend/legacy/ical_functions.h"
#include "platform/exception.h"

namespace orlocal::fakes {

// How arguments are noted: none as `nil`, texts quoted, moments at Greenwich, lists in brackets.

inline std::string noted(std::int32_t number) { return std::to_string(number); }
inline std::string noted(const OptionalText& text) { return text ? "\"" + *text + "\"" : "nil"; }
inline std::string noted(Date date) { return formatDate(date, 0); }
inline std::string noted(std::optional<Date> date) { return date ? noted(*date) : "nil"; }
inline std::string noted(const PropertyValue& value) {
  if (const auto* date = std::get_if<Date>(&value)) { return noted(*date); }
  if (const auto* text = std::get_if<std::string>(&value)) { return noted(OptionalText(*text)); }
  return "nil";
}
inline std::string noted(const std::optional<std::vector<long>>& numbers) {
  if (!numbers) { return "nil"; }
  std::string text = "[";
  for (const long number : *numbers) { text += (text.size() > 1 ? " " : "") + std::to_string(number); }
  return text + "]";
}
inline std::string noted(const std::optional<std::vector<std::shared_ptr<EKRecurrenceDayOfWeek>>>& days) {
  if (!days) { return "nil"; }
  std::vector<long> numbers;
  for (const auto& day : *days) { numbers.push_back(day->dayOfTheWeek()); }
  return "days " + noted(std::optional(numbers));
}

/// What a back end was told, and what it answers.
struct Notes {
  std::vector<std::string> messages;
  std::int64_t failure = 0;     ///< set by every message when it is not 0
  std::int32_t number = 0;      ///< answered where a number is asked for
  OptionalText text = "value";  ///< answered by getters
  bool throws = false;

  template <class... Arguments>
  void note(std::string_view method, const Arguments&... arguments) {
    std::string message(method);
    std::string separator = "(";
    ((message += separator + noted(arguments), separator = ", "), ...);
    messages.push_back(message + (sizeof...(Arguments) == 0 ? "(" : "") + ")");
    if (throws) { throw Exception("NSInternalInconsistencyException", "the test asked for it"); }
    if (failure != 0) { g_llasterror = failure; }
  }
  template <class... Arguments>
  std::int32_t acting(std::string_view method, const Arguments&... arguments) {
    note(method, arguments...);
    return number;
  }
  template <class... Arguments>
  OptionalText getting(std::string_view method, const Arguments&... arguments) {
    note(method, arguments...);
    return failure == 0 ? text : std::nullopt;
  }
};

using Text = const OptionalText&;
using When = std::optional<Date>;
using DayList = const std::optional<std::vector<std::shared_ptr<EKRecurrenceDayOfWeek>>>&;
using NumberList = const std::optional<std::vector<long>>&;
using Int = std::int32_t;

/// Notes every message that a function may send.
class RecordingEKFunctions : public iCalEKFunctions {
 public:
  Notes notes;

  Int resetLastErrorString() override { return notes.acting("resetLastErrorString"); }
  Int openCalendarAt(Int index) override { return notes.acting("openCalendarAt", index); }
  Int openReminderListAt(Int index) override { return notes.acting("openReminderListAt", index); }
  Int openEventAt(Int index) override { return notes.acting("openEventAt", index); }
  Int openReminderAt(Int index) override { return notes.acting("openReminderAt", index); }
  Int openParticipantAt(Int index) override { return notes.acting("openParticipantAt", index); }
  Int openAlarmAt(Int index) override { return notes.acting("openAlarmAt", index); }
  Int openCalendarWithUID(Text uid) override { return notes.acting("openCalendarWithUID", uid); }
  Int openCalendarWithTitle(Text title) override { return notes.acting("openCalendarWithTitle", title); }
  Int openEventWithUID(Text uid, When occurrence) override { return notes.acting("openEventWithUID", uid, occurrence); }
  Int openReminderWithUID(Text uid) override { return notes.acting("openReminderWithUID", uid); }
  Int getObjectCount(Text type) override { return notes.acting("getObjectCount", type); }

  OptionalText getCalendarAttribute(Text p, Int at, Text uid) override {
    return notes.getting("getCalendarAttribute", p, at, uid);
  }
  OptionalText getEventAttribute(Text p, Int at, Text uid) override {
    return notes.getting("getEventAttribute", p, at, uid);
  }
  OptionalText getReminderAttribute(Text p, Int at, Text uid) override {
    return notes.getting("getReminderAttribute", p, at, uid);
  }
  OptionalText getAlarmAttribute(Text p, Int at, Text uid) override {
    return notes.getting("getAlarmAttribute", p, at, uid);
  }
  OptionalText getParticipantAttribute(Text p, Int at, Text uid) override {
    return notes.getting("getParticipantAttribute", p, at, uid);
  }
  OptionalText getEventRecurrenceRuleAttribute(Text p, Text end) override {
    return notes.getting("getEventRecurrenceRuleAttribute", p, end);
  }

  Int setCalendarProp(Text p, const PropertyValue& v) override { return notes.acting("setCalendarProp", p, v); }
  Int setEventProp(Text p, const PropertyValue& v) override { return notes.acting("setEventProp", p, v); }
  Int setReminderProp(Text p, const PropertyValue& v) override { return notes.acting("setReminderProp", p, v); }
  Int setAlarmProp(Text p, const PropertyValue& v) override { return notes.acting("setAlarmProp", p, v); }

  Int newItem(Text type) override { return notes.acting("newItem", type); }
  Int saveItem(Text type, Text span) override { return notes.acting("saveItem", type, span); }
  Int removeItem(Text type, Text uid, When occurrence, Text span) override {
    return notes.acting("removeItem", type, uid, occurrence, span);
  }
  Int fetchEventsWithStartDate(When start, When end, Text uid, Text calendars) override {
    return notes.acting("fetchEventsWithStartDate", start, end, uid, calendars);
  }
  Int fetchReminders(Text lists, Text status, When date) override {
    return notes.acting("fetchReminders", lists, status, date);
  }
  Int addAlarm(Text type, When when, Text action, Text address, Int offset, Text sound) override {
    return notes.acting("addAlarm", type, when, action, address, offset, sound);
  }
  Int removeAlarmFrom(Text type, Int at) override { return notes.acting("removeAlarmFrom", type, at); }
  Int removeAllAlarmsFrom(Text type) override { return notes.acting("removeAllAlarmsFrom", type); }
  Int addRecurrence(Text type, Int interval, DayList dotw, NumberList dotm, Int dow, NumberList months, When end,
                    Int count) override {
    return notes.acting("addRecurrence", type, interval, dotw, dotm, dow, months, end, count);
  }
  Int removeRecurrence() override { return notes.acting("removeRecurrence"); }
};

/// The same for the older back end.
class RecordingLegacyFunctions : public iCalFunctions {
 public:
  Notes notes;
  int resets = 0;

  Int resetLastErrorString() override { return ++resets; }
  OptionalText getLastErrorString() const override { return std::nullopt; }
  Int openCalendarAt(Int index) override { return notes.acting("openCalendarAt", index); }
  Int openEventAt(Int index) override { return notes.acting("openEventAt", index); }
  Int openTaskAt(Int index) override { return notes.acting("openTaskAt", index); }
  Int openAttendeeAt(Int index) override { return notes.acting("openAttendeeAt", index); }
  Int openAlarmAt(Int index) override { return notes.acting("openAlarmAt", index); }
  Int openCalendarWithUID(Text uid) override { return notes.acting("openCalendarWithUID", uid); }
  Int openCalendarWithTitle(Text title) override { return notes.acting("openCalendarWithTitle", title); }
  Int openEventWithUID(Text uid, When occurrence) override { return notes.acting("openEventWithUID", uid, occurrence); }
  Int openTaskWithUID(Text uid) override { return notes.acting("openTaskWithUID", uid); }
  Int getObjectCount(Text type) override { return notes.acting("getObjectCount", type); }

  OptionalText getCalendarAttribute(Text p, Int at, Text uid) override {
    return notes.getting("getCalendarAttribute", p, at, uid);
  }
  OptionalText getEventAttribute(Text p, Int at, Text uid) override {
    return notes.getting("getEventAttribute", p, at, uid);
  }
  OptionalText getTaskAttribute(Text p, Int at, Text uid) override {
    return notes.getting("getTaskAttribute", p, at, uid);
  }
  OptionalText getAlarmAttribute(Text p, Int at, Text uid) override {
    return notes.getting("getAlarmAttribute", p, at, uid);
  }
  OptionalText getAttendeeAttribute(Text p, Int at, Text uid) override {
    return notes.getting("getAttendeeAttribute", p, at, uid);
  }
  OptionalText getEventRecurrenceRuleAttribute(Text p, Text end) override {
    return notes.getting("getEventRecurrenceRuleAttribute", p, end);
  }

  Int setCalendarProp(Text p, const PropertyValue& v) override { return notes.acting("setCalendarProp", p, v); }
  Int setEventProp(Text p, const PropertyValue& v) override { return notes.acting("setEventProp", p, v); }
  Int setTaskProp(Text p, const PropertyValue& v) override { return notes.acting("setTaskProp", p, v); }
  Int setAlarmProp(Text p, const PropertyValue& v) override { return notes.acting("setAlarmProp", p, v); }

  Int newItem(Text type) override { return notes.acting("newItem", type); }
  Int saveItem(Text type, Text span) override { return notes.acting("saveItem", type, span); }
  Int removeItem(Text type, Text uid, When occurrence, Text span) override {
    return notes.acting("removeItem", type, uid, occurrence, span);
  }
  Int fetchEventsWithStartDate(When start, When end, Text uid, Text calendars) override {
    return notes.acting("fetchEventsWithStartDate", start, end, uid, calendars);
  }
  Int fetchTasks(Text calendars, Text status, When date) override {
    return notes.acting("fetchTasks", calendars, status, date);
  }
  Int addAlarm(Text type, When when, Text action, Text address, Int offset, Text sound, Text url) override {
    return notes.acting("addAlarm", type, when, action, address, offset, sound, url);
  }
  Int removeAlarmFrom(Text type, Int at) override { return notes.acting("removeAlarmFrom", type, at); }
  Int removeAllAlarmsFrom(Text type) override { return notes.acting("removeAllAlarmsFrom", type); }
  Int addRecurrence(Text type, Int interval, DayList dotw, NumberList dotm, Int dow, Int week, NumberList months,
                    When end, Int count) override {
    return notes.acting("addRecurrence", type, interval, dotw, dotm, dow, week, months, end, count);
  }
  Int removeRecurrence() override { return notes.acting("removeRecurrence"); }
};

}  // namespace orlocal::fakes
