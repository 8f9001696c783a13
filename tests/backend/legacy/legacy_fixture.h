#pragma once

#include <chrono>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "backend/error_codes.h"
#include "backend/legacy/ical_functions.h"
#include "fakes/fake_clock.h"
#include "fakes/fake_event_store.h"
#include "fakes/fake_platform.h"
#include "fakes/forwarding_eventkit.h"
#include "platform/exception.h"
#include "platform/legacy/cal_framework_face.h"
#include "platform/legacy/calendar_face.h"
#include "platform/legacy/event_face.h"
#include "platform/legacy/recurrence_faces.h"
#include "platform/legacy/task_face.h"

namespace orlocal {

/// A back end of its own for each test, with its slots in sight.
class LegacyBackEnd : public iCalFunctions {
 public:
  LegacyBackEnd() = default;
  using iCalFunctions::lastErrorString;
  using iCalFunctions::m_alarm;
  using iCalFunctions::m_attendee;
  using iCalFunctions::m_calendar;
  using iCalFunctions::m_event;
  using iCalFunctions::m_eventPredicate;
  using iCalFunctions::m_recurrenceend;
  using iCalFunctions::m_recurrencerule;
  using iCalFunctions::m_task;
  using iCalFunctions::m_taskPredicate;
  using iCalFunctions::saveTaskOrEvent;
};

/// Hands out a store of the test's own.
class EventKitOf : public fakes::ForwardingEventKit {
 public:
  EventKitOf(std::shared_ptr<EventKit> next, std::shared_ptr<EKEventStore> store)
      : ForwardingEventKit(std::move(next)), m_store(std::move(store)) {}
  std::shared_ptr<EKEventStore> eventStoreWithAccessToEntityTypes(unsigned) override { return m_store; }

 private:
  std::shared_ptr<EKEventStore> m_store;
};

/// The older platform over the current one's store in memory, with the calendars "Work" and "Home" and the list
/// "Chores", in a zone at GMT+1. Faults are put into the current platform.
class Legacy : public testing::Test {
 protected:
  Legacy() {
    store->m_calendars.clear();
    workUid = *store->addCalendar("Work")->m_identifier;
    homeUid = *store->addCalendar("Home")->m_identifier;
    store->addCalendar("Chores", EKEntityType::kReminder);
    useStore(store);
    setPlatform(platform);
    g_llasterror = 0;
  }
  ~Legacy() override {
    setPlatform(nullptr);
    g_llasterror = 0;
  }

  static Date at(int month, int day, int hour, int minute = 0) {
    using namespace std::chrono;
    return sys_days{year{2026} / month / day} + hours{hour} + minutes{minute};
  }

  void useStore(std::shared_ptr<EKEventStore> other) {
    platform->m_eventKit = std::make_shared<EventKitOf>(kit, std::move(other));
    framework = makeCalFramework(*platform, fakes::fakeNow);
    platform->m_calFramework = framework;
  }

  /// The code that `call` leaves.
  template <class Call>
  static std::int64_t codeOf(Call call) {
    g_llasterror = 0;
    call();
    return g_llasterror;
  }

  std::string addEvent(std::string_view calendar, std::string_view title, Date start, Date end) {
    return *store->addEvent(calendar, title, start, end)->m_eventIdentifier;
  }
  std::string addTask(std::string_view list, std::string_view title, std::optional<Date> due = std::nullopt,
                      std::optional<Date> completed = std::nullopt) {
    const auto task = store->addReminder(list, title);
    TaskFace(task, {*platform, fakes::fakeNow}).setDueDate(due);
    task->m_completionDate = completed;
    return *task->m_itemIdentifier;
  }
  std::string openEvent() {
    const auto uid = addEvent("Work", "Review", at(11, 3, 9), at(11, 3, 10));
    EXPECT_EQ(backend.openEventWithUID(uid, std::nullopt), 0);
    return uid;
  }
  std::string openTask() {
    const auto uid = addTask("Chores", "Tidy");
    EXPECT_EQ(backend.openTaskWithUID(uid), 0);
    return uid;
  }

  // What stands behind the current objects.
  std::shared_ptr<fakes::FakeEvent> event() {
    return std::dynamic_pointer_cast<fakes::FakeEvent>(behind<EventFace>(backend.m_event));
  }
  std::shared_ptr<fakes::FakeReminder> task() {
    return std::dynamic_pointer_cast<fakes::FakeReminder>(behind<TaskFace>(backend.m_task));
  }
  std::shared_ptr<EKAlarm> openedAlarm() { return behind<AlarmFace>(backend.m_alarm); }

  template <class Seam>
  std::shared_ptr<fakes::FakeAlarm> addAlarmTo(fakes::FakeItem<Seam>& item) {
    auto alarm = std::make_shared<fakes::FakeAlarm>();
    item.m_alarms.push_back(alarm);
    return alarm;
  }
  std::shared_ptr<CalAttendee> somebody() {
    const auto review = std::make_shared<fakes::FakeEvent>();
    review->m_attendees.emplace(1, std::make_shared<fakes::FakeParticipant>());
    return EventFace(review, {*platform, fakes::fakeNow}).attendees()->front();
  }

  OptionalText eventAttribute(const OptionalText& name) { return backend.getEventAttribute(name, 1, std::nullopt); }
  OptionalText taskAttribute(const OptionalText& name) { return backend.getTaskAttribute(name, 1, std::nullopt); }
  OptionalText calendarAttribute(const OptionalText& name) {
    return backend.getCalendarAttribute(name, 1, std::nullopt);
  }
  OptionalText alarmAttribute(const OptionalText& name) { return backend.getAlarmAttribute(name, 1, std::nullopt); }
  OptionalText attendeeAttribute(const OptionalText& name) {
    return backend.getAttendeeAttribute(name, 1, std::nullopt);
  }

  std::shared_ptr<fakes::FakeEventKit> kit = std::make_shared<fakes::FakeEventKit>();
  std::shared_ptr<fakes::FakeEventStore> store = kit->m_store;
  std::shared_ptr<fakes::FakePlatform> platform = std::make_shared<fakes::FakePlatform>();
  std::shared_ptr<CalFramework> framework;
  std::string workUid, homeUid;
  LegacyBackEnd backend;
};

/// What the platform throws in tests.
inline Exception broken() { return {"NSGenericException", "The store is gone."}; }

}  // namespace orlocal
