#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/calendar_store.h"

// What every implementation of the older calendar store promises. A test program includes this header once, and
// instantiates `CalendarStoreContract` with its own subject.

namespace orlocal::contract {

/// An empty store but for one calendar that takes events and one that takes tasks (they may be the same).
class CalendarStoreSubject {
 public:
  virtual ~CalendarStoreSubject() = default;
  virtual CalendarStoreFramework& framework() = 0;
  virtual std::shared_ptr<CalCalendar> eventCalendar() = 0;
  virtual std::shared_ptr<CalCalendar> taskCalendar() = 0;
  /// Makes the store refuse changes in the calendar, behind the framework's back.
  virtual void makeReadOnly(const std::string& calendarUid) = 0;
  /// Makes a store that nobody has asked anything yet one that cannot be opened.
  virtual void keepFromOpening() = 0;
  /// The moment that the implementation takes for now.
  virtual Date now() = 0;
};

using MakeSubject = std::unique_ptr<CalendarStoreSubject> (*)();

class CalendarStoreContract : public testing::TestWithParam<MakeSubject> {
 protected:
  static Date at(int month, int day, int hour, int minute = 0) {
    using namespace std::chrono;
    return sys_days{year{2026} / month / day} + hours{hour} + minutes{minute};
  }

  CalendarStoreFramework& framework() { return subject->framework(); }
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
    for (std::size_t i = 0; events && i < events->count(); ++i) titles.push_back(*events->objectAtIndex(i)->title());
    return titles;
  }
  std::vector<std::string> titlesBetween(Date start, Date end) {
    return titlesOf(store()->eventPredicateWithStartDate(start, end, store()->calendars()));
  }
  std::vector<std::string> taskTitlesOf(const std::shared_ptr<const CalPredicate>& predicate) {
    std::vector<std::string> titles;
    const auto tasks = store()->tasksWithPredicate(predicate);
    for (std::size_t i = 0; tasks && i < tasks->count(); ++i) titles.push_back(*tasks->objectAtIndex(i)->title());
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

  std::unique_ptr<CalendarStoreSubject> subject = GetParam()();
  std::optional<Error> error;
};

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// Calendars

TEST_P(CalendarStoreContract, ASavedCalendarIsListedUnderAUidOfItsOwn) {
  auto calendar = framework().calendar();
  calendar->setTitle("Work");
  ASSERT_TRUE(store()->saveCalendar(calendar, error));
  ASSERT_TRUE(calendar->uid());
  const auto found = store()->calendarWithUID(*calendar->uid());
  ASSERT_TRUE(found);
  EXPECT_EQ(found->title(), "Work");
}

TEST_P(CalendarStoreContract, ListsCalendarsOfEventsAndOfTasksTogether) {
  std::vector<std::string> uids;
  for (const auto& calendar : store()->calendars()) uids.push_back(*calendar->uid());
  EXPECT_THAT(uids, testing::IsSupersetOf({*subject->eventCalendar()->uid(), *subject->taskCalendar()->uid()}));
}

TEST_P(CalendarStoreContract, ChangesOfACalendarStayInTheObjectUntilItIsSaved) {
  const auto calendar = subject->eventCalendar();
  calendar->setTitle("Renamed");
  EXPECT_NE(store()->calendarWithUID(*calendar->uid())->title(), "Renamed");
  ASSERT_TRUE(store()->saveCalendar(calendar, error));
  EXPECT_EQ(store()->calendarWithUID(*calendar->uid())->title(), "Renamed");
}

TEST_P(CalendarStoreContract, KeepsACalendarsColorWithComponentsAboveOne) {
  const auto calendar = subject->eventCalendar();
  calendar->setColor(Color::calibratedRgb(300 / 255.0, 0, 0.5));
  ASSERT_TRUE(store()->saveCalendar(calendar, error));
  const auto color = store()->calendarWithUID(*calendar->uid())->color();
  ASSERT_TRUE(color);
  EXPECT_DOUBLE_EQ(color->red, 300 / 255.0);
  EXPECT_DOUBLE_EQ(color->blue, 0.5);
}

TEST_P(CalendarStoreContract, ALocalCalendarSaysSoAndIsEditable) {
  EXPECT_EQ(subject->eventCalendar()->type(), "Local");
  EXPECT_TRUE(subject->eventCalendar()->isEditable());
}

TEST_P(CalendarStoreContract, UnknownUidsFindNothing) {
  EXPECT_EQ(store()->calendarWithUID("nowhere"), nullptr);
  EXPECT_EQ(store()->eventWithUID("nowhere", std::nullopt), nullptr);
  EXPECT_EQ(store()->taskWithUID("nowhere"), nullptr);
  EXPECT_EQ(store()->taskWithUID(""), nullptr);
}

TEST_P(CalendarStoreContract, RemovesACalendarWithItsItems) {
  auto calendar = framework().calendar();
  calendar->setTitle("Short-lived");
  ASSERT_TRUE(store()->saveCalendar(calendar, error));
  auto event = newEvent("Inside", at(11, 3, 9), at(11, 3, 10));
  event->setCalendar(calendar);
  const auto uid = saved(event);
  ASSERT_TRUE(store()->removeCalendar(calendar, error));
  EXPECT_EQ(store()->calendarWithUID(*calendar->uid()), nullptr);
  EXPECT_EQ(store()->eventWithUID(uid, std::nullopt), nullptr);
}

TEST_P(CalendarStoreContract, RefusesToSaveACalendarWithoutATitle) {
  EXPECT_FALSE(store()->saveCalendar(framework().calendar(), error));
  ASSERT_TRUE(error);
  EXPECT_FALSE(error->localizedDescription.empty());
}

// Refusals

TEST_P(CalendarStoreContract, NothingIsRefusedWithAnErrorThatSaysWhy) {
  const auto expectRefused = [this](bool saved) {
    EXPECT_FALSE(saved);
    ASSERT_TRUE(error);
    EXPECT_FALSE(error->localizedDescription.empty());
    EXPECT_FALSE(error->localizedDescription.ends_with('.')) << error->localizedDescription;
    error.reset();
  };
  expectRefused(store()->saveCalendar(nullptr, error));
  expectRefused(store()->saveEvent(nullptr, CalSpan::kThisEvent, error));
  expectRefused(store()->saveTask(nullptr, error));
  expectRefused(store()->removeCalendar(nullptr, error));
  expectRefused(store()->removeEvent(nullptr, CalSpan::kThisEvent, error));
  expectRefused(store()->removeTask(nullptr, error));
}

TEST_P(CalendarStoreContract, RefusesAnEventWithoutCalendarStartOrEnd) {
  auto homeless = newEvent("Homeless", at(11, 3, 9), at(11, 3, 10));
  homeless->setCalendar(nullptr);
  EXPECT_FALSE(store()->saveEvent(homeless, CalSpan::kThisEvent, error));
  auto startless = newEvent("Startless", at(11, 3, 9), at(11, 3, 10));
  startless->setStartDate(std::nullopt);
  EXPECT_FALSE(store()->saveEvent(startless, CalSpan::kThisEvent, error));
  auto endless = newEvent("Endless", at(11, 3, 9), at(11, 3, 10));
  endless->setEndDate(std::nullopt);
  EXPECT_FALSE(store()->saveEvent(endless, CalSpan::kThisEvent, error));
  EXPECT_THAT(titlesBetween(at(11, 1, 0), at(11, 30, 0)), IsEmpty());
}

TEST_P(CalendarStoreContract, RefusesATaskWithoutACalendar) {
  auto task = newTask("Homeless");
  task->setCalendar(nullptr);
  EXPECT_FALSE(store()->saveTask(task, error));
}

TEST_P(CalendarStoreContract, AReadOnlyCalendarTakesNoChanges) {
  const auto uid = addEvent("Fixed", at(11, 3, 9), at(11, 3, 10));
  const auto event = store()->eventWithUID(uid, std::nullopt);
  subject->makeReadOnly(*subject->eventCalendar()->uid());
  event->setTitle("Changed");
  EXPECT_FALSE(store()->saveEvent(event, CalSpan::kThisEvent, error));
  EXPECT_FALSE(store()->removeEvent(event, CalSpan::kThisEvent, error));
  const auto calendar = store()->calendarWithUID(*event->calendar()->uid());
  EXPECT_FALSE(calendar->isEditable());
  EXPECT_FALSE(store()->saveCalendar(calendar, error));
  EXPECT_EQ(store()->eventWithUID(uid, std::nullopt)->title(), "Fixed");
}

// Events

TEST_P(CalendarStoreContract, ChangesOfAnEventStayInTheObjectUntilItIsSaved) {
  const auto uid = addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  const auto event = store()->eventWithUID(uid, std::nullopt);
  event->setTitle("Renamed");
  EXPECT_EQ(store()->eventWithUID(uid, std::nullopt)->title(), "Review");
  ASSERT_TRUE(store()->saveEvent(event, CalSpan::kThisEvent, error));
  EXPECT_EQ(store()->eventWithUID(uid, std::nullopt)->title(), "Renamed");
}

TEST_P(CalendarStoreContract, KeepsEveryPropertyOfAnEvent) {
  auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  event->setNotes("Bring\nnotes");
  event->setUrl("https://example.org/a");
  event->setLocation("Room 1");
  const auto found = store()->eventWithUID(saved(event), std::nullopt);
  EXPECT_EQ(found->notes(), "Bring\nnotes");
  EXPECT_EQ(found->url(), "https://example.org/a");
  EXPECT_EQ(found->location(), "Room 1");
  EXPECT_EQ(found->startDate(), at(11, 3, 9));
  EXPECT_EQ(found->endDate(), at(11, 3, 10));
  EXPECT_FALSE(found->isAllDay());
  EXPECT_FALSE(found->isDetached());
  EXPECT_EQ(found->calendar()->uid(), subject->eventCalendar()->uid());
}

TEST_P(CalendarStoreContract, AnAllDayEventStaysOne) {
  auto event = newEvent("Fair", at(11, 3, 0), at(11, 3, 22));
  event->setIsAllDay(true);
  EXPECT_TRUE(store()->eventWithUID(saved(event), std::nullopt)->isAllDay());
}

TEST_P(CalendarStoreContract, StampsAnItemWhenItIsSaved) {
  const auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  EXPECT_FALSE(event->dateStamp());
  EXPECT_EQ(store()->eventWithUID(saved(event), std::nullopt)->dateStamp(), subject->now());
}

TEST_P(CalendarStoreContract, NobodyIsInvitedToANewEvent) {
  const auto uid = addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  EXPECT_EQ(store()->eventWithUID(uid, std::nullopt)->attendees(), std::nullopt);
}

TEST_P(CalendarStoreContract, RemovesAnEvent) {
  const auto uid = addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  ASSERT_TRUE(store()->removeEvent(store()->eventWithUID(uid, std::nullopt), CalSpan::kThisEvent, error));
  EXPECT_EQ(store()->eventWithUID(uid, std::nullopt), nullptr);
}

// Event queries

TEST_P(CalendarStoreContract, ARangeIsHalfOpenAndTakesInWhatReachesIntoIt) {
  addEvent("Ends at the start", at(11, 2, 9), at(11, 2, 10));
  addEvent("Reaches in", at(11, 2, 9), at(11, 2, 11));
  addEvent("Inside", at(11, 2, 11), at(11, 2, 12));
  addEvent("Starts at the end", at(11, 2, 13), at(11, 2, 14));
  EXPECT_THAT(titlesBetween(at(11, 2, 10), at(11, 2, 13)), ElementsAre("Reaches in", "Inside"));
}

TEST_P(CalendarStoreContract, EventsComeByStartThenEnd) {
  addEvent("Third", at(11, 2, 11), at(11, 2, 12));
  addEvent("Second", at(11, 2, 9), at(11, 2, 11));
  addEvent("First", at(11, 2, 9), at(11, 2, 10));
  EXPECT_THAT(titlesBetween(at(11, 2, 0), at(11, 3, 0)), ElementsAre("First", "Second", "Third"));
}

TEST_P(CalendarStoreContract, AnOpenRangeFindsEveryEvent) {
  addEvent("Long ago", at(1, 2, 9), at(1, 2, 10));
  addEvent("Later", at(12, 2, 9), at(12, 2, 10));
  EXPECT_THAT(titlesBetween(distantPast(), distantFuture()), ElementsAre("Long ago", "Later"));
}

TEST_P(CalendarStoreContract, AQueryStaysInItsCalendars) {
  addEvent("Here", at(11, 2, 9), at(11, 2, 10));
  auto other = framework().calendar();
  other->setTitle("Other");
  ASSERT_TRUE(store()->saveCalendar(other, error));
  auto event = newEvent("There", at(11, 2, 9), at(11, 2, 10));
  event->setCalendar(other);
  saved(event);
  EXPECT_THAT(titlesOf(store()->eventPredicateWithStartDate(at(11, 2, 0), at(11, 3, 0), {other})),
              ElementsAre("There"));
}

TEST_P(CalendarStoreContract, AUidNarrowsAQueryToOneEvent) {
  addEvent("Other", at(11, 2, 9), at(11, 2, 10));
  const auto uid = addEvent("Wanted", at(11, 2, 9), at(11, 2, 10));
  EXPECT_THAT(titlesOf(store()->eventPredicateWithStartDate(at(11, 2, 0), at(11, 3, 0), uid, store()->calendars())),
              ElementsAre("Wanted"));
}

TEST_P(CalendarStoreContract, ARangeThatEndsBeforeItStartsMakesNoPredicate) {
  EXPECT_EQ(store()->eventPredicateWithStartDate(at(11, 3, 0), at(11, 2, 0), store()->calendars()), nullptr);
}

TEST_P(CalendarStoreContract, APredicateFindsWhatWasSavedAfterItWasMade) {
  const auto predicate = store()->eventPredicateWithStartDate(at(11, 2, 0), at(11, 3, 0), store()->calendars());
  EXPECT_THAT(titlesOf(predicate), IsEmpty());
  addEvent("New", at(11, 2, 9), at(11, 2, 10));
  EXPECT_THAT(titlesOf(predicate), ElementsAre("New"));
}

TEST_P(CalendarStoreContract, NoPredicateIsAnsweredWithNothing) {
  EXPECT_EQ(store()->eventsWithPredicate(nullptr), nullptr);
  EXPECT_EQ(store()->tasksWithPredicate(nullptr), nullptr);
}

// Repeating events

TEST_P(CalendarStoreContract, ADailyEventIsFoundOnEachOfItsDays) {
  const auto uid = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  EXPECT_THAT(startsOf(uid), ElementsAre(at(11, 2, 9), at(11, 3, 9), at(11, 4, 9)));
}

TEST_P(CalendarStoreContract, AUidAloneOpensTheFirstOccurrence) {
  const auto uid = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  const auto event = store()->eventWithUID(uid, std::nullopt);
  ASSERT_TRUE(event);
  EXPECT_EQ(event->startDate(), at(11, 2, 9));
  EXPECT_EQ(event->occurrence(), at(11, 2, 9));
}

TEST_P(CalendarStoreContract, AnOccurrenceDateOpensThatOccurrence) {
  const auto uid = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  const auto event = store()->eventWithUID(uid, at(11, 3, 9));
  ASSERT_TRUE(event);
  EXPECT_EQ(event->startDate(), at(11, 3, 9));
  EXPECT_EQ(event->occurrence(), at(11, 3, 9));
}

TEST_P(CalendarStoreContract, AnOccurrenceThatTheSeriesDoesNotHaveIsNotFound) {
  const auto uid = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  EXPECT_EQ(store()->eventWithUID(uid, at(11, 3, 10)), nullptr);
  EXPECT_EQ(store()->eventWithUID(uid, at(11, 9, 9)), nullptr);
}

TEST_P(CalendarStoreContract, GivesBackTheRuleOfASavedEvent) {
  auto event = newEvent("Stand-up", at(11, 2, 9), at(11, 2, 10));
  event->setRecurrenceRule(
      framework().initDailyRecurrenceWithInterval(2, framework().recurrenceEndWithOccurrenceCount(5)));
  const auto rule = store()->eventWithUID(saved(event), std::nullopt)->recurrenceRule();
  ASSERT_TRUE(rule);
  EXPECT_EQ(rule->recurrenceType(), 0);
  EXPECT_EQ(rule->recurrenceInterval(), 2);
  ASSERT_TRUE(rule->recurrenceEnd());
  EXPECT_EQ(rule->recurrenceEnd()->occurrenceCount(), 5);
}

TEST_P(CalendarStoreContract, AnEventWithoutARuleDoesNotRepeat) {
  const auto uid = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  const auto event = store()->eventWithUID(uid, std::nullopt);
  event->setRecurrenceRule(nullptr);
  ASSERT_TRUE(store()->saveEvent(event, CalSpan::kAllEvents, error)) << error->localizedDescription;
  EXPECT_THAT(startsOf(uid), ElementsAre(at(11, 2, 9)));
  EXPECT_EQ(store()->eventWithUID(uid, std::nullopt)->recurrenceRule(), nullptr);
}

TEST_P(CalendarStoreContract, RemovingThisOccurrenceLeavesTheOthers) {
  const auto uid = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  ASSERT_TRUE(store()->removeEvent(store()->eventWithUID(uid, at(11, 3, 9)), CalSpan::kThisEvent, error));
  EXPECT_THAT(startsOf(uid), ElementsAre(at(11, 2, 9), at(11, 4, 9)));
}

TEST_P(CalendarStoreContract, RemovingFutureOccurrencesKeepsThePast) {
  const auto uid = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  ASSERT_TRUE(store()->removeEvent(store()->eventWithUID(uid, at(11, 3, 9)), CalSpan::kFutureEvents, error));
  EXPECT_THAT(startsOf(uid), ElementsAre(at(11, 2, 9)));
}

TEST_P(CalendarStoreContract, RemovingAllOccurrencesFromOneOfThemRemovesThePastToo) {
  const auto uid = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  ASSERT_TRUE(store()->removeEvent(store()->eventWithUID(uid, at(11, 3, 9)), CalSpan::kAllEvents, error));
  EXPECT_EQ(store()->eventWithUID(uid, std::nullopt), nullptr);
}

// Tasks

TEST_P(CalendarStoreContract, KeepsEveryPropertyOfATask) {
  auto task = newTask("Tidy");
  task->setNotes("Desk");
  task->setUrl("https://example.org/b");
  task->setDueDate(at(11, 5, 17));
  task->setPriority(5);
  const auto found = store()->taskWithUID(saved(task));
  ASSERT_TRUE(found);
  EXPECT_EQ(found->title(), "Tidy");
  EXPECT_EQ(found->notes(), "Desk");
  EXPECT_EQ(found->url(), "https://example.org/b");
  EXPECT_EQ(found->dueDate(), at(11, 5, 17));
  EXPECT_EQ(found->priority(), 5);
  EXPECT_FALSE(found->isCompleted());
  EXPECT_FALSE(found->completedDate());
  EXPECT_EQ(found->calendar()->uid(), subject->taskCalendar()->uid());
}

TEST_P(CalendarStoreContract, CompletingATaskDatesItNowAndReopeningClearsTheDate) {
  auto task = newTask("Tidy");
  task->setIsCompleted(true);
  EXPECT_EQ(task->completedDate(), subject->now());
  task->setIsCompleted(false);
  EXPECT_FALSE(task->completedDate());
}

TEST_P(CalendarStoreContract, ACompletionDateCompletesATaskAndNoneReopensIt) {
  auto task = newTask("Tidy");
  task->setCompletedDate(at(10, 1, 12));
  EXPECT_TRUE(task->isCompleted());
  task->setCompletedDate(std::nullopt);
  EXPECT_FALSE(task->isCompleted());
}

TEST_P(CalendarStoreContract, TaskQueriesTellOpenDueAndCompletedTasksApart) {
  saved(newTask("Whenever"));
  auto soon = newTask("Soon");
  soon->setDueDate(at(11, 3, 12));
  saved(soon);
  auto later = newTask("Later");
  later->setDueDate(at(11, 10, 12));
  saved(later);
  auto done = newTask("Done");
  done->setCompletedDate(at(10, 20, 12));
  saved(done);
  const auto all = store()->calendars();
  EXPECT_THAT(taskTitlesOf(store()->taskPredicateWithCalendars(all)),
              UnorderedElementsAre("Whenever", "Soon", "Later", "Done"));
  EXPECT_THAT(taskTitlesOf(store()->taskPredicateWithUncompletedTasks(all)),
              UnorderedElementsAre("Whenever", "Soon", "Later"));
  EXPECT_THAT(taskTitlesOf(store()->taskPredicateWithUncompletedTasksDueBefore(at(11, 10, 12), all)),
              ElementsAre("Soon"));
  EXPECT_THAT(taskTitlesOf(store()->taskPredicateWithTasksCompletedSince(at(10, 20, 12), all)), ElementsAre("Done"));
  EXPECT_THAT(taskTitlesOf(store()->taskPredicateWithTasksCompletedSince(at(10, 20, 13), all)), IsEmpty());
}

TEST_P(CalendarStoreContract, TaskQueriesThatNeedADateAreNotMadeWithoutOne) {
  EXPECT_EQ(store()->taskPredicateWithUncompletedTasksDueBefore(std::nullopt, store()->calendars()), nullptr);
  EXPECT_EQ(store()->taskPredicateWithTasksCompletedSince(std::nullopt, store()->calendars()), nullptr);
}

TEST_P(CalendarStoreContract, RemovesATask) {
  const auto uid = saved(newTask("Tidy"));
  ASSERT_TRUE(store()->removeTask(store()->taskWithUID(uid), error));
  EXPECT_EQ(store()->taskWithUID(uid), nullptr);
}

TEST_P(CalendarStoreContract, AnEventIsNoTaskAndATaskNoEvent) {
  const auto event = addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  const auto task = saved(newTask("Tidy"));
  EXPECT_EQ(store()->taskWithUID(event), nullptr);
  EXPECT_EQ(store()->eventWithUID(task, std::nullopt), nullptr);
}

// Alarms

TEST_P(CalendarStoreContract, ANewAlarmHasNoAction) {
  const auto alarm = framework().alarm();
  EXPECT_FALSE(alarm->action());
  EXPECT_FALSE(alarm->absoluteTrigger());
  EXPECT_EQ(alarm->relativeTrigger(), 0);
}

TEST_P(CalendarStoreContract, AnAlarmIsEitherAbsoluteOrRelative) {
  const auto alarm = framework().alarm();
  alarm->setRelativeTrigger(-900);
  alarm->setAbsoluteTrigger(at(11, 2, 9));
  EXPECT_EQ(alarm->relativeTrigger(), 0);
  EXPECT_EQ(alarm->absoluteTrigger(), at(11, 2, 9));
  alarm->setRelativeTrigger(-60);
  EXPECT_EQ(alarm->relativeTrigger(), -60);
  EXPECT_FALSE(alarm->absoluteTrigger());
}

TEST_P(CalendarStoreContract, KeepsTheActionsOfAlarms) {
  auto event = newEvent("Review", at(11, 3, 9), at(11, 3, 10));
  auto email = framework().alarm();
  email->setAction(std::string(CalAlarmActionEmail));
  email->setEmailAddress("a@example.org");
  email->setRelativeTrigger(-60);
  event->addAlarm(email);
  auto sound = framework().alarm();
  sound->setAction(std::string(CalAlarmActionSound));
  sound->setSound("Basso");
  sound->setRelativeTrigger(-120);
  event->addAlarm(sound);
  auto procedure = framework().alarm();
  procedure->setAction(std::string(CalAlarmActionProcedure));
  procedure->setUrl("file:///bin/true");
  procedure->setAbsoluteTrigger(at(11, 3, 8));
  event->addAlarm(procedure);
  const auto alarms = store()->eventWithUID(saved(event), std::nullopt)->alarms();
  ASSERT_EQ(alarms.size(), 3U);
  EXPECT_EQ(alarms[0]->action(), CalAlarmActionEmail);
  EXPECT_EQ(alarms[0]->emailAddress(), "a@example.org");
  EXPECT_EQ(alarms[0]->relativeTrigger(), -60);
  EXPECT_EQ(alarms[1]->action(), CalAlarmActionSound);
  EXPECT_EQ(alarms[1]->sound(), "Basso");
  EXPECT_EQ(alarms[2]->action(), CalAlarmActionProcedure);
  EXPECT_EQ(alarms[2]->url(), "file:///bin/true");
  EXPECT_EQ(alarms[2]->absoluteTrigger(), at(11, 3, 8));
}

TEST_P(CalendarStoreContract, RemovesOneAlarmOrSeveral) {
  auto task = newTask("Tidy");
  for (const double seconds : {-60.0, -120.0, -180.0}) {
    auto alarm = framework().alarm();
    alarm->setRelativeTrigger(seconds);
    task->addAlarm(alarm);
  }
  task->removeAlarm(task->alarms()[1]);
  ASSERT_EQ(task->alarms().size(), 2U);
  EXPECT_EQ(task->alarms()[0]->relativeTrigger(), -60);
  EXPECT_EQ(task->alarms()[1]->relativeTrigger(), -180);
  EXPECT_TRUE(task->hasAlarm());
  task->removeAlarms(task->alarms());
  EXPECT_FALSE(task->hasAlarm());
}

TEST_P(CalendarStoreContract, AnItemWithoutAlarmsHasNoNextOne) {
  EXPECT_FALSE(newTask("Tidy")->nextAlarmDate());
  EXPECT_FALSE(newTask("Tidy")->hasAlarm());
}

TEST_P(CalendarStoreContract, TheNextAlarmIsTheFirstThatIsStillToCome) {
  auto event = newEvent("Review", subject->now() + std::chrono::hours(1), subject->now() + std::chrono::hours(2));
  for (const double minutes : {-90.0, -10.0, -30.0}) {
    auto alarm = framework().alarm();
    alarm->setRelativeTrigger(minutes * 60);
    event->addAlarm(alarm);
  }
  EXPECT_EQ(event->nextAlarmDate(), subject->now() + std::chrono::minutes(30));
}

// Rules

TEST_P(CalendarStoreContract, EveryMakerOfRulesMakesItsKind) {
  auto& make = framework();
  EXPECT_EQ(make.initDailyRecurrenceWithInterval(1, nullptr)->recurrenceType(), 0);
  EXPECT_EQ(make.initWeeklyRecurrenceWithInterval(1, nullptr)->recurrenceType(), 1);
  EXPECT_EQ(make.initMonthlyRecurrenceWithInterval(1, nullptr)->recurrenceType(), 2);
  EXPECT_EQ(make.initYearlyRecurrenceWithInterval(1, nullptr)->recurrenceType(), 3);
  EXPECT_THAT(make.initWeeklyRecurrenceWithInterval(1, {2, 4}, nullptr)->daysOfTheWeek(), ElementsAre(2, 4));
  EXPECT_THAT(make.initMonthlyRecurrenceWithInterval(1, {1, 15, -1}, nullptr)->daysOfTheMonth(),
              ElementsAre(1, 15, -1));
  EXPECT_THAT(make.initYearlyRecurrenceWithInterval(1, {1, 6}, nullptr)->monthsOfTheYear(), ElementsAre(1, 6));
}

TEST_P(CalendarStoreContract, AnNthWeekdayIsNoDayOfTheWeek) {
  const auto monthly = framework().initMonthlyRecurrenceWithInterval(1, 3, 2, nullptr);
  ASSERT_TRUE(monthly);
  ASSERT_EQ(monthly->nthWeekDaysOfTheMonth().size(), 1U);
  EXPECT_EQ(monthly->nthWeekDaysOfTheMonth()[0]->weekNumber(), 2);
  EXPECT_EQ(monthly->nthWeekDaysOfTheMonth()[0]->dayOfTheWeek(), 3);
  EXPECT_THAT(monthly->daysOfTheWeek(), IsEmpty());
  const auto yearly = framework().initYearlyRecurrenceWithInterval(1, 6, -1, {11}, nullptr);
  ASSERT_TRUE(yearly);
  EXPECT_EQ(yearly->nthWeekDaysOfTheMonth()[0]->weekNumber(), -1);
  EXPECT_THAT(yearly->monthsOfTheYear(), ElementsAre(11));
}

TEST_P(CalendarStoreContract, RulesThatCannotBeAreNotMade) {
  auto& make = framework();
  EXPECT_EQ(make.initDailyRecurrenceWithInterval(0, nullptr), nullptr);
  EXPECT_EQ(make.initWeeklyRecurrenceWithInterval(-1, nullptr), nullptr);
  EXPECT_EQ(make.initWeeklyRecurrenceWithInterval(1, CalendarStoreFramework::Numbers{8}, nullptr), nullptr);
  EXPECT_EQ(make.initWeeklyRecurrenceWithInterval(1, CalendarStoreFramework::Numbers{}, nullptr), nullptr);
  EXPECT_EQ(make.initMonthlyRecurrenceWithInterval(1, CalendarStoreFramework::Numbers{32}, nullptr), nullptr);
  EXPECT_EQ(make.initMonthlyRecurrenceWithInterval(1, CalendarStoreFramework::Numbers{0}, nullptr), nullptr);
  EXPECT_EQ(make.initMonthlyRecurrenceWithInterval(1, 2, 0, nullptr), nullptr);
  EXPECT_EQ(make.initMonthlyRecurrenceWithInterval(1, 8, 1, nullptr), nullptr);
  EXPECT_EQ(make.initYearlyRecurrenceWithInterval(1, CalendarStoreFramework::Numbers{13}, nullptr), nullptr);
}

TEST_P(CalendarStoreContract, AnEndIsADateOrACount) {
  const auto date = framework().recurrenceEndWithEndDate(at(11, 30, 0));
  EXPECT_TRUE(date->usesEndDate());
  EXPECT_EQ(date->endDate(), at(11, 30, 0));
  EXPECT_EQ(date->occurrenceCount(), 0);
  const auto count = framework().recurrenceEndWithOccurrenceCount(4);
  EXPECT_FALSE(count->usesEndDate());
  EXPECT_FALSE(count->endDate());
  EXPECT_EQ(count->occurrenceCount(), 4);
  EXPECT_EQ(framework().recurrenceEndWithOccurrenceCount(0), nullptr);
}

TEST_P(CalendarStoreContract, ARuleWithoutAnEndGoesOn) {
  EXPECT_EQ(framework().initDailyRecurrenceWithInterval(1, nullptr)->recurrenceEnd(), nullptr);
}

TEST_P(CalendarStoreContract, AStoreThatCannotBeOpenedHasNothing) {
  subject->keepFromOpening();
  ASSERT_NE(store(), nullptr);
  EXPECT_THAT(store()->calendars(), IsEmpty());
  EXPECT_EQ(store()->calendarWithUID("calendar"), nullptr);
  EXPECT_EQ(store()->eventWithUID("event", std::nullopt), nullptr);
  EXPECT_EQ(store()->eventWithUID("event", at(11, 2, 9)), nullptr);
  EXPECT_EQ(store()->taskWithUID("task"), nullptr);
}

TEST_P(CalendarStoreContract, AStoreThatCannotBeOpenedMakesNoPredicate) {
  subject->keepFromOpening();
  EXPECT_EQ(store()->eventPredicateWithStartDate(distantPast(), distantFuture(), {}), nullptr);
  EXPECT_EQ(store()->eventPredicateWithStartDate(distantPast(), distantFuture(), "event", {}), nullptr);
  EXPECT_EQ(store()->taskPredicateWithCalendars({}), nullptr);
  EXPECT_EQ(store()->taskPredicateWithUncompletedTasks({}), nullptr);
  EXPECT_EQ(store()->taskPredicateWithUncompletedTasksDueBefore(at(11, 2, 9), {}), nullptr);
  EXPECT_EQ(store()->taskPredicateWithTasksCompletedSince(at(11, 2, 9), {}), nullptr);
}

TEST_P(CalendarStoreContract, AStoreThatCannotBeOpenedRefusesSavesAndRemovals) {
  subject->keepFromOpening();
  const auto refused = [&](bool done) {
    EXPECT_FALSE(done);
    EXPECT_FALSE(error.value_or(Error()).localizedDescription.empty());
    error.reset();
  };
  const auto calendar = framework().calendar();
  calendar->setTitle("Work");
  refused(store()->saveCalendar(calendar, error));
  refused(store()->removeCalendar(calendar, error));
  const auto event = newEvent("Review", at(11, 2, 9), at(11, 2, 10));
  refused(store()->saveEvent(event, CalSpan::kThisEvent, error));
  refused(store()->removeEvent(event, CalSpan::kAllEvents, error));
  const auto task = newTask("Water the plants");
  refused(store()->saveTask(task, error));
  refused(store()->removeTask(task, error));
}

}  // namespace orlocal::contract
