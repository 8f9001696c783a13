#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "backend/error_codes.h"
#include "backend/eventkit/ical_ek_functions.h"
#include "fakes/fake_address_book.h"
#include "fakes/fake_event_store.h"
#include "fakes/fake_platform.h"
#include "fakes/forwarding_eventkit.h"
#include "platform/exception.h"

namespace orlocal {

/// The back end with its slots in the open.
class OpenBackend : public iCalEKFunctions {
 public:
  using iCalEKFunctions::lastErrorString;
  using iCalEKFunctions::m_AddressBook;
  using iCalEKFunctions::m_ekAlarm;
  using iCalEKFunctions::m_ekCalendar;
  using iCalEKFunctions::m_ekEvent;
  using iCalEKFunctions::m_ekEventPredicate;
  using iCalEKFunctions::m_ekEventStore;
  using iCalEKFunctions::m_ekParticipant;
  using iCalEKFunctions::m_ekRecurrenceEnd;
  using iCalEKFunctions::m_ekRecurrenceRule;
  using iCalEKFunctions::m_ekReminder;
  using iCalEKFunctions::m_ekReminderPredicate;

  /// Calls `visit` with the name and the reference of each slot.
  template <class Visit>
  void forEachSlot(Visit visit) {
    visit("calendar", m_ekCalendar);
    visit("event", m_ekEvent);
    visit("reminder", m_ekReminder);
    visit("alarm", m_ekAlarm);
    visit("participant", m_ekParticipant);
    visit("recurrence rule", m_ekRecurrenceRule);
    visit("recurrence end", m_ekRecurrenceEnd);
    visit("reminder predicate", m_ekReminderPredicate);
    visit("event predicate", m_ekEventPredicate);
  }
};

/// A back end over the fake store, in Berlin, with no error recorded.
class BackendTest : public testing::Test {
 protected:
  BackendTest() {
    platform->m_eventKit = kit;
    platform->m_addressBook = addressBook;
    platform->m_runLoop = runLoop;
    platform->m_defaultTimeZone = std::make_shared<fakes::FakeTimeZone>(fakes::FakeTimeZone::berlin());
    setPlatform(platform);
    g_llasterror = 0;
    backend.init();
  }
  ~BackendTest() override {
    g_llasterror = 0;
    setPlatform(nullptr);
  }

  /// A moment of 2026 in UTC; Berlin is an hour ahead in winter.
  static Date at(int month, int day, int hour, int minute = 0, int second = 0) {
    using namespace std::chrono;
    return sys_days{year{2026} / month / day} + hours{hour} + minutes{minute} + seconds{second};
  }

  /// The recorded code, which is cleared as the function frame does before each call.
  static std::int64_t takeCode() { return std::exchange(g_llasterror, 0); }

  /// A call that gave -1 with `code`.
  static void expectFailed(std::int32_t result, std::int64_t code) {
    EXPECT_EQ(result, -1);
    EXPECT_EQ(takeCode(), code);
  }
  static void expectDone(std::int32_t result) {
    EXPECT_EQ(result, 0);
    EXPECT_EQ(takeCode(), 0);
  }
  /// A getter that gave nothing, with `code` (0: without one).
  static void expectNone(const OptionalText& result, std::int64_t code = 0) {
    EXPECT_EQ(result, std::nullopt);
    EXPECT_EQ(takeCode(), code);
  }
  static void expectText(const OptionalText& result, const std::string& text) {
    EXPECT_EQ(result, text);
    EXPECT_EQ(takeCode(), 0);
  }

  fakes::FakeEventStore& store() { return *kit->m_store; }

  std::shared_ptr<fakes::FakeEvent> openNewEvent() {
    auto event = std::make_shared<fakes::FakeEvent>();
    backend.m_ekEvent = event;
    return event;
  }
  std::shared_ptr<fakes::FakeReminder> openNewReminder() {
    auto reminder = std::make_shared<fakes::FakeReminder>();
    backend.m_ekReminder = reminder;
    return reminder;
  }
  std::shared_ptr<fakes::FakeCalendar> openNewCalendar() {
    auto calendar = std::make_shared<fakes::FakeCalendar>();
    backend.m_ekCalendar = calendar;
    return calendar;
  }
  std::shared_ptr<fakes::FakeAlarm> openNewAlarm() {
    auto alarm = std::make_shared<fakes::FakeAlarm>();
    backend.m_ekAlarm = alarm;
    return alarm;
  }

