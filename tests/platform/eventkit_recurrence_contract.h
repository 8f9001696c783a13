#pragma once

#include "platform/eventkit_contract.h"

// What series, their occurrences and their rules promise.

namespace orlocal::contract {

// Series

TEST_P(EventKitContract, GivesEachOccurrenceOfASeries) {
  const auto identifier = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  EXPECT_THAT(startsOf(identifier), testing::ElementsAre(at(11, 2, 9), at(11, 3, 9), at(11, 4, 9)));
}

TEST_P(EventKitContract, OpensTheFirstOccurrenceOfASeriesByItsIdentifier) {
  const auto identifier = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  const auto event = store->eventWithIdentifier(identifier);
  EXPECT_EQ(event->startDate(), at(11, 2, 9));
  EXPECT_EQ(event->occurrenceDate(), at(11, 2, 9));
}

TEST_P(EventKitContract, OpensTheOccurrenceOfADate) {
  const auto identifier = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  const auto second = store->occurrenceOfEvent(identifier, at(11, 3, 9));
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(second->startDate(), at(11, 3, 9));
  EXPECT_EQ(second->endDate(), at(11, 3, 10));
  EXPECT_EQ(second->eventIdentifier(), identifier);
  EXPECT_EQ(store->occurrenceOfEvent(identifier, at(11, 3, 10)), nullptr);
  EXPECT_EQ(store->occurrenceOfEvent(identifier, at(11, 5, 9)), nullptr);
  EXPECT_EQ(store->occurrenceOfEvent("nowhere", at(11, 3, 9)), nullptr);
}

TEST_P(EventKitContract, FindsAMovedOccurrenceWhereTheRulePutIt) {
  const auto identifier = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  const auto second = store->occurrenceOfEvent(identifier, at(11, 3, 9));
  ASSERT_NE(second, nullptr);
  second->setStartDate(at(11, 20, 15));
  second->setEndDate(at(11, 20, 16));
  save(second, EKSpan::kThisEvent);
  const auto moved = store->occurrenceOfEvent(identifier, at(11, 3, 9));
  ASSERT_NE(moved, nullptr);
  EXPECT_EQ(moved->startDate(), at(11, 20, 15));
  EXPECT_EQ(moved->occurrenceDate(), at(11, 3, 9));
  EXPECT_TRUE(moved->isDetached());
  EXPECT_EQ(store->occurrenceOfEvent(identifier, at(11, 20, 15)), nullptr);
  EXPECT_THAT(startsOf(identifier), testing::ElementsAre(at(11, 2, 9), at(11, 4, 9), at(11, 20, 15)));
}

TEST_P(EventKitContract, RemovesThisTheLaterOrAllOccurrences) {
  const auto identifier = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 5);
  const auto remove = [&](Date occurrence, EKSpan span) {
    EXPECT_TRUE(store->removeEvent(store->occurrenceOfEvent(identifier, occurrence), span, true, error));
  };
  remove(at(11, 3, 9), EKSpan::kThisEvent);
  EXPECT_THAT(startsOf(identifier), testing::ElementsAre(at(11, 2, 9), at(11, 4, 9), at(11, 5, 9), at(11, 6, 9)));
  remove(at(11, 5, 9), EKSpan::kFutureEvents);
  EXPECT_THAT(startsOf(identifier), testing::ElementsAre(at(11, 2, 9), at(11, 4, 9)));
  remove(at(11, 4, 9), EKSpan::kAllEvents);
  EXPECT_EQ(store->eventWithIdentifier(identifier), nullptr);
}

TEST_P(EventKitContract, SavingAllOfASeriesFromALaterOccurrenceMovesAndRenamesTheEarlierToo) {
  const auto identifier = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  const auto second = store->occurrenceOfEvent(identifier, at(11, 3, 9));
  ASSERT_NE(second, nullptr);
  second->setTitle("Changed");
  second->setStartDate(at(11, 3, 11));
  second->setEndDate(at(11, 3, 12));
  save(second, EKSpan::kAllEvents);
  EXPECT_THAT(titlesBetween(at(11, 1, 0), at(11, 30, 0)), testing::ElementsAre("Changed", "Changed", "Changed"));
  EXPECT_THAT(startsOf(identifier), testing::ElementsAre(at(11, 2, 11), at(11, 3, 11), at(11, 4, 11)));
}

