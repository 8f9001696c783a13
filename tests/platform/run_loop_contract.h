#pragma once

#include <chrono>
#include <ctime>
#include <functional>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "platform/exception.h"
#include "platform/run_loop.h"

// What every run loop promises. A test program includes this header once, and instantiates `RunLoopContract` with its
// own subject.

namespace orlocal::contract {

class RunLoopSubject {
 public:
  virtual ~RunLoopSubject() = default;
  /// The loop of this thread.
  virtual RunLoop& loop() = 0;
  /// A moment of the clock that the loop runs by.
  virtual std::chrono::microseconds time() = 0;
  /// Does `work` with a loop that has no port, while the system has no way to wake one; then `afterwards` with the same
  /// loop. False where no such state can be made.
  virtual bool withoutWaysToWake(const std::function<void(RunLoop&)>& work,
                                 const std::function<void(RunLoop&)>& afterwards) = 0;
};

using MakeRunLoopSubject = std::unique_ptr<RunLoopSubject> (*)();

class RunLoopContract : public testing::TestWithParam<MakeRunLoopSubject> {
 protected:
  std::unique_ptr<RunLoopSubject> subject = GetParam()();
  RunLoop& loop = subject->loop();
  int handled = 0;
  std::unique_ptr<RunLoopPort> port = loop.addPort([this] { ++handled; });
};

using namespace std::chrono_literals;

TEST_P(RunLoopContract, CallsNoHandlerBeforeItRunsAndNoneWithoutASend) {
  loop.turn();
  EXPECT_EQ(handled, 0);
  port->send();
  EXPECT_EQ(handled, 0);
}

TEST_P(RunLoopContract, ServesASendInATurnAndInARun) {
  port->send();
  loop.turn();
  EXPECT_EQ(handled, 1);
  port->send();
  loop.runFor(1ms);
  EXPECT_EQ(handled, 2);
}

TEST_P(RunLoopContract, ServesSeveralSendsAtLeastOnceAndNotMoreOftenThanSent) {
  port->send();
  port->send();
  loop.turn();
  loop.turn();
  EXPECT_GE(handled, 1);
  EXPECT_LE(handled, 2);
}

TEST_P(RunLoopContract, ServesASendOfAnotherThreadOnItsOwn) {
  std::thread::id servedOn;
  const auto noting = loop.addPort([&] { servedOn = std::this_thread::get_id(); });
  std::thread([&] { noting->send(); }).join();
  loop.turn();
  EXPECT_EQ(servedOn, std::this_thread::get_id());
}

TEST_P(RunLoopContract, TakesSendsOfSeveralThreadsAtOnce) {
  std::thread first([this] { port->send(); });
  std::thread second([this] { port->send(); });
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (handled == 0 && std::chrono::steady_clock::now() < deadline) { loop.runFor(1ms); }
  first.join();
  second.join();
  loop.turn();
  EXPECT_GE(handled, 1);
}

TEST_P(RunLoopContract, ServesWhatComesUntilItsTimeHasPassed) {
  std::unique_ptr<RunLoopPort> again;
  int rounds = 0;
  again = loop.addPort([&] {
    if (++rounds < 3) { again->send(); }
  });
  again->send();
  const auto before = subject->time();
  loop.runFor(60ms);
  EXPECT_GE(subject->time() - before, 60ms);
  EXPECT_EQ(rounds, 3);
}

TEST_P(RunLoopContract, SleepsWhileItRuns) {
  const std::clock_t before = std::clock();
  loop.runFor(200ms);
  // Spinning would use all of the time.
  EXPECT_LT(std::clock() - before, CLOCKS_PER_SEC / 10);
}

TEST_P(RunLoopContract, ServesInATurnWhatIsReadyAndReturnsAtOnce) {
  std::unique_ptr<RunLoopPort> again;
  int rounds = 0;
  again = loop.addPort([&] {
    ++rounds;
    again->send();
  });
  again->send();
  loop.turn();
  EXPECT_EQ(rounds, 1);
  loop.turn();
  EXPECT_EQ(rounds, 2);
}

TEST_P(RunLoopContract, ServesAPortInARunInsideAHandlerToo) {
  const auto outer = loop.addPort([this] {
    port->send();
    loop.runFor(1ms);
    EXPECT_EQ(handled, 1);
  });
  outer->send();
  loop.turn();
  EXPECT_EQ(handled, 1);
}

TEST_P(RunLoopContract, ForgetsAPortThatIsDestroyed) {
  port->send();
  port.reset();
  loop.turn();
  EXPECT_EQ(handled, 0);
}

TEST_P(RunLoopContract, LetsAHandlerDestroyItsOwnPort) {
  std::unique_ptr<RunLoopPort> once;
  int rounds = 0;
  once = loop.addPort([&] {
    once.reset();
    ++rounds;
  });
  once->send();
  loop.turn();
  loop.turn();
  EXPECT_EQ(rounds, 1);
}

TEST_P(RunLoopContract, LetsAHandlerDestroyAnotherPort) {
  const auto killer = loop.addPort([this] { port.reset(); });
  killer->send();
  port->send();
  loop.turn();
  EXPECT_EQ(port, nullptr);
  EXPECT_LE(handled, 1);
}

TEST_P(RunLoopContract, RefusesAPortThatNothingCouldWakeAndStaysAsItWas) {
  int served = 0;
  std::unique_ptr<RunLoopPort> late;
  const bool made = subject->withoutWaysToWake(
      [](RunLoop& full) {
        EXPECT_THROW(full.addPort([] {}), Exception);
        EXPECT_NO_THROW(full.turn());
        EXPECT_NO_THROW(full.runFor(1ms));
      },
      [&](RunLoop& free) {
        late = free.addPort([&served] { ++served; });
        late->send();
        free.turn();
        late.reset();
      });
  if (!made) { GTEST_SKIP() << "this build cannot run without ways to wake a loop"; }
  EXPECT_EQ(served, 1);
}

}  // namespace orlocal::contract
