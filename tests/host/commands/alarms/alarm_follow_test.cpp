#include "host/commands/alarms/alarm_follow.h"

#include <deque>
#include <functional>
#include <limits>

#include <gmock/gmock.h>

#include "store/store_fixture.h"
#include "store/time/clock.h"

namespace orlocal::host {
namespace {

using std::chrono::minutes;
using store::at;
using testing::ElementsAre;
using testing::IsEmpty;

/// Notes what is told.
class NotingTeller : public AlarmTeller {
 public:
  std::size_t room() override { return m_room; }
  void tell(const AlarmNews& news) override {
    told.push_back(store::shown(news.rings) + " " + news.item->title.value_or(""));
  }
  void tellMissed(const MissedAlarms& some) override { missed.push_back(some); }
  bool isOver() const override { return over; }
  void tellTrouble(const std::string& sentence) override { troubles.push_back(sentence); }

  std::vector<std::string> takeTold() { return std::exchange(told, {}); }

  std::size_t m_room = std::numeric_limits<std::size_t>::max();
  std::vector<std::string> told, troubles;
  std::vector<MissedAlarms> missed;
  bool over = false;
};

/// Does one thing at each sleep; after the last the person has had enough.
class ScriptedClock : public AlarmClock {
 public:
  using Step = std::function<void(store::Moment until)>;
  explicit ScriptedClock(std::deque<Step> steps) : m_steps(std::move(steps)) {}

  Result<Woken> sleepUntil(store::Moment moment) override {
    if (m_steps.empty()) { return Woken::kByInterruption; }
    const Step step = std::move(m_steps.front());
    m_steps.pop_front();
    step(moment);
    return Woken::kByTime;
  }

 private:
  std::deque<Step> m_steps;
};

class FollowingAlarms : public store::StoreTest {
 protected:
  void SetUp() override {
    StoreTest::SetUp();
    reader = opened();
    setClock("2026-11-02 08:00");
  }
  void TearDown() override {
    store::pinClock(*store::momentPinnedByUser());
    follower.reset();
    reader.reset();
    StoreTest::TearDown();
  }

  static void setClock(const std::string& time) { store::pinClock(at(time)); }
  /// What is told when somebody looks then.
  std::vector<std::string> toldAt(const std::string& time) {
    setClock(time);
    const auto turned = follower->turn();
    EXPECT_TRUE(turned) << (turned ? "" : turned.error().message);
    return teller.takeTold();
  }
  /// A watcher that begins now, after the one before has ended or (crashed) has not.
  void start(bool crashed = false) {
    if (follower && !crashed) { EXPECT_TRUE(follower->end()); }
    follower.emplace(*reader, store::berlinZone(), teller);
    ASSERT_TRUE(follower->begin());
  }
  static store::Alarm before(std::chrono::seconds offset) {
    store::Alarm alarm;
    alarm.trigger = store::AlarmOffset{-offset, false};
    return alarm;
  }
  store::Item meeting(const std::string& title, const std::string& start, std::chrono::seconds offset = minutes(15)) {
    store::Item item = event(title, store::berlin(start), store::berlin(start));
    item.end->local += 3600;
    item.alarms = {before(offset)};
    return saved(item);
  }
  store::AlarmKey keyOfFirst() { return store::AlarmBook(*store).records()->front().key; }

