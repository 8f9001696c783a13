#pragma once

#include "platform/cal_contract.h"

// What repeating events and their rules promise.

namespace orlocal::contract {

// Repeating events

TEST_P(CalContract, ADailyEventIsFoundOnEachOfItsDays) {
  const auto uid = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  EXPECT_THAT(startsOf(uid), testing::ElementsAre(at(11, 2, 9), at(11, 3, 9), at(11, 4, 9)));
}

TEST_P(CalContract, AUidAloneOpensTheFirstOccurrence) {
  const auto uid = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  const auto event = store()->eventWithUID(uid, std::nullopt);
  ASSERT_TRUE(event);
  EXPECT_EQ(event->startDate(), at(11, 2, 9));
  EXPECT_EQ(event->occurrence(), at(11, 2, 9));
}

TEST_P(CalContract, AnOccurrenceDateOpensThatOccurrence) {
  const auto uid = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  const auto event = store()->eventWithUID(uid, at(11, 3, 9));
  ASSERT_TRUE(event);
  EXPECT_EQ(event->startDate(), at(11, 3, 9));
  EXPECT_EQ(event->occurrence(), at(11, 3, 9));
}

TEST_P(CalContract, AnOccurrenceThatTheSeriesDoesNotHaveIsNotFound) {
  const auto uid = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  EXPECT_EQ(store()->eventWithUID(uid, at(11, 3, 10)), nullptr);
  EXPECT_EQ(store()->eventWithUID(uid, at(11, 9, 9)), nullptr);
}

TEST_P(CalContract, GivesBackTheRuleOfASavedEvent) {
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

TEST_P(CalContract, AnEventWithoutARuleDoesNotRepeat) {
  const auto uid = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  const auto event = store()->eventWithUID(uid, std::nullopt);
  event->setRecurrenceRule(nullptr);
  ASSERT_TRUE(store()->saveEvent(event, CalSpan::kAllEvents, error)) << error->localizedDescription;
  EXPECT_THAT(startsOf(uid), testing::ElementsAre(at(11, 2, 9)));
  EXPECT_EQ(store()->eventWithUID(uid, std::nullopt)->recurrenceRule(), nullptr);
}

TEST_P(CalContract, RemovingThisOccurrenceLeavesTheOthers) {
  const auto uid = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  ASSERT_TRUE(store()->removeEvent(store()->eventWithUID(uid, at(11, 3, 9)), CalSpan::kThisEvent, error));
  EXPECT_THAT(startsOf(uid), testing::ElementsAre(at(11, 2, 9), at(11, 4, 9)));
}

TEST_P(CalContract, RemovingFutureOccurrencesKeepsThePast) {
  const auto uid = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  ASSERT_TRUE(store()->removeEvent(store()->eventWithUID(uid, at(11, 3, 9)), CalSpan::kFutureEvents, error));
  EXPECT_THAT(startsOf(uid), testing::ElementsAre(at(11, 2, 9)));
}

TEST_P(CalContract, RemovingAllOccurrencesFromOneOfThemRemovesThePastToo) {
  const auto uid = addDailyEvent("Stand-up", at(11, 2, 9), at(11, 2, 10), 3);
  ASSERT_TRUE(store()->removeEvent(store()->eventWithUID(uid, at(11, 3, 9)), CalSpan::kAllEvents, error));
  EXPECT_EQ(store()->eventWithUID(uid, std::nullopt), nullptr);
}

// Rules

TEST_P(CalContract, EveryMakerOfRulesMakesItsKind) {
  auto& make = framework();
  EXPECT_EQ(make.initDailyRecurrenceWithInterval(1, nullptr)->recurrenceType(), 0);
  EXPECT_EQ(make.initWeeklyRecurrenceWithInterval(1, nullptr)->recurrenceType(), 1);
  EXPECT_EQ(make.initMonthlyRecurrenceWithInterval(1, nullptr)->recurrenceType(), 2);
  EXPECT_EQ(make.initYearlyRecurrenceWithInterval(1, nullptr)->recurrenceType(), 3);
  EXPECT_THAT(make.initWeeklyRecurrenceWithInterval(1, {2, 4}, nullptr)->daysOfTheWeek(), testing::ElementsAre(2, 4));
  EXPECT_THAT(make.initMonthlyRecurrenceWithInterval(1, {1, 15, -1}, nullptr)->daysOfTheMonth(),
              testing::ElementsAre(1, 15, -1));
  EXPECT_THAT(make.initYearlyRecurrenceWithInterval(1, {1, 6}, nullptr)->monthsOfTheYear(), testing::ElementsAre(1, 6));
}

TEST_P(CalContract, AnNthWeekdayIsNoDayOfTheWeek) {
  const auto monthly = framework().initMonthlyRecurrenceWithInterval(1, 3, 2, nullptr);
  ASSERT_TRUE(monthly);
  ASSERT_EQ(monthly->nthWeekDaysOfTheMonth().size(), 1U);
  EXPECT_EQ(monthly->nthWeekDaysOfTheMonth()[0]->weekNumber(), 2);
  EXPECT_EQ(monthly->nthWeekDaysOfTheMonth()[0]->dayOfTheWeek(), 3);
  EXPECT_THAT(monthly->daysOfTheWeek(), testing::IsEmpty());
  const auto yearly = framework().initYearlyRecurrenceWithInterval(1, 6, -1, {11}, nullptr);
  ASSERT_TRUE(yearly);
  EXPECT_EQ(yearly->nthWeekDaysOfTheMonth()[0]->weekNumber(), -1);
  EXPECT_THAT(yearly->monthsOfTheYear(), testing::ElementsAre(11));
}

TEST_P(CalContract, RulesThatCannotBeAreNotMade) {
  auto& make = framework();
  EXPECT_EQ(make.initDailyRecurrenceWithInterval(0, nullptr), nullptr);
  EXPECT_EQ(make.initWeeklyRecurrenceWithInterval(-1, nullptr), nullptr);
  EXPECT_EQ(make.initWeeklyRecurrenceWithInterval(1, CalFramework::Numbers{8}, nullptr), nullptr);
  EXPECT_EQ(make.initWeeklyRecurrenceWithInterval(1, CalFramework::Numbers{}, nullptr), nullptr);
  EXPECT_EQ(make.initMonthlyRecurrenceWithInterval(1, CalFramework::Numbers{32}, nullptr), nullptr);
  EXPECT_EQ(make.initMonthlyRecurrenceWithInterval(1, CalFramework::Numbers{0}, nullptr), nullptr);
  EXPECT_EQ(make.initMonthlyRecurrenceWithInterval(1, 2, 0, nullptr), nullptr);
  EXPECT_EQ(make.initMonthlyRecurrenceWithInterval(1, 8, 1, nullptr), nullptr);
  EXPECT_EQ(make.initYearlyRecurrenceWithInterval(1, CalFramework::Numbers{13}, nullptr), nullptr);
}

TEST_P(CalContract, AnEndIsADateOrACount) {
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

TEST_P(CalContract, ARuleWithoutAnEndGoesOn) {
  EXPECT_EQ(framework().initDailyRecurrenceWithInterval(1, nullptr)->recurrenceEnd(), nullptr);
}

}  // namespace orlocal::contract
