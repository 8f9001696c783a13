#include <new>
#include <thread>
#include <utility>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/fake_run_loop.h"
#include "notify/script_host.h"
#include "platform/exception.h"

namespace orlocal::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Listener : public testing::Test {
 protected:
  Listener() { listener.setUpThreadingSupport(); }
  ~Listener() noexcept override = default;

  void nameScript(const char* file, const char* script) {
    HostText fileText;
    fileText.assignUtf8(file);
    HostText scriptText;
    scriptText.assignUtf8(script);
    listener.setDatabase(fileText.get());
    listener.setScript(scriptText.get());
  }

  ScriptHost host;
  NAXiCalNotificationListener listener;
};

TEST_F(Listener, StartsTheScriptAtOnceOnItsOwnThread) {
  nameScript("Solution", "Calendar changed");
  listener.processNotification(changed({"A"}));
  ASSERT_EQ(host.started.size(), 1U);
  EXPECT_EQ(host.started[0].file, "Solution");
  EXPECT_EQ(host.started[0].script, "Calendar changed");
  EXPECT_EQ(host.started[0].parameter, "New A");
}

TEST_F(Listener, AsksForTheRunningScriptToBePaused) {
  listener.processNotification(changed({"A"}));
  EXPECT_EQ(host.started.at(0).control, 3);
}

TEST_F(Listener, OnlyQueuesOnAnotherThread) {
  std::thread([&] { listener.processNotification(changed({"A"})); }).join();
  EXPECT_THAT(host.started, IsEmpty());
}

TEST_F(Listener, StartsWhatOtherThreadsPostInTheirOrderOnItsOwnThread) {
  std::thread poster([&] {
    for (const char* id : {"A", "B", "C"}) { listener.processNotification(changed({id})); }
  });
  poster.join();
  host.waitForStarts(3);
  EXPECT_THAT(host.parameters(), ElementsAre("New A", "New B", "New C"));
  for (const auto& start : host.started) { EXPECT_EQ(start.thread, std::this_thread::get_id()); }
}

TEST_F(Listener, TellsOnlyTheFirstOfSeveralRecords) {
  listener.processNotification(changed({"A", "B", "C"}));
  EXPECT_THAT(host.parameters(), ElementsAre("New A"));
}

TEST_F(Listener, LooksForInsertedThenUpdatedThenDeleted) {
  listener.processNotification(changed({"A"}, {"B"}, {"C"}));
  listener.processNotification(changed({"A"}, {}, {"C"}));
  listener.processNotification(changed({}, {"B"}, {"C"}));
  listener.processNotification(changed({}, {}, {"C"}));
  EXPECT_THAT(host.parameters(), ElementsAre("New A", "New A", "Updated B", "Deleted C"));
}

TEST_F(Listener, StartsNothingWithoutAListItKnows) {
  listener.processNotification(changed({}));
  EXPECT_THAT(host.started, IsEmpty());
}

TEST_F(Listener, CountsTheParameterInUtf16Units) {
  listener.processNotification(changed({"\xF0\x9F\x93\x85 Straße"}));
  EXPECT_THAT(host.parameters(), ElementsAre("New \xF0\x9F\x93\x85 Straße"));
}

TEST_F(Listener, KeepsWhatTheHostAnswered) {
  host.answer = 100;
  listener.processNotification(changed({"A"}));
  EXPECT_EQ(listener.lastStartError(), 100);
}

TEST_F(Listener, SetsUpOnlyOnce) {
  std::thread([&] { listener.setUpThreadingSupport(); }).join();
  listener.processNotification(changed({"A"}));
  EXPECT_THAT(host.parameters(), ElementsAre("New A")) << "this thread is still the one that starts scripts";
}

TEST_F(Listener, IsNotSetUpBeforeItsPortIs) {
  NAXiCalNotificationListener later;
  const auto full = std::make_shared<fakes::FakeRunLoop>();
  full->m_takesPorts = false;
  const auto loop = std::exchange(host.platform().m_runLoop, full);
  EXPECT_THROW(later.setUpThreadingSupport(), Exception);
  host.platform().m_runLoop = loop;
  later.setUpThreadingSupport();
  std::thread([&] { later.processNotification(changed({"A"})); }).join();
  host.waitForStarts(1);
  EXPECT_THAT(host.parameters(), ElementsAre("New A"));
}