  /// Puts an object of its own into every slot; `released` takes the names of those that go.
  void fillSlots() {
    backend.m_ekCalendar = noted<fakes::FakeCalendar>("calendar");
    backend.m_ekEvent = noted<fakes::FakeEvent>("event");
    backend.m_ekReminder = noted<fakes::FakeReminder>("reminder");
    backend.m_ekAlarm = noted<fakes::FakeAlarm>("alarm");
    backend.m_ekParticipant = noted<fakes::FakeParticipant>("participant");
    backend.m_ekRecurrenceRule = noted<fakes::FakeRecurrenceRule>("recurrence rule");
    backend.m_ekRecurrenceEnd = noted<fakes::FakeRecurrenceEnd>("recurrence end");
    backend.m_ekReminderPredicate = noted<EKPredicate>("reminder predicate");
    backend.m_ekEventPredicate = noted<EKPredicate>("event predicate");
  }
  std::set<std::string> filledSlots() {
    std::set<std::string> filled;
    backend.forEachSlot([&](const char* name, const auto& slot) {
      if (slot) { filled.insert(name); }
    });
    return filled;
  }

  std::shared_ptr<fakes::FakePlatform> platform = std::make_shared<fakes::FakePlatform>();
  std::shared_ptr<fakes::FakeEventKit> kit = std::make_shared<fakes::FakeEventKit>();
  std::shared_ptr<fakes::FakeAddressBook> addressBook = std::make_shared<fakes::FakeAddressBook>();
  std::shared_ptr<fakes::FakeRunLoop> runLoop = std::make_shared<fakes::FakeRunLoop>();
  /// Names of the objects of `fillSlots` in the order in which they went.
  std::shared_ptr<std::vector<std::string>> released = std::make_shared<std::vector<std::string>>();
  OpenBackend backend;

 private:
  template <class T>
  std::shared_ptr<T> noted(const char* name) {
    return std::shared_ptr<T>(new T, [name, log = released](T* object) {
      log->emplace_back(name);
      delete object;
    });
  }
};

inline const std::vector<std::string> kReleaseOrder = {
    "calendar",       "reminder",           "event",          "participant", "alarm", "recurrence rule",
    "recurrence end", "reminder predicate", "event predicate"};

/// A store that raises a platform exception wherever it is asked to look something up, query or write.
class UnusableStore : public fakes::ForwardingEventStore {
 public:
  using ForwardingEventStore::ForwardingEventStore;

  static constexpr const char* kReason = "The store has gone.";
  [[noreturn]] static void raise() { throw Exception("NSGenericException", kReason); }

  EKCalendarArray calendarsForEntityType(EKEntityType) override { raise(); }
  std::shared_ptr<EKCalendar> calendarWithIdentifier(std::string_view) override { raise(); }
  std::shared_ptr<EKCalendar> defaultCalendarForNewEvents() override { raise(); }
  std::shared_ptr<EKCalendar> defaultCalendarForNewReminders() override { raise(); }
  std::shared_ptr<const EKPredicate> predicateForEvents(Date, Date, const EKCalendarArray&) override { raise(); }
  std::shared_ptr<const EKPredicate> predicateForOneEvent(Date, Date, const EKCalendarArray&,
                                                          std::string_view) override {
    raise();
  }
  std::shared_ptr<const EKEventArray> eventsMatchingPredicate(const std::shared_ptr<const EKPredicate>&) override {
    raise();
  }
  std::shared_ptr<EKEvent> eventWithIdentifier(std::string_view) override { raise(); }
  std::shared_ptr<EKEvent> occurrenceOfEvent(std::string_view, Date) override { raise(); }
  std::shared_ptr<const EKPredicate> predicateForRemindersInCalendars(const EKCalendarArray&) override { raise(); }
  void fetchRemindersMatchingPredicate(const std::shared_ptr<const EKPredicate>&, ReminderCompletion) override {
    raise();
  }
  std::shared_ptr<EKCalendarItem> calendarItemWithIdentifier(std::string_view) override { raise(); }
  bool saveCalendar(const std::shared_ptr<EKCalendar>&, bool, std::optional<Error>&) override { raise(); }
  bool removeCalendar(const std::shared_ptr<EKCalendar>&, bool, std::optional<Error>&) override { raise(); }
  bool saveEvent(const std::shared_ptr<EKEvent>&, EKSpan, bool, std::optional<Error>&) override { raise(); }
  bool removeEvent(const std::shared_ptr<EKEvent>&, EKSpan, bool, std::optional<Error>&) override { raise(); }
  bool saveReminder(const std::shared_ptr<EKReminder>&, bool, std::optional<Error>&) override { raise(); }
  bool removeReminder(const std::shared_ptr<EKReminder>&, bool, std::optional<Error>&) override { raise(); }
};

}  // namespace orlocal