  std::unique_ptr<store::CalendarStore> reader;
  NotingTeller teller;
  std::optional<AlarmFollower> follower;
};

TEST_F(FollowingAlarms, TellsEachAtItsMomentAndOnce) {
  meeting("Talk", "2026-11-02 09:00");
  start();
  EXPECT_THAT(toldAt("2026-11-02 08:44"), IsEmpty());
  EXPECT_THAT(toldAt("2026-11-02 08:45"), ElementsAre("2026-11-02 08:45 Talk"));
  EXPECT_THAT(toldAt("2026-11-02 08:45"), IsEmpty());
  EXPECT_THAT(toldAt("2026-11-02 08:46"), IsEmpty());
}

TEST_F(FollowingAlarms, SleepsUntilTheNextOne) {
  meeting("Talk", "2026-11-02 09:00");
  meeting("Tea", "2026-11-02 09:10");
  std::vector<std::string> wakes;
  const auto sleep = [&](store::Moment until) {
    wakes.push_back(store::shown(until));
    store::pinClock(until);
  };
  ScriptedClock clock({sleep, sleep});
  follower.emplace(*reader, store::berlinZone(), teller);
  ASSERT_TRUE(follower->follow(clock));
  EXPECT_THAT(wakes, ElementsAre("2026-11-02 08:45", "2026-11-02 08:55"));
  EXPECT_THAT(teller.told, ElementsAre("2026-11-02 08:45 Talk", "2026-11-02 08:55 Tea"));
}

TEST_F(FollowingAlarms, HearsOfAnAlarmThatWasAddedASecondBefore) {
  std::vector<std::string> wakes;
  ScriptedClock clock({[&](store::Moment) { meeting("Sudden", "2026-11-02 08:16"); },
                       [&](store::Moment until) {
                         wakes.push_back(store::shown(until));
                         store::pinClock(until);
                       }});
  follower.emplace(*reader, store::berlinZone(), teller);
  ASSERT_TRUE(follower->follow(clock));
  EXPECT_THAT(wakes, ElementsAre("2026-11-02 08:01"));
  EXPECT_THAT(teller.told, ElementsAre("2026-11-02 08:01 Sudden"));
}

TEST_F(FollowingAlarms, TellsNothingThatWasMovedAwayMeanwhile) {
  store::Item talk = meeting("Talk", "2026-11-02 09:00");
  start();
  EXPECT_THAT(toldAt("2026-11-02 08:44"), IsEmpty());
  talk.start = store::berlin("2026-11-02 11:00");
  talk.end = store::berlin("2026-11-02 12:00");
  saved(talk);
  EXPECT_THAT(toldAt("2026-11-02 08:50"), IsEmpty());
  EXPECT_THAT(toldAt("2026-11-02 10:45"), ElementsAre("2026-11-02 10:45 Talk"));
}

TEST_F(FollowingAlarms, MissesNothingBeforeAnybodyWatched) {
  meeting("Early", "2026-11-02 07:30");
  start();
  EXPECT_THAT(toldAt("2026-11-02 08:01"), IsEmpty());
  EXPECT_THAT(teller.missed, IsEmpty());
}

TEST_F(FollowingAlarms, TellsLateWhatRangWhileNobodyWatched) {
  meeting("Talk", "2026-11-02 09:00");
  start();
  setClock("2026-11-02 12:00");
  start();
  EXPECT_THAT(toldAt("2026-11-02 12:00"), ElementsAre("2026-11-02 08:45 Talk"));
  start();
  EXPECT_THAT(toldAt("2026-11-02 12:01"), IsEmpty());
}

TEST_F(FollowingAlarms, TellsNothingAgainAfterACrash) {
  meeting("Talk", "2026-11-02 09:00");
  meeting("Tea", "2026-11-02 09:05");
  start();
  EXPECT_THAT(toldAt("2026-11-02 08:47"), ElementsAre("2026-11-02 08:45 Talk"));
  start(true);
  EXPECT_THAT(toldAt("2026-11-02 08:51"), ElementsAre("2026-11-02 08:50 Tea"));
}

TEST_F(FollowingAlarms, CountsWhatIsOlderThanADayAndTellsTheRest) {
  for (const char* day : {"2026-11-03 09:00", "2026-11-04 09:00", "2026-11-05 09:00"}) { meeting("Talk", day); }
  start();
  setClock("2026-11-05 08:00");
  start();
  EXPECT_THAT(toldAt("2026-11-05 08:00"), ElementsAre("2026-11-04 08:45 Talk"));
  ASSERT_EQ(teller.missed.size(), 1U);
  EXPECT_EQ(teller.missed[0].count, 1U);
  EXPECT_EQ(store::shown(teller.missed[0].from), "2026-11-02 08:00");
  EXPECT_EQ(store::shown(teller.missed[0].to), "2026-11-04 08:00");
  EXPECT_THAT(toldAt("2026-11-05 08:45"), ElementsAre("2026-11-05 08:45 Talk"));
  EXPECT_EQ(teller.missed.size(), 1U);
}

TEST_F(FollowingAlarms, TellsMissedOnesOnceThoughTwoCountThem) {
  meeting("Talk", "2026-11-03 09:00");
  start();
  ASSERT_TRUE(follower->end());
  const auto other = opened();
  setClock("2026-11-09 08:00");
  NotingTeller otherTeller;
  AlarmFollower second(*other, store::berlinZone(), otherTeller);
  ASSERT_TRUE(second.begin());
  start();
  ASSERT_TRUE(second.turn());
  EXPECT_THAT(toldAt("2026-11-09 08:00"), IsEmpty());
  EXPECT_EQ(teller.missed.size() + otherTeller.missed.size(), 1U);
}

TEST_F(FollowingAlarms, LeavesToOneOfTwoWatchersWhatBothSee) {
  meeting("Talk", "2026-11-02 09:00");
  const auto other = opened();
  NotingTeller otherTeller;
  AlarmFollower second(*other, store::berlinZone(), otherTeller);
  start();
  ASSERT_TRUE(second.begin());
  setClock("2026-11-02 08:45");
  ASSERT_TRUE(second.turn());
  EXPECT_THAT(toldAt("2026-11-02 08:45"), IsEmpty());
  EXPECT_THAT(otherTeller.told, ElementsAre("2026-11-02 08:45 Talk"));
}

TEST_F(FollowingAlarms, TellsNothingAgainWhenTheClockIsSetBack) {
  meeting("Talk", "2026-11-02 09:00");
  start();
  EXPECT_THAT(toldAt("2026-11-02 08:50"), ElementsAre("2026-11-02 08:45 Talk"));
  EXPECT_THAT(toldAt("2026-11-02 08:20"), IsEmpty());
  meeting("Tea", "2026-11-02 08:45");
  EXPECT_THAT(toldAt("2026-11-02 08:30"), ElementsAre("2026-11-02 08:30 Tea")) << "what is new in that hour rings";
  EXPECT_THAT(toldAt("2026-11-02 08:50"), IsEmpty());
}

TEST_F(FollowingAlarms, GoesOnAfterAClockThatWasAYearAhead) {
  start();
  EXPECT_THAT(toldAt("2027-11-02 08:00"), IsEmpty());
  meeting("Talk", "2026-11-02 09:00");
  EXPECT_THAT(toldAt("2026-11-02 08:01"), IsEmpty());
  EXPECT_THAT(toldAt("2026-11-02 08:45"), ElementsAre("2026-11-02 08:45 Talk"));
  setClock("2027-11-02 08:00");
  start();
  setClock("2026-11-02 09:00");
  start();
  meeting("Tea", "2026-11-02 10:00");
  EXPECT_THAT(toldAt("2026-11-02 09:45"), ElementsAre("2026-11-02 09:45 Tea")) << "also after a restart";
}

TEST_F(FollowingAlarms, TellsLateWhenTheClockIsSetAhead) {
  meeting("Talk", "2026-11-02 09:00");
  start();
  EXPECT_THAT(toldAt("2026-11-02 11:00"), ElementsAre("2026-11-02 08:45 Talk"));
}

TEST_F(FollowingAlarms, TellsASnoozedOneAgain) {
  meeting("Talk", "2026-11-02 09:00");
  start();
  EXPECT_THAT(toldAt("2026-11-02 08:45"), ElementsAre("2026-11-02 08:45 Talk"));
  ASSERT_TRUE(store::AlarmBook(*store).snooze(std::array{keyOfFirst()}, at("2026-11-02 08:55")));
  setClock("2026-11-02 08:46");
  EXPECT_EQ(store::shown(*follower->turn()), "2026-11-02 08:55");
  EXPECT_THAT(toldAt("2026-11-02 08:55"), ElementsAre("2026-11-02 08:55 Talk"));
  EXPECT_THAT(toldAt("2026-11-02 08:56"), IsEmpty());
}

TEST_F(FollowingAlarms, TellsNoneThatWasDismissed) {
  meeting("Talk", "2026-11-02 09:00");
  start();
  ASSERT_FALSE(toldAt("2026-11-02 08:45").empty());
  const auto key = keyOfFirst();
  ASSERT_TRUE(store::AlarmBook(*store).snooze(std::array{key}, at("2026-11-02 08:55")));
  ASSERT_TRUE(store::AlarmBook(*store).acknowledge(std::array{key}, at("2026-11-02 08:50")));
  EXPECT_THAT(toldAt("2026-11-02 08:55"), IsEmpty());
}

TEST_F(FollowingAlarms, ForgetsASnoozeWhoseEventIsGone) {
  const store::Item talk = meeting("Talk", "2026-11-02 09:00");
  start();
  ASSERT_FALSE(toldAt("2026-11-02 08:45").empty());
  ASSERT_TRUE(store::AlarmBook(*store).snooze(std::array{keyOfFirst()}, at("2026-11-02 08:55")));
  ASSERT_TRUE(store->removeEvent(talk, std::nullopt, store::Span::kAll));
  EXPECT_THAT(toldAt("2026-11-02 08:55"), IsEmpty());
  EXPECT_THAT(*store::AlarmBook(*store).snoozed(), IsEmpty());
}

TEST_F(FollowingAlarms, ClaimsNoMoreThanThereIsRoomFor) {
  for (const char* title : {"A", "B", "C"}) { meeting(title, "2026-11-02 09:00"); }
  start();
  teller.m_room = 2;
  EXPECT_EQ(toldAt("2026-11-02 08:45").size(), 2U);
  EXPECT_EQ(store::AlarmBook(*store).records()->size(), 2U);
  teller.m_room = 0;
  EXPECT_THAT(toldAt("2026-11-02 08:46"), IsEmpty());
  // Who comes after a crash tells the third.
  start(true);
  teller.m_room = 1;
  EXPECT_THAT(toldAt("2026-11-02 08:47"), ElementsAre("2026-11-02 08:45 C"));
}

TEST_F(FollowingAlarms, EndsWhenNothingCanBeToldAnyMore) {
  teller.over = true;
  ScriptedClock clock({[](store::Moment) { FAIL() << "nobody would hear"; }});
  follower.emplace(*reader, store::berlinZone(), teller);
  ASSERT_TRUE(follower->follow(clock));
}

TEST_F(FollowingAlarms, GoesOnWhenTheStoreCouldNotBeReadForAWhile) {
  meeting("Talk", "2026-11-02 09:00");
  const auto execute = [&](const char* sql) {
    auto database = store::Database::open(file, std::chrono::seconds(1));
    ASSERT_TRUE(database->execute(sql));
  };
  ScriptedClock clock({[&](store::Moment) {
                         execute("INSERT INTO alarm_rings VALUES(1, 'x', 0, 0, NULL, 5, NULL)");
                         setClock("2026-11-02 08:46");
                       },
                       [&](store::Moment) { setClock("2026-11-02 08:47"); },
                       [&](store::Moment) { execute("DELETE FROM alarm_rings"); }});
  follower.emplace(*reader, store::berlinZone(), teller);
  ASSERT_TRUE(follower->follow(clock));
  EXPECT_THAT(teller.told, ElementsAre("2026-11-02 08:45 Talk"));
  EXPECT_EQ(teller.troubles.size(), 1U) << "it is said once";
}

}  // namespace
}  // namespace orlocal::host
