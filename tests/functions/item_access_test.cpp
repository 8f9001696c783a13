#include "functions/functions_fixture.h"

namespace orlocal {
namespace {

/// A keyword, and what each back end is told; an empty message means none, with the result and reason given.
struct KeywordCase {
  const char* type;
  std::string eventKit;
  std::string legacy;
  std::string legacyResult = kWorked;
  std::string legacyError = "text Success";
};

class OpenItemAt : public FunctionTest {};

TEST_F(OpenItemAt, SendsTheMessageOfTheKeyword) {
  const KeywordCase cases[] = {
      {"calendar", "openCalendarAt(3)", "openCalendarAt(3)"},
      {"reminderlist", "openReminderListAt(3)", ""},
      {"event", "openEventAt(3)", "openEventAt(3)"},
      {"task", "openReminderAt(3)", "openTaskAt(3)"},
      {"reminder", "openReminderAt(3)", "openTaskAt(3)"},
      {"attendee", "openParticipantAt(3)", "openAttendeeAt(3)"},
      {"alarm", "openAlarmAt(3)", "", kFailed, "text Parameter is not supported."},
  };
  for (const auto& row : cases) {
    use(BackEnd::kEventKit);
    EXPECT_EQ(callWith(&Orlo_OpenItemAt, row.type, 3), kWorked) << row.type;
    EXPECT_EQ(told(), only(row.eventKit));
    use(BackEnd::kLegacy);
    EXPECT_EQ(callWith(&Orlo_OpenItemAt, row.type, 3), row.legacyResult) << row.type;
    EXPECT_EQ(told(), row.legacy.empty() ? kNoMessage : only(row.legacy));
    EXPECT_EQ(lastError(), row.legacyError) << row.type;
  }
}

class OpenItemAtOnBoth : public OnBothBackEnds {};
ORLO_ON_BOTH_BACK_ENDS(OpenItemAtOnBoth);

TEST_P(OpenItemAtOnBoth, RefusesOtherKeywords) {
  for (const char* type : {"recurrencerule", "events", " event", "event "}) {
    EXPECT_EQ(callWith(&Orlo_OpenItemAt, type, 1), kFailed) << type;
    EXPECT_EQ(lastError(), "text Invalid Parameter value(s)");
  }
  EXPECT_EQ(told(), kNoMessage);
}

TEST_P(OpenItemAtOnBoth, ComparesKeywordsWithoutCase) {
  callWith(&Orlo_OpenItemAt, "EVENT", 1);
  callWith(&Orlo_OpenItemAt, "Event", 2);
  EXPECT_EQ(told(), (std::vector<std::string>{"openEventAt(1)", "openEventAt(2)"}));
}

TEST_P(OpenItemAtOnBoth, TakesAnEmptyTypeForACalendar) {
  EXPECT_EQ(callWith(&Orlo_OpenItemAt, kEmpty, 2), kWorked);
  EXPECT_EQ(told(), only("openCalendarAt(2)"));
}

TEST_P(OpenItemAtOnBoth, PassesZeroForAMissingIndex) {
  callWith(&Orlo_OpenItemAt, "event");
  callWith(&Orlo_OpenItemAt, "event", kEmpty);
  callWith(&Orlo_OpenItemAt, "event", "many");
  EXPECT_EQ(told(), (std::vector<std::string>(3, "openEventAt(0)")));
}

TEST_P(OpenItemAtOnBoth, PassesAnyIndex) {
  callWith(&Orlo_OpenItemAt, "event", -1);
  callWith(&Orlo_OpenItemAt, "event", "2147483647");
  EXPECT_EQ(told(), (std::vector<std::string>{"openEventAt(-1)", "openEventAt(2147483647)"}));
}

TEST_P(OpenItemAtOnBoth, LooksAtTheCodeAndNotAtTheAnswer) {
  notes().number = -1;
  EXPECT_EQ(callWith(&Orlo_OpenItemAt, "event", 1), kWorked);
  notes().number = 0;
  notes().failure = 9002;
  EXPECT_EQ(callWith(&Orlo_OpenItemAt, "event", 1), kFailed);
  EXPECT_EQ(lastError(), "text Item index out of bounds.");
}

TEST_P(OpenItemAtOnBoth, WorksAgainAfterAFailure) {
  notes().failure = 9002;
  callWith(&Orlo_OpenItemAt, "event", 9);
  notes().failure = 0;
  EXPECT_EQ(callWith(&Orlo_OpenItemAt, "event", 1), kWorked);
  EXPECT_EQ(lastError(), "text Success");
}

class OpenItemWithUid : public FunctionTest {};

TEST_F(OpenItemWithUid, SendsTheMessageOfTheKeyword) {
  const KeywordCase cases[] = {
      {"calendar", "openCalendarWithUID(\"U 1\")", "openCalendarWithUID(\"U 1\")"},
      {"reminderlist", "openCalendarWithUID(\"U 1\")", "openCalendarWithUID(\"U 1\")"},
      {"event", "openEventWithUID(\"U 1\", nil)", "openEventWithUID(\"U 1\", nil)"},
      {"task", "openReminderWithUID(\"U 1\")", "openTaskWithUID(\"U 1\")"},
      {"Reminder", "openReminderWithUID(\"U 1\")", "openTaskWithUID(\"U 1\")"},
  };
  for (const auto& row : cases) {
    use(BackEnd::kEventKit);
    EXPECT_EQ(callWith(&Orlo_OpenItemWithUID, row.type, "U 1"), kWorked) << row.type;
    EXPECT_EQ(told(), only(row.eventKit));
    use(BackEnd::kLegacy);
    EXPECT_EQ(callWith(&Orlo_OpenItemWithUID, row.type, "U 1"), kWorked) << row.type;
    EXPECT_EQ(told(), only(row.legacy));
  }
}

class OpenItemWithUidOnBoth : public OnBothBackEnds {};
ORLO_ON_BOTH_BACK_ENDS(OpenItemWithUidOnBoth);

TEST_P(OpenItemWithUidOnBoth, RefusesOtherKeywords) {
  for (const char* type : {"attendee", "alarm", "recurrencerule", "x"}) {
    EXPECT_EQ(callWith(&Orlo_OpenItemWithUID, type, "U"), kFailed) << type;
    EXPECT_EQ(lastError(), "text Invalid Parameter value(s)");
  }
  EXPECT_EQ(told(), kNoMessage);
}

TEST_P(OpenItemWithUidOnBoth, NeedsATypeAndAnIdentifier) {
  EXPECT_EQ(callWith(&Orlo_OpenItemWithUID, kEmpty, "U"), kFailed);
  EXPECT_EQ(lastError(), "text Invalid Parameter value(s)");
  EXPECT_EQ(callWith(&Orlo_OpenItemWithUID, "event", kEmpty), kFailed);
  EXPECT_EQ(lastError(), "text Invalid Parameter value(s)");
  EXPECT_EQ(told(), kNoMessage);
}

TEST_P(OpenItemWithUidOnBoth, PassesTheOccurrenceToEvents) {
  callWith(&Orlo_OpenItemWithUID, "event", "U", WallClock{2026, 7, 1, 9, 30});
  EXPECT_EQ(told(), only("openEventWithUID(\"U\", 2026-07-01 07:30:00 +0000)"));
}

TEST_P(OpenItemWithUidOnBoth, PassesNoOccurrenceForAnEmptyOne) {
  callWith(&Orlo_OpenItemWithUID, "event", "U", kEmpty);
  EXPECT_EQ(told(), only("openEventWithUID(\"U\", nil)"));
}

TEST_P(OpenItemWithUidOnBoth, PassesTheIdentifierUnchanged) {
  callWith(&Orlo_OpenItemWithUID, "event", " Ab-Cé ");
  EXPECT_EQ(told(), only("openEventWithUID(\" Ab-Cé \", nil)"));
}

class WithoutABackEnd : public OnBothBackEnds {
 protected:
  WithoutABackEnd() {
    g_sharedEKFunctions = nullptr;
    g_sharedFunctions = nullptr;
  }
};
ORLO_ON_BOTH_BACK_ENDS(WithoutABackEnd);

TEST_P(WithoutABackEnd, CallsDoNothingAndDoNotFail) {
  EXPECT_EQ(callWith(&Orlo_GetItemCountForType, "event"), "number 0");
  EXPECT_EQ(callWith(&Orlo_OpenItemAt, "event", 1), kWorked);
  EXPECT_EQ(callWith(&Orlo_CalOpenCalendarWithTitle, "Work"), kWorked);
  EXPECT_EQ(callWith(&Orlo_GetProperty, "event", "title"), "text");
  EXPECT_EQ(callWith(&Orlo_RemoveRecurrence), kWorked);
  EXPECT_EQ(callWith(&Orlo_RemoveAllAlarmsFrom, "event"), GetParam() == BackEnd::kEventKit ? kWorked : kFailed);
}

class ItemCount : public OnBothBackEnds {};
ORLO_ON_BOTH_BACK_ENDS(ItemCount);

TEST_P(ItemCount, IsTheBackEndsCount) {
  notes().number = 12;
  EXPECT_EQ(callWith(&Orlo_GetItemCountForType, "event"), "number 12");
}

TEST_P(ItemCount, PassesTheTypeAsItWasTyped) {
  callWith(&Orlo_GetItemCountForType, " EVENT");
  EXPECT_EQ(told(), only("getObjectCount(\" EVENT\")"));
}

TEST_P(ItemCount, LeavesTheResultAloneWithoutAType) {
  g_llasterror = 9001;
  EXPECT_EQ(callWith(&Orlo_GetItemCountForType, kEmpty), kLeftAlone);
  EXPECT_EQ(told(), kNoMessage);
  EXPECT_EQ(lastError(), "text Success");
}

TEST_P(ItemCount, IsTheSentinelAfterAFailure) {
  notes().number = -1;
  notes().failure = 9054;
  EXPECT_EQ(callWith(&Orlo_GetItemCountForType, "event"), kFailed);
  EXPECT_EQ(lastError(), "text You must fetch events before getting an object count of events.");
}

TEST_P(ItemCount, IsMinusOneWhenTheBackEndGivesNoCode) {
  notes().number = -1;
  EXPECT_EQ(callWith(&Orlo_GetItemCountForType, "nonsense"), "number -1");
}

class CalendarTitle : public OnBothBackEnds {};
ORLO_ON_BOTH_BACK_ENDS(CalendarTitle);

TEST_P(CalendarTitle, IsPassedUnchanged) {
  EXPECT_EQ(callWith(&Orlo_CalOpenCalendarWithTitle, " Wörk "), kWorked);
  EXPECT_EQ(told(), only("openCalendarWithTitle(\" Wörk \")"));
}

TEST_P(CalendarTitle, MustBeGiven) {
  EXPECT_EQ(callWith(&Orlo_CalOpenCalendarWithTitle, kEmpty), kFailed);
  EXPECT_EQ(lastError(), "text Invalid Parameter value(s)");
  EXPECT_EQ(told(), kNoMessage);
}

TEST_P(CalendarTitle, MayBeUnknownToTheBackEnd) {
  notes().failure = 9058;
  EXPECT_EQ(callWith(&Orlo_CalOpenCalendarWithTitle, "x"), kFailed);
  EXPECT_EQ(lastError(), "text Unable to find calendar by title.");
}

}  // namespace
}  // namespace orlocal
