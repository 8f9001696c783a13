#include "platform/linux/eventkit_reminder.h"

#include "store/time/zone.h"

namespace orlocal {
namespace {

using store::CalendarTime;

DateComponents componentsOf(const CalendarTime& time) {
  DateComponents parts;
  parts.year = static_cast<int>(time.local.year());
  parts.month = time.local.month();
  parts.day = time.local.day();
  if (time.kind == CalendarTime::Kind::kDate) { return parts; }
  parts.hour = time.local.hour();
  parts.minute = time.local.minute();
  parts.second = time.local.second();
  if (time.kind == CalendarTime::Kind::kUtc) { parts.timeZone = "UTC"; }
  if (time.kind == CalendarTime::Kind::kZoned) { parts.timeZone = time.zone; }
  return parts;
}

/// None without a year: such parts name no day.
std::optional<CalendarTime> timeOf(const DateComponents& parts) {
  if (!parts.year) { return std::nullopt; }
  CalendarTime time;
  time.local = store::LocalTime(*parts.year, parts.month.value_or(1), parts.day.value_or(1), parts.hour.value_or(0),
                                parts.minute.value_or(0), parts.second.value_or(0));
  if (!parts.hour && !parts.minute && !parts.second) {
    time.kind = CalendarTime::Kind::kDate;
  } else if (!parts.timeZone || !store::Zone::named(*parts.timeZone)) {
    time.kind = CalendarTime::Kind::kFloating;
  } else if (*parts.timeZone == "UTC") {
    time.kind = CalendarTime::Kind::kUtc;
  } else {
    time.kind = CalendarTime::Kind::kZoned;
    time.zone = *parts.timeZone;
  }
  return time;
}

}  // namespace

std::optional<DateComponents> ReminderObject::dueDateComponents() const {
  const auto& due = shown().due;
  return due ? std::optional(componentsOf(*due)) : std::nullopt;
}

void ReminderObject::setDueDateComponents(std::optional<DateComponents> parts) {
  edit(store::ItemField::kDue).due = parts ? timeOf(*parts) : std::nullopt;
}

void ReminderObject::setCompleted(bool completed) {
  const bool before = isCompleted();
  auto& moment = edit(store::ItemField::kCompleted).completed;
  if (completed != before) { moment = completed ? std::optional(store::now()) : std::nullopt; }
}

}  // namespace orlocal
