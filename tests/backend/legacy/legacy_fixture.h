#pragma once

#include <chrono>
#include <memory>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "backend/error_codes.h"
#include "backend/legacy/ical_functions.h"
#include "fakes/fake_calendar_store.h"
#include "fakes/fake_clock.h"
#include "fakes/fake_platform.h"
#include "fakes/forwarding_calendar_store.h"
#include "platform/exception.h"

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

/// The calendars "Work" and "Home" in a store in memory, in a zone at GMT+1.
class Legacy : public testing::Test {
 protected:
  Legacy() {
    workUid = store->addCalendar("Work");
    homeUid = store->addCalendar("Home");
    platform->m_calendarStore = framework;
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

  void useStore(std::shared_ptr<CalCalendarStore> other) { framework->m_store = std::move(other); }

  /// The code that `call` leaves.
  template <class Call>
  static std::int64_t codeOf(Call call) {
    g_llasterror = 0;
    call();
    return g_llasterror;
  }

  std::string openEvent() {
    const auto uid = store->addEvent("Work", "Review", at(11, 3, 9), at(11, 3, 10));
    EXPECT_EQ(backend.openEventWithUID(uid, std::nullopt), 0);
    return uid;
  }
  std::string openTask() {
    const auto uid = store->addTask("Work", "Tidy");
    EXPECT_EQ(backend.openTaskWithUID(uid), 0);
    return uid;
  }
  std::shared_ptr<fakes::FakeCalEvent> event() {
    return std::dynamic_pointer_cast<fakes::FakeCalEvent>(backend.m_event);
  }
  std::shared_ptr<fakes::FakeCalTask> task() { return std::dynamic_pointer_cast<fakes::FakeCalTask>(backend.m_task); }
  std::shared_ptr<fakes::FakeCalAlarm> addAlarmTo(CalCalendarItem& item) {
    auto alarm = std::make_shared<fakes::FakeCalAlarm>();
    item.addAlarm(alarm);
    return alarm;
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

  std::shared_ptr<fakes::FakeCalendarStore> store = std::make_shared<fakes::FakeCalendarStore>();
  std::shared_ptr<fakes::FakeCalendarStoreFramework> framework =
      std::make_shared<fakes::FakeCalendarStoreFramework>(store);
  std::shared_ptr<fakes::FakePlatform> platform = std::make_shared<fakes::FakePlatform>();
  std::string workUid, homeUid;
  LegacyBackEnd backend;
};

/// What the platform throws in tests.
inline Exception broken() { return {"NSGenericException", "The store is gone."}; }

}  // namespace orlocal
