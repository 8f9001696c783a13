#include "backend/legacy/legacy_fixture.h"
#include "backend/legacy/recurrence_choice.h"

namespace orlocal {
namespace {

using Numbers = std::vector<long>;

class LegacyRecurrence : public Legacy {
 protected:
  std::int32_t add(const OptionalText& frequency, int interval = 1, std::optional<Date> endDate = std::nullopt,
                   int endCount = 0) {
    return backend.addRecurrence(frequency, interval, std::nullopt, std::nullopt, 0, 0, std::nullopt, endDate,
                                 endCount);
  }
  OptionalText rule(const OptionalText& name, const OptionalText& end = std::nullopt) {
    return backend.getEventRecurrenceRuleAttribute(name, end);
  }
  /// Opens an event with a rule for the test to fill.
  std::shared_ptr<fakes::FakeRecurrenceRule> openRepeatingEvent() {
    openEvent();
    auto own = std::make_shared<fakes::FakeRecurrenceRule>();
    event()->m_rules = {{own}};
    return own;
  }
  std::shared_ptr<CalRecurrenceRule> eventsRule() { return backend.m_event->recurrenceRule(); }
};

// Adding

TEST_F(LegacyRecurrence, EveryFrequencyWordMakesADailyRule) {
  openEvent();
  for (const char* word : {"daily", "Weekly", "MONTHLY", "yearly"}) {
    event()->m_rules.reset();
    EXPECT_EQ(add(word, 3), 0);
    ASSERT_TRUE(eventsRule()) << word;
    EXPECT_EQ(eventsRule()->recurrenceType(), 0) << word;
    EXPECT_EQ(eventsRule()->recurrenceInterval(), 3) << word;
  }
}

TEST_F(LegacyRecurrence, DaysWeeksAndMonthsHaveNoEffect) {
  struct Day : EKRecurrenceDayOfWeek {
    long dayOfTheWeek() const override { return 2; }
    long weekNumber() const override { return 0; }
  };
  openEvent();
  const iCalFunctions::DaysOfTheWeek days{std::make_shared<Day>()};
  EXPECT_EQ(backend.addRecurrence("weekly", 2, days, Numbers{1, 15}, 3, 2, Numbers{6}, std::nullopt, 0), 0);
  const auto made = eventsRule();
  ASSERT_TRUE(made);
  EXPECT_EQ(made->recurrenceType(), 0);
  EXPECT_EQ(made->recurrenceInterval(), 2);
  EXPECT_TRUE(made->daysOfTheWeek().empty());
  EXPECT_TRUE(made->daysOfTheMonth().empty());
  EXPECT_TRUE(made->nthWeekDaysOfTheMonth().empty());
  EXPECT_TRUE(made->monthsOfTheYear().empty());
}

TEST_F(LegacyRecurrence, AnEndDateWinsOverACount) {
  openEvent();
  EXPECT_EQ(add("daily", 1, at(11, 30, 0), 5), 0);
  const auto end = eventsRule()->recurrenceEnd();
  ASSERT_TRUE(end);
  EXPECT_EQ(end->endDate(), at(11, 30, 0));
}

TEST_F(LegacyRecurrence, ACountOfOneOrMoreEndsTheRule) {
  openEvent();
  EXPECT_EQ(add("daily", 1, std::nullopt, 1), 0);
  EXPECT_EQ(eventsRule()->recurrenceEnd()->occurrenceCount(), 1);
}

TEST_F(LegacyRecurrence, OtherCountsLeaveTheRuleWithoutAnEnd) {
  openEvent();
  for (const int count : {0, -3}) {
    EXPECT_EQ(add("daily", 1, std::nullopt, count), 0);
    EXPECT_EQ(eventsRule()->recurrenceEnd(), nullptr);
  }
}

TEST_F(LegacyRecurrence, ANewRuleTakesThePlaceOfTheOldAndDoesNotBecomeCurrent) {
  openRepeatingEvent();
  EXPECT_EQ(add("daily", 7), 0);
  EXPECT_EQ(eventsRule()->recurrenceInterval(), 7);
  EXPECT_EQ(backend.m_recurrencerule, nullptr);
  EXPECT_EQ(backend.m_recurrenceend, nullptr);
}

TEST_F(LegacyRecurrence, AnotherFrequencyWordGives9006EvenWithoutAnEvent) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(add("hourly"), -1); }), 9006);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(add(std::nullopt), -1); }), 9006);
}

TEST_F(LegacyRecurrence, AddingWithoutAnEventGives9000) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(add("daily"), -1); }), 9000);
}

TEST_F(LegacyRecurrence, ARuleThatThePlatformDoesNotMakeGives9011) {
  openEvent();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(add("daily", 0), -1); }), 9011);
  EXPECT_EQ(eventsRule(), nullptr);
}

