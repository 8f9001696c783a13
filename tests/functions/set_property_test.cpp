#include <algorithm>

#include "bridge/recording_host.h"
#include "functions/functions_fixture.h"

namespace orlocal {
namespace {

class SetProperty : public FunctionTest {};

TEST_F(SetProperty, SendsTheMessageOfTheKeyword) {
  struct Row {
    const char* type;
    const char* eventKit;
    const char* legacy;
  };
  const Row rows[] = {
      {"event", "setEventProp", "setEventProp"},
      {"task", "setReminderProp", "setTaskProp"},
      {"reminder", "setReminderProp", "setTaskProp"},
      {"calendar", "setCalendarProp", "setCalendarProp"},
      {"reminderlist", "setCalendarProp", "setCalendarProp"},
  };
  for (const auto& row : rows) {
    use(BackEnd::kEventKit);
    EXPECT_EQ(callWith(&Orlo_SetProperty, row.type, "title", "New"), kWorked) << row.type;
    EXPECT_EQ(told(), only(row.eventKit + std::string("(\"title\", \"New\")")));
    use(BackEnd::kLegacy);
    EXPECT_EQ(callWith(&Orlo_SetProperty, row.type, "title", "New"), kWorked) << row.type;
    EXPECT_EQ(told(), only(row.legacy + std::string("(\"title\", \"New\")")));
  }
}

TEST_F(SetProperty, SetsAlarmsOnTheCurrentBackEndOnly) {
  EXPECT_EQ(callWith(&Orlo_SetProperty, "alarm", "action", "display"), kWorked);
  EXPECT_EQ(told(), only("setAlarmProp(\"action\", \"display\")"));
  use(BackEnd::kLegacy);
  EXPECT_EQ(callWith(&Orlo_SetProperty, "alarm", "action", "display"), kFailed);
  EXPECT_EQ(lastError(), "text Parameter is not supported.");
  EXPECT_EQ(told(), kNoMessage);
}

class SetPropertyOnBoth : public OnBothBackEnds {};
ORLO_ON_BOTH_BACK_ENDS(SetPropertyOnBoth);

TEST_P(SetPropertyOnBoth, AcceptsRecurrenceRulesAndChangesNothing) {
  EXPECT_EQ(callWith(&Orlo_SetProperty, "recurrencerule", "interval", "2"), kWorked);
  EXPECT_EQ(callWith(&Orlo_SetProperty, "recurrencerule", "nonsense", kEmpty), kWorked);
  EXPECT_EQ(told(), kNoMessage);
}

TEST_P(SetPropertyOnBoth, RefusesAttendeesAndOtherTypes) {
  for (const char* type : {"attendee", "source"}) {
    EXPECT_EQ(callWith(&Orlo_SetProperty, type, "title", "x"), kFailed) << type;
    EXPECT_EQ(lastError(), "text Invalid Parameter value(s)");
  }
  EXPECT_EQ(told(), kNoMessage);
}

TEST_P(SetPropertyOnBoth, PassesThePropertyAsItWasTyped) {
  callWith(&Orlo_SetProperty, "EVENT", "Title", "x");
  EXPECT_EQ(told(), only("setEventProp(\"Title\", \"x\")"));
}

TEST_P(SetPropertyOnBoth, LeavesTheResultAloneWithoutATypeOrAProperty) {
  EXPECT_EQ(callWith(&Orlo_SetProperty, kEmpty, "title", "x"), kLeftAlone);
  EXPECT_EQ(callWith(&Orlo_SetProperty, "event", kEmpty, "x"), kLeftAlone);
  EXPECT_EQ(told(), kNoMessage);
  EXPECT_EQ(lastError(), "text Success");
}

TEST_P(SetPropertyOnBoth, PassesDatesForDateProperties) {
  for (const char* property :
       {"absolutetrigger", "enddate", "startdate", "occurrence", "completeddate", "duedate", "DueDate"}) {
    EXPECT_EQ(callWith(&Orlo_SetProperty, "event", property, WallClock{2026, 7, 1, 9, 30, 5}), kWorked);
    EXPECT_EQ(told(), only("setEventProp(\"" + std::string(property) + "\", 2026-07-01 07:30:05 +0000)"));
  }
}

TEST_P(SetPropertyOnBoth, ReadsEveryValueAsATimestampToo) {
  auto& host = fakes::RecordingHost::instance();
  const auto readings = [&](const char* property, const char* value) {
    host.clear();
    host.isRecording = true;
    callWith(&Orlo_SetProperty, "event", property, value);
    host.isRecording = false;
    return std::count(host.calls.begin(), host.calls.end(), "FM_DataVect_AtAsTimeStamp 2");
  };
  for (const char* property : {"title", "isallday", "nonsense", "startdate", "recurrencerule"}) {
    EXPECT_EQ(readings(property, "x"), 1) << property;
    EXPECT_EQ(readings(property, ""), 0) << property;
  }
}

TEST_P(SetPropertyOnBoth, PassesTextsForReadOnlyDates) {
  callWith(&Orlo_SetProperty, "event", "modifieddate", "today");
  callWith(&Orlo_SetProperty, "event", "datestamp", "today");
  EXPECT_EQ(told(), (std::vector<std::string>{"setEventProp(\"modifieddate\", \"today\")",
                                              "setEventProp(\"datestamp\", \"today\")"}));
}

TEST_P(SetPropertyOnBoth, NeedsADateForADateProperty) {
  for (const char* type : {"event", "recurrencerule", "nonsense"}) {
    EXPECT_EQ(callWith(&Orlo_SetProperty, type, "startdate", kEmpty), kFailed) << type;
    EXPECT_EQ(lastError(), "text Missing argument in function.");
  }
  EXPECT_EQ(told(), kNoMessage);
}

TEST_P(SetPropertyOnBoth, LosesDatesInZonesOfHalfHours) {
  useZone(5 * 3600 + 1800);
  EXPECT_EQ(callWith(&Orlo_SetProperty, "event", "startdate", WallClock{2026, 7, 1, 9, 30}), kFailed);
  EXPECT_EQ(lastError(), "text Missing argument in function.");
}

TEST_P(SetPropertyOnBoth, PassesAnAbsentValueOn) {
  EXPECT_EQ(callWith(&Orlo_SetProperty, "event", "title", kEmpty), kWorked);
  EXPECT_EQ(told(), only("setEventProp(\"title\", nil)"));
}

TEST_P(SetPropertyOnBoth, IsTheSentinelAfterAFailure) {
  notes().failure = 9049;
  EXPECT_EQ(callWith(&Orlo_SetProperty, "event", "title", "x"), kFailed);
  EXPECT_EQ(lastError(), "text An event must be opened before setting a property.");
}

}  // namespace
}  // namespace orlocal
