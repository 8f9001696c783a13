#include "platform/linux/store_fixture.h"

namespace orlocal {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class EventKitFetch : public StoreFixture {
 protected:
  std::shared_ptr<const EKPredicate> november() {
    return ek().predicateForEvents(moment("2026-11-01 00:00:00 +0100"), moment("2026-12-01 00:00:00 +0100"),
                                   eventCalendars());
  }
};

TEST_F(EventKitFetch, MakesAStoreWithOneCalendarAndOneList) {
  ASSERT_EQ(eventCalendars().size(), 1U);
  EXPECT_EQ(eventCalendars()[0]->title(), "Calendar");
  ASSERT_EQ(reminderLists().size(), 1U);
  EXPECT_EQ(reminderLists()[0]->title(), "Reminders");
}

TEST_F(EventKitFetch, TouchesNoFileBeforeSomethingIsAskedFor) {
  ekStore();
  EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(EventKitFetch, TriesAgainOnceTheStoreCanBeOpened) {
  std::filesystem::create_directory(file);
  EXPECT_THAT(eventCalendars(), IsEmpty());
  std::filesystem::remove(file);
  EXPECT_EQ(eventCalendars().size(), 1U);
}

TEST_F(EventKitFetch, AnswersOccurrencesInTheOrderOfTheirStarts) {
  put(eventAt("late", 2026, 11, 3, 12));
  put(eventAt("early", 2026, 11, 3, 9));
  put(eventAt("outside", 2026, 12, 3, 9));
  EXPECT_THAT(titlesBetween(moment("2026-11-01 00:00:00 +0100"), moment("2026-12-01 00:00:00 +0100")),
              ElementsAre("early", "late"));
}

TEST_F(EventKitFetch, MakesNoPredicateOfARangeThatEndsBeforeItStarts) {
  EXPECT_EQ(ek().predicateForEvents(moment("2026-11-02 00:00:00 +0000"), moment("2026-11-01 00:00:00 +0000"),
                                    eventCalendars()),
            nullptr);
}

TEST_F(EventKitFetch, AnswersAnEmptyRangeWithNothing) {
  put(eventAt("at nine", 2026, 11, 3, 9));
  EXPECT_THAT(titlesBetween(moment("2026-11-03 00:00:00 +0100"), moment("2026-11-03 00:00:00 +0100")), IsEmpty());
}

TEST_F(EventKitFetch, KeepsTheAnswerOfAPredicateUntilTheStoreChanges) {
  put(eventAt("first", 2026, 11, 3, 9));
  const auto predicate = november();
  const auto answer = ek().eventsMatchingPredicate(predicate);
  EXPECT_EQ(ek().eventsMatchingPredicate(predicate), answer);
  put(eventAt("second", 2026, 11, 4, 9));
  const auto after = ek().eventsMatchingPredicate(predicate);
  EXPECT_NE(after, answer);
  EXPECT_EQ(after->count(), 2U);
  EXPECT_EQ(answer->count(), 1U);
}

TEST_F(EventKitFetch, ThrowsBeyondTheLastEvent) {
  put(eventAt("only", 2026, 11, 3, 9));
  const auto found = ek().eventsMatchingPredicate(november());
  EXPECT_THROW(found->objectAtIndex(1), Exception);
}

TEST_F(EventKitFetch, GivesTheSameEventsInAnyOrderOfAsking) {
  for (int day = 1; day <= 28; ++day) {
    put(eventAt("morning " + std::to_string(day), 2026, 11, day, 9));
    put(eventAt("evening " + std::to_string(day), 2026, 11, day, 18));
  }
  const auto found = ek().eventsMatchingPredicate(november());
  ASSERT_EQ(found->count(), 56U);
  for (const std::size_t i : {0U, 1U, 2U, 40U, 41U, 55U, 3U, 20U, 21U, 17U}) {
    EXPECT_EQ(found->objectAtIndex(i)->title(), (i % 2 == 0 ? "morning " : "evening ") + std::to_string(i / 2 + 1));
  }
}

TEST_F(EventKitFetch, GivesNoEventThatHasGoneMeanwhile) {
  put(eventAt("only", 2026, 11, 3, 9));
  const auto found = ek().eventsMatchingPredicate(november());
  const auto other = otherStore();
  store::Calendar second;
  second.title = "Second";
  second.source = other->sources().value().front().id;
  ASSERT_TRUE(other->saveCalendar(second));
  ASSERT_TRUE(other->removeCalendar(*eventCalendars()[0]->calendarIdentifier()));
  EXPECT_EQ(found->objectAtIndex(0), nullptr);
}

TEST_F(EventKitFetch, AsksForEverythingWithTheDistantPastAndFuture) {
  put(eventAt("long ago", 1901, 1, 1, 9));
  put(eventAt("far away", 2901, 1, 1, 9));
  EXPECT_THAT(titlesBetween(distantPast(), distantFuture()), ElementsAre("long ago", "far away"));
}

TEST_F(EventKitFetch, OpensTheFirstOccurrenceOfASeriesByItsIdentifier) {
  store::Item series = eventAt("weekly", 2026, 11, 3, 9);
  series.recurrence.rules = {weekly()};
  const auto stored = put(std::move(series));
  const auto event = ek().eventWithIdentifier(stored.identifier);
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(event->startDate(), moment("2026-11-03 09:00:00 +0100"));
  EXPECT_EQ(event->eventIdentifier(), stored.identifier);
}

TEST_F(EventKitFetch, OpensTheFirstOccurrenceEvenWhenItWasChanged) {
  store::Item series = eventAt("weekly", 2026, 11, 3, 9);
  series.recurrence.rules = {weekly()};
  store::Item changed = eventAt("moved", 2026, 11, 3, 15);
  changed.recurrenceId = series.start;
  const auto stored = put(std::move(series), {changed});
  const auto event = ek().eventWithIdentifier(stored.identifier);
  ASSERT_NE(event, nullptr);
  EXPECT_EQ(event->title(), "moved");
  EXPECT_EQ(event->startDate(), moment("2026-11-03 15:00:00 +0100"));
}

TEST_F(EventKitFetch, FindsNothingUnderAnUnknownIdentifier) {
  EXPECT_EQ(ek().eventWithIdentifier("nowhere"), nullptr);
  EXPECT_EQ(ek().eventWithIdentifier(""), nullptr);
  EXPECT_EQ(ek().calendarItemWithIdentifier("nowhere"), nullptr);
  EXPECT_EQ(ek().calendarWithIdentifier("nowhere"), nullptr);
}

TEST_F(EventKitFetch, FindsEventsAndRemindersByTheirOwnIdentifiers) {
  const auto event = put(eventAt("event", 2026, 11, 3, 9));
  const auto task = put(reminder("task"));
  EXPECT_NE(std::dynamic_pointer_cast<EKEvent>(ek().calendarItemWithIdentifier(event.itemIdentifier)), nullptr);
  EXPECT_NE(std::dynamic_pointer_cast<EKReminder>(ek().calendarItemWithIdentifier(task.itemIdentifier)), nullptr);
}

TEST_F(EventKitFetch, DoesNotOpenAReminderAsAnEvent) {
  EXPECT_EQ(ek().eventWithIdentifier(put(reminder("task")).itemIdentifier), nullptr);
}

TEST_F(EventKitFetch, DeliversNoRemindersWithoutAPredicate) {
  bool called = false;
  ek().fetchRemindersMatchingPredicate(nullptr, [&called](const auto& found) {
    called = true;
    EXPECT_EQ(found, nullptr);
  });
  EXPECT_TRUE(called);
}

TEST_F(EventKitFetch, DeliversRemindersByStatus) {
  put(reminder("open"));
  store::Item done = reminder("done");
  done.completed = moment("2026-10-01 10:00:00 +0000");
  put(std::move(done));
  EXPECT_THAT(reminderTitles(ek().predicateForRemindersInCalendars(reminderLists())),
              testing::UnorderedElementsAre("open", "done"));
  EXPECT_THAT(reminderTitles(ek().predicateForIncompleteReminders({}, {}, reminderLists())), ElementsAre("open"));
  EXPECT_THAT(
      reminderTitles(ek().predicateForCompletedReminders(moment("2026-10-01 10:00:00 +0000"), {}, reminderLists())),
      ElementsAre("done"));
  EXPECT_THAT(
      reminderTitles(ek().predicateForCompletedReminders(moment("2026-10-01 10:00:01 +0000"), {}, reminderLists())),
      IsEmpty());
}

TEST_F(EventKitFetch, DeliversOpenRemindersThatAreDueBeforeAMoment) {
  store::Item due = reminder("due at nine");
  due.due = zoned(store::LocalTime(2026, 11, 3, 9));
  put(std::move(due));
  const auto dueBefore = [&](const char* text) {
    return reminderTitles(ek().predicateForIncompleteReminders({}, moment(text), reminderLists()));
  };
  EXPECT_THAT(dueBefore("2026-11-03 09:00:01 +0100"), ElementsAre("due at nine"));
  EXPECT_THAT(dueBefore("2026-11-03 09:00:00 +0100"), IsEmpty());
}

}  // namespace
}  // namespace orlocal