TEST_F(LegacyRecurrence, AnEndThatThePlatformDoesNotMakeGives9010) {
  struct Endless : fakes::ForwardingEventKit {
    using ForwardingEventKit::ForwardingEventKit;
    std::shared_ptr<EKRecurrenceEnd> recurrenceEndWithEndDate(Date) override { return nullptr; }
    std::shared_ptr<EKRecurrenceEnd> recurrenceEndWithOccurrenceCount(int) override { return nullptr; }
  };
  openEvent();
  platform->m_eventKit = std::make_shared<Endless>(kit);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(add("daily", 1, at(11, 30, 0)), -1); }), 9010);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(add("daily", 1, std::nullopt, 5), -1); }), 9010);
}

// The choice of the rule's kind

TEST_F(LegacyRecurrence, TheKindWordChoosesTheRule) {
  const auto typeOf = [&](std::string_view kind) { return makeRecurrenceRule(*framework, kind, {})->recurrenceType(); };
  EXPECT_EQ(typeOf("weekly"), 1);
  EXPECT_EQ(typeOf("monthly"), 2);
  EXPECT_EQ(typeOf("yearly"), 3);
  EXPECT_EQ(typeOf("daily"), 0);
  EXPECT_EQ(typeOf(""), 0);
}

TEST_F(LegacyRecurrence, EachKindTakesTheListsThatAreItsOwn) {
  RecurrenceWishes wishes;
  wishes.daysOfTheWeek = Numbers{2, 4};
  wishes.daysOfTheMonth = Numbers{1, 15};
  wishes.monthsOfTheYear = Numbers{6};
  EXPECT_THAT(makeRecurrenceRule(*framework, "weekly", wishes)->daysOfTheWeek(), testing::ElementsAre(2, 4));
  EXPECT_THAT(makeRecurrenceRule(*framework, "monthly", wishes)->daysOfTheMonth(), testing::ElementsAre(1, 15));
  EXPECT_THAT(makeRecurrenceRule(*framework, "yearly", wishes)->monthsOfTheYear(), testing::ElementsAre(6));
}

TEST_F(LegacyRecurrence, AnNthWeekdayComesBeforeTheLists) {
  RecurrenceWishes wishes;
  wishes.daysOfTheMonth = Numbers{1};
  wishes.monthsOfTheYear = Numbers{6};
  wishes.dayOfTheWeek = 3;
  wishes.weekOfTheMonth = -1;
  const auto monthly = makeRecurrenceRule(*framework, "monthly", wishes);
  EXPECT_TRUE(monthly->daysOfTheMonth().empty());
  EXPECT_EQ(monthly->nthWeekDaysOfTheMonth()[0]->weekNumber(), -1);
  const auto yearly = makeRecurrenceRule(*framework, "yearly", wishes);
  EXPECT_EQ(yearly->nthWeekDaysOfTheMonth()[0]->dayOfTheWeek(), 3);
  EXPECT_THAT(yearly->monthsOfTheYear(), testing::ElementsAre(6));
}

TEST_F(LegacyRecurrence, AnNthWeekdayOfTheYearNeedsMonths) {
  RecurrenceWishes wishes;
  wishes.dayOfTheWeek = 3;
  wishes.weekOfTheMonth = 2;
  EXPECT_TRUE(makeRecurrenceRule(*framework, "yearly", wishes)->nthWeekDaysOfTheMonth().empty());
}

TEST_F(LegacyRecurrence, AWeekBelowMinusOneIsNoNthWeekday) {
  RecurrenceWishes wishes;
  wishes.daysOfTheMonth = Numbers{1};
  wishes.dayOfTheWeek = 3;
  wishes.weekOfTheMonth = -2;
  const auto made = makeRecurrenceRule(*framework, "monthly", wishes);
  ASSERT_TRUE(made);
  EXPECT_THAT(made->daysOfTheMonth(), testing::ElementsAre(1));
}

// Removing

TEST_F(LegacyRecurrence, RemovingTakesTheRuleAway) {
  openRepeatingEvent();
  EXPECT_EQ(backend.removeRecurrence(), 0);
  EXPECT_EQ(eventsRule(), nullptr);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeRecurrence(), 0); }), 0);
}

TEST_F(LegacyRecurrence, RemovingWithoutAnEventGives9008) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(backend.removeRecurrence(), -1); }), 9008);
}

// Reading

TEST_F(LegacyRecurrence, EveryTypeReadsAsItsWordAndOthersAsEmptyText) {
  const auto own = openRepeatingEvent();
  const std::pair<int, const char*> types[] = {{0, "daily"}, {1, "weekly"}, {2, "monthly"}, {3, "yearly"}, {4, ""}};
  for (const auto& [number, word] : types) {
    own->m_frequency = number;
    EXPECT_EQ(rule("RecurrenceType"), word);
  }
}

TEST_F(LegacyRecurrence, ReadsNumbers) {
  const auto own = openRepeatingEvent();
  own->m_interval = 14;
  own->m_firstDayOfTheWeek = 2;
  EXPECT_EQ(rule("recurrenceinterval"), "14");
  EXPECT_EQ(rule("firstdayoftheweek"), "2");
}

