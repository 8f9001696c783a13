#include "store/rows/packing.h"

#include <utility>

#include "store/rows/packer.h"
#include "store/time/civil_days.h"

namespace orlocal::store {
namespace {

void packTimes(Packer& packer, const std::vector<CalendarTime>& times) {
  packer.count(times.size());
  for (const CalendarTime& time : times) { packer.time(time); }
}

std::vector<CalendarTime> unpackTimes(Unpacker& unpacker) {
  return unpacker.list([&] { return unpacker.time(); });
}

template <class T>
std::optional<T> ifSound(const Unpacker& unpacker, T&& value) {
  return unpacker.sound() ? std::optional<T>(std::forward<T>(value)) : std::nullopt;
}

/// One list for both directions, so that they cannot differ.
constexpr std::vector<int> RecurrenceRule::*kRuleLists[] = {&RecurrenceRule::bySecond,  &RecurrenceRule::byMinute,
                                                            &RecurrenceRule::byHour,    &RecurrenceRule::byMonthDay,
                                                            &RecurrenceRule::byYearDay, &RecurrenceRule::byWeekNumber,
                                                            &RecurrenceRule::byMonth,   &RecurrenceRule::bySetPosition};

constexpr std::int64_t kHasCount = 1, kHasUntil = 2, kHasWeekStart = 4, kHasDays = 8, kHasLists = 16, kHasScale = 32;

void packRule(Packer& packer, const RecurrenceRule& rule) {
  bool lists = false;
  for (const auto list : kRuleLists) { lists = lists || !(rule.*list).empty(); }
  packer.number(static_cast<std::int64_t>(rule.frequency));
  packer.number(rule.interval);
  packer.number((rule.count ? kHasCount : 0) | (rule.until ? kHasUntil : 0) | (rule.weekStart ? kHasWeekStart : 0) |
                (rule.byDay.empty() ? 0 : kHasDays) | (lists ? kHasLists : 0) | (rule.scale.empty() ? 0 : kHasScale));
  if (rule.count) { packer.number(*rule.count); }
  if (rule.until) { packer.time(*rule.until); }
  if (rule.weekStart) { packer.number(*rule.weekStart); }
  if (!rule.byDay.empty()) {
    packer.count(rule.byDay.size());
    for (const RecurrenceRule::WeekDay& day : rule.byDay) {
      packer.number(day.ordinal);
      packer.number(day.day);
    }
  }
  if (lists) {
    for (const auto list : kRuleLists) { packer.numbers(rule.*list); }
  }
  if (!rule.scale.empty()) {
    packer.text(rule.scale);
    packer.number(static_cast<std::int64_t>(rule.skip));
    packer.numbers(rule.byLeapMonth);
  }
}

RecurrenceRule unpackRule(Unpacker& unpacker) {
  RecurrenceRule rule;
  rule.frequency = unpacker.oneOf(RecurrenceRule::Frequency::kYearly);
  rule.interval = unpacker.small();
  const std::int64_t parts = unpacker.number();
  if ((parts & kHasCount) != 0) { rule.count = unpacker.number(); }
  if ((parts & kHasUntil) != 0) { rule.until = unpacker.time(); }
  if ((parts & kHasWeekStart) != 0) { rule.weekStart = unpacker.small(); }
  if ((parts & kHasDays) != 0) {
    rule.byDay = unpacker.list([&] {
      const int ordinal = unpacker.small();
      return RecurrenceRule::WeekDay{ordinal, unpacker.small()};
    });
  }
  if ((parts & kHasLists) != 0) {
    for (const auto list : kRuleLists) { rule.*list = unpacker.numbers(); }
  }
  if ((parts & kHasScale) != 0) {
    rule.scale = unpacker.text();
    rule.skip = unpacker.oneOf(RecurrenceRule::Skip::kForward);
    rule.byLeapMonth = unpacker.numbers();
  }
  return rule;
}

}  // namespace

void packRecurrence(const Recurrence& recurrence, PackedBytes& out) {
  Packer packer(out);
  packer.count(recurrence.rules.size());
  for (const RecurrenceRule& rule : recurrence.rules) { packRule(packer, rule); }
  packTimes(packer, recurrence.added);
  packTimes(packer, recurrence.excluded);
  // Only where there are any: series without them are as they were in the first version of the format.
  if (recurrence.exceptionRules.empty()) { return; }
  packer.count(recurrence.exceptionRules.size());
  for (const ExceptionRule& exception : recurrence.exceptionRules) {
    packRule(packer, exception.rule);
    packer.number(exception.start.has_value());
    if (exception.start) { packer.number(localSeconds(*exception.start)); }
  }
}

std::optional<Recurrence> unpackRecurrence(std::span<const std::byte> bytes) {
  Unpacker unpacker(bytes);
  Recurrence recurrence;
  recurrence.rules = unpacker.list([&] { return unpackRule(unpacker); });
  recurrence.added = unpackTimes(unpacker);
  recurrence.excluded = unpackTimes(unpacker);
  if (unpacker.atEnd()) { return ifSound(unpacker, std::move(recurrence)); }
  recurrence.exceptionRules = unpacker.list([&] {
    ExceptionRule exception{unpackRule(unpacker), std::nullopt};
    if (unpacker.flag()) { exception.start = localTime(unpacker.seconds()); }
    return exception;
  });
  return ifSound(unpacker, std::move(recurrence));
}

void packAlarms(const std::vector<Alarm>& alarms, PackedBytes& out) {
  Packer packer(out);
  packer.count(alarms.size());
  for (const Alarm& alarm : alarms) {
    packer.number(static_cast<std::int64_t>(alarm.action));
    if (const auto* relative = std::get_if<Alarm::Relative>(&alarm.trigger)) {
      packer.number(relative->fromEnd ? 1 : 0);
      packer.number(relative->offset.count());
    } else {
      packer.number(2);
      packer.number(std::get<Moment>(alarm.trigger).time_since_epoch().count());
    }
    packer.optionalText(alarm.emailAddress);
    packer.optionalText(alarm.soundName);
    packer.optionalText(alarm.url);
    packer.text(alarm.extra);
  }
}

std::optional<std::vector<Alarm>> unpackAlarms(std::span<const std::byte> bytes) {
  Unpacker unpacker(bytes);
  auto alarms = unpacker.list([&] {
    Alarm alarm;
    alarm.action = unpacker.oneOf(Alarm::Action::kEmail);
    const int anchor = unpacker.oneOf(2);
    const std::int64_t value = unpacker.number();
    if (anchor == 2) {
      alarm.trigger = Moment(std::chrono::microseconds(value));
    } else {
      alarm.trigger = Alarm::Relative{std::chrono::seconds(value), anchor == 1};
    }
    alarm.emailAddress = unpacker.optionalText();
    alarm.soundName = unpacker.optionalText();
    alarm.url = unpacker.optionalText();
    alarm.extra = unpacker.text();
    return alarm;
  });
  return ifSound(unpacker, std::move(alarms));
}

void packAttendees(const std::vector<Attendee>& attendees, PackedBytes& out) {
  Packer packer(out);
  packer.count(attendees.size());
  for (const Attendee& attendee : attendees) {
    packer.text(attendee.address);
    packer.optionalText(attendee.name);
    packer.number(static_cast<std::int64_t>(attendee.status));
    packer.number(static_cast<std::int64_t>(attendee.role));
    packer.number(static_cast<std::int64_t>(attendee.type));
    packer.number(attendee.organizer);
    packer.text(attendee.extra);
  }
}

std::optional<std::vector<Attendee>> unpackAttendees(std::span<const std::byte> bytes) {
  Unpacker unpacker(bytes);
  auto attendees = unpacker.list([&] {
    Attendee attendee;
    attendee.address = unpacker.text();
    attendee.name = unpacker.optionalText();
    attendee.status = unpacker.oneOf(Attendee::Status::kInProcess);
    attendee.role = unpacker.oneOf(Attendee::Role::kNonParticipant);
    attendee.type = unpacker.oneOf(Attendee::Type::kGroup);
    attendee.organizer = unpacker.flag();
    attendee.extra = unpacker.text();
    return attendee;
  });
  return ifSound(unpacker, std::move(attendees));
}

void packStrings(const std::vector<std::string>& strings, PackedBytes& out) {
  Packer packer(out);
  packer.count(strings.size());
  for (const std::string& text : strings) { packer.text(text); }
}

std::optional<std::vector<std::string>> unpackStrings(std::span<const std::byte> bytes) {
  Unpacker unpacker(bytes);
  auto strings = unpacker.list([&] { return unpacker.text(); });
  return ifSound(unpacker, std::move(strings));
}

}  // namespace orlocal::store
