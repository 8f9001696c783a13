#include "platform/linux/run_loop_linux.h"

#include <stdexcept>
#include <thread>

#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <time.h>
#include <unistd.h>

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

/// A descriptor that the loop watches.
class WatchedDescriptor : public testing::Test {
 protected:
  ~WatchedDescriptor() override {
    port.reset();
    ::close(counter);
  }

  void raise() const { ASSERT_EQ(::eventfd_write(counter, 1), 0); }
  void takeDown() const {
    eventfd_t ignored = 0;
    ::eventfd_read(counter, &ignored);
  }

  const int counter = ::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC);
  RunLoop& loop = currentThreadRunLoop();
  int handled = 0;
  std::unique_ptr<RunLoopPort> port = watchDescriptor(counter, [this] {
    ++handled;
    takeDown();
  });
};

TEST_F(WatchedDescriptor, IsHandledWhenItCanBeRead) {
  raise();
  loop.turn();
  EXPECT_EQ(handled, 1);
}

TEST_F(WatchedDescriptor, IsLeftAloneUntilThen) {
  loop.turn();
  EXPECT_EQ(handled, 0);
}

TEST_F(WatchedDescriptor, IsHandledOnceForEachTimeThatItIsReadEmpty) {
  raise();
  raise();
  loop.turn();
  loop.turn();
  EXPECT_EQ(handled, 1);
}

TEST_F(WatchedDescriptor, IsHandledAgainWhileItIsNotReadEmpty) {
  port.reset();
  port = watchDescriptor(counter, [this] { ++handled; });
  raise();
  loop.turn();
  loop.turn();
  EXPECT_EQ(handled, 2);
}

TEST_F(WatchedDescriptor, IsHandledOnASend) {
  port->send();
  loop.turn();
  EXPECT_EQ(handled, 1);
  loop.turn();
  EXPECT_EQ(handled, 1);
}

TEST_F(WatchedDescriptor, IsForgottenWithItsPort) {
  raise();
  port.reset();
  loop.turn();
  EXPECT_EQ(handled, 0);
}

TEST_F(WatchedDescriptor, WakesALoopThatSleeps) {
  port.reset();
  // Leaves the loop as soon as it is called.
  port = watchDescriptor(counter, [] { throw std::runtime_error("woken"); });
  std::thread raiser([this] {
    std::this_thread::sleep_for(20ms);
    raise();
  });
  const auto begun = std::chrono::steady_clock::now();
  EXPECT_THROW(loop.runFor(60s), std::runtime_error);
  EXPECT_LT(std::chrono::steady_clock::now() - begun, 50s) << "not before it would have woken by itself";
  raiser.join();
}

TEST_F(WatchedDescriptor, MayThrowFromItsHandler) {
  port.reset();
  port = watchDescriptor(counter, [this] {
    takeDown();
    throw std::runtime_error("the handler's");
  });
  raise();
  EXPECT_THROW(loop.turn(), std::runtime_error);
  loop.turn();
}

TEST_F(WatchedDescriptor, KeepsTheOthersOfATurnWhenOneThrows) {
  port.reset();
  const auto throwing = [] { throw std::runtime_error("the handler's"); };
  std::unique_ptr<RunLoopPort> first = loop.addPort(throwing);
  std::unique_ptr<RunLoopPort> second = loop.addPort([this] { ++handled; });
  first->send();
  second->send();
  EXPECT_THROW(loop.turn(), std::runtime_error);
  loop.turn();
  EXPECT_EQ(handled, 1);
}

}  // namespace
}  // namespace orlocal
