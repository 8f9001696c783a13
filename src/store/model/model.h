#pragma once

#include <algorithm>
#include <array>
#include <chrono>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "store/time/time.h"

namespace orlocal::store {

/// Row numbers: stable within one store file, never reused. 0 is "not saved yet".
using SourceId = std::int64_t;
using CalendarId = std::int64_t;
using ItemId = std::int64_t;

/// What a calendar holds; one of both is asked for as either. Reminder lists are what holds reminders.
enum class CalendarKind : std::uint8_t { kEvents = 0, kReminders = 1, kBoth = 2 };
enum class ItemKind : std::uint8_t { kEvent = 0, kReminder = 1 };

/// Of the calendars that hold such items.
constexpr CalendarKind calendarKindOf(ItemKind kind) {
  return kind == ItemKind::kEvent ? CalendarKind::kEvents : CalendarKind::kReminders;
}

/// Where calendars come from.
struct Source {
  enum class Type : std::uint8_t { kLocal = 0, kCalDav = 1, kExchange = 2, kSubscription = 3, kBirthday = 4 };
  SourceId id = 0;
  std::string identifier;
  Type type = Type::kLocal;
  std::string title;
};

struct Rgb {
  double red = 0, green = 0, blue = 0;  ///< 0 to 1 in ordinary use; kept as given

  /// Red, green and blue from 0 to 255, as they are shown and written.
  std::array<int, 3> bytes() const {
    const auto byte = [](double part) { return static_cast<int>(std::clamp(part, 0.0, 1.0) * 255 + 0.5); };
    return {byte(red), byte(green), byte(blue)};
  }
  friend bool operator==(const Rgb&, const Rgb&) = default;
};

/// A calendar of events, a reminder list, or both in one.
struct Calendar {
  CalendarId id = 0;
  std::string identifier;  ///< stable, never reused; given by the store
  CalendarKind kind = CalendarKind::kEvents;
  SourceId source = 0;
  Source::Type type = Source::Type::kLocal;  ///< of its source
  std::string title;
  std::optional<std::string> notes;
  std::optional<Rgb> color;
  std::int64_t order = 0;  ///< place among its kind; then by id
  bool readOnly = false;   ///< allows no content changes
  bool subscribed = false;
  bool immutable = false;  ///< itself may not be changed or removed

  bool holds(CalendarKind wanted) const { return kind == wanted || kind == CalendarKind::kBoth; }
  bool holds(ItemKind item) const { return holds(calendarKindOf(item)); }
  friend bool operator==(const Calendar&, const Calendar&) = default;
};

/// When an alarm goes off beside its item.
struct AlarmOffset {
  std::chrono::seconds offset{0};  ///< negative is before
  bool fromEnd = false;            ///< counts from the end (or due) instead of the start

  friend bool operator==(const AlarmOffset&, const AlarmOffset&) = default;
};

/// RFC 5545, 3.6.6. What it has beyond these fields is kept in `extra`.
struct Alarm {
  enum class Action : std::uint8_t { kDisplay = 0, kAudio = 1, kProcedure = 2, kEmail = 3 };
  using Relative = AlarmOffset;

  Action action = Action::kDisplay;
  std::variant<Relative, Moment> trigger;
  std::optional<std::string> emailAddress;  ///< without "mailto:"
  std::optional<std::string> soundName;
  std::optional<std::string> url;
  std::string extra;  ///< further content lines of the component, unfolded, each ended with "\n"

  friend bool operator==(const Alarm&, const Alarm&) = default;
};

/// RFC 5545, 3.8.4.1 and 3.8.4.3. The organizer is an entry of its own, also when the attendees name the same address.
struct Attendee {
  enum class Status : std::uint8_t {
    kUnknown = 0,
    kPending = 1,
    kAccepted = 2,
    kDeclined = 3,
    kTentative = 4,
    kDelegated = 5,
    kCompleted = 6,
    kInProcess = 7
  };
  enum class Role : std::uint8_t { kUnknown = 0, kRequired = 1, kOptional = 2, kChair = 3, kNonParticipant = 4 };
  enum class Type : std::uint8_t { kUnknown = 0, kPerson = 1, kRoom = 2, kResource = 3, kGroup = 4 };

  std::string address;  ///< calendar address, a URI such as "mailto:a@example.org"
  std::optional<std::string> name;
  Status status = Status::kUnknown;
  Role role = Role::kUnknown;
  Type type = Type::kUnknown;
  bool organizer = false;
  std::string extra;  ///< further parameters, as ";NAME=value…"

  friend bool operator==(const Attendee&, const Attendee&) = default;
};

/// RFC 5545, 3.3.10. Lists are empty when the part is absent.
struct RecurrenceRule {
  enum class Frequency : std::uint8_t { kSecondly, kMinutely, kHourly, kDaily, kWeekly, kMonthly, kYearly };
  struct WeekDay {
    int ordinal = 0;  ///< ±1 to ±53; 0 is every one
    int day = 0;      ///< 0 Sunday to 6 Saturday