TEST_P(EventKitContract, AnswersTheSamePredicateWithWhatTheStoreHoldsNow) {
  const auto predicate = store->predicateForEvents(at(11, 1, 0), at(12, 1, 0), {calendar()});
  EXPECT_THAT(titles(predicate), testing::IsEmpty());
  const auto identifier = addEvent("Review", at(11, 3, 9), at(11, 3, 10));
  EXPECT_THAT(titles(predicate), testing::ElementsAre("Review"));
  ASSERT_TRUE(store->removeEvent(store->eventWithIdentifier(identifier), EKSpan::kThisEvent, true, error));
  EXPECT_THAT(titles(predicate), testing::IsEmpty());
}

TEST_P(EventKitContract, KeepsTheLengthOfAResultWhileTheStoreChanges) {
  addEvent("first", at(11, 3, 9), at(11, 3, 10));
  const auto identifier = addEvent("second", at(11, 4, 9), at(11, 4, 10));
  const auto events =
      store->eventsMatchingPredicate(store->predicateForEvents(at(11, 1, 0), at(12, 1, 0), {calendar()}));
  ASSERT_TRUE(store->removeEvent(store->eventWithIdentifier(identifier), EKSpan::kThisEvent, true, error));
  ASSERT_EQ(events->count(), 2u);
  EXPECT_EQ(events->objectAtIndex(0)->title(), "first");
}

// Recurrence rules

TEST_P(EventKitContract, KeepsARule) {
  EKRecurrenceRuleParts parts;
  parts.frequency = EKRecurrenceFrequency::kWeekly;
  parts.interval = 2;
  parts.daysOfTheWeek.emplace({kit().dayOfWeek(2, 0), kit().dayOfWeek(6, 0)});
  parts.end = kit().recurrenceEndWithOccurrenceCount(6);
  const auto made = kit().recurrenceRule(parts);
  ASSERT_NE(made.rule, nullptr) << made.refusal.value_or(Error{}).localizedDescription;
  auto event = newEvent("Practice", at(11, 2, 17), at(11, 2, 18));
  event->addRecurrenceRule(made.rule);
  const auto opened = store->eventWithIdentifier(save(event));
  ASSERT_TRUE(opened->recurrenceRules().has_value());
  ASSERT_EQ(opened->recurrenceRules()->size(), 1u);
  const auto rule = opened->recurrenceRules()->front();
  EXPECT_EQ(rule->frequency(), static_cast<int>(EKRecurrenceFrequency::kWeekly));
  EXPECT_EQ(rule->interval(), 2);
  ASSERT_EQ(rule->daysOfTheWeek().size(), 2u);
  EXPECT_EQ(rule->daysOfTheWeek()[0]->dayOfTheWeek(), 2);
  EXPECT_EQ(rule->daysOfTheWeek()[1]->dayOfTheWeek(), 6);
  EXPECT_EQ(rule->daysOfTheWeek()[0]->weekNumber(), 0);
  EXPECT_THAT(rule->daysOfTheMonth(), testing::IsEmpty());
  EXPECT_THAT(rule->monthsOfTheYear(), testing::IsEmpty());
  ASSERT_NE(rule->recurrenceEnd(), nullptr);
  EXPECT_EQ(rule->recurrenceEnd()->occurrenceCount(), 6);
  EXPECT_EQ(rule->recurrenceEnd()->endDate(), std::nullopt);
}

