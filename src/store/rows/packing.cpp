#include "store/rows/packing.h"

#include <limits>
#include <type_traits>
#include <utility>

#include "base/text.h"
#include "store/file/checked_row.h"
#include "store/time/civil_days.h"
#include "store/time/clock_name.h"

namespace orlocal::store {
namespace {

/// Whole numbers of any sign in groups of seven bits, texts with their length before them.
class Packer {
 public:
  explicit Packer(PackedBytes& out) : m_out(out) { m_out.clear(); }

  void number(std::int64_t value) {
    // Small numbers of both signs become small: 0, -1, 1, -2, …
    auto rest = static_cast<std::uint64_t>(value) << 1 ^ static_cast<std::uint64_t>(value >> 63);
    for (; rest >= 0x80; rest >>= 7) { m_out.push_back(static_cast<std::byte>(rest | 0x80)); }
    m_out.push_back(static_cast<std::byte>(rest));
  }
  void text(std::string_view value) {
    number(static_cast<std::int64_t>(value.size()));
    const auto* data = reinterpret_cast<const std::byte*>(value.data());
    m_out.insert(m_out.end(), data, data + value.size());
  }
  void optionalText(const std::optional<std::string>& value) {
    number(value.has_value());
    if (value) { text(*value); }
  }
  void time(const CalendarTime& value) {
    text(clockName(value));
    number(localSeconds(value.local));
  }
  void count(std::size_t size) { number(static_cast<std::int64_t>(size)); }
  void numbers(const std::vector<int>& values) {
    count(values.size());
    for (const int value : values) { number(value); }
  }

 private:
  PackedBytes& m_out;
};

/// Reads what `Packer` wrote; past a damage everything reads as nothing and `sound` is false. Lists end there.
class Unpacker {
 public:
  explicit Unpacker(std::span<const std::byte> bytes) : m_bytes(bytes) {}

  std::int64_t number() {
    std::uint64_t value = 0;
    for (unsigned shift = 0; shift < 64; shift += 7) {
      if (m_bytes.empty()) { break; }
      const auto byte = std::to_integer<std::uint64_t>(m_bytes.front());
      m_bytes = m_bytes.subspan(1);
      value |= (byte & 0x7f) << shift;
      if (byte < 0x80) { return static_cast<std::int64_t>(value >> 1 ^ (~(value & 1) + 1)); }
    }
    fail();
    return 0;
  }
  int small() {
    const std::int64_t value = number();
    if (value >= std::numeric_limits<int>::min() && value <= std::numeric_limits<int>::max()) {
      return static_cast<int>(value);
    }
    fail();
    return 0;
  }
  /// The values of the enum are 0 to that of `last`.
  template <class Enum>
  Enum oneOf(Enum last) {
    const std::int64_t value = number();
    if (value >= 0 && value <= static_cast<std::int64_t>(last)) { return static_cast<Enum>(value); }
    fail();
    return Enum{};
  }
  std::int64_t seconds() {
    const std::int64_t value = number();
    if (isKept(value)) { return value; }
    fail();
    return 0;
  }
  bool flag() { return number() != 0; }
  std::string text() {
    const std::size_t size = count();
    std::string value(reinterpret_cast<const char*>(m_bytes.data()), size);
    m_bytes = m_bytes.subspan(size);
    if (!isUtf8(value)) { fail(); }
    return value;
  }
  std::optional<std::string> optionalText() { return flag() ? std::optional(text()) : std::nullopt; }
  CalendarTime time() {
    const std::string clock = text();
    auto time = timeOnClock(seconds(), clock);
    if (!time) { fail(); }
    return time.value_or(CalendarTime());
  }
  /// Of things that take a byte at least.
  std::size_t count() {
    const std::int64_t value = number();
    if (value >= 0 && static_cast<std::uint64_t>(value) <= m_bytes.size()) { return static_cast<std::size_t>(value); }
    fail();
    return 0;
  }
  /// What `read` gives so many times as is said here.
  template <class Read>
  auto list(const Read& read) {
    std::vector<decltype(read())> values;
    for (std::size_t left = count(); left > 0 && m_sound; --left) { values.push_back(read()); }
    return values;
  }
  std::vector<int> numbers() {
    return list([this] { return small(); });
  }
  bool atEnd() const { return m_bytes.empty(); }
  bool sound() const { return m_sound && m_bytes.empty(); }

 private:
  void fail() {
    m_sound = false;
    m_bytes = {};
  }

  std::span<const std::byte> m_bytes;
  bool m_sound = true;
};

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
