#include "store/alarms/alarm_times.h"

#include <gmock/gmock.h>

#include "store/store_fixture.h"

namespace orlocal::store {
namespace {

using std::chrono::minutes;
using std::chrono::seconds;
using testing::ElementsAre;

constexpr auto kAnEvent = ItemKind::kEvent;
constexpr auto kAReminder = ItemKind::kReminder;

Alarm alarmAt(seconds offset, bool fromEnd = false, std::string extra = "") {
  Alarm alarm;
  alarm.trigger = AlarmOffset{offset, fromEnd};
  alarm.extra = std::move(extra);
  return alarm;
}
Alarm alarmOn(const std::string& time, std::string extra = "") {
  Alarm alarm;
  alarm.trigger = at(time);
  alarm.extra = std::move(extra);
  return alarm;
}

struct AlarmTimesCase {
  const char* name;
  ItemKind kind;
  Alarm alarm;
  const char *start, *end;  ///< empty: none
  std::vector<std::string> relative, absolute;
};

class AlarmTimes : public testing::TestWithParam<AlarmTimesCase> {};

TEST_P(AlarmTimes, AreThese) {
  const AlarmTimesCase& each = GetParam();
  Item item;
  item.kind = each.kind;
  item.alarms = {each.alarm};
  const auto moment = [](const std::string& text) { return text.empty() ? std::nullopt : std::optional(at(text)); };
  const AlarmAnchors anchors{moment(each.start), moment(each.end)};
  const auto texts = [&](AlarmTriggers triggers) {
    std::vector<std::string> shownMoments;
    for (const AlarmMoment& ring : alarmMoments(item, triggers, anchors)) {
      EXPECT_EQ(ring.alarm, 0U);
      shownMoments.push_back(shown(ring.moment));
    }
    return shownMoments;
  };
  EXPECT_EQ(texts(AlarmTriggers::kRelative), each.relative);
  EXPECT_EQ(texts(AlarmTriggers::kAbsolute), each.absolute);
}

INSTANTIATE_TEST_SUITE_P(
    All, AlarmTimes,
    testing::Values(
        AlarmTimesCase{"before the start",
                       kAnEvent,
                       alarmAt(minutes(-15)),
                       "2026-11-02 09:00",
                       "2026-11-02 10:00",
                       {"2026-11-02 08:45"},
                       {}},
        AlarmTimesCase{"at the start",
                       kAnEvent,
                       alarmAt(minutes(0)),
                       "2026-11-02 09:00",
                       "2026-11-02 10:00",
                       {"2026-11-02 09:00"},
                       {}},
        AlarmTimesCase{"after the end",
                       kAnEvent,
                       alarmAt(minutes(5), true),
                       "2026-11-02 09:00",
                       "2026-11-02 10:00",
                       {"2026-11-02 10:05"},
                       {}},
        AlarmTimesCase{"weeks before",
                       kAnEvent,
                       alarmAt(std::chrono::days(-42)),
                       "2026-11-02 09:00",
                       "2026-11-02 10:00",
                       // Summer time ended in between: 42 times 24 hours.
                       {"2026-09-21 10:00"},
                       {}},
        AlarmTimesCase{
            "at a moment", kAnEvent, alarmOn("2026-11-01 07:00"), "2026-11-02 09:00", "", {}, {"2026-11-01 07:00"}},
        AlarmTimesCase{"with two repetitions",
                       kAnEvent,
                       alarmAt(minutes(-15), false, "REPEAT:2\nDURATION:PT5M\n"),
                       "2026-11-02 09:00",
                       "2026-11-02 10:00",
                       {"2026-11-02 08:45", "2026-11-02 08:50", "2026-11-02 08:55"},
                       {}},
        AlarmTimesCase{"at a moment with a repetition",
                       kAnEvent,
                       alarmOn("2026-11-01 07:00", "DURATION:PT1H\nREPEAT:1\n"),
                       "2026-11-02 09:00",
                       "",
                       {},
                       {"2026-11-01 07:00", "2026-11-01 08:00"}},
        AlarmTimesCase{"repetitions without a pause",
                       kAnEvent,
                       alarmAt(minutes(0), false, "REPEAT:2\n"),
                       "2026-11-02 09:00",
                       "",
                       {"2026-11-02 09:00"},
                       {}},
        AlarmTimesCase{"a negative pause",
                       kAnEvent,
                       alarmAt(minutes(0), false, "REPEAT:2\nDURATION:-PT5M\n"),
                       "2026-11-02 09:00",
                       "",
                       {"2026-11-02 09:00"},
                       {}},
        AlarmTimesCase{
            "at a place", kAnEvent, alarmAt(minutes(0), false, "PROXIMITY:ARRIVE\n"), "2026-11-02 09:00", "", {}, {}},
        AlarmTimesCase{"at a place in another spelling",
                       kAnEvent,
                       alarmAt(minutes(0), false, "X-APPLE-PROXIMITY:DEPART\n"),
                       "2026-11-02 09:00",
                       "",
                       {},
                       {}},
        AlarmTimesCase{"acknowledged before",
                       kAnEvent,
                       alarmAt(minutes(-15), false, "ACKNOWLEDGED:20261102T070000Z\n"),
                       "2026-11-02 09:00",
                       "",
                       {"2026-11-02 08:45"},
                       {}},
        AlarmTimesCase{"acknowledged since",
                       kAnEvent,
                       alarmAt(minutes(-15), false, "ACKNOWLEDGED:20261102T074500Z\n"),
                       "2026-11-02 09:00",
                       "",
                       {},
                       {}},
        AlarmTimesCase{"what a component within says",
                       kAnEvent,
                       alarmAt(minutes(0), false, "BEGIN:VLOCATION\nPROXIMITY:ARRIVE\nEND:VLOCATION\n"),
                       "2026-11-02 09:00",
                       "",
                       {"2026-11-02 09:00"},
                       {}},
        AlarmTimesCase{"a reminder from its due",
                       kAReminder,
                       alarmAt(minutes(-30)),
                       "",
                       "2026-11-02 09:00",
                       {"2026-11-02 08:30"},
                       {}},
        AlarmTimesCase{"a reminder from its start",
                       kAReminder,
                       alarmAt(minutes(-30)),
                       "2026-11-01 09:00",
                       "2026-11-02 09:00",
                       {"2026-11-01 08:30"},
                       {}},
        AlarmTimesCase{"a reminder from its due beside a start",
                       kAReminder,
                       alarmAt(minutes(-30), true),
                       "2026-11-01 09:00",
                       "2026-11-02 09:00",
                       {"2026-11-02 08:30"},
                       {}},
        AlarmTimesCase{"a reminder without a date", kAReminder, alarmAt(minutes(-30)), "", "", {}, {}},
        AlarmTimesCase{"an end that is not there", kAnEvent, alarmAt(minutes(0), true), "2026-11-02 09:00", "", {}, {}},
        AlarmTimesCase{"a hundred and one years before",
                       kAnEvent,
                       alarmAt(std::chrono::days(-365 * 101)),
                       "2026-11-02 09:00",
                       "",
                       {},
                       {}}),
    [](const auto& each) {
      std::string name = each.param.name;
      std::replace(name.begin(), name.end(), ' ', '_');
      return name;
    });

TEST(AlarmMoments, AreThoseOfTheRangeItsEndLeftOut) {
  Item item;
  item.alarms = {alarmAt(minutes(-15)), alarmAt(minutes(-10)), alarmAt(minutes(-5))};
  const AlarmAnchors anchors{at("2026-11-02 09:00"), std::nullopt};
  const auto found =
      alarmMoments(item, AlarmTriggers::kRelative, anchors, {at("2026-11-02 08:50"), at("2026-11-02 08:55")});
  EXPECT_THAT(found, ElementsAre(AlarmMoment{at("2026-11-02 08:50"), 1}));
}

TEST(AlarmMoments, EndAfterAHundredRepetitions) {
  Item item;
  item.alarms = {alarmAt(minutes(0), false, "REPEAT:1000000\nDURATION:PT1S\n")};
  EXPECT_EQ(alarmMoments(item, AlarmTriggers::kRelative, {at("2026-11-02 09:00"), {}}).size(), 101U);
}

TEST(AlarmReach, GoesToTheFarthestAlarmAndItsLastRepetition) {
  Item item;
  item.alarms = {alarmAt(std::chrono::days(-42)), alarmAt(minutes(10), true, "REPEAT:3\nDURATION:PT10M\n"),
                 alarmAt(std::chrono::days(-300), false, "PROXIMITY:ARRIVE\n"), alarmOn("1976-04-01 00:55")};
  EXPECT_EQ(reachOf(item), (AlarmReach{std::chrono::days(42), minutes(40)}));
}

TEST(AlarmsOfAnItem, AreSilentWhenItIsCancelledOrDone) {
  Item item;
  EXPECT_TRUE(canRing(item));
  item.extra = "STATUS:TENTATIVE\n";
  EXPECT_TRUE(canRing(item));
  item.extra = "TRANSP:OPAQUE\nSTATUS:CANCELLED\n";
  EXPECT_FALSE(canRing(item));
  item.extra = "";
  item.kind = kAReminder;
  item.completed = at("2026-11-01 09:00");
  EXPECT_FALSE(canRing(item));
}

}  // namespace
}  // namespace orlocal::store
