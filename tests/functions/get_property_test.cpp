#include "functions/functions_fixture.h"

namespace orlocal {
namespace {

class GetProperty : public FunctionTest {};

TEST_F(GetProperty, SendsTheMessageOfTheKeyword) {
  struct Row {
    const char* type;
    const char* eventKit;
    const char* legacy;
  };
  const Row rows[] = {
      {"event", "getEventAttribute", "getEventAttribute"},
      {"task", "getReminderAttribute", "getTaskAttribute"},
      {"reminder", "getReminderAttribute", "getTaskAttribute"},
      {"calendar", "getCalendarAttribute", "getCalendarAttribute"},
      {"reminderlist", "getCalendarAttribute", "getCalendarAttribute"},
      {"attendee", "getParticipantAttribute", "getAttendeeAttribute"},
  };
  for (const auto& row : rows) {
    use(BackEnd::kEventKit);
    EXPECT_EQ(callWith(&Orlo_GetProperty, row.type, "title"), "text value") << row.type;
    EXPECT_EQ(told(), only(row.eventKit + std::string("(\"title\", 1, nil)")));
    use(BackEnd::kLegacy);
    EXPECT_EQ(callWith(&Orlo_GetProperty, row.type, "title"), "text value") << row.type;
    EXPECT_EQ(told(), only(row.legacy + std::string("(\"title\", 1, nil)")));
  }
}

TEST_F(GetProperty, ReadsAlarmsOnTheCurrentBackEnd) {
  EXPECT_EQ(callWith(&Orlo_GetProperty, "alarm", "action"), "text value");
  EXPECT_EQ(told(), only("getAlarmAttribute(\"action\", 1, nil)"));
}

TEST_F(GetProperty, AsksForAnAlarmOnTheLegacyBackEndAndFailsWithAPlatformException) {
  use(BackEnd::kLegacy);
  for (const char* property : {"action", "absolutetrigger"}) {
    try {
      callWith(&Orlo_GetProperty, "alarm", property);
      ADD_FAILURE() << "no exception left";
    } catch (const Exception& exception) { EXPECT_EQ(exception.name(), "NSInvalidArgumentException"); }
    EXPECT_EQ(told(), only("getAlarmAttribute(\"" + std::string(property) + "\", 1, nil)"));
  }
}

TEST_F(GetProperty, ReportsAFailedAlarmOfTheLegacyBackEndAsAnyOther) {
  use(BackEnd::kLegacy);
  notes().failure = 9000;
  EXPECT_EQ(callWith(&Orlo_GetProperty, "alarm", "action"), kFailed);
  EXPECT_EQ(lastError(), "text Invalid call order. Must access other item prior to call.");
}

class GetPropertyOnBoth : public OnBothBackEnds {
 protected:
  std::string valueOf(const char* value, const char* type, const char* property) {
    notes().text = value;
    return callWith(&Orlo_GetProperty, type, property);
  }
};
ORLO_ON_BOTH_BACK_ENDS(GetPropertyOnBoth);

TEST_P(GetPropertyOnBoth, PassesTypeAndPropertyInLowerCase) {
  callWith(&Orlo_GetProperty, "EVENT", "StartDate");
  EXPECT_EQ(told(), only("getEventAttribute(\"startdate\", 1, nil)"));
}

TEST_P(GetPropertyOnBoth, PassesTheSubPropertyOfARuleInLowerCase) {
  callWith(&Orlo_GetProperty, "recurrencerule", "RecurrenceEnd", "OccurrenceCount");
  callWith(&Orlo_GetProperty, "recurrencerule", "recurrencetype");
  callWith(&Orlo_GetProperty, "RecurrenceRule", "recurrencetype", kEmpty);
  EXPECT_EQ(told(), (std::vector<std::string>{"getEventRecurrenceRuleAttribute(\"recurrenceend\", \"occurrencecount\")",
                                              "getEventRecurrenceRuleAttribute(\"recurrencetype\", nil)",
                                              "getEventRecurrenceRuleAttribute(\"recurrencetype\", nil)"}));
}

TEST_P(GetPropertyOnBoth, LeavesTheResultAloneWithoutATypeOrAProperty) {
  g_llasterror = 9001;
  EXPECT_EQ(callWith(&Orlo_GetProperty, "event", kEmpty), kLeftAlone);
  EXPECT_EQ(callWith(&Orlo_GetProperty, kEmpty, "title"), kLeftAlone);
  EXPECT_EQ(told(), kNoMessage);
  EXPECT_EQ(lastError(), "text Success");
}

TEST_P(GetPropertyOnBoth, RefusesOtherTypes) {
  EXPECT_EQ(callWith(&Orlo_GetProperty, "source", "title"), kFailed);
  EXPECT_EQ(lastError(), "text Invalid Parameter value(s)");
  EXPECT_EQ(told(), kNoMessage);
}

TEST_P(GetPropertyOnBoth, GivesTimestampsInTheDefaultZone) {
  for (const char* property : {"absolutetrigger", "enddate", "modifieddate", "startdate", "occurrence", "datestamp"}) {
    EXPECT_EQ(valueOf("2026-07-01 09:30:05 +0200", "event", property), "timestamp 2026-07-01 09:30:05") << property;
  }
  EXPECT_EQ(valueOf("2026-12-01 00:30:00 +0200", "event", "STARTDATE"), "timestamp 2026-11-30 23:30:00");
}

TEST_P(GetPropertyOnBoth, GivesDatesInTheDefaultZone) {
  for (const char* property : {"completeddate", "duedate"}) {
    EXPECT_EQ(valueOf("2026-07-01 23:30:00 +0000", "reminder", property), "date 2026-07-02") << property;
  }
}

TEST_P(GetPropertyOnBoth, GivesTheEndOfARuleAsATimestamp) {
  notes().text = "2026-12-31 00:00:00 +0100";
  EXPECT_EQ(callWith(&Orlo_GetProperty, "recurrencerule", "recurrenceend", "EndDate"), "timestamp 2026-12-31 00:00:00");
  notes().text = "10";
  EXPECT_EQ(callWith(&Orlo_GetProperty, "recurrencerule", "recurrenceend", "occurrencecount"), "text 10");
}

TEST_P(GetPropertyOnBoth, GivesATimestampForAnyPropertyWithTheSubPropertyEndDate) {
  notes().text = "2026-12-31 00:00:00 +0100";
  EXPECT_EQ(callWith(&Orlo_GetProperty, "event", "title", "enddate"), "timestamp 2026-12-31 00:00:00");
  EXPECT_EQ(callWith(&Orlo_GetProperty, "reminder", "duedate", "enddate"), "timestamp 2026-12-31 00:00:00");
}

TEST_P(GetPropertyOnBoth, GivesEverythingElseAsText) {
  EXPECT_EQ(valueOf("True", "event", "isallday"), "text True");
  EXPECT_EQ(valueOf("2026-07-01 09:30:05 +0200", "event", "title"), "text 2026-07-01 09:30:05 +0200");
  EXPECT_EQ(valueOf("2026-07-01 09:30:05 +0200", "event", "nextalarmdate"), "text 2026-07-01 09:30:05 +0200");
  EXPECT_EQ(valueOf("1\r2", "recurrencerule", "daysoftheweek"), "text 1\r2");
}

TEST_P(GetPropertyOnBoth, GivesAnAbsentTextAsEmptyText) {
  notes().text = std::nullopt;
  EXPECT_EQ(callWith(&Orlo_GetProperty, "event", "title"), "text");
}

TEST_P(GetPropertyOnBoth, LeavesTheResultAloneForAnAbsentDate) {
  notes().text = std::nullopt;
  EXPECT_EQ(callWith(&Orlo_GetProperty, "event", "startdate"), kLeftAlone);
  EXPECT_EQ(callWith(&Orlo_GetProperty, "reminder", "duedate"), kLeftAlone);
  EXPECT_EQ(lastError(), "text Success");
}

TEST_P(GetPropertyOnBoth, LeavesTheResultAloneForATextThatIsNoDate) {
  for (const char* value : {"never", "", "2026-07-01 09:30:05 +053000", "2026-07-01"}) {
    EXPECT_EQ(valueOf(value, "event", "startdate"), kLeftAlone) << value;
  }
}

TEST_P(GetPropertyOnBoth, ReadsDatesInZonesOfHalfHours) {
  useZone(5 * 3600 + 1800);
  EXPECT_EQ(valueOf("2026-07-01 09:30:00 +0530", "event", "startdate"), "timestamp 2026-07-01 09:30:00");
}

TEST_P(GetPropertyOnBoth, IsTheSentinelAfterAFailure) {
  notes().failure = 9063;
  EXPECT_EQ(callWith(&Orlo_GetProperty, "event", "startdate"), kFailed);
  EXPECT_EQ(callWith(&Orlo_GetProperty, "event", "colour"), kFailed);
  EXPECT_EQ(lastError(), "text Invalid property specified in parameter.");
}

TEST_P(GetPropertyOnBoth, LetsPlatformExceptionsLeave) {
  notes().throws = true;
  EXPECT_THROW(callWith(&Orlo_GetProperty, "event", "title"), Exception);
}

}  // namespace
}  // namespace orlocal