TEST_F(LegacyRecurrence, ReadsListsWithReturnsBetweenTheItems) {
  const auto own = openRepeatingEvent();
  using Day = fakes::FakeDayOfWeek;
  own->m_daysOfTheWeek = {std::make_shared<Day>(2), std::make_shared<Day>(3, 2), std::make_shared<Day>(6),
                          std::make_shared<Day>(6, -1)};
  own->m_daysOfTheMonth = {1, -1};
  own->m_monthsOfTheYear = {1, 6};
  EXPECT_EQ(rule("daysoftheweek"), "2\r6");
  EXPECT_EQ(rule("daysofthemonth"), "1\r-1");
  EXPECT_EQ(rule("monthsoftheyear"), "1\r6");
  EXPECT_EQ(rule("nthweekdaysofthemonth"), "2,3\r-1,6");
}

TEST_F(LegacyRecurrence, EmptyListsReadAsEmptyText) {
  openRepeatingEvent();
  for (const char* list : {"daysoftheweek", "daysofthemonth", "monthsoftheyear", "nthweekdaysofthemonth"}) {
    EXPECT_EQ(codeOf([&] { EXPECT_EQ(rule(list), "") << list; }), 0);
  }
}

TEST_F(LegacyRecurrence, ARuleWithoutAnEndNeverEndsWhateverIsAsked) {
  openRepeatingEvent();
  EXPECT_EQ(rule("hasend"), "False");
  for (const OptionalText& part : {OptionalText(), OptionalText("enddate"), OptionalText("nonsense")}) {
    EXPECT_EQ(codeOf([&] { EXPECT_EQ(rule("recurrenceend", part), "never"); }), 0);
  }
}

TEST_F(LegacyRecurrence, ReadsAnEndByDate) {
  openRepeatingEvent()->m_end = behind<RecurrenceEndFace>(framework->recurrenceEndWithEndDate(at(11, 30, 12)));
  EXPECT_EQ(rule("hasend"), "True");
  EXPECT_EQ(rule("recurrenceend", "UsesEndDate"), "True");
  EXPECT_EQ(rule("recurrenceend", "enddate"), "2026-11-30 13:00:00 +0100");
  EXPECT_EQ(rule("recurrenceend", "occurrencecount"), "0");
}

TEST_F(LegacyRecurrence, ReadsAnEndByCount) {
  openRepeatingEvent()->m_end = behind<RecurrenceEndFace>(framework->recurrenceEndWithOccurrenceCount(5));
  EXPECT_EQ(rule("recurrenceend", "usesenddate"), "False");
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(rule("recurrenceend", "enddate"), std::nullopt); }), 0);
  EXPECT_EQ(rule("recurrenceend", "OccurrenceCount"), "5");
}

TEST_F(LegacyRecurrence, AnEndWithoutAPartGives9005AndWithAnotherPart9006) {
  openRepeatingEvent()->m_end = behind<RecurrenceEndFace>(framework->recurrenceEndWithOccurrenceCount(5));
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(rule("recurrenceend"), std::nullopt); }), 9005);
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(rule("recurrenceend", "never"), std::nullopt); }), 9006);
}

TEST_F(LegacyRecurrence, AnEventThatDoesNotRepeatReadsAsEmptyOrZero) {
  openEvent();
  EXPECT_EQ(rule("firstdayoftheweek"), "0");
  EXPECT_EQ(rule("recurrenceinterval"), "0");
  EXPECT_EQ(rule("recurrencetype"), "");
  EXPECT_EQ(rule("daysoftheweek"), "");
  EXPECT_EQ(rule("hasend"), "False");
  EXPECT_EQ(rule("recurrenceend"), "never");
}

TEST_F(LegacyRecurrence, AnUnknownPropertyReadsAsNothingWithoutACode) {
  openRepeatingEvent();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(rule("weeksoftheyear"), std::nullopt); }), 0);
}

TEST_F(LegacyRecurrence, ReadingWithoutAnEventGives9000AndWithoutAProperty9005) {
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(rule("hasend"), std::nullopt); }), 9000);
  openRepeatingEvent();
  EXPECT_EQ(codeOf([&] { EXPECT_EQ(rule(std::nullopt), std::nullopt); }), 9005);
}

TEST_F(LegacyRecurrence, TheRuleOnceReadStaysCurrentUntilItemsAreReleased) {
  openRepeatingEvent()->m_interval = 2;
  EXPECT_EQ(rule("recurrenceinterval"), "2");
  add("daily", 9);
  EXPECT_EQ(rule("recurrenceinterval"), "2");
  backend.releaseItems();
  openRepeatingEvent()->m_interval = 4;
  EXPECT_EQ(rule("recurrenceinterval"), "4");
}

}  // namespace
}  // namespace orlocal