    friend auto operator<=>(const WeekDay&, const WeekDay&) = default;
  };

  /// What becomes of a day or month that a period does not have (RFC 7529, 4.2).
  enum class Skip : std::uint8_t { kOmit = 0, kBackward = 1, kForward = 2 };

  Frequency frequency = Frequency::kDaily;
  int interval = 1;
  std::optional<std::int64_t> count;
  std::optional<CalendarTime> until;  ///< inclusive
  std::vector<int> bySecond, byMinute, byHour;
  std::vector<WeekDay> byDay;
  std::vector<int> byMonthDay, byYearDay, byWeekNumber, byMonth, bySetPosition;
  std::optional<int> weekStart;  ///< 0 Sunday to 6 Saturday; absent is Monday
  /// RFC 7529: the calendar that the rule counts in, in capitals ("HEBREW"). Empty is the Gregorian one, which is named
  /// only where `skip` says something.
  std::string scale;
  Skip skip = Skip::kOmit;
  std::vector<int> byLeapMonth;  ///< "5L" of BYMONTH is 5

  friend bool operator==(const RecurrenceRule&, const RecurrenceRule&) = default;
};

/// A rule whose times are left out of a series (EXRULE of RFC 2445).
struct ExceptionRule {
  RecurrenceRule rule;
  /// On the wall clock of the series: from when the rule runs, where that is not the series' start. What a split cuts
  /// off keeps counting from where the whole began.
  std::optional<LocalTime> start;

  friend bool operator==(const ExceptionRule&, const ExceptionRule&) = default;
};

/// How a series repeats.
struct Recurrence {
  std::vector<RecurrenceRule> rules;
  std::vector<CalendarTime> added;     ///< RDATE starts
  std::vector<CalendarTime> excluded;  ///< EXDATE starts
  std::vector<ExceptionRule> exceptionRules;

  bool empty() const { return rules.empty() && added.empty(); }
  friend bool operator==(const Recurrence&, const Recurrence&) = default;
};

/// An event or a reminder: a single one, a series, or one changed occurrence of a series.
struct Item {
  ItemId id = 0;
  ItemKind kind = ItemKind::kEvent;
  CalendarId calendar = 0;
  /// Names the event in public; opens its first occurrence. Changed occurrences carry their series' one. Given by the
  /// store; stable, never reused.
  std::string identifier;
  /// Names this row alone.
  std::string itemIdentifier;
  std::string uid;                           ///< iCalendar UID
  std::optional<ItemId> series;              ///< of a changed occurrence
  std::optional<CalendarTime> recurrenceId;  ///< original start of a changed occurrence

  std::optional<std::string> title, notes, location, url;
  std::optional<CalendarTime> start;
  /// Of an event: exclusive, of the start's kind; for whole days the day after the last one.
  std::optional<CalendarTime> end;
  std::optional<CalendarTime> due;  ///< of a reminder
  std::optional<Moment> created, modified;
  /// When the file that it came from was written or the item last revised (RFC 5545, 3.8.7.2). Kept where the file does
  /// not tell both of the above, and stands in for them.
  std::optional<Moment> stamped;
  std::optional<Moment> completed;  ///< reminders
  int priority = 0;                 ///< 0 none, 1 highest to 9 lowest
  std::int64_t sequence = 0;
  Recurrence recurrence;
  std::vector<Alarm> alarms;
  std::vector<Attendee> attendees;
  /// Content lines of the component that no field holds, unfolded, each ended with "\n", in their order; then whole
  /// components within it. A line "@NAME;PARAM=value…" has the further parameters of a property that a field holds.
  std::string extra;

  /// For what treats an event's end and a reminder's due alike.
  const std::optional<CalendarTime>& endOrDue() const { return kind == ItemKind::kEvent ? end : due; }
  std::optional<CalendarTime>& endOrDue() { return kind == ItemKind::kEvent ? end : due; }
  /// What the occurrences of a series count from: the start or, for a reminder without one, its due.
  const std::optional<CalendarTime>& anchor() const { return start ? start : due; }
  bool allDay() const { return start && start->kind == CalendarTime::Kind::kDate; }
  friend bool operator==(const Item&, const Item&) = default;
};

/// A single event, a series or a reminder with the changed occurrences that belong to it, by original start.
struct WholeItem {
  Item main;
  std::vector<Item> changed;

  friend bool operator==(const WholeItem&, const WholeItem&) = default;
};

/// Somebody of the address book.
struct Contact {
  std::string identifier;
  std::string name;
  std::vector<std::string> emails;
  std::optional<std::string> address;

  friend bool operator==(const Contact&, const Contact&) = default;
};

}  // namespace orlocal::store