TEST_F(Listener, HandlesWhatArrivesDuringAScriptInTheSameDrain) {
  bool posted = false;
  host.duringStart = [&] {
    if (std::exchange(posted, true)) { return; }
    // Would wait for ever if the lock were held while a script starts.
    std::thread([&] { listener.processNotification(changed({"Second"})); }).join();
  };
  std::thread([&] { listener.processNotification(changed({"First"})); }).join();
  listener.handleMachMessage();
  EXPECT_THAT(host.parameters(), ElementsAre("New First", "New Second"));
}

TEST_F(Listener, StartsAScriptWithinAScriptForWhatItsOwnThreadIsTold) {
  std::vector<std::string> ended;
  host.duringStart = [&] {
    const std::string mine = host.started.back().parameter;
    if (host.started.size() < 3) { listener.processNotification(changed({"within " + mine})); }
    ended.push_back(mine);
  };
  listener.processNotification(changed({"A"}));
  EXPECT_THAT(host.parameters(), ElementsAre("New A", "New within New A", "New within New within New A"));
  EXPECT_THAT(ended, ElementsAre("New within New within New A", "New within New A", "New A"));
}

TEST_F(Listener, StartsWhatIsQueuedWithinAScriptThatTurnsTheLoop) {
  std::thread([&] {
    for (const char* id : {"First", "Second", "Third"}) { listener.processNotification(changed({id})); }
  }).join();
  std::vector<std::string> ended;
  host.duringStart = [&] {
    const std::string mine = host.started.back().parameter;
    // As the host does when a script of its own asks for idle time.
    listener.handleMachMessage();
    ended.push_back(mine);
  };
  host.waitForStarts(3);
  host.loop().turn();
  EXPECT_THAT(host.parameters(), ElementsAre("New First", "New Second", "New Third"));
  EXPECT_THAT(ended, ElementsAre("New Third", "New Second", "New First"));
}

TEST_F(Listener, GoesOnWithTheRestAfterAStartThatThrows) {
  bool thrown = false;
  host.duringStart = [&] {
    if (!std::exchange(thrown, true)) { throw std::bad_alloc(); }
  };
  std::thread([&] {
    for (const char* id : {"First", "Second", "Third"}) { listener.processNotification(changed({id})); }
  }).join();
  EXPECT_THROW(host.loop().turn(), std::bad_alloc);
  host.waitForStarts(3);
  EXPECT_THAT(host.parameters(), ElementsAre("New First", "New Second", "New Third"));
}

TEST_F(Listener, FindsNothingInADrainTooMany) {
  listener.handleMachMessage();
  EXPECT_THAT(host.started, IsEmpty());
}

TEST_F(Listener, UsesTheNamesThatWereSetLast) {
  nameScript("One", "First");
  nameScript("Two", "Second");
  listener.processNotification(changed({"A"}));
  EXPECT_EQ(host.started.at(0).file, "Two");
  EXPECT_EQ(host.started.at(0).script, "Second");
}

TEST_F(Listener, LosesNothingOfWhatManyThreadsPost) {
  constexpr int kThreads = 4;
  constexpr int kEach = 200;
  std::vector<std::thread> posters;
  for (int thread = 0; thread < kThreads; ++thread) {
    posters.emplace_back([&, thread] {
      for (int i = 0; i < kEach; ++i) {
        listener.processNotification(changed({std::to_string(thread) + "." + std::to_string(i)}));
      }
    });
  }
  host.waitForStarts(kThreads * kEach);
  for (auto& poster : posters) { poster.join(); }
  ASSERT_EQ(host.started.size(), static_cast<std::size_t>(kThreads * kEach));
  std::vector<int> next(kThreads, 0);
  for (const auto& parameter : host.parameters()) {
    const auto thread = static_cast<std::size_t>(parameter[4] - '0');
    EXPECT_EQ(parameter, "New " + std::to_string(thread) + "." + std::to_string(next[thread]++));
  }
}

}  // namespace
}  // namespace orlocal::test
