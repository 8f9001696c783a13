#include "platform/linux/notification_center.h"

#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace orlocal {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::shared_ptr<const Notification> named(std::string name) {
  auto notification = std::make_shared<Notification>();
  notification->name = std::move(name);
  return notification;
}

class Centre : public testing::Test {
 protected:
  /// An observer that writes down its own name.
  NotificationCenter::Observer noting(std::string name) {
    return [this, name](const auto&) { called.push_back(name); };
  }

  std::vector<std::string> called;
  std::vector<bool> listening;
  LinuxNotificationCenter center{[this](bool listen) { listening.push_back(listen); }};
};

TEST_F(Centre, HandsThePostedNotificationToItsObserver) {
  std::shared_ptr<const Notification> seen;
  center.addObserver("changed", [&](const auto& notification) { seen = notification; });
  const auto posted = named("changed");
  center.post(posted);
  EXPECT_EQ(seen, posted);
}

TEST_F(Centre, CallsObserversInTheOrderInWhichTheyWereAdded) {
  center.addObserver("changed", noting("first"));
  center.addObserver("changed", noting("second"));
  center.post(named("changed"));
  EXPECT_THAT(called, ElementsAre("first", "second"));
}

TEST_F(Centre, LeavesOutObserversOfOtherNames) {
  center.addObserver("changed", noting("one"));
  center.addObserver("removed", noting("other"));
  center.post(named("changed"));
  EXPECT_THAT(called, ElementsAre("one"));
}

TEST_F(Centre, CallsAnObserverThatWasAddedTwiceTwice) {
  const auto observer = noting("same");
  center.addObserver("changed", observer);
  center.addObserver("changed", observer);
  center.post(named("changed"));
  EXPECT_THAT(called, ElementsAre("same", "same"));
}

TEST_F(Centre, CallsNobodyWhereNobodyObserves) {
  center.post(named("changed"));
  EXPECT_THAT(called, IsEmpty());
}

TEST_F(Centre, CallsObserversOnThePostingThread) {
  std::thread::id seen;
  center.addObserver("changed", [&](const auto&) { seen = std::this_thread::get_id(); });
  std::thread::id poster;
  std::thread([&] {
    poster = std::this_thread::get_id();
    center.post(named("changed"));
  }).join();
  EXPECT_EQ(seen, poster);
}

TEST_F(Centre, LetsAnObserverPostAndObserve) {
  center.addObserver("outer", [this](const auto&) {
    center.addObserver("inner", noting("inner"));
    center.post(named("inner"));
  });
  center.post(named("outer"));
  EXPECT_THAT(called, ElementsAre("inner"));
}

TEST_F(Centre, CallsEverybodyAlthoughOneThrows) {
  center.addObserver("changed", [](const auto&) { throw std::runtime_error("first"); });
  center.addObserver("changed", noting("second"));
  center.addObserver("changed", [](const auto&) { throw std::runtime_error("third"); });
  try {
    center.post(named("changed"));
    ADD_FAILURE() << "the exception got lost";
  } catch (const std::runtime_error& thrown) { EXPECT_STREQ(thrown.what(), "first"); }
  EXPECT_THAT(called, ElementsAre("second"));
}

TEST_F(Centre, PassesOnWhetherOtherProcessesAreHeard) {
  center.setSuspended(false);
  center.setSuspended(true);
  EXPECT_THAT(listening, ElementsAre(true, false));
}

TEST_F(Centre, TakesObserversAndNotificationsFromManyThreads) {
  constexpr int kThreads = 4;
  constexpr int kEach = 200;
  std::atomic<int> calls = 0;
  center.addObserver("changed", [&](const auto&) { ++calls; });
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int k = 0; k < kEach; ++k) {
        center.addObserver("never", [](const auto&) {});
        center.post(named("changed"));
      }
    });
  }
  for (auto& thread : threads) { thread.join(); }
  EXPECT_EQ(calls, kThreads * kEach);
}

}  // namespace
}  // namespace orlocal
