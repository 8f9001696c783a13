#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/cal_framework.h"

// What every implementation of the older calendar framework promises stands in the headers beside this one, each about
// one subject (`cal_*_contract.h`). A test program includes each of them once, in one source, and instantiates
// `CalContract` there with its own subject.

namespace orlocal::contract {

/// An empty store but for one calendar that takes events and one that takes tasks (they may be the same).
class CalSubject {
 public:
  virtual ~CalSubject() = default;
  virtual CalFramework& framework() = 0;
  virtual std::shared_ptr<CalCalendar> eventCalendar() = 0;
  virtual std::shared_ptr<CalCalendar> taskCalendar() = 0;
  /// Makes the store refuse changes in the calendar, behind the framework's back.
  virtual void makeReadOnly(const std::string& calendarUid) = 0;
  /// Makes a store that nobody has asked anything yet one that cannot be opened.
  virtual void keepFromOpening() = 0;
  /// The moment that the implementation takes for now.
  virtual Date now() = 0;
};

using MakeSubject = std::unique_ptr<CalSubject> (*)();

class CalContract : public testing::TestWithParam<MakeSubject> {
 protected:
  static Date at(int month, int day, int hour, int minute = 0) {
    using namespace std::chrono;
    return sys_days{year{2026} / month / day} + hours{hour} + minutes{minute};
  }

  CalFramework& framework() { return subject->framework(); }
  std::shared_ptr<CalCalendarStore> store() { return framework().defaultCalendarStore(); }

  std::shared_ptr<CalEvent> newEvent(const std::string& title, Date start, Date end) {
    auto event = framework().event();
    event->setCalendar(subject->eventCalendar());
    event->setTitle(title);
    event->setStartDate(start);
    event->setEndDate(end);
    return event;
  }
  std::string saved(const std::shared_ptr<CalEvent>& event) {
    EXPECT_TRUE(store()->saveEvent(event, CalSpan::kThisEvent, error)) << error->localizedDescription;
    return event->uid().value_or("");
  }
  std::string addEvent(const std::string& title, Date start, Date end) { return saved(newEvent(title, start, end)); }
  std::string addDailyEvent(const std::string& title, Date start, Date end, int times) {
    auto event = newEvent(title, start, end);
    event->setRecurrenceRule(
        framework().initDailyRecurrenceWithInterval(1, framework().recurrenceEndWithOccurrenceCount(times)));
    return saved(event);
  }
  std::shared_ptr<CalTask> newTask(const std::string& title) {
    auto task = framework().task();
    task->setCalendar(subject->taskCalendar());
    task->setTitle(title);
    return task;
  }
  std::string saved(const std::shared_ptr<CalTask>& task) {
    EXPECT_TRUE(store()->saveTask(task, error)) << error->localizedDescription;
    return task->uid().value_or("");
  }

  std::vector<std::string> titlesOf(const std::shared_ptr<const CalPredicate>& predicate) {
    std::vector<std::string> titles;
    const auto events = store()->eventsWithPredicate(predicate);
    for (std::size_t i = 0; events && i < events->count(); ++i) {
      titles.push_back(*events->objectAtIndex(i)->title());
    }
    return titles;
  }
  std::vector<std::string> titlesBetween(Date start, Date end) {
    return titlesOf(store()->eventPredicateWithStartDate(start, end, store()->calendars()));
  }
  std::vector<std::string> taskTitlesOf(const std::shared_ptr<const CalPredicate>& predicate) {
    std::vector<std::string> titles;
    const auto tasks = store()->tasksWithPredicate(predicate);
    for (std::size_t i = 0; tasks && i < tasks->count(); ++i) { titles.push_back(*tasks->objectAtIndex(i)->title()); }
    return titles;
  }
  std::vector<Date> startsOf(const std::string& uid) {
    std::vector<Date> starts;
    const auto events = store()->eventsWithPredicate(
        store()->eventPredicateWithStartDate(at(1, 1, 0), at(12, 31, 0), uid, store()->calendars()));
    for (std::size_t i = 0; events && i < events->count(); ++i) {
      starts.push_back(*events->objectAtIndex(i)->startDate());
    }
    return starts;
  }

  std::unique_ptr<CalSubject> subject = GetParam()();
  std::optional<Error> error;
};

}  // namespace orlocal::contract
