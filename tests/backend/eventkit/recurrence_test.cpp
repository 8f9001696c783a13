#include "backend_fixture.h"

namespace orlocal {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Recurrence : public BackendTest {
 protected:
  std::int32_t add(const OptionalText& type, std::int32_t interval, std::optional<Date> endDate = std::nullopt,
                   std::int32_t endCount = 0) {
    return backend.addRecurrence(type, interval, std::nullopt, std::nullopt, 0, std::nullopt, endDate, endCount);
  }
  OptionalText get(const OptionalText& property, const OptionalText& end = std::nullopt) {
    return backend.getEventRecurrenceRuleAttribute(property, end);
  }
  /// An open event with one rule.
  std::shared_ptr<fakes::FakeRecurrenceRule> openRule() {
    auto rule = std::make_shared<fakes::FakeRecurrenceRule>();
    openNewEvent()->m_rules = {rule};
    return rule;
  }
  static std::shared_ptr<EKRecurrenceDayOfWeek> day(long number, long week = 0) {
    return std::make_shared<fakes::FakeDayOfWeek>(number, week);
  }
};

/// Notes the parts of the last rule.
class NotingKit : public fakes::ForwardingEventKit {
 public:
  using ForwardingEventKit::ForwardingEventKit;
  EKRecurrenceRuleMade recurrenceRule(const EKRecurrenceRuleParts& parts) override {
    m_parts = parts;
    return m_next->recurrenceRule(parts);
  }
  EKRecurrenceRuleParts m_parts;
};

// Adding

TEST_F(Recurrence, IsAddedToTheOpenEventWithoutBecomingCurrent) {
  const auto event = openNewEvent();
  expectDone(add("Weekly", 2));
  ASSERT_TRUE(event->m_rules.has_value());
  ASSERT_EQ(event->m_rules->size(), 1u);
  EXPECT_EQ(event->m_rules->front()->frequency(), 1);
  EXPECT_EQ(event->m_rules->front()->interval(), 2);
  EXPECT_EQ(backend.m_ekRecurrenceRule, nullptr);
}

TEST_F(Recurrence, IsAddedBesideAnotherRule) {
  const auto event = openNewEvent();
  add("daily", 1);
  expectDone(add("yearly", 1));
  EXPECT_EQ(event->m_rules->size(), 2u);
}

TEST_F(Recurrence, HasFourTypes) {
  const auto event = openNewEvent();
  const char* const types[] = {"daily", "WEEKLY", "Monthly", "yearly"};
  for (int i = 0; i < 4; ++i) {
    event->m_rules.reset();
    expectDone(add(types[i], 1));
    EXPECT_EQ(event->m_rules->front()->frequency(), i);
  }
}

TEST_F(Recurrence, ReportsTypeThenIntervalThenEvent) {
  for (const OptionalText& type : {OptionalText(), OptionalText("fortnightly"), OptionalText("")}) {
    expectFailed(add(type, 0), kInvalidRecurrenceType);
  }
  expectFailed(add("weekly", 0), kRecurrenceIntervalRequired);
  expectFailed(add("weekly", -1), kRecurrenceIntervalRequired);
  expectFailed(add("weekly", 1), kNoEventToAddRecurrence);
}

TEST_F(Recurrence, PassesItsPartsOn) {
  openNewEvent();
  const auto noting = std::make_shared<NotingKit>(kit);
  platform->m_eventKit = noting;
  const std::vector<std::shared_ptr<EKRecurrenceDayOfWeek>> days = {day(2), day(6)};
  expectDone(
      backend.addRecurrence("monthly", 3, days, std::vector<long>{1, 15}, 4, std::vector<long>{1, 6}, std::nullopt, 7));
  EXPECT_EQ(noting->m_parts.frequency, EKRecurrenceFrequency::kMonthly);
  EXPECT_EQ(noting->m_parts.interval, 3);
  EXPECT_EQ(noting->m_parts.daysOfTheWeek, days);
  EXPECT_EQ(noting->m_parts.daysOfTheMonth, (std::vector<long>{1, 15}));
  EXPECT_EQ(noting->m_parts.monthsOfTheYear, (std::vector<long>{1, 6}));
  EXPECT_EQ(noting->m_parts.weeksOfTheYear, std::nullopt);
  EXPECT_EQ(noting->m_parts.daysOfTheYear, std::nullopt);
  EXPECT_EQ(noting->m_parts.setPositions, std::nullopt);
  ASSERT_NE(noting->m_parts.end, nullptr);
  EXPECT_EQ(noting->m_parts.end->occurrenceCount(), 7);
}

TEST_F(Recurrence, LeavesAbsentListsAbsent) {
  openNewEvent();
  const auto noting = std::make_shared<NotingKit>(kit);
  platform->m_eventKit = noting;
  expectDone(add("daily", 1));
  EXPECT_EQ(noting->m_parts.daysOfTheWeek, std::nullopt);
  EXPECT_EQ(noting->m_parts.daysOfTheMonth, std::nullopt);
  EXPECT_EQ(noting->m_parts.monthsOfTheYear, std::nullopt);
  EXPECT_EQ(noting->m_parts.end, nullptr);
}

TEST_F(Recurrence, EndsAtTheDateWhenDateAndCountAreGiven) {
  const auto event = openNewEvent();
  expectDone(add("daily", 1, at(12, 31, 22), 99));
  const auto end = event->m_rules->front()->recurrenceEnd();
  ASSERT_NE(end, nullptr);
  EXPECT_EQ(end->endDate(), at(12, 31, 22));
  EXPECT_EQ(end->occurrenceCount(), 0);
}

TEST_F(Recurrence, HasNoEndWithACountBelowOne) {
  const auto event = openNewEvent();
  for (const std::int32_t count : {0, -1}) {
    event->m_rules.reset();
    expectDone(add("daily", 1, std::nullopt, count));
    EXPECT_EQ(event->m_rules->front()->recurrenceEnd(), nullptr);
  }
  event->m_rules.reset();
  expectDone(add("daily", 1, std::nullopt, 1));
  EXPECT_EQ(event->m_rules->front()->recurrenceEnd()->occurrenceCount(), 1);
}

TEST_F(Recurrence, ReportsAnEndThatIsNotMade) {
  class EndlessKit : public fakes::ForwardingEventKit {
   public:
    using ForwardingEventKit::ForwardingEventKit;
    std::shared_ptr<EKRecurrenceEnd> recurrenceEndWithEndDate(Date) override { return nullptr; }
    std::shared_ptr<EKRecurrenceEnd> recurrenceEndWithOccurrenceCount(int) override { return nullptr; }
  };
  platform->m_eventKit = std::make_shared<EndlessKit>(kit);
  const auto event = openNewEvent();
  expectFailed(add("daily", 1, at(12, 31, 22)), kRecurrenceEndNotCreated);
  expectFailed(add("daily", 1, std::nullopt, 3), kRecurrenceEndNotCreated);
  EXPECT_EQ(event->m_rules, std::nullopt);
  expectDone(add("daily", 1));
}

TEST_F(Recurrence, ReportsARefusedRule) {
  const auto event = openNewEvent();
  expectFailed(
      backend.addRecurrence("weekly", 1, std::nullopt, std::vector<long>{15}, 0, std::nullopt, std::nullopt, 0),
      kInvalidRecurrenceParameters);
  EXPECT_EQ(event->m_rules, std::nullopt);
}

TEST_F(Recurrence, ReportsARuleThatIsNotMade) {
  class RulelessKit : public fakes::ForwardingEventKit {
   public:
    using ForwardingEventKit::ForwardingEventKit;
    EKRecurrenceRuleMade recurrenceRule(const EKRecurrenceRuleParts&) override { return {}; }
  };
  platform->m_eventKit = std::make_shared<RulelessKit>(kit);
  openNewEvent();
  expectFailed(add("daily", 1), kRecurrenceRuleNotCreated);
}

// Removing

TEST_F(Recurrence, IsRemovedFromTheOpenEvent) {
  openRule();
  expectDone(backend.removeRecurrence());
  EXPECT_EQ(backend.m_ekEvent->recurrenceRules(), std::nullopt);
}

/// Notes how its rules are removed.
class EventThatLosesRules : public fakes::FakeEvent {
 public:
  void removeRecurrenceRule(const std::shared_ptr<EKRecurrenceRule>& rule) override {
    m_removed.push_back(rule);
    FakeEvent::removeRecurrenceRule(rule);
  }
  void setRecurrenceRules(std::optional<std::vector<std::shared_ptr<EKRecurrenceRule>>> rules) override {
    m_setAfterRemovals = m_removed.size();
    FakeEvent::setRecurrenceRules(std::move(rules));
  }
  std::vector<std::shared_ptr<EKRecurrenceRule>> m_removed;
  std::size_t m_setAfterRemovals = 99;
};

TEST_F(Recurrence, IsRemovedFirstRuleFirstAndThenAltogether) {
  const auto event = std::make_shared<EventThatLosesRules>();
  const auto first = std::make_shared<fakes::FakeRecurrenceRule>();
  event->m_rules = {first, std::make_shared<fakes::FakeRecurrenceRule>()};
  backend.m_ekEvent = event;
  expectDone(backend.removeRecurrence());
  EXPECT_THAT(event->m_removed, ElementsAre(first));
  EXPECT_EQ(event->m_setAfterRemovals, 1u);
  EXPECT_EQ(event->m_rules, std::nullopt);
}

TEST_F(Recurrence, IsRemovedWhereThereIsNone) {
  openNewEvent();
  expectDone(backend.removeRecurrence());
}

TEST_F(Recurrence, IsRemovedWhereTheListOfRulesIsEmpty) {
  const auto event = std::make_shared<EventThatLosesRules>();
  event->m_rules.emplace();
  backend.m_ekEvent = event;
  expectDone(backend.removeRecurrence());
  EXPECT_THAT(event->m_removed, IsEmpty());
  EXPECT_EQ(event->m_rules, std::nullopt);
}

TEST_F(Recurrence, IsNotRemovedWithoutAnOpenEvent) {
  expectFailed(backend.removeRecurrence(), kNoEventToRemoveRecurrence);
}

// Reading

TEST_F(Recurrence, IsNotReadWithoutAnOpenEvent) {
  expectNone(get("recurrencetype"), kNoEventToGetRecurrenceProperty);
  expectNone(get(std::nullopt), kNoEventToGetRecurrenceProperty);
}

TEST_F(Recurrence, WantsAPropertyToRead) {
  openRule();
  expectNone(get(std::nullopt), kPropertyRequired);
}

TEST_F(Recurrence, MakesTheFirstRuleCurrentWhenItIsRead) {
  const auto first = openRule();
  first->m_interval = 2;
  expectText(get("RecurrenceInterval"), "2");
  EXPECT_EQ(backend.m_ekRecurrenceRule, first);
}

TEST_F(Recurrence, StaysCurrentThoughTheEventChanges) {
  openRule()->m_interval = 2;
  get("recurrenceinterval");
  openRule()->m_interval = 3;
  expectText(get("recurrenceinterval"), "2");
  backend.releaseItems();
  openRule()->m_interval = 3;
  expectText(get("recurrenceinterval"), "3");
}

TEST_F(Recurrence, ReadsItsNumbers) {
  const auto rule = openRule();
  rule->m_firstDayOfTheWeek = 2;
  rule->m_interval = 4;
  expectText(get("firstdayoftheweek"), "2");
  expectText(get("recurrenceinterval"), "4");
}

TEST_F(Recurrence, ReadsItsType) {
  const auto rule = openRule();
  const char* const words[] = {"daily", "weekly", "monthly", "yearly", ""};
  for (rule->m_frequency = 0; rule->m_frequency < 5; ++rule->m_frequency) {
    expectText(get("recurrencetype"), words[rule->m_frequency]);
  }
}

TEST_F(Recurrence, ReadsDaysOfTheWeek) {
  const auto rule = openRule();
  expectNone(get("daysoftheweek"));
  rule->m_daysOfTheWeek = {day(2), day(6)};
  expectText(get("daysoftheweek"), "2\r6");
}

TEST_F(Recurrence, ReadsDaysOfTheMonth) {
  const auto rule = openRule();
  expectNone(get("daysofthemonth"));
  rule->m_daysOfTheMonth = {1, 15, -1};
  expectText(get("daysofthemonth"), "1\r15\r-1");
}

TEST_F(Recurrence, ReadsMonths) {
  const auto rule = openRule();
  expectText(get("monthsoftheyear"), "");
  rule->m_monthsOfTheYear = {1, 6};
  expectText(get("monthsoftheyear"), "1\r6");
}

TEST_F(Recurrence, EndsEachNthWeekdayWithAReturnWhenThereAreNoDaysOfTheMonth) {
  const auto rule = openRule();
  expectNone(get("nthweekdaysofthemonth"));
  rule->m_daysOfTheWeek = {day(3, 2)};
  expectText(get("nthweekdaysofthemonth"), "2,3\r");
  rule->m_daysOfTheWeek = {day(3, 2), day(6, -1)};
  expectText(get("nthweekdaysofthemonth"), "2,3\r-1,6\r");
}

TEST_F(Recurrence, SeparatesNthWeekdaysByTheNumberOfDaysOfTheMonth) {
  const auto rule = openRule();
  rule->m_daysOfTheWeek = {day(3, 2), day(6, -1), day(7)};
  rule->m_daysOfTheMonth = {1};
  expectText(get("nthweekdaysofthemonth"), "2,3-1,60,7");
  rule->m_daysOfTheMonth = {1, 2};
  expectText(get("nthweekdaysofthemonth"), "2,3\r-1,60,7");
  rule->m_daysOfTheMonth = {1, 2, 3, 4, 5};
  expectText(get("nthweekdaysofthemonth"), "2,3\r-1,6\r0,7\r");
}

TEST_F(Recurrence, DoesNotReadWeeksOfTheYear) {
  openRule();
  expectNone(get("weeksoftheyear"), kWeeksOfTheYearNotSupported);
}

TEST_F(Recurrence, ReportsAPropertyThatItDoesNotHave) {
  openRule();
  for (const char* property : {"nonsense", "", "setpositions"}) { expectNone(get(property), kInvalidProperty); }
}

TEST_F(Recurrence, WithoutAnEndNeverEnds) {
  openRule();
  expectText(get("hasend"), "False");
  for (const OptionalText& part : {OptionalText(), OptionalText("usesenddate"), OptionalText("nonsense")}) {
    expectText(get("recurrenceend", part), "never");
  }
}

TEST_F(Recurrence, ReadsAnEndByDate) {
  const auto end = std::make_shared<fakes::FakeRecurrenceEnd>();
  end->m_endDate = at(12, 31, 22);
  openRule()->m_end = end;
  expectText(get("hasend"), "True");
  expectText(get("RecurrenceEnd", "UsesEndDate"), "True");
  expectText(get("recurrenceend", "occurrencecount"), "0");
  expectText(get("recurrenceend", "EndDate"), "2026-12-31 23:00:00 +0100");
}

TEST_F(Recurrence, ReadsAnEndByCount) {
  const auto end = std::make_shared<fakes::FakeRecurrenceEnd>();
  end->m_count = 6;
  openRule()->m_end = end;
  expectText(get("hasend"), "True");
  expectText(get("recurrenceend", "usesenddate"), "False");
  expectText(get("recurrenceend", "OccurrenceCount"), "6");
  expectNone(get("recurrenceend", "enddate"));
}

TEST_F(Recurrence, WantsToKnowWhatOfItsEnd) {
  openRule()->m_end = std::make_shared<fakes::FakeRecurrenceEnd>();
  expectNone(get("recurrenceend"), kMissingArgument);
  for (const char* part : {"nonsense", "", "occurencecount"}) {
    expectNone(get("recurrenceend", part), kInvalidArgument);
  }
}

TEST_F(Recurrence, OfAnEventWithoutRulesReadsEmptyOrZero) {
  for (const bool emptyList : {false, true}) {
    const auto event = openNewEvent();
    if (emptyList) { event->m_rules.emplace(); }
    expectText(get("firstdayoftheweek"), "0");
    expectText(get("recurrenceinterval"), "0");
    expectText(get("recurrencetype"), "");
    expectText(get("hasend"), "False");
    expectText(get("monthsoftheyear"), "");
    expectNone(get("recurrenceend", "enddate"));
    expectNone(get("daysoftheweek"));
    expectNone(get("daysofthemonth"));
    expectNone(get("nthweekdaysofthemonth"));
    expectNone(get("weeksoftheyear"), kWeeksOfTheYearNotSupported);
    expectNone(get("nonsense"), kInvalidProperty);
    EXPECT_EQ(backend.m_ekRecurrenceRule, nullptr);
  }
}

TEST_F(Recurrence, IsLookedForAgainAfterAnEventWithoutRules) {
  openNewEvent();
  get("recurrenceinterval");
  openRule()->m_interval = 3;
  expectText(get("recurrenceinterval"), "3");
}

}  // namespace
}  // namespace orlocal