TEST_P(EventKitContract, KeepsDaysMonthsAndTheEndDateOfARule) {
  EKRecurrenceRuleParts parts;
  parts.frequency = EKRecurrenceFrequency::kYearly;
  parts.daysOfTheMonth = {1, 15};
  parts.monthsOfTheYear = {1, 6};
  parts.end = kit().recurrenceEndWithEndDate(at(12, 31, 22));
  const auto made = kit().recurrenceRule(parts);
  ASSERT_NE(made.rule, nullptr) << made.refusal.value_or(Error{}).localizedDescription;
  EXPECT_THAT(made.rule->daysOfTheMonth(), testing::ElementsAre(1, 15));
  EXPECT_THAT(made.rule->monthsOfTheYear(), testing::ElementsAre(1, 6));
  EXPECT_EQ(made.rule->recurrenceEnd()->endDate(), at(12, 31, 22));
  EXPECT_EQ(made.rule->recurrenceEnd()->occurrenceCount(), 0);
}

TEST_P(EventKitContract, TakesRulesAway) {
  auto event = newEvent("Practice", at(11, 2, 17), at(11, 2, 18));
  EKRecurrenceRuleParts parts;
  parts.end = kit().recurrenceEndWithOccurrenceCount(3);
  event->addRecurrenceRule(kit().recurrenceRule(parts).rule);
  const auto identifier = save(event);
  event = store->eventWithIdentifier(identifier);
  event->removeRecurrenceRule(event->recurrenceRules()->front());
  event->setRecurrenceRules(std::nullopt);
  EXPECT_FALSE(event->recurrenceRules().has_value());
  save(event, EKSpan::kFutureEvents);
  EXPECT_FALSE(store->eventWithIdentifier(identifier)->recurrenceRules().has_value());
}

TEST_P(EventKitContract, RefusesRulesThatCannotBe) {
  const auto refusalOf = [&](EKRecurrenceFrequency frequency, std::vector<long> days, std::vector<long> months) {
    EKRecurrenceRuleParts parts;
    parts.frequency = frequency;
    if (!days.empty()) { parts.daysOfTheMonth = days; }
    if (!months.empty()) { parts.monthsOfTheYear = months; }
    const auto made = kit().recurrenceRule(parts);
    return made.rule == nullptr && made.refusal.has_value();
  };
  EXPECT_TRUE(refusalOf(EKRecurrenceFrequency::kMonthly, {0}, {}));
  EXPECT_TRUE(refusalOf(EKRecurrenceFrequency::kMonthly, {32}, {}));
  EXPECT_TRUE(refusalOf(EKRecurrenceFrequency::kMonthly, {-32}, {}));
  EXPECT_FALSE(refusalOf(EKRecurrenceFrequency::kMonthly, {-31, 31}, {}));
  EXPECT_TRUE(refusalOf(EKRecurrenceFrequency::kYearly, {}, {0}));
  EXPECT_TRUE(refusalOf(EKRecurrenceFrequency::kYearly, {}, {13}));
  EXPECT_FALSE(refusalOf(EKRecurrenceFrequency::kYearly, {}, {1, 12}));
  EXPECT_TRUE(refusalOf(EKRecurrenceFrequency::kWeekly, {15}, {}));
}

TEST_P(EventKitContract, MakesNoDayOutsideTheWeek) {
  EXPECT_EQ(kit().dayOfWeek(0, 0), nullptr);
  EXPECT_EQ(kit().dayOfWeek(8, 0), nullptr);
  ASSERT_NE(kit().dayOfWeek(7, 0), nullptr);
  EXPECT_EQ(kit().dayOfWeek(7, 0)->dayOfTheWeek(), 7);
  EXPECT_EQ(kit().dayOfWeek(7, 0)->weekNumber(), 0);
}

TEST_P(EventKitContract, MakesTheNthDayOfItsMonthOrYear) {
  ASSERT_NE(kit().dayOfWeek(3, -1), nullptr);
  EXPECT_EQ(kit().dayOfWeek(3, -1)->weekNumber(), -1);
  EXPECT_EQ(kit().dayOfWeek(3, 53)->weekNumber(), 53);
  EXPECT_EQ(kit().dayOfWeek(3, 54), nullptr);
  EXPECT_EQ(kit().dayOfWeek(3, -54), nullptr);
}

}  // namespace orlocal::contract
