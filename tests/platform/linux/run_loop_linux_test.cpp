#include "platform/linux/run_loop_linux.h"

#include <thread>

#include <gtest/gtest.h>
#include <time.h>

namespace orlocal {
namespace {

using namespace std::chrono_literals;

std::chrono::nanoseconds processorTime() {
  timespec used{};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
  return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
}

class RunLoopOfThisThread : public testing::Test {
 protected:
  RunLoop& loop = currentThreadRunLoop();
  int handled = 0;
  std::unique_ptr<RunLoopPort> port = loop.addPort([this] { ++handled; });
};

TEST_F(RunLoopOfThisThread, IsTheSameAtEachCall) { EXPECT_EQ(&currentThreadRunLoop(), &loop); }

TEST_F(RunLoopOfThisThread, IsNotThatOfAnotherThread) {
  const RunLoop* other = nullptr;
  std::thread([&other] { other = &currentThreadRunLoop(); }).join();
  EXPECT_NE(other, &loop);
}

TEST_F(RunLoopOfThisThread, CallsNoHandlerBeforeItRuns) {
  port->send();
  EXPECT_EQ(handled, 0);
}

TEST_F(RunLoopOfThisThread, HandlesSeveralSendsAtOnce) {
  port->send();
  port->send();
  loop.turn();
  EXPECT_EQ(handled, 1);
  loop.turn();
  EXPECT_EQ(handled, 1);
}

TEST_F(RunLoopOfThisThread, ServesASendOfAnotherThreadWhileItRuns) {
  std::thread sender([this] { port->send(); });
  const auto deadline = std::chrono::steady_clock::now() + 10s;
  while (handled == 0 && std::chrono::steady_clock::now() < deadline) loop.runFor(10ms);
  sender.join();
  EXPECT_EQ(handled, 1);
}

TEST_F(RunLoopOfThisThread, RunsForAsLongAsItIsTold) {
  const auto before = std::chrono::steady_clock::now();
  loop.runFor(20ms);
  EXPECT_GE(std::chrono::steady_clock::now() - before, 20ms);
}

TEST_F(RunLoopOfThisThread, SleepsInsteadOfSpinning) {
  const auto before = processorTime();
  loop.runFor(200ms);
  // Spinning would use all of the time.
  EXPECT_LT(processorTime() - before, 100ms);
}

TEST_F(RunLoopOfThisThread, TurnsWithoutAnythingToDo) {
  loop.turn();
  EXPECT_EQ(handled, 0);
}

TEST_F(RunLoopOfThisThread, ServesASendOfItsOwnHandlerInTheNextTurn) {
  int rounds = 0;
  std::unique_ptr<RunLoopPort> again;
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

TEST_F(RunLoopOfThisThread, ForgetsAPortThatIsDestroyed) {
  port->send();
  port.reset();
  loop.turn();
  EXPECT_EQ(handled, 0);
}

TEST_F(RunLoopOfThisThread, LetsAHandlerDestroyItsOwnPort) {
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

TEST_F(RunLoopOfThisThread, LetsAHandlerDestroyAnotherPort) {
  std::unique_ptr<RunLoopPort> killer = loop.addPort([this] { port.reset(); });
  std::unique_ptr<RunLoopPort> second = loop.addPort([&] { killer.reset(); });
  killer->send();
  port->send();
  loop.turn();
  EXPECT_EQ(port, nullptr);
  EXPECT_LE(handled, 1);
}

TEST_F(RunLoopOfThisThread, RunsInsideAHandler) {
  std::unique_ptr<RunLoopPort> outer = loop.addPort([this] {
    port->send();
    loop.runFor(1ms);
  });
  outer->send();
  loop.turn();
  EXPECT_EQ(handled, 1);
}

TEST_F(RunLoopOfThisThread, MayGoBeforeItsPorts) {
  std::unique_ptr<RunLoopPort> orphan;
  std::thread([&orphan] { orphan = currentThreadRunLoop().addPort([] {}); }).join();
  orphan->send();
  orphan.reset();
}

}  // namespace
}  // namespace orlocal
