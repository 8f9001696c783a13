#include <algorithm>

#include "bridge/recording_host.h"
#include "functions/functions_fixture.h"

namespace orlocal {
namespace {

class AlarmFunction : public FunctionTest {};

TEST_F(AlarmFunction, AddsWithSixValues) {
  EXPECT_EQ(callWith(&Orlo_AddAlarm, "Event", WallClock{2026, 12, 1, 9}, "Email", "a@example.org", -15, "Ping"),
            kWorked);
  EXPECT_EQ(told(),
            only("addAlarm(\"Event\", 2026-12-01 08:00:00 +0000, \"Email\", \"a@example.org\", -15, \"Ping\")"));
}

TEST_F(AlarmFunction, AddsWithoutWhatIsEmpty) {
  callWith(&Orlo_AddAlarm, "event", kEmpty, "display", kEmpty, -15, kEmpty);
  callWith(&Orlo_AddAlarm, kEmpty, kEmpty, kEmpty, kEmpty, kEmpty, kEmpty);
  EXPECT_EQ(told(), (std::vector<std::string>{"addAlarm(\"event\", nil, \"display\", nil, -15, nil)",
                                              "addAlarm(nil, nil, nil, nil, 0, nil)"}));
}

TEST_F(AlarmFunction, ReadsTheOffsetAfterEverythingElse) {
  auto& host = fakes::RecordingHost::instance();
  host.clear();
  fakes::HostCall call;
  for (const char* text : {"event", "", "display", "a@example.org", "-15", "Ping"}) { call.add(text); }
  host.isRecording = true;
  call.call(&Orlo_AddAlarm);
  host.isRecording = false;
  std::vector<std::string> reads;
  std::ranges::copy_if(host.calls, std::back_inserter(reads),
                       [](const std::string& made) { return made.starts_with("FM_DataVect_At"); });
  host.clear();
  EXPECT_EQ(reads,
            (std::vector<std::string>{"FM_DataVect_AtAsText 0", "FM_DataVect_AtAsText 1", "FM_DataVect_AtAsText 2",
                                      "FM_DataVect_AtAsText 3", "FM_DataVect_AtAsText 5", "FM_DataVect_AtAsNumber 4"}));
}

TEST_F(AlarmFunction, LosesTheAbsoluteTriggerInZonesOfHalfHours) {
  useZone(9 * 3600 + 1800);
  callWith(&Orlo_AddAlarm, "event", WallClock{2026, 12, 1, 9}, "display", kEmpty, 0, kEmpty);
  EXPECT_EQ(told(), only("addAlarm(\"event\", nil, \"display\", nil, 0, nil)"));
}

TEST_F(AlarmFunction, RemovesByIndex) {
  EXPECT_EQ(callWith(&Orlo_RemoveAlarm, "Reminder", 2), kWorked);
  EXPECT_EQ(told(), only("removeAlarmFrom(\"Reminder\", 2)"));
}

TEST_F(AlarmFunction, RemovesAtZeroForAnEmptyIndex) {
  callWith(&Orlo_RemoveAlarm, "event", kEmpty);
  callWith(&Orlo_RemoveAlarm, kEmpty);
  EXPECT_EQ(told(), (std::vector<std::string>{"removeAlarmFrom(\"event\", 0)", "removeAlarmFrom(nil, 0)"}));
}

TEST_F(AlarmFunction, RemovesAll) {
  EXPECT_EQ(callWith(&Orlo_RemoveAllAlarmsFrom, "task"), kWorked);
  callWith(&Orlo_RemoveAllAlarmsFrom, kEmpty);
  EXPECT_EQ(told(), (std::vector<std::string>{"removeAllAlarmsFrom(\"task\")", "removeAllAlarmsFrom(nil)"}));
}

TEST_F(AlarmFunction, IsTheSentinelAfterAFailure) {
  notes().failure = 9031;
  EXPECT_EQ(callWith(&Orlo_AddAlarm, "event", kEmpty, "display", kEmpty, kEmpty, kEmpty), kFailed);
  EXPECT_EQ(lastError(), "text A relative offset or absolute date must be specified for the alarm");
  notes().failure = 9002;
  EXPECT_EQ(callWith(&Orlo_RemoveAlarm, "event", 9), kFailed);
  notes().failure = 9000;
  EXPECT_EQ(callWith(&Orlo_RemoveAllAlarmsFrom, "event"), kFailed);
}

TEST_F(AlarmFunction, IsNotSupportedByTheLegacyBackEnd) {
  use(BackEnd::kLegacy);
  const std::string results[] = {
      callWith(&Orlo_AddAlarm, "event", kEmpty, "display", kEmpty, -15, kEmpty),
      callWith(&Orlo_RemoveAlarm, "event", 1),
      callWith(&Orlo_RemoveAllAlarmsFrom, "event"),
      callWith(&Orlo_RemoveAllAlarmsFrom, kEmpty),
  };
  for (const auto& result : results) { EXPECT_EQ(result, kFailed); }
  EXPECT_EQ(lastError(), "text Parameter is not supported.");
  EXPECT_EQ(told(), kNoMessage);
}

}  // namespace
}  // namespace orlocal
